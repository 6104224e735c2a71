// The object tree, the handles of objects, and the life of the process-wide handle list and data space.
#include "objects/linked_object.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace qumel {
namespace {

using Object = CQMLinkedObject;

/** An object that tells of its end. */
class Child : public CQMLinkedObject {
 public:
  Child(char const* name, std::string& log) : m_log(log) { SetObjectName(name); }
  ~Child() override {
    if (m_beforeEnd) m_beforeEnd();
    m_log += Name();
  }
  std::function<void()> m_beforeEnd;

 private:
  std::string& m_log;
};

/** A parent with children named a, b, c, ... */
class Tree : public ::testing::Test {
 protected:
  void Grow(int count) {
    for (int i = 0; i < count; ++i) {
      char const name[] = {static_cast<char>('a' + i), '\0'};
      m_children.push_back(new Child(name, m_log));
      m_parent->AddChildObject(m_children.back());
      m_children.back()->SetParentObject(m_parent.get());
    }
  }
  static std::string Names(Object const& parent) {
    std::string names;
    Object const* last = nullptr;
    for (Object* child = parent.GetFirstChildObject(); child != nullptr; child = child->GetNextObject()) {
      EXPECT_EQ(child->GetPreviousObject(), last);
      names += child->Name();
      last = child;
    }
    return names;
  }
  std::string Names() const { return Names(*m_parent); }

