// Handle values, what names nothing, growth of the lists, lookups beside issuing threads, and the cache in
// front.
#include "objects/handle_list.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "objects/handle_cache.h"
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
  CQMLinkedObject* Find(Handle handle) const { return m_list.FindTarget(handle).object; }

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

TEST_F(HandleList, WhatWasNotIssuedNamesNothing) {
  constexpr struct {
    unsigned left, right;
    bool isIssued;
  } kCases[] = {
      {0, 0, false},          {0, 1023, false}, {1, 0, true},           {1, 1023, true},
      {2, 1, true},           {1, 1024, false}, {2, 2, false},          {3, 0, false},
      {0xFFFFFFFF, 0, false}, {128, 5, false},  {2, 0xFFFFFFFF, false},
  };
  for (bool const isAfterIssuing : {false, true}) {
    if (isAfterIssuing) Issue(1024 + 2);
    for (auto const& [left, right, isIssued] : kCases) {
      EXPECT_EQ(Find(CQMHandleList::EncodeHandle(left, right)),
                isAfterIssuing && isIssued ? &m_object : nullptr)
          << "list " << left << " slot " << right;
    }
  }
}

TEST_F(HandleList, DeletedSlotsAreNotIssuedAgain) {
  Issue(1);
  m_list.MarkHandleDeleted(1);
  EXPECT_EQ(Find(1), nullptr);
  EXPECT_EQ(m_list.AssignHandle(&m_object), kSlotStep + 1);
  EXPECT_EQ(Find(1), nullptr);
}

TEST_F(HandleList, GrowsByListsOfLists) {
  Issue(kUsableLists * 1024);
  EXPECT_EQ(m_last, CQMHandleList::EncodeHandle(127, 1023));
  SQMHandleSlot const* const first = m_list.FindSlot(1);
  Issue(1);
  EXPECT_EQ(m_last, 128u);
  for (Handle const handle : {Handle{1}, Handle{127}, Handle{128}})
    EXPECT_EQ(Find(handle), &m_object) << handle;
  EXPECT_EQ(m_list.FindSlot(1), first) << "slots stay where they are";
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
    {
      testing::FailingAllocation const failing(0);
      EXPECT_EQ(list.AssignHandle(&m_object), 0u);
    }
    EXPECT_EQ(list.FindTarget(1).object, &m_object);
    EXPECT_EQ(list.AssignHandle(&m_object), c.next);
    EXPECT_EQ(list.FindTarget(c.next).object, &m_object);
  }
}

TEST_F(HandleList, ThreadsLookUpBesideIssuingAndDeleting) {
  std::atomic<bool> done{false};
  std::atomic<long> wrong{0};
  std::vector<std::thread> readers;
  for (int reader = 0; reader < 2; ++reader) {
    readers.emplace_back([&] {
      while (!done) {
        for (unsigned left = 0; left < 300; ++left) {
          CQMLinkedObject* const found = Find(CQMHandleList::EncodeHandle(left, left));
          if (found != nullptr && found != &m_object) ++wrong;
        }
      }
    });
  }
  for (long i = 0; i < 200 * 1024; ++i) {  // across an extension
    Handle const handle = m_list.AssignHandle(&m_object);
    if (Find(handle) != &m_object) ++wrong;
    if (i % 2 == 0) m_list.MarkHandleDeleted(handle);
  }
  done = true;
  for (std::thread& reader : readers) reader.join();
  EXPECT_EQ(wrong, 0);
}

TEST_F(HandleList, ACacheFindsWhatItKeepsUntilAnotherTakesItsPlaceOrTheHandleGoes) {
  CQMHandleCache<CQMLinkedObject> cache;
  CQMLinkedObject* found = nullptr;
  for (unsigned place = 0; place < 1024; ++place) {
    for (unsigned const list : {0U, 1U}) {
      EXPECT_FALSE(cache.Find(CQMHandleList::EncodeHandle(list, place), found)) << "it is empty";
    }
  }
  Issue(1024);
  for (Handle const place : {Handle{0}, Handle{1}, Handle{7}}) {
    Handle const kept = place * kSlotStep + 1;
    Handle const rival =
        (place + 512) * kSlotStep + 1;  // of the same place, whatever power of two the size is
    cache.Keep(kept, *m_list.FindSlot(kept));
    ASSERT_TRUE(cache.Find(kept, found));
    EXPECT_EQ(found, &m_object);
    for (Handle const other : {rival, kept + 1, kept | kSlotStep << 20, kept + kSlotStep}) {
      EXPECT_FALSE(cache.Find(other, found)) << other;
    }
    cache.Keep(rival, *m_list.FindSlot(rival));
    EXPECT_FALSE(cache.Find(kept, found));
    EXPECT_TRUE(cache.Find(rival, found));
    m_list.MarkHandleDeleted(rival);
    EXPECT_FALSE(cache.Find(rival, found));
    EXPECT_FALSE(cache.Find(0, found)) << "what a deleted slot holds is no handle";
    cache.Keep(kept, *m_list.FindSlot(kept));
    cache.Clear();
    EXPECT_FALSE(cache.Find(kept, found));
  }
}

}  // namespace
}  // namespace qumel
