// Names and references of the object base.
#include "objects/object.h"

#include <gtest/gtest.h>

#include <string>

namespace qumel {
namespace {

class Mortal : public CQMObject {
 public:
  explicit Mortal(bool& dead) : m_dead(dead) {}
  ~Mortal() override { m_dead = true; }

 private:
  bool& m_dead;
};

TEST(Object, SerialNumbersCountUpAndAreNotGivenBack) {
  long const next = CQMObject::sm_lNextObjectID;
  { CQMObject const gone; }
  CQMObject const object;
  EXPECT_EQ(object.GetSerialNumber(), next + 1);
  EXPECT_EQ(CQMObject::sm_lNextObjectID, next + 2);
  EXPECT_STREQ(object.GetTypeTag(), "__O__");
}

TEST(Object, NameIsOwnedAndNeverNull) {
  CQMObject object;
  EXPECT_EQ(object.Name(), "");
  EXPECT_STREQ(object.GetObjectName(), "");
  std::string text = "alpha";
  EXPECT_STREQ(object.SetObjectName(text.c_str()), "alpha");
  text = "other";
  char copy[8] = "xxxxxxx";
  EXPECT_EQ(object.GetObjectName(copy), copy);
  EXPECT_STREQ(copy, "alpha");
  EXPECT_STREQ(object.SetObjectName(object.GetObjectName() + 2), "pha") << "part of its own name";
  EXPECT_STREQ(object.SetObjectName(nullptr), "");
}

TEST(Object, ReferencesDestroyOnlyWhatIsMarked) {
  struct Case {
    char const* what;
    int reserved;
    bool mark;
    int released;
    bool dies;
  };
  constexpr Case kCases[] = {
      {"unmarked objects stay", 1, false, 3, false},   {"marking alone does nothing", 0, true, 0, false},
      {"references are left", 2, true, 1, false},      {"the last reference goes", 2, true, 2, true},
      {"a count of 0 triggers too", 0, true, 1, true},
  };
  for (Case const& c : kCases) {
    SCOPED_TRACE(c.what);
    bool dead = false;
    auto* const object = new Mortal(dead);
    for (int i = 0; i < c.reserved; ++i) object->ReserveRef();
    object->DeleteOnRefCountZero(c.mark);
    for (int i = 0; i < c.released; ++i) object->ReleaseRef();
    EXPECT_EQ(dead, c.dies);
    if (!dead) delete object;
  }
}

TEST(Object, CountStopsAtZeroAndResetClearsTheMark) {
  CQMObject object;
  object.ReleaseRef();
  EXPECT_EQ(object.GetRefCount(), 0);
  object.DeleteOnRefCountZero(true);
  object.ResetRefCount(2);
  object.ReleaseRef();
  object.ReleaseRef();  // would destroy it if the mark had stayed
  EXPECT_EQ(object.GetRefCount(), 0);
  EXPECT_FALSE(object.IsMarkedForDeletion());
}

}  // namespace
}  // namespace qumel