  std::string m_log;
  std::unique_ptr<Object> m_parent = std::make_unique<Object>();
  std::vector<Child*> m_children;
};

TEST_F(Tree, FindsChildrenAndSiblingsByNumber) {
  EXPECT_EQ(m_parent->GetNthChildObject(1), nullptr);
  EXPECT_EQ(m_parent->GetLastChildObject(), nullptr);
  Grow(3);
  EXPECT_EQ(m_parent->GetChildCount(), 3);
  EXPECT_EQ(m_parent->GetNthChildObject(0), nullptr);
  EXPECT_EQ(m_parent->GetNthChildObject(-1), nullptr);
  EXPECT_EQ(m_parent->GetNthChildObject(1), m_children[0]);
  EXPECT_EQ(m_parent->GetNthChildObject(3), m_children[2]);
  EXPECT_EQ(m_parent->GetNthChildObject(4), nullptr);
  EXPECT_EQ(m_children[1]->GetNthSiblingObject(-5), m_children[1]);
  EXPECT_EQ(m_children[1]->GetNthSiblingObject(2), m_children[2]);
  EXPECT_EQ(m_children[1]->GetNthSiblingObject(3), nullptr);
  EXPECT_EQ(m_children[1]->GetFirstSiblingObject(), m_children[0]);
  EXPECT_EQ(m_children[1]->GetLastSiblingObject(), m_children[2]);
  EXPECT_EQ(m_parent->GetLastChildObject(), m_children[2]);
}

TEST_F(Tree, AddingDoesNotSetTheParentAndAncestryDoesNotAddAChild) {
  Object child;
  m_parent->AddChildObject(&child);
  EXPECT_EQ(child.GetParentObject(), nullptr);
  Object grandchild;
  grandchild.SetParentObject(&child);
  EXPECT_EQ(child.GetChildCount(), 0);
  EXPECT_EQ(grandchild.GetCachedRootObject(), &child);
  child.SetParentObject(m_parent.get());
  EXPECT_EQ(grandchild.GetCachedRootObject(), &child) << "cached when the parent was set";
  EXPECT_EQ(grandchild.GetRootObject(), m_parent.get());
  EXPECT_EQ(grandchild.CacheRootObject(), m_parent.get());
}

TEST_F(Tree, ReleasesAChildAtEveryPlace) {
  struct Case {
    int children, released;
    char const* left;
    bool keepsPrevious, keepsNext;
  };
  constexpr Case kCases[] = {
      {1, 0, "", false, false},   {2, 0, "b", false, false}, {2, 1, "a", false, false},
      {3, 0, "bc", false, false}, {3, 1, "ac", true, true},  {3, 2, "ab", false, false},
      {4, 1, "acd", true, true},  {4, 2, "abd", true, true},
  };
  for (Case const& c : kCases) {
    SCOPED_TRACE(::testing::Message() << c.released << " of " << c.children);
    m_parent = std::make_unique<Object>();
    m_children.clear();
    Grow(c.children);
    Child* const child = m_children[c.released];
    child->ReleaseSelf();
    EXPECT_EQ(Names(), c.left);
    EXPECT_EQ(m_parent->GetChildCount(), c.children - 1);
    EXPECT_EQ(child->GetParentObject(), m_parent.get());
    EXPECT_EQ(child->GetPreviousObject() != nullptr, c.keepsPrevious);
    EXPECT_EQ(child->GetNextObject() != nullptr, c.keepsNext);
    child->ReleaseSelf();  // no longer a child: nothing to do
    EXPECT_EQ(Names(), c.left);
    delete child;
  }
}

TEST_F(Tree, ReleasingAStrangerDoesNothing) {
  Object stranger;
  m_parent->ReleaseChildObject(&stranger);
  m_parent->ReleaseChildObject(nullptr);
  Grow(3);
  m_parent->ReleaseChildObject(&stranger);
  EXPECT_EQ(Names(), "abc");
  EXPECT_EQ(m_parent->GetChildCount(), 3);
}

TEST_F(Tree, AReleasedInnerChildForgetsItsOldSiblingsInANewList) {
  Grow(3);
  Child* const inner = m_children[1];
  inner->ReleaseSelf();
  m_parent->DestroyChildren();
  Object other;
  other.AddChildObject(inner);
  EXPECT_EQ(Names(other), "b");
  EXPECT_EQ(inner->GetNextObject(), nullptr);
}

TEST_F(Tree, AdoptionKeepsTheOrderAndSetsTheParent) {
  Grow(3);
  Object other;
  auto* const first = new Child("x", m_log);
  other.AddChildObject(first);
  other.AdoptChildren(m_parent.get());
  other.AdoptChildren(nullptr);
  other.AdoptChildren(&other);
  EXPECT_EQ(Names(other), "xabc");
  EXPECT_EQ(other.GetChildCount(), 4);
  EXPECT_EQ(m_children[2]->GetParentObject(), &other);
  EXPECT_EQ(m_children[2]->GetCachedRootObject(), &other);
  EXPECT_EQ(Names(), "");
  EXPECT_EQ(m_parent->GetChildCount(), 0);
  other.ReleaseChildren(m_parent.get());
  EXPECT_EQ(Names(), "xabc");
  EXPECT_EQ(first->GetParentObject(), m_parent.get());
}

TEST_F(Tree, ChildrenLetGoLiveOn) {
  Grow(2);
  m_parent->ReleaseChildren(nullptr);
  EXPECT_EQ(m_parent->GetChildCount(), 0);
  m_parent.reset();
  EXPECT_EQ(m_log, "");
  for (Child* child : m_children) delete child;
}

TEST_F(Tree, DestroysFirstToLastAndLeavesTheCount) {
  Grow(3);
  m_parent->DestroyChildren();
  EXPECT_EQ(m_log, "abc");
  EXPECT_EQ(Names(), "");
  EXPECT_EQ(m_parent->GetChildCount(), 3);
  EXPECT_EQ(m_parent->UpdateChildCount(), 0);
  Grow(1);
  m_parent.reset();
  EXPECT_EQ(m_log, "abca");
}

TEST_F(Tree, ADyingChildMayReleaseItselfAndItsSiblings) {
  Grow(4);
  m_children[0]->m_beforeEnd = [&] {
    m_children[0]->ReleaseSelf();
    delete m_children[2];  // while it is still listed
  };
  m_parent.reset();
  EXPECT_EQ(m_log, "cabd");
}

TEST_F(Tree, AnObjectThatEndsLeavesTheListThatHoldsIt) {
  Grow(3);
  delete m_children[1];
  EXPECT_EQ(Names(), "ac");
  Object other;
  other.AddChildObject(m_children[0]);
  EXPECT_EQ(Names(), "c");
  EXPECT_EQ(Names(other), "a");
  m_parent->SetDestroyChildren(false);
  m_parent.reset();
  EXPECT_EQ(m_children[2]->GetParentObject(), nullptr);
  delete m_children[2];
  EXPECT_EQ(m_log, "bc");
}

TEST(LinkedObject, HandlesAreIssuedOnceAndEachAskingTakesAReference) {
  Object object;
  EXPECT_FALSE(object.ReleaseObjectHandle());
  Handle const handle = object.GetObjectHandle();
  EXPECT_EQ(object.GetObjectHandle(), handle);
  EXPECT_EQ(object.GetRefCount(), 2);
  EXPECT_EQ(Object::GetObject(handle), &object);
  EXPECT_EQ(Object::GetObject(0), nullptr);
  EXPECT_TRUE(object.ReleaseObjectHandle());
  EXPECT_EQ(object.GetRefCount(), 1);
}

TEST(LinkedObject, AHandleEndsWithItsObject) {
  Object const keeper;
  auto object = std::make_unique<Object>();
  Handle const handle = object->GetObjectHandle();
  EXPECT_EQ(Object::GetObject(handle), object.get());
  object.reset();
  EXPECT_EQ(Object::GetObject(handle), nullptr);
}

class Tagged : public CQMLinkedObject {
 public:
  static constexpr char const* kTypeTag = TypeTag::kDatum;
  Tagged() { SetTypeTag(kTypeTag); }
};

TEST(LinkedObject, ThroughAHandleOnlyTheRightClassIsFound) {
  Tagged tagged;
  Object plain;
  EXPECT_EQ(ObjectFromHandle<Tagged>(tagged.GetObjectHandle()), &tagged);
  EXPECT_EQ(ObjectFromHandle<Tagged>(plain.GetObjectHandle()), nullptr);
}

TEST(LinkedObject, TheProcessWideObjectsLiveFromTheFirstObjectToTheLast) {
  ASSERT_EQ(CQMObject::sm_lQMObjectCount, 0) << "a test left objects behind";
  EXPECT_EQ(Object::GetHandleList(), nullptr);
  EXPECT_EQ(Object::GetDataSpaceSize(), 0);
  EXPECT_EQ(Object::CacheDataSpace(), 0);
  EXPECT_EQ(Object::GetObject(1), nullptr);
  for (int life = 0; life < 2; ++life) {
    auto first = std::make_unique<Object>();
    EXPECT_EQ(CQMObject::sm_lQMObjectCount, 1);
    EXPECT_NE(Object::GetDataSpace(), nullptr);
    auto second = std::make_unique<Object>();
    first.reset();
    EXPECT_EQ(second->GetObjectHandle(), 1u);
    second.reset();
    EXPECT_EQ(Object::GetHandleList(), nullptr);
    EXPECT_EQ(Object::GetDataSpace(), nullptr);
  }
}

TEST(LinkedObject, AHandleOfAnEarlierListDoesNotDeleteALaterOne) {
  auto early = std::make_unique<Object>();
  Handle const handle = early->GetObjectHandle();
  Object::DestroyHandleList();
  Object late;
  EXPECT_EQ(late.GetObjectHandle(), handle) << "a list is made when one is needed";
  early.reset();
  EXPECT_EQ(Object::GetObject(handle), &late);
}

TEST(LinkedObject, ThreadsMakeAndDestroyTheFirstAndTheLast) {
  ASSERT_EQ(CQMObject::sm_lQMObjectCount, 0);
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 4; ++thread) {
    threads.emplace_back([] {
      for (int turn = 0; turn < 5000; ++turn) {
        Object object;
        Handle const handle = object.GetObjectHandle();
        if (handle == 0 || Object::GetObject(handle) != &object || Object::GetDataSpace() == nullptr) {
          ADD_FAILURE() << "turn " << turn << ": the object does not stand behind its handle " << handle;
          return;
        }
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(CQMObject::sm_lQMObjectCount, 0);
  EXPECT_EQ(Object::GetHandleList(), nullptr);
}

TEST(LinkedObject, ThreadsThatAskAtOnceGetOneHandle) {
  for (int turn = 0; turn < 200; ++turn) {
    Object object;
    Handle handles[2] = {};
    std::thread other([&] { handles[1] = object.GetObjectHandle(); });
    handles[0] = object.GetObjectHandle();
    other.join();
    ASSERT_EQ(handles[0], handles[1]);
    ASSERT_EQ(object.GetRefCount(), 2);
  }
}

}  // namespace
}  // namespace qumel
