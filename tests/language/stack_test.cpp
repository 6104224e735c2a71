// Stacks of objects: order, limits, opening and closing in the middle, and who owns what.
#include "language/stack.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "base/errors.h"
#include "language/stack_items.h"

namespace qumel {
namespace {

class CQMCounted : public CQMStackNumber {
 public:
  explicit CQMCounted(std::int32_t number) : CQMStackNumber(number) { ++s_alive; }
  ~CQMCounted() override { --s_alive; }
  static inline int s_alive = 0;
};

CQMStack::Item Counted(std::int32_t number) { return std::make_unique<CQMCounted>(number); }

/** The numbers on a stack from the bottom up, "-" for an empty slot. */
std::string Shown(CQMStack const& stack) {
  std::string text;
  for (std::int32_t i = 0; i <= stack.GetTop(); ++i) {
    CQMObject* item;
    EXPECT_EQ(stack.GetStackItem(i, item), Error::None);
    text += item != nullptr ? std::to_string(static_cast<CQMCounted*>(item)->GetNumber()) : "-";
  }
  return text;
}

void Fill(CQMStack& stack, int count) {
  for (int i = 0; i < count; ++i) ASSERT_EQ(stack.Push(Counted(i)), Error::None);
}

TEST(Stack, TakesAndGivesFromTheTop) {
  CQMStack stack;
  CQMStack::Item item;
  EXPECT_EQ(stack.Pop(), Error::StackEmpty);
  EXPECT_EQ(stack.Push(nullptr), Error::StackItemNull);
  ASSERT_EQ(stack.InitStack(2), Error::None);
  Fill(stack, 40);  // grows twice and more
  EXPECT_EQ(stack.GetTop(), 39);
  EXPECT_GE(stack.GetDepth(), 40);
  EXPECT_EQ(stack.Pop(item), Error::None);
  EXPECT_EQ(static_cast<CQMCounted*>(item.get())->GetNumber(), 39);
  item.reset();
  EXPECT_EQ(CQMCounted::s_alive, 39);
  EXPECT_EQ(stack.Pop(), Error::None);
  EXPECT_EQ(CQMCounted::s_alive, 38);
  stack.ClearStack();
  EXPECT_EQ(CQMCounted::s_alive, 0);
  EXPECT_EQ(stack.Pop(item), Error::StackEmpty);
  EXPECT_EQ(stack.GetTop(), -1);
}

TEST(Stack, DestroysWhatIsLeft) {
  {
    CQMStack stack;
    Fill(stack, 5);
    EXPECT_EQ(stack.InitStack(4), Error::None);
    EXPECT_EQ(CQMCounted::s_alive, 0);
    Fill(stack, 3);
  }
  EXPECT_EQ(CQMCounted::s_alive, 0);
}

TEST(Stack, StopsAtItsDepthWhenItMayNotGrow) {
  CQMStack stack;
  ASSERT_EQ(stack.InitStack(4), Error::None);
  stack.SetAutoGrow(false);
  Fill(stack, 4);
  EXPECT_EQ(stack.Push(Counted(4)), Error::StackFull);
  EXPECT_EQ(stack.Expand(1), Error::StackFull);
  EXPECT_EQ(stack.Slide(0, Counted(4)), Error::StackFull);
  EXPECT_EQ(Shown(stack), "0123");
  EXPECT_EQ(CQMCounted::s_alive, 4);
}

TEST(Stack, OpensAndClosesInTheMiddle) {
  CQMStack stack;
  ASSERT_EQ(stack.InitStack(3), Error::None);
  Fill(stack, 3);
  EXPECT_EQ(stack.Slide(1, Counted(7)), Error::None);
  EXPECT_EQ(Shown(stack), "0712");
  EXPECT_EQ(stack.Slide(4, Counted(8)), Error::None);  // just above the top: a push
  EXPECT_EQ(Shown(stack), "07128");
  EXPECT_EQ(stack.Slide(6, Counted(9)), Error::StackNoSuchIndex);
  EXPECT_EQ(stack.Slide(-1, Counted(9)), Error::StackNoSuchIndex);
  EXPECT_EQ(stack.Slide(0, nullptr), Error::StackItemNull);
  EXPECT_EQ(stack.Expand(0), Error::None);
  EXPECT_EQ(Shown(stack), "-07128");
  EXPECT_EQ(stack.Expand(99), Error::None);
  EXPECT_EQ(Shown(stack), "-07128-");
  stack.Contract(0);
  EXPECT_EQ(stack.Thunk(5), Error::None);
  EXPECT_EQ(Shown(stack), "07128");
  CQMStack::Item item;
  EXPECT_EQ(stack.Thunk(1, item), Error::None);
  EXPECT_EQ(static_cast<CQMCounted*>(item.get())->GetNumber(), 7);
  EXPECT_EQ(stack.Thunk(0), Error::None);
  EXPECT_EQ(Shown(stack), "128");
  for (std::int32_t const index : {-1, 3, std::numeric_limits<std::int32_t>::max()}) {
    CQMObject* found = item.get();
    EXPECT_EQ(stack.GetStackItem(index, found), Error::StackNoSuchIndex);
    EXPECT_EQ(found, nullptr);
    EXPECT_EQ(stack.Thunk(index), Error::StackNoSuchIndex);
    stack.Contract(index);
  }
  EXPECT_EQ(stack.Thunk(3, item), Error::StackNoSuchIndex);
  EXPECT_EQ(item, nullptr);
  EXPECT_EQ(CQMCounted::s_alive, 3);
}

TEST(Stack, GrowsFromADepthOfNothing) {
  CQMStack stack;
  ASSERT_EQ(stack.InitStack(0), Error::None);
  EXPECT_EQ(stack.GetDepth(), 0);
  EXPECT_EQ(stack.Pop(), Error::StackEmpty);
  stack.SetAutoGrow(false);
  EXPECT_EQ(stack.Push(std::make_unique<CQMStackString>("none fits")), Error::StackFull);
  stack.SetAutoGrow(true);
  Fill(stack, 3);
  EXPECT_EQ(stack.GetTop(), 2);
  EXPECT_EQ(stack.GetDepth(), 16);
}

TEST(Stack, NeverGetsShallower) {
  CQMStack stack;
  EXPECT_EQ(stack.InitStack(-1), Error::StackCreateFailed);
  ASSERT_EQ(stack.InitStack(32), Error::None);
  stack.SetLastItemClass(9);
  Fill(stack, 4);
  EXPECT_EQ(stack.Compress(), Error::None);
  EXPECT_EQ(stack.ShrinkDepth(), Error::None);
  EXPECT_EQ(stack.SetStackDepth(-5), Error::None);
  EXPECT_EQ(stack.GetDepth(), 32);
  EXPECT_EQ(stack.GrowDepth(), Error::None);
  EXPECT_EQ(stack.GetDepth(), 48);
  EXPECT_EQ(stack.ResetStack(), Error::None);
  EXPECT_EQ(stack.GetDepth(), 48);
  EXPECT_EQ(stack.GetTop(), -1);
  EXPECT_EQ(stack.GetLastItemClass(), 9);
  EXPECT_EQ(stack.SetDepthAutoGrowChunk(0), Error::StackBadGrowChunk);
  ASSERT_EQ(stack.SetDepthAutoGrowChunk(std::numeric_limits<std::int32_t>::max()), Error::None);
  EXPECT_EQ(stack.GrowDepth(), Error::StackGrowDepthFailed);
  EXPECT_EQ(stack.SetStackDepth(std::numeric_limits<std::int64_t>::max()), Error::StackSetDepthFailed);
  EXPECT_EQ(stack.GetDepth(), 48);
  ASSERT_EQ(stack.InitStack(1), Error::None);
  EXPECT_EQ(stack.GetLastItemClass(), 0);
}

TEST(StackItems, CarryTextsAndPlaces) {
  CQMStackString text("abc");
  text.SetString("hello", 2);
  EXPECT_EQ(text.GetText(), "he");
  text.SetString("hello", 0);
  EXPECT_EQ(text.GetLength(), 0);
  text = "again";
  text.SetString(nullptr, 3);
  EXPECT_EQ(text.GetText(), "");
  EXPECT_EQ(CQMStackString(std::string_view("a\0b", 3)).GetLength(), 3);

  CQMOperand operand("x+1");
  EXPECT_EQ(operand.GetPosition(), CQMOperand::kNoPosition);
  operand.SetPosition(611);
  operand = "x+2";
  EXPECT_EQ(operand.GetPosition(), 611);
  CQMOperand copy;
  copy = operand;
  EXPECT_EQ(copy.GetText(), "x+2");
  EXPECT_EQ(copy.GetPosition(), 611);
  copy = static_cast<char const*>(nullptr);
  EXPECT_EQ(copy.GetText(), "");
  EXPECT_EQ(copy.GetPosition(), CQMOperand::kNoPosition);
}

}  // namespace
}  // namespace qumel
