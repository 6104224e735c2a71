// Handle values, their validation, growth of the lists, and lookups beside issuing threads.
#include "objects/handle_list.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "objects/linked_object.h"
#include "support/failing_allocation.h"

namespace qumel {
namespace {

constexpr Handle kSlotStep = 1ULL << 32;
constexpr long kUsableLists = 127;  // of the 128 there is room for at first; list 0 stays empty

class HandleList : public ::testing::Test {
 protected:
  void Issue(long count) {
    for (long i = 0; i < count; ++i) m_last = m_list.AssignHandle(&m_object);
  }
  CQMLinkedObject m_object;
  CQMHandleList m_list;
  Handle m_last = 0;
};

TEST_F(HandleList, ValuesRunThroughTheSlotsOfListOneFirst) {
  EXPECT_EQ(m_list.AssignHandle(&m_object), 1u);
  EXPECT_EQ(m_list.AssignHandle(&m_object), kSlotStep + 1);
  Issue(1022);
  EXPECT_EQ(m_last, 1023 * kSlotStep + 1);
  EXPECT_EQ(m_list.AssignHandle(&m_object), 2u);
  EXPECT_EQ(m_list.AssignHandle(&m_object), kSlotStep + 2);
}

TEST_F(HandleList, ValidatesUpToTheNextFreeSlot) {
  Issue(1024 + 2);  // list 2 is current, its slot 2 comes next
  struct Case {
    unsigned left, right;
    bool isValid, isIssued;
  };
  constexpr Case kCases[] = {
      {0, 0, true, false},
      {0, 1023, true, false},
      {0, 1024, false, false},
      {1, 0, true, true},
      {1, 1023, true, true},
      {1, 1024, false, false},
      {2, 1, true, true},
      {2, 2, true, false},
      {2, 3, false, false},
      {3, 0, false, false},
      {0xFFFFFFFF, 0, false, false},
      {128, 5, false, false},
      {2, 0xFFFFFFFF, false, false},
  };
  for (Case const& c : kCases) {
    SCOPED_TRACE(::testing::Message() << "list " << c.left << " slot " << c.right);
    Handle const handle = CQMHandleList::EncodeHandle(c.left, c.right);
    EXPECT_EQ(handle, c.right * kSlotStep + c.left);
    EXPECT_EQ(m_list.ValidateHandle(handle), c.isValid);
    unsigned left = 7, right = 7;
    EXPECT_EQ(m_list.DecodeHandle(handle, left, right), c.isValid);
    EXPECT_EQ(left, c.isValid ? c.left : 0);
    EXPECT_EQ(right, c.isValid ? c.right : 0);
    EXPECT_EQ(m_list.GetObjectFromHandle(handle), c.isIssued ? &m_object : nullptr);
    EXPECT_EQ(m_list.MarkHandleDeleted(handle), c.isValid);
    EXPECT_EQ(m_list.GetObjectFromHandle(handle), nullptr);
  }
}

TEST_F(HandleList, NoSlotOfAFullListValidatesBeyondItsEnd) {
  Issue(1024);
  Handle const beyond = CQMHandleList::EncodeHandle(1, 1024);
  EXPECT_FALSE(m_list.ValidateHandle(beyond));
  EXPECT_FALSE(m_list.MarkHandleDeleted(beyond));
  EXPECT_EQ(m_list.GetObjectFromHandle(beyond), nullptr);
}

TEST_F(HandleList, AnswersForAValueLookedUpBeforeItWasIssued) {
  EXPECT_EQ(m_list.GetObjectFromHandle(1), nullptr);
  EXPECT_EQ(m_list.GetObjectFromHandle(2), nullptr);
  Issue(1025);
  EXPECT_EQ(m_list.GetObjectFromHandle(1), &m_object);
  EXPECT_EQ(m_list.GetObjectFromHandle(2), &m_object);
}

TEST_F(HandleList, DeletedSlotsAreNotIssuedAgain) {
  Issue(1);
  EXPECT_TRUE(m_list.MarkHandleDeleted(1));
  EXPECT_EQ(m_list.GetObjectFromHandle(1), nullptr);
  EXPECT_EQ(m_list.AssignHandle(&m_object), kSlotStep + 1);
  EXPECT_EQ(m_list.GetObjectFromHandle(1), nullptr);
}

TEST_F(HandleList, GrowsByListsOfLists) {
  Issue(kUsableLists * 1024);
  EXPECT_EQ(m_last, CQMHandleList::EncodeHandle(127, 1023));
  EXPECT_EQ(m_list.GetExtensionCount(), 0u);
  Issue(1);
  EXPECT_EQ(m_last, 128u);
  EXPECT_EQ(m_list.GetExtensionCount(), 1u);
  for (Handle const handle : {Handle{1}, Handle{127}, Handle{128}}) {
    EXPECT_EQ(m_list.GetObjectFromHandle(handle), &m_object) << handle;
  }
}

TEST_F(HandleList, AppendsOnlyToAFullList) {
  Issue(3);
  EXPECT_TRUE(m_list.AppendHandleList());
  EXPECT_EQ(m_list.AssignHandle(&m_object), 3 * kSlotStep + 1);
}

TEST_F(HandleList, GivesZeroWhenItCannotGrowAndGoesOnWhenItCan) {
  struct Case {
    char const* what;
    long issued;
    Handle next;
  };
  constexpr Case kCases[] = {{"a new list", 1024, 2}, {"a new list of lists", kUsableLists * 1024, 128}};
  for (Case const& c : kCases) {
    SCOPED_TRACE(c.what);
    CQMHandleList list;
    for (long i = 0; i < c.issued; ++i) list.AssignHandle(&m_object);
    for (long spared = 0; spared < 2; ++spared) {
      testing::FailingAllocation const failing(spared);
      EXPECT_EQ(list.AssignHandle(&m_object), 0u);
      EXPECT_TRUE(list.AppendHandleList());
    }
    EXPECT_EQ(list.GetObjectFromHandle(1), &m_object);
    EXPECT_EQ(list.AssignHandle(&m_object), c.next);
    EXPECT_EQ(list.GetObjectFromHandle(c.next), &m_object);
  }
}

TEST_F(HandleList, LookupsRunBesideIssuingAndDeleting) {
  std::atomic<bool> done{false};
  std::atomic<long> wrong{0};
  std::vector<std::thread> readers;
  for (int reader = 0; reader < 2; ++reader) {
    readers.emplace_back([&] {
      while (!done) {
        for (unsigned left = 0; left < 300; ++left) {
          CQMLinkedObject* const found = m_list.GetObjectFromHandle(CQMHandleList::EncodeHandle(left, left));
          if (found != nullptr && found != &m_object) ++wrong;
        }
      }
    });
  }
  for (long i = 0; i < 200 * 1024; ++i) {  // across an extension
    Handle const handle = m_list.AssignHandle(&m_object);
    if (m_list.GetObjectFromHandle(handle) != &m_object) ++wrong;
    if (i % 2 == 0) m_list.MarkHandleDeleted(handle);
  }
  done = true;
  for (std::thread& reader : readers) reader.join();
  EXPECT_EQ(wrong, 0);
}

}  // namespace
}  // namespace qumel
