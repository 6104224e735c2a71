// Variables of hosts through the exported interface: one table of kinds drives every member of the family.
#include <array>
#include <atomic>
#include <cstring>
#include <functional>
#include <thread>
#include <vector>

#include "api/interface_test.h"

namespace qumel::testing {

namespace {

constexpr long kAlreadyExists = 3070, kTypeMismatch = 3090, kIndexOutOfBounds = 3210, kInUse = 3440;

#define NO_MORE -1, -1, -1, -1

/** The functions of one kind, on sample values: sample(0) and sample(1) differ, and both differ from an empty
 * value. Values are compared as texts. */
struct Kind {
  char const* title;
  char letter;
  char const* emptyValue;
  std::array<char const*, 2> samples;
  std::function<Handle(char, char const*, int)> create;
  std::function<bool(char, char const*, void*)> link;
  std::function<bool(char, char const*, int)> set;
  std::function<bool(Handle, int)> setByHandle;
  std::function<std::string(char, char const*)> get;
  std::function<std::string(Handle)> getByHandle;
  std::function<Handle(char, char const*, long, long, long)> createArray;
  std::function<bool(char, char const*, void*, long)> linkArray;
  std::function<bool(char, char const*, int, long, long, long)> setElement;
  std::function<bool(Handle, int, long, long, long)> setElementByHandle;
  std::function<std::string(char, char const*, long, long, long)> getElement;
  std::function<std::string(Handle, long, long, long)> getElementByHandle;
};

std::string Text(double value) { return std::to_string(value); }
std::string Text(bool value) { return value ? "true" : "false"; }
std::string Text(char const* value) { return value != nullptr ? value : "(null)"; }
std::string Text(double real, double imaginary) { return Text(real) + " " + Text(imaginary); }

constexpr double kNumbers[] = {1.5, -2.25};
constexpr bool kBooleans[] = {true, true};
constexpr char const* kTexts[] = {"one", "two words"};
constexpr long kTextLength = 16;

std::vector<Kind> const& Kinds() {
  static std::vector<Kind> const kinds = {
      {"number",
       'N',
       "0.000000",
       {"1.500000", "-2.250000"},
       [](char s, char const* n, int i) { return qmCreateNumVar(s, n, kNumbers[i]); },
       [](char s, char const* n, void* m) { return qmLinkNumVar(s, n, static_cast<double*>(m)); },
       [](char s, char const* n, int i) { return qmSetNumVar(s, n, kNumbers[i]); },
       [](Handle h, int i) { return qmSetNumVarByHandle(h, kNumbers[i]); },
       [](char s, char const* n) { return Text(qmGetNumVarValue(s, n)); },
       [](Handle h) { return Text(qmGetNumVarValueByHandle(h)); },
       [](char s, char const* n, long d, long a, long b) { return qmCreateNumArray(s, n, d, a, b, NO_MORE); },
       [](char s, char const* n, void* m, long e) {
         return qmLinkNumArray(s, n, static_cast<double*>(m), 1, e, -1, NO_MORE);
       },
       [](char s, char const* n, int i, long d, long a, long b) {
         return qmSetNumArrayElement(s, n, kNumbers[i], d, a, b, NO_MORE);
       },
       [](Handle h, int i, long d, long a, long b) {
         return qmSetNumArrayElementByHandle(h, kNumbers[i], d, a, b, NO_MORE);
       },
       [](char s, char const* n, long d, long a, long b) {
         return Text(qmGetNumArrayElement(s, n, d, a, b, NO_MORE));
       },
       [](Handle h, long d, long a, long b) {
         return Text(qmGetNumArrayElementByHandle(h, d, a, b, NO_MORE));
       }},
      {"complex",
       'C',
       "0.000000 0.000000",
       {"1.500000 -2.250000", "-2.250000 1.500000"},
       [](char s, char const* n, int i) { return qmCreateComplexVar(s, n, kNumbers[i], kNumbers[1 - i]); },
       [](char s, char const* n, void* m) { return qmLinkComplexVar(s, n, static_cast<double*>(m)); },
       [](char s, char const* n, int i) { return qmSetComplexVar(s, n, kNumbers[i], kNumbers[1 - i]); },
       [](Handle h, int i) { return qmSetComplexVarByHandle(h, kNumbers[i], kNumbers[1 - i]); },
       [](char s, char const* n) {
         double re = 9, im = 9;
         qmGetComplexVarValue(s, n, &re, &im);
         return Text(re, im);
       },
       [](Handle h) {
         double re = 9, im = 9;
         qmGetComplexVarValueByHandle(h, &re, &im);
         return Text(re, im);
       },
       [](char s, char const* n, long d, long a, long b) {
         return qmCreateComplexArray(s, n, d, a, b, NO_MORE);
       },
       [](char s, char const* n, void* m, long e) {
         return qmLinkComplexArray(s, n, static_cast<double*>(m), 1, e, -1, NO_MORE);
       },
       [](char s, char const* n, int i, long d, long a, long b) {
         return qmSetComplexArrayElement(s, n, kNumbers[i], kNumbers[1 - i], d, a, b, NO_MORE);
       },
       [](Handle h, int i, long d, long a, long b) {
         return qmSetComplexArrayElementByHandle(h, kNumbers[i], kNumbers[1 - i], d, a, b, NO_MORE);
       },
       [](char s, char const* n, long d, long a, long b) {
         double re = 9, im = 9;
         qmGetComplexArrayElement(s, n, &re, &im, d, a, b, NO_MORE);
         return Text(re, im);
       },
       [](Handle h, long d, long a, long b) {
         double re = 9, im = 9;
         qmGetComplexArrayElementByHandle(h, &re, &im, d, a, b, NO_MORE);
         return Text(re, im);
       }},
      {"boolean",
       'B',
       "false",
       {"true", "true"},
       [](char s, char const* n, int i) { return qmCreateBoolVar(s, n, kBooleans[i]); },
       [](char s, char const* n, void* m) { return qmLinkBoolVar(s, n, static_cast<bool*>(m)); },
       [](char s, char const* n, int i) { return qmSetBoolVar(s, n, kBooleans[i]); },
       [](Handle h, int i) { return qmSetBoolVarByHandle(h, kBooleans[i]); },
       [](char s, char const* n) { return Text(qmGetBoolVarValue(s, n)); },
       [](Handle h) { return Text(qmGetBoolVarValueByHandle(h)); },
       [](char s, char const* n, long d, long a, long b) {
         return qmCreateBoolArray(s, n, d, a, b, NO_MORE);
       },
       [](char s, char const* n, void* m, long e) {
         return qmLinkBoolArray(s, n, static_cast<bool*>(m), 1, e, -1, NO_MORE);
       },
       [](char s, char const* n, int i, long d, long a, long b) {
         return qmSetBoolArrayElement(s, n, kBooleans[i], d, a, b, NO_MORE);
       },
       [](Handle h, int i, long d, long a, long b) {
         return qmSetBoolArrayElementByHandle(h, kBooleans[i], d, a, b, NO_MORE);
       },
       [](char s, char const* n, long d, long a, long b) {
         return Text(qmGetBoolArrayElement(s, n, d, a, b, NO_MORE));
       },
       [](Handle h, long d, long a, long b) {
         return Text(qmGetBoolArrayElementByHandle(h, d, a, b, NO_MORE));
       }},
      {"string",
       'S',
       "",
       {"one", "two words"},
       [](char s, char const* n, int i) { return qmCreateStrVar(s, n, kTextLength, kTexts[i]); },
       [](char s, char const* n, void* m) { return qmLinkStrVar(s, n, static_cast<char*>(m), kTextLength); },
       [](char s, char const* n, int i) { return qmSetStrVar(s, n, kTexts[i]); },
       [](Handle h, int i) { return qmSetStrVarByHandle(h, kTexts[i]); },
       [](char s, char const* n) { return Text(qmGetStrVarValue(s, n)); },
       [](Handle h) { return Text(qmGetStrVarValueByHandle(h)); },
       [](char s, char const* n, long d, long a, long b) {
         return qmCreateStrArray(s, n, kTextLength, d, a, b, NO_MORE);
       },
       [](char s, char const* n, void* m, long e) {
         return qmLinkStrArray(s, n, static_cast<char*>(m), kTextLength, 1, e, -1, NO_MORE);
       },
       [](char s, char const* n, int i, long d, long a, long b) {
         return qmSetStrArrayElement(s, n, kTexts[i], d, a, b, NO_MORE);
       },
       [](Handle h, int i, long d, long a, long b) {
         return qmSetStrArrayElementByHandle(h, kTexts[i], d, a, b, NO_MORE);
       },
       [](char s, char const* n, long d, long a, long b) {
         return Text(qmGetStrArrayElement(s, n, d, a, b, NO_MORE));
       },
       [](Handle h, long d, long a, long b) {
         return Text(qmGetStrArrayElementByHandle(h, d, a, b, NO_MORE));
       }},
  };
  return kinds;
}

/** What a getter answers after an error. */
std::string FailureOf(Kind const& kind) { return kind.letter == 'S' ? "(null)" : kind.emptyValue; }

class Variables : public InterfaceTest {
 protected:
  static void ExpectError(long code) {
    EXPECT_EQ(qmGetLastErrorID(), code);
    qmClearLastError();
  }
};

TEST_F(Variables, ScalarsOfEveryKindByNameAndHandleInEveryScope) {
  for (Kind const& kind : Kinds()) {
    for (char const scope : {'C', 'G', 'L'}) {
      SCOPED_TRACE(std::string(kind.title) + " " + scope);
      Handle const handle = kind.create(scope, "v", 0);
      ASSERT_NE(handle, 0U);
      EXPECT_EQ(kind.get(scope, "v"), kind.samples[0]);
      EXPECT_TRUE(kind.set(scope, "v", 1));
      EXPECT_EQ(kind.getByHandle(handle), kind.samples[1]);
      EXPECT_TRUE(kind.setByHandle(handle, 0));
      EXPECT_EQ(kind.get(scope, "v"), kind.samples[0]);
      EXPECT_EQ(qmGetVarType(scope, "v"), kind.letter);
      EXPECT_EQ(qmGetVarTypeByHandle(handle), kind.letter);
      EXPECT_TRUE(qmIsVar(scope, "v") && qmIsSymbol(scope, "v") && qmIsVarHandle(handle));
      EXPECT_FALSE(qmIsArray(scope, "v") || qmIsArrayHandle(handle));
      EXPECT_EQ(kind.create(scope, "v", 0), 0U);
      ExpectError(kAlreadyExists);
      // a scalar has no elements
      EXPECT_FALSE(kind.setElement(scope, "v", 1, 1, 0, -1));
      ExpectError(kIndexOutOfBounds);
      EXPECT_EQ(kind.getElementByHandle(handle, 1, 0, -1), FailureOf(kind));
      ExpectError(kIndexOutOfBounds);
      EXPECT_EQ(kind.get(scope, "v"), kind.samples[0]);
      EXPECT_EQ(qmDeleteVar(scope, "v"), kInUse);
      EXPECT_TRUE(qmReleaseVarHandle(handle));
      EXPECT_FALSE(qmReleaseVarHandle(handle)) << "a reference can be given back once";
      EXPECT_EQ(qmDeleteVar(scope, "v"), kNone);
      EXPECT_EQ(kind.get(scope, "v"), FailureOf(kind));
      ExpectError(kNotDefined);
      EXPECT_FALSE(kind.set(scope, "v", 0));
      ExpectError(kNotDefined);
      EXPECT_FALSE(kind.setByHandle(handle, 0));
      ExpectError(kNotDefined);
      EXPECT_EQ(qmDeleteVar(scope, "v"), kNotFound);
      qmClearLastError();
    }
  }
}

TEST_F(Variables, ArraysOfEveryKindByNameAndHandleInEveryScope) {
  for (Kind const& kind : Kinds()) {
    for (char const scope : {'C', 'G', 'L'}) {
      SCOPED_TRACE(std::string(kind.title) + " " + scope);
      Handle const handle = kind.createArray(scope, "v", 2, 3, 4);
      ASSERT_NE(handle, 0U);
      EXPECT_TRUE(qmIsArray(scope, "v") && qmIsArrayHandle(handle));
      EXPECT_EQ(kind.getElement(scope, "v", 2, 2, 3), kind.emptyValue);
      EXPECT_TRUE(kind.setElement(scope, "v", 0, 2, 2, 3));
      EXPECT_TRUE(kind.setElementByHandle(handle, 1, 2, 0, 1));
      EXPECT_EQ(kind.getElementByHandle(handle, 2, 2, 3), kind.samples[0]);
      EXPECT_EQ(kind.getElement(scope, "v", 2, 0, 1), kind.samples[1]);
      EXPECT_EQ(kind.getElement(scope, "v", 2, 0, 0), kind.emptyValue);
      constexpr long kBad[][3] = {{2, 3, 0}, {2, 0, 4}, {2, -1, 0}, {2, 0, -1}, {1, 0, -1},
                                  {3, 0, 0}, {7, 0, 0}, {0, 0, 0},  {2, -2, 0}, {2, 2147483647, 2147483647}};
      for (auto const& [dims, i1, i2] : kBad) {
        SCOPED_TRACE(std::to_string(dims) + ": " + std::to_string(i1) + ", " + std::to_string(i2));
        EXPECT_FALSE(kind.setElement(scope, "v", 0, dims, i1, i2));
        ExpectError(kIndexOutOfBounds);
        EXPECT_EQ(kind.getElementByHandle(handle, dims, i1, i2), FailureOf(kind));
        ExpectError(kIndexOutOfBounds);
      }
      // an array is no scalar
      EXPECT_EQ(kind.getByHandle(handle), FailureOf(kind));
      ExpectError(kIndexOutOfBounds);
      EXPECT_FALSE(kind.setByHandle(handle, 0));
      ExpectError(kIndexOutOfBounds);
      EXPECT_EQ(kind.getElement(scope, "v", 2, 0, 0), kind.emptyValue)
          << "a setter by handle stores nothing then";
      EXPECT_EQ(kind.createArray(scope, "v", 1, 3, -1), 0U);
      ExpectError(kAlreadyExists);
      EXPECT_TRUE(qmReleaseVarHandle(handle));
      EXPECT_EQ(qmDeleteVar(scope, "v"), kNone);
    }
  }
}

TEST_F(Variables, PartsOfComplexNumbersByNameAndHandle) {
  Handle const scalar = qmCreateComplexVar('G', "z", 1.0, 2.0);
  Handle const array = qmCreateComplexArray('G', "zs", 1, 2, -1, NO_MORE);
  struct Setter {
    char const* title;
    std::function<bool(double)> set;
    bool setsReal, isElement;
  };
  Setter const setters[] = {
      {"real", [](double x) { return qmSetRealVar('G', "z", x); }, true, false},
      {"imaginary", [](double x) { return qmSetImagVar('G', "z", x); }, false, false},
      {"real by handle", [=](double x) { return qmSetRealVarByHandle(scalar, x); }, true, false},
      {"imaginary by handle", [=](double x) { return qmSetImagVarByHandle(scalar, x); }, false, false},
      {"real of element", [](double x) { return qmSetRealArrayElement('G', "zs", x, 1, 1, -1, NO_MORE); },
       true, true},
      {"imaginary of element",
       [](double x) { return qmSetImagArrayElement('G', "zs", x, 1, 1, -1, NO_MORE); }, false, true},
      {"real of element by handle",
       [=](double x) { return qmSetRealArrayElementByHandle(array, x, 1, 1, -1, NO_MORE); }, true, true},
      {"imaginary of element by handle",
       [=](double x) { return qmSetImagArrayElementByHandle(array, x, 1, 1, -1, NO_MORE); }, false, true},
  };
  Kind const& complex = Kinds()[1];
  for (Setter const& setter : setters) {
    SCOPED_TRACE(setter.title);
    ASSERT_TRUE(qmSetComplexVar('G', "z", 1.0, 2.0));
    ASSERT_TRUE(qmSetComplexArrayElement('G', "zs", 1.0, 2.0, 1, 1, -1, NO_MORE));
    EXPECT_TRUE(setter.set(-7.0));
    std::string const changed = setter.setsReal ? Text(-7.0, 2.0) : Text(1.0, -7.0);
    EXPECT_EQ(complex.get('G', "z"), setter.isElement ? Text(1.0, 2.0) : changed);
    EXPECT_EQ(complex.getElement('G', "zs", 1, 1, -1), setter.isElement ? changed : Text(1.0, 2.0));
  }
  EXPECT_EQ(complex.getElement('G', "zs", 1, 0, -1), complex.emptyValue);
}

TEST_F(Variables, BadDimensionsMakeNoArray) {
  struct Case {
    long dims, e1, e2;
    long code;
  };
  constexpr Case kCases[] = {{7, 1, 1, kIndexOutOfBounds},
                             {0, 1, 1, kIndexOutOfBounds},
                             {2, 3, -1, kIndexOutOfBounds},
                             {1, 0, -1, kIndexOutOfBounds},
                             {-1, 3, 3, kIndexOutOfBounds},
                             {2, -5, 3, kIndexOutOfBounds},
                             {2, 2147483647, 2147483647, kOutOfMemory}};
  for (Kind const& kind : Kinds()) {
    for (Case const& c : kCases) {
      SCOPED_TRACE(std::string(kind.title) + " " + std::to_string(c.dims) + " " + std::to_string(c.e1));
      EXPECT_EQ(kind.createArray('G', kind.title, c.dims, c.e1, c.e2), 0U);
      ExpectError(c.code);
      EXPECT_FALSE(qmIsSymbol('G', kind.title));
    }
    ASSERT_NE(kind.createArray('G', kind.title, 2, 3, 4), 0U) << "extents behind the count are not looked at";
  }
}

TEST_F(Variables, AnOlderErrorStopsArraysAfterTheNameTestAndSpoilsAnswersOfSetters) {
  ASSERT_NE(qmCreateNumVar('G', "taken", 1.0), 0U);
  qmSetLastError(kDivisionByZero);
  EXPECT_EQ(qmCreateNumArray('G', "taken", 1, 3, -1, NO_MORE), 0U);
  EXPECT_EQ(qmGetLastErrorID(), kAlreadyExists) << "the name is tested first";
  qmSetLastError(kDivisionByZero);
  EXPECT_EQ(qmCreateNumArray('G', "fresh", 7, 3, -1, NO_MORE), 0U);
  EXPECT_EQ(qmGetLastErrorID(), kDivisionByZero) << "the dimensions are not tested then";
  EXPECT_FALSE(qmSetNumVar('G', "taken", 2.0));
  EXPECT_EQ(qmGetNumVarValue('G', "taken"), 2.0) << "stored, and read, all the same";
  EXPECT_EQ(qmGetLastErrorID(), kDivisionByZero);
  double re = 0, im = 0;
  qmGetComplexVarValue('G', "taken", &re, &im);
  EXPECT_EQ(qmGetLastErrorID(), kTypeMismatch) << "only this getter clears an older error";
  qmClearLastError();
  ASSERT_NE(qmCreateNumArray('G', "fresh", 1, 3, -1, NO_MORE), 0U);
  qmSetLastError(kDivisionByZero);
  EXPECT_FALSE(qmSetNumArrayElement('G', "fresh", 5.0, 1, 2, -1, NO_MORE));
  EXPECT_EQ(qmGetNumArrayElement('G', "fresh", 1, 2, -1, NO_MORE), 5.0);
  qmClearLastError();
}

TEST_F(Variables, ScalarSettersByNameStoreAfterAnError) {
  ASSERT_NE(qmCreateNumArray('G', "numbers", 1, 2, -1, NO_MORE), 0U);
  EXPECT_FALSE(qmSetNumVar('G', "numbers", 7.0));
  ExpectError(kIndexOutOfBounds);
  EXPECT_EQ(qmGetNumArrayElement('G', "numbers", 1, 0, -1, NO_MORE), 7.0);
  ASSERT_NE(qmCreateNumVar('G', "number", 1.0), 0U);
  EXPECT_FALSE(qmSetImagVar('G', "number", 3.0));
  ExpectError(kTypeMismatch);
  EXPECT_EQ(qmGetVarType('G', "number"), 'C') << "promoted by the imaginary part that was stored";
  double re = 0, im = 0;
  qmGetComplexVarValue('G', "number", &re, &im);
  EXPECT_EQ(Text(re, im), Text(1.0, 3.0));
  ASSERT_NE(qmCreateComplexArray('G', "complexes", 1, 2, -1, NO_MORE), 0U);
  EXPECT_FALSE(qmSetComplexVar('G', "complexes", 1.0, 2.0));
  ExpectError(kIndexOutOfBounds);
  qmGetComplexArrayElement('G', "complexes", &re, &im, 1, 0, -1, NO_MORE);
  EXPECT_EQ(Text(re, im), Text(0.0, 0.0)) << "never into an array";
  // a value wider than its storage does no harm
  ASSERT_NE(qmCreateBoolVar('G', "flag", true), 0U);
  ASSERT_NE(qmCreateStrVar('G', "text", 4, "abc"), 0U);
  for (char const* name : {"flag", "text"}) {
    EXPECT_FALSE(qmSetNumVar('G', name, 1e300));
    ExpectError(kTypeMismatch);
    EXPECT_FALSE(qmSetImagVar('G', name, 1e300));
    ExpectError(kTypeMismatch);
    EXPECT_FALSE(qmSetComplexVar('G', name, 1e300, 1e300));
    ExpectError(kTypeMismatch);
  }
  EXPECT_FALSE(qmSetStrVar('G', "number", "text"));
  ExpectError(kTypeMismatch);
}

TEST_F(Variables, ScopesOfNames) {
  Handle const sharedNumber = qmCreateNumVar('C', "x", 1.0);
  ASSERT_NE(sharedNumber, 0U);
  EXPECT_EQ(qmCreateNumVar('L', "x", 2.0), 0U);
  ExpectError(kAlreadyExists);
  EXPECT_EQ(qmCreateStrVar('G', "x", 8, "text"), 0U) << "texts look process-wide even in their own scope";
  ExpectError(kAlreadyExists);
  ASSERT_NE(qmCreateNumVar('G', "x", 3.0), 0U);
  EXPECT_EQ(qmGetNumVarValue('C', "x"), 1.0);
  EXPECT_EQ(qmGetNumVarValue('G', "x"), 3.0);
  EXPECT_EQ(qmGetNumVarValue('D', "x"), 3.0);
  ASSERT_NE(qmCreateStrVar('G', "s", 8, "own"), 0U);
  Handle const sharedText = qmCreateStrVar('C', "s", 8, "shared");
  ASSERT_NE(sharedText, 0U);
  EXPECT_STREQ(qmGetStrVarValue('G', "s"), "shared") << "reading texts begins with the process-wide ones";
  ASSERT_NE(qmCreateStrVar('G', "mine", 8, "mine"), 0U);
  EXPECT_STREQ(qmGetStrVarValue('C', "mine"), "mine") << "and goes on to the context's in every scope";
  EXPECT_FALSE(qmSetStrVar('C', "mine", "other"));
  ExpectError(kNotDefined);
  EXPECT_TRUE(qmSetStrVar('G', "s", "changed"));
  EXPECT_STREQ(qmGetStrVarValue('C', "s"), "shared");
  ASSERT_NE(qmCreatePrivateContext("other"), 0U);
  ASSERT_NE(qmSetContext("other", false), 0U);
  EXPECT_TRUE(qmIsVar('L', "x"));
  EXPECT_FALSE(qmIsVar('G', "x"));
  EXPECT_EQ(qmGetVarType('G', "x"), 'X');
  qmSetContext("test", false);
  for (Handle const handle : {sharedNumber, sharedText}) EXPECT_TRUE(qmReleaseVarHandle(handle));
  for (char const* name : {"x", "s"}) EXPECT_EQ(qmDeleteVar('C', name), kNone);
}

TEST_F(Variables, LinksOfEveryKindInEveryScopeReachTheHostsMemoryAndNoMore) {
  constexpr long kElements = 3;
  constexpr std::size_t kLargestElement = 16;
  constexpr char kGuard = '#';
  static_assert(kTextLength <= kLargestElement && 2 * sizeof(double) <= kLargestElement);
  for (Kind const& kind : Kinds()) {
    for (char const scope : {'C', 'G', 'L'}) {
      SCOPED_TRACE(std::string(kind.title) + " " + scope);
      std::size_t const element = kind.letter == 'B'   ? sizeof(bool)
                                  : kind.letter == 'N' ? sizeof(double)
                                                       : kLargestElement;
      alignas(double) char memory[2][(kElements + 1) * kLargestElement];
      for (std::size_t i = 0; i < 2; ++i) {
        std::size_t const used = i == 0 ? element : kElements * element;
        std::memset(memory[i], 0, used);
        std::memset(memory[i] + used, kGuard, sizeof memory[i] - used);
      }
      ASSERT_TRUE(kind.link(scope, "v", memory[0]));
      ASSERT_TRUE(kind.linkArray(scope, "a", memory[1], kElements));
      EXPECT_EQ(qmGetVarType(scope, "a"), kind.letter);
      EXPECT_TRUE(kind.set(scope, "v", 1));
      EXPECT_EQ(kind.get(scope, "v"), kind.samples[1]);
      EXPECT_TRUE(kind.setElement(scope, "a", 0, 1, 0, -1));
      EXPECT_TRUE(kind.setElement(scope, "a", 1, 1, kElements - 1, -1));
      std::memcpy(memory[1] + element, memory[1], element);
      EXPECT_EQ(kind.getElement(scope, "a", 1, 1, -1), kind.samples[0]) << "what the host writes is read";
      EXPECT_EQ(std::memcmp(memory[1] + (kElements - 1) * element, memory[0], element), 0);
      EXPECT_FALSE(kind.setElement(scope, "a", 0, 1, kElements, -1));
      ExpectError(kIndexOutOfBounds);
      EXPECT_EQ(memory[0][element], kGuard);
      EXPECT_EQ(memory[1][kElements * element], kGuard);
      for (char const* name : {"v", "a"}) EXPECT_EQ(qmDeleteVar(scope, name), kNone);
    }
  }
}

TEST_F(Variables, NumbersThatBecomeComplexLeaveTheHostsMemoryAndMoveTheElementsOfAnArray) {
  double number = 4.0;
  ASSERT_TRUE(qmLinkNumVar('G', "n", &number));
  ASSERT_NE(qmCreateNumArray('G', "a", 1, 4, -1, NO_MORE), 0U);
  qmEvalExpStr("a[0] = 1; a[1] = 2; a[2] = 3; a[3] = 4");
  qmSetAllowComplexResults(true);
  qmEvalExpStr("n = sqrt(-4); a[2] = sqrt(-9)");
  EXPECT_EQ(qmGetLastErrorID(), kNone);
  EXPECT_EQ(qmGetVarType('G', "n"), 'C');
  number = 7.0;
  Kind const& complex = Kinds()[1];
  EXPECT_EQ(complex.get('G', "n"), Text(0.0, 2.0)) << "whatever the host's memory holds";
  std::vector<std::string> elements;
  for (long i = 0; i < 4; ++i) elements.push_back(complex.getElement('G', "a", 1, i, -1));
  EXPECT_EQ(elements, (std::vector{Text(1.0, 2.0), Text(3.0, 4.0), Text(0.0, 3.0), Text(0.0, 0.0)}));
}

TEST_F(Variables, LinkedMemoryIsTheValue) {
  double number = 4.0;
  double pair[2] = {1.0, 2.0};
  bool flag = true;
  char text[kTextLength] = "host";
  double numbers[3] = {1.0, 2.0, 3.0};
  char texts[2][kTextLength] = {"first", "second"};
  ASSERT_TRUE(qmLinkNumVar('G', "n", &number));
  ASSERT_TRUE(qmLinkComplexVar('G', "z", pair));
  ASSERT_TRUE(qmLinkBoolVar('G', "b", &flag));
  ASSERT_TRUE(qmLinkStrVar('G', "t", text, kTextLength));
  ASSERT_TRUE(qmLinkNumArray('G', "a", numbers, 1, 3, -1, NO_MORE));
  ASSERT_TRUE(qmLinkStrArray('G', "ts", texts[0], kTextLength, 1, 2, -1, NO_MORE));
  EXPECT_EQ(number, 4.0) << "linking clears nothing";
  number = 5.0;
  EXPECT_EQ(qmEvalExpStrToNum("n * 2"), 10.0);
  EXPECT_EQ(qmEvalExpStrToNum("n = 7"), 7.0);
  EXPECT_EQ(number, 7.0);
  EXPECT_EQ(qmEvalExpStrToNum("a[2] + a[0]"), 4.0);
  qmEvalExpStr("a[1] = 9");
  EXPECT_EQ(numbers[1], 9.0);
  EXPECT_EQ(ToText("ts[1] + \"!\""), "second!");
  qmEvalExpStr("t = \"a text much longer than the memory of the host\"");
  EXPECT_EQ(std::string(text), "a text much lon") << "cut to the host's length, with its end";
  EXPECT_FALSE(qmLinkNumVar('G', "n", &number));
  ExpectError(kAlreadyExists);
  EXPECT_FALSE(qmLinkNumVar('G', "none", nullptr));
  EXPECT_NE(qmGetLastErrorID(), kNone);
  qmClearLastError();
  EXPECT_EQ(qmDeleteVar('G', "n"), kNone) << "linking takes no reference";
  EXPECT_EQ(number, 7.0);
}

TEST_F(Variables, HostileNamesLengthsAndHandles) {
  std::string const longest(128, 'n');
  std::string const tooLong(129, 'n');
  EXPECT_NE(qmCreateNumVar('G', longest.c_str(), 1.0), 0U);
  EXPECT_EQ(qmEvalExpStrToNum((longest + "+1").c_str()), 2.0);
  EXPECT_EQ(qmCreateNumVar('G', tooLong.c_str(), 1.0), 0U);
  EXPECT_NE(qmGetLastErrorID(), kNone);
  EXPECT_FALSE(qmIsSymbol('G', tooLong.c_str()) || qmIsSymbol('G', ""));
  qmClearLastError();
  for (char const* name : {static_cast<char const*>(nullptr), ""}) {
    EXPECT_EQ(qmCreateNumVar('G', name, 1.0), 0U);
    EXPECT_FALSE(qmSetNumVar('G', name, 1.0));
    EXPECT_EQ(qmGetNumVarValue('G', name), 0.0);
    EXPECT_EQ(qmGetVarHandle('G', name), 0U);
    EXPECT_EQ(qmGetVarType('G', name), 'X');
    EXPECT_FALSE(qmIsVar('G', name) || qmIsArray('G', name) || qmIsSymbol('G', name));
    EXPECT_EQ(qmDeleteVar('G', name), kNotFound);
  }
  qmClearLastError();
  for (long const length : {0L, -1L, 2147483647L}) {
    EXPECT_EQ(qmCreateStrVar('G', "s", length, "text"), 0U);
    EXPECT_NE(qmGetLastErrorID(), kNone);
    qmClearLastError();
  }
  EXPECT_NE(qmCreateStrVar('G', "s", 4, "long text"), 0U);
  EXPECT_STREQ(qmGetStrVarValue('G', "s"), "lon");
  for (Handle const handle : {Handle{0}, Handle{12345}, ~Handle{0}, qmGetCurrentContextHandle()}) {
    EXPECT_FALSE(qmIsVarHandle(handle) || qmIsArrayHandle(handle) || qmSetNumVarByHandle(handle, 1.0));
    EXPECT_EQ(qmGetVarTypeByHandle(handle), 'X');
    EXPECT_FALSE(qmReleaseVarHandle(handle));
    EXPECT_EQ(qmGetStrVarValueByHandle(handle), nullptr);
  }
}

TEST_F(Variables, ThreadsMayUseProcessWideNamesThatAnotherMakesAndDeletes) {
  constexpr int kRounds = 500;
  std::atomic<bool> isOver{false};
  auto const nameOf = [](Kind const& kind) { return std::string("shared_") + kind.title; };
  auto const use = [&](char const* context) {
    qmClearContext();
    qmCreatePrivateContext(context);
    qmSetContext(context, false);
    while (!isOver) {
      for (Kind const& kind : Kinds()) {
        std::string const name = nameOf(kind);
        EXPECT_FALSE(qmIsArray('C', name.c_str()));
        char const letter = qmGetVarType('C', name.c_str());
        EXPECT_TRUE(letter == kind.letter || letter == 'X') << letter;
        if (kind.letter == 'S') continue;  // a text is read in the variable's own memory
        std::string const value = kind.get('C', name.c_str());
        EXPECT_TRUE(value == kind.samples[0] || value == FailureOf(kind)) << value;
      }
      double const doubled = qmEvalExpStrToNum("2 * shared_number");
      EXPECT_TRUE(doubled == 2 * kNumbers[0] || qmGetLastErrorID() == kNotDefined);
      qmClearLastError();
    }
  };
  std::thread first(use, "first");
  std::thread second(use, "second");
  int deleted = 0;
  for (int i = 0; i < kRounds; ++i) {
    for (Kind const& kind : Kinds()) {
      std::string const name = nameOf(kind);
      if (Handle const handle = kind.create('C', name.c_str(), 0); handle != 0) qmReleaseVarHandle(handle);
      long const code = qmDeleteVar('C', name.c_str());
      EXPECT_TRUE(code == kNone || code == kInUse) << code;
      deleted += code == kNone;
      qmClearLastError();
    }
  }
  isOver = true;
  first.join();
  second.join();
  EXPECT_GT(deleted, 0);
  for (Kind const& kind : Kinds()) qmDeleteVar('C', nameOf(kind).c_str());
}

TEST_F(Variables, AReferencedVariableStaysUntilItsExpressionGoes) {
  Handle const handle = qmCreateNumVar('G', "x", 2.0);
  Handle const expression = qmParseExp("x * 3");
  ASSERT_NE(expression, 0U);
  EXPECT_TRUE(qmReleaseVarHandle(handle));
  EXPECT_FALSE(qmReleaseVarHandle(handle)) << "the expression's reference is not the host's to give back";
  EXPECT_EQ(qmDeleteVar('G', "x"), kInUse);
  EXPECT_EQ(qmEvalExpHndlToNum(expression), 6.0);
  qmDeleteExp(expression);
  EXPECT_EQ(qmDeleteVar('G', "x"), kNone);
}

}  // namespace

}  // namespace qumel::testing
