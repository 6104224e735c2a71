// Proxies: what they share with their target, how they follow it, outlive it, and meet in threads.
#include <array>
#include <string>
#include <thread>

#include "values/datum_makers.h"

namespace qumel {
namespace {

using namespace qumel::testing;

TEST(DatumProxyTest, ACopyStandsForItsSource) {
  CQMDatum source(EQMDataType::Number, "x");
  source.SetScope(Scope::kGlobal);
  source.SetLiteral(true);
  source.SetLiteralAttributes(true, false);
  source.SetTemporary(true);
  source.SetReal(1.0);
  CQMDatum proxy(source);
  CQMDatum second(proxy);
  EXPECT_EQ(second.GetProxyTarget(), &source);  // never a proxy of a proxy
  EXPECT_EQ(source.GetChildCount(), 2);
  EXPECT_STREQ(second.GetDatumName(), "x");
  EXPECT_EQ(second.GetScope(), Scope::kGlobal);
  EXPECT_TRUE(second.IsLiteral() && second.GetLiteralAttribute(0) && !second.GetLiteralAttribute(1) &&
              second.IsTemporary());
  EXPECT_FALSE(second.OwnsStorage());
  EXPECT_EQ(second.GetValue(), source.GetValue());
  second.SetReal(2.0);
  EXPECT_EQ(source.Real(), 2.0);
  source.SetPending(true);
  EXPECT_TRUE(second.IsPending());
}

TEST(DatumProxyTest, ElementsOfOneArrayDoNotDisturbEachOther) {
  auto const array = MakeArray(EQMDataType::Number, {4});
  CQMDatum first(*array), second(*array);
  EXPECT_EQ(first.GetArraySize(), 4);
  EXPECT_EQ(first.SetCurrentElement(1), Error::None);
  EXPECT_EQ(second.SetCurrentElement(3), Error::None);
  EXPECT_EQ(second.SetCurrentElement(4), Error::IndexOutOfBounds);
  first.SetReal(10.0);
  second.SetReal(30.0);
  EXPECT_EQ(DoubleAt(array->GetValue(0, false, 1)), 10.0);
  EXPECT_EQ(DoubleAt(array->GetValue(0, false, 3)), 30.0);
  EXPECT_EQ(first.GetValue(), array->GetValue() + 8);
  EXPECT_EQ(array->GetCurrentElement(), 0);
  CQMDatum third(second);  // at the same element
  EXPECT_EQ(third.Real(), 30.0);
}

TEST(DatumProxyTest, FollowsEveryChangeOfTypeAndStorage) {
  CQMDatum target(EQMDataType::Number, "x");
  CQMDatum proxy(target);
  long revision = proxy.GetRevision();
  auto const expectFollowed = [&](EQMDataType type) {
    EXPECT_GT(proxy.GetRevision(), revision);
    revision = proxy.GetRevision();
    EXPECT_EQ(proxy.GetType(), type);
    EXPECT_EQ(proxy.GetElementSize(), target.GetElementSize());
    EXPECT_EQ(proxy.Current(), target.Current());
  };
  proxy.SetDatumType(EQMDataType::String);  // acts on the target
  expectFollowed(EQMDataType::String);
  target.SetWholeText(std::string(1000, 'x'));
  expectFollowed(EQMDataType::String);
  EXPECT_EQ(proxy.GetText().size(), 1000U);
  proxy.SetDatumType(EQMDataType::Number);
  expectFollowed(EQMDataType::Number);
  proxy.SetComplex(1.0, 2.0);
  expectFollowed(EQMDataType::Complex);
  EXPECT_EQ(target.Imaginary(), 2.0);
  EXPECT_EQ(proxy.SetIsArray(Longs{3}), Error::None);
  expectFollowed(EQMDataType::Complex);
  EXPECT_TRUE(target.IsArray());
  EXPECT_TRUE(proxy.IsArray());
  target.SetIsArray(30L);
  expectFollowed(EQMDataType::Complex);
  std::array<double, 6> host = {};
  target.SetValuePointer(host.data());
  expectFollowed(EQMDataType::Complex);
  EXPECT_EQ(proxy.SetCurrentElement(2), Error::None);
  proxy.SetComplex(5.0, 6.0);
  EXPECT_EQ(host[5], 6.0);
  target.SetValuePointer(nullptr);
  EXPECT_EQ(proxy.GetValue(), nullptr);
  EXPECT_EQ(proxy.Real(), 0.0);
}

TEST(DatumProxyTest, AssignmentMakesAProxyAndHandsOnItsOwn) {
  CQMDatum first(EQMDataType::Number, "first"), second(EQMDataType::Number, "second");
  CQMDatum user(first);
  second.SetReal(5.0);
  first = second;
  EXPECT_EQ(first.GetProxyTarget(), &second);
  EXPECT_EQ(user.GetProxyTarget(), &second);
  EXPECT_EQ(user.Real(), 5.0);
  EXPECT_EQ(second.GetChildCount(), 2);
  second = user;  // its own target: nothing to do
  second = second;
  EXPECT_FALSE(second.IsProxy());
  EXPECT_EQ(second.Real(), 5.0);
  CQMDatum third(EQMDataType::Boolean, "third");
  first = third;
  EXPECT_EQ(second.GetChildCount(), 1);
  EXPECT_TRUE(first.IsBoolean());
}

TEST(DatumProxyTest, OutlivesItsTarget) {
  auto target = MakeArray(EQMDataType::Number, {4});
  auto const proxy = std::make_unique<CQMDatum>(*target);
  auto early = std::make_unique<CQMDatum>(*target);
  proxy->SetCurrentElement(3);
  target->SetPending(true);
  early.reset();
  EXPECT_EQ(target->GetChildCount(), 1);
  target.reset();
  EXPECT_FALSE(proxy->IsProxy());
  EXPECT_FALSE(proxy->IsArray());
  EXPECT_TRUE(proxy->IsPending());
  EXPECT_EQ(proxy->GetType(), EQMDataType::Number);
  EXPECT_EQ(proxy->Real(), 0.0);
  proxy->SetComplex(1.0, 2.0);
  EXPECT_EQ(proxy->Imaginary(), 2.0);
}

TEST(DatumProxyTest, ThreadsShareTheLinksOfAProcessWideDatum) {
  auto const target = MakeArray(EQMDataType::Number, {8});
  target->SetScope(Scope::kCosmic);
  std::vector<std::thread> threads;
  for (long id = 0; id < 4; ++id) {
    threads.emplace_back([&target, id] {
      for (int turn = 0; turn < 500; ++turn) {
        CQMDatum element(*target);
        element.SetCurrentElement(id);
        element.SetReal(element.Real() + 1.0);
        CQMDatum const other(element);
        EXPECT_EQ(other.Real(), static_cast<double>(turn + 1));
      }
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(target->GetFirstChildObject(), nullptr);
}

}  // namespace
}  // namespace qumel
