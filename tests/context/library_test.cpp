// Records of threads, and the oddities of dropping them, which the exported functions do not show.
#include "context/library.h"

#include <gtest/gtest.h>

#include <barrier>
#include <thread>

#include "context/context_use.h"

namespace qumel {
namespace {

class Library : public ::testing::Test {
 protected:
  void SetUp() override {
    InitializeLibrary();
    ResetLibrary();
  }
  void TearDown() override { ResetLibrary(); }
};

TEST_F(Library, RecordsAndTheirContexts) {
  CQMThreadInfo* const bare = GetThreadInfo(false);
  ASSERT_NE(bare, nullptr);
  EXPECT_EQ(bare->GetExecutor(), nullptr);
  EXPECT_EQ(GetThreadInfo(true), bare);
  ASSERT_NE(bare->GetExecutor(), nullptr);
  EXPECT_EQ(bare->GetExecutor()->Name(), kPrimaryName);
  EXPECT_TRUE(bare->SetExecutor(static_cast<CQMExecutor*>(nullptr), true));
  bare->ClearExecutor();
  EXPECT_FALSE(bare->SetExecutor(static_cast<CQMExecutor*>(nullptr), true));
  CQMExecutor* const own = bare->AddExecutor("own");
  EXPECT_TRUE(bare->IsExecutor(own));
  EXPECT_FALSE(IsPublicExecutor(own));
  EXPECT_TRUE(bare->SetExecutor(own, true));
  EXPECT_TRUE(bare->DropExecutor("own"));
  EXPECT_EQ(bare->GetExecutor(), nullptr);
  EXPECT_FALSE(bare->DropExecutor("own"));
}

// Dropping takes the record that stands before the caller's own.
TEST_F(Library, DroppingTakesTheRecordBefore) {
  EXPECT_FALSE(DropThreadInfo());  // an empty list
  CQMThreadInfo* const head = GetThreadInfo(false);
  ASSERT_NE(head->AddExecutor("own"), nullptr);
  EXPECT_TRUE(DropThreadInfo());  // the first record never matches
  EXPECT_EQ(GetThreadInfo(false), head);

  std::barrier<> barrier(2);
  std::thread middle([&barrier] {
    ASSERT_NE(CreatePrivateContext("middle"), 0U);
    barrier.arrive_and_wait();  // the last record is made after this one
    barrier.arrive_and_wait();
    EXPECT_EQ(GetThreadInfo(false)->FindExecutor("middle"), nullptr);  // a new record
  });
  std::thread last([&barrier] {
    barrier.arrive_and_wait();
    CQMThreadInfo* const own = GetThreadInfo(false);
    own->AddExecutor("last");
    long const contexts = CQMExecutor::sm_lExecutorCount;
    EXPECT_TRUE(DropThreadInfo());
    EXPECT_EQ(CQMExecutor::sm_lExecutorCount, contexts - 1);
    EXPECT_EQ(GetThreadInfo(false), own);
    EXPECT_NE(own->FindExecutor("last"), nullptr);
    EXPECT_TRUE(DropThreadInfo());  // now the head stands before
    EXPECT_EQ(CQMExecutor::sm_lExecutorCount, contexts - 2);
    EXPECT_TRUE(DropThreadInfo());  // the caller's own is the head
    EXPECT_EQ(GetThreadInfo(false), own);
    barrier.arrive_and_wait();
  });
  middle.join();
  last.join();
  EXPECT_EQ(GetThreadInfo(false)->FindExecutor("own"), nullptr);
}

TEST_F(Library, ADroppedRecordGivesItsLockBack) {
  CreatePublicContext("shared");
  CQMExecutor* const shared = FindPublicExecutor("shared");
  ASSERT_NE(shared, nullptr);
  ASSERT_NE(SetContext("shared", true), 0U);
  std::thread([] {
    GetThreadInfo(false);
    EXPECT_TRUE(DropThreadInfo());
    EXPECT_NE(SetContext("shared", true), 0U);  // would wait for ever
    EXPECT_TRUE(ReleaseContext());
  }).join();
}

}  // namespace
}  // namespace qumel
