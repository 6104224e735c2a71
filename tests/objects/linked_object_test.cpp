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

TEST_F(Tree, AddingDoesNotSetTheParentAndAncestryDoesNotAddAChild) {
  Object child;
  m_parent->AddChildObject(&child);
  EXPECT_EQ(child.GetParentObject(), nullptr);
  Object grandchild;
  grandchild.SetParentObject(&child);
  EXPECT_EQ(grandchild.GetParentObject(), &child);
  EXPECT_EQ(child.GetChildCount(), 0);
}

TEST_F(Tree, ReleasesAChildAtEveryPlace) {
  struct Case {
    int children, released;
    char const* left;
  };
  constexpr Case kCases[] = {{1, 0, ""}, {2, 0, "b"}, {2, 1, "a"}, {3, 0, "bc"}, {3, 1, "ac"}, {3, 2, "ab"}};
  for (Case const& c : kCases) {
    SCOPED_TRACE(::testing::Message() << c.released << " of " << c.children);
    m_parent = std::make_unique<Object>();
    m_children.clear();
    Grow(c.children);
    Child* const child = m_children[c.released];
    for (int time = 0; time < 2; ++time) {  // the second time it is a stranger
      m_parent->ReleaseChildObject(child);
      EXPECT_EQ(Names(), c.left);
      EXPECT_EQ(m_parent->GetChildCount(), c.children - 1);
    }
    EXPECT_EQ(child->GetParentObject(), m_parent.get());
    Object other;
    other.AddChildObject(child);
    EXPECT_EQ(Names(other), child->Name());
  }
}

TEST_F(Tree, DestroysFirstToLast) {
  Grow(3);
  m_parent->DestroyChildren();
  EXPECT_EQ(m_log, "abc");
  EXPECT_EQ(Names(), "");
  Grow(1);
  m_parent.reset();
  EXPECT_EQ(m_log, "abca");
}

TEST_F(Tree, ADyingChildMayReleaseItselfAndItsSiblings) {
  Grow(4);
  m_children[0]->m_beforeEnd = [this, parent = m_parent.get()] {
    parent->ReleaseChildObject(m_children[0]);
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
