// Settings of threads and contexts: what is accepted, when it acts, and where it goes.
#include "api/interface_test.h"

namespace qumel::testing {
namespace {

class Settings : public InterfaceTest {};

struct SQMLetterCase {
  char const* name;
  void (*set)(char);
  char (*get)();
  char initial;
  std::string accepted;
  bool actsOnContext;  // false: only a thread without a context can choose
  char afterUnknown;   // what an unknown letter leaves behind after the last accepted one; 0: that one
};

SQMLetterCase const kLetterCases[] = {
    {"angle unit", qmSetAngleUnit, qmGetAngleUnit, 'D', "GMRD", true, 0},
    {"output base", qmSetOutputBase, qmGetOutputBase, 'D', "BOTHD", true, 0},
    {"coordinate format", qmSetCoordinateFormat, qmGetCoordinateFormat, 'R', "PR", true, 0},
    {"default scope", qmSetDefaultVariableScope, qmGetDefaultVariableScope, 'L', "LCG", true, 'L'},
    {"quote mark", qmSetQuoteMark, qmGetQuoteMark, '2', "21", false, 0},
    {"radix mark", qmSetRadixMark, qmGetRadixMark, 'P', "PC", false, 0},
    {"boolean true", qmSetBooleanTrue, qmGetBooleanTrue, 'C', "CN", false, 0},
};

TEST_F(Settings, LettersOfAThreadWithoutAContext) {
  for (SQMLetterCase const& test : kLetterCases) {
    SCOPED_TRACE(test.name);
    qmClearContext();
    EXPECT_EQ(test.get(), test.initial);
    for (char const letter : test.accepted) {
      test.set(letter);
      EXPECT_EQ(test.get(), letter);
      for (char const unknown : {'x', 'X', '\0', ' ', '0', '\xff'}) {
        if (test.accepted.find(unknown) != std::string::npos) continue;
        test.set(unknown);
        EXPECT_EQ(test.get(), test.afterUnknown != 0 ? test.afterUnknown : letter);
        test.set(letter);
      }
    }
    qmClearContext();
    EXPECT_EQ(test.get(), test.initial);
  }
}

TEST_F(Settings, LettersOfACurrentContext) {
  for (SQMLetterCase const& test : kLetterCases) {
    SCOPED_TRACE(test.name);
    for (char const letter : test.accepted) {
      test.set(letter);
      EXPECT_EQ(test.get(), test.actsOnContext ? letter : test.initial);
    }
  }
  // what was refused did not reach the thread's copy either
  qmCreatePrivateContext("second");
  qmSetContext("second", false);
  EXPECT_EQ(qmGetQuoteMark(), '2');
  EXPECT_EQ(qmGetRadixMark(), 'P');
  EXPECT_EQ(qmGetBooleanTrue(), 'C');
}

TEST_F(Settings, PrecisionAndFlags) {
  EXPECT_EQ(qmGetFormattedResultPrecisionLimit(), 12);
  qmSetFormattedResultPrecisionLimit(0);
  EXPECT_EQ(ToText("2.6"), "3");
  qmSetFormattedResultPrecisionLimit(-1);
  EXPECT_EQ(qmGetFormattedResultPrecisionLimit(), 0);
  qmSetFormattedResultPrecisionLimit(3);
  EXPECT_EQ(ToText("2/3"), "0.667");

  EXPECT_TRUE(qmGetAllowImpliedMult());
  qmSetAllowImpliedMult(false);
  EXPECT_TRUE(qmGetAllowImpliedMult());
  EXPECT_FALSE(qmGetInvertArrayIndices());
  qmSetInvertArrayIndices(true);
  EXPECT_FALSE(qmGetInvertArrayIndices());

  UseContextWith("inverted", [] {
    qmSetAllowImpliedMult(false);
    qmSetInvertArrayIndices(true);
    EXPECT_FALSE(qmGetAllowImpliedMult());
    EXPECT_TRUE(qmGetInvertArrayIndices());
  });
  EXPECT_FALSE(qmGetAllowImpliedMult());
  EXPECT_TRUE(qmGetInvertArrayIndices());
  qmEvalExpStr("2 pi");
  EXPECT_NE(qmGetLastErrorID(), kNone);
}

TEST_F(Settings, ComplexFlagsAreCrossedOver) {
  EXPECT_FALSE(qmGetAllowComplexResults());
  EXPECT_FALSE(qmGetForceComplexResults());
  qmSetForceComplexResults();
  EXPECT_FALSE(qmGetForceComplexResults());
  EXPECT_TRUE(qmGetAllowComplexResults());
  qmSetAllowComplexResults(false);
  EXPECT_FALSE(qmGetAllowComplexResults());

  UseContextWith("forced", [] {
    qmSetForceComplexResults();
    EXPECT_TRUE(qmGetForceComplexResults());
    EXPECT_FALSE(qmGetAllowComplexResults());
  });
  EXPECT_TRUE(qmGetForceComplexResults());
  EXPECT_FALSE(qmGetAllowComplexResults());
  qmSetAllowComplexResults(true);  // clears the force flag
  EXPECT_FALSE(qmGetForceComplexResults());
  EXPECT_TRUE(qmGetAllowComplexResults());

  // with both flags in the copies, forcing wins and clears the allowance
  UseContextWith("both", [] {
    qmSetAllowComplexResults(true);
    qmSetForceComplexResults();
  });
  EXPECT_TRUE(qmGetForceComplexResults());
  EXPECT_FALSE(qmGetAllowComplexResults());
}

TEST_F(Settings, MarksGovernHowExpressionsAreReadAndWritten) {
  UseContextWith("comma", [] { qmSetRadixMark('C'); });
  EXPECT_EQ(ToText("1/2"), "0,500000000000");
  EXPECT_EQ(ToText("1,5*2"), "3,000000000000");
  UseContextWith("single", [] {
    qmSetQuoteMark('1');
    qmSetBooleanTrue('N');
  });
  EXPECT_EQ(ToText("'it\"s'"), "it\"s");
  EXPECT_EQ(qmEvalExpStrToNum("1 < 2"), -1.0);
}

TEST_F(Settings, AngleUnitsUseTheShortStoredFactors) {
  struct SQMUnit {
    char unit;
    char const* quarter;
  };
  for (auto const& [unit, quarter] : {SQMUnit{'D', "sin 90"}, {'G', "sin 100"}, {'M', "sin 250"}}) {
    SCOPED_TRACE(unit);
    qmSetAngleUnit(unit);
    EXPECT_DOUBLE_EQ(qmEvalExpStrToNum(quarter), 1.0);
  }
  qmSetAngleUnit('D');
  EXPECT_EQ(qmEvalExpStrToNum("asin 1"), 57.2957795131 * 1.5707963267948966);
  qmSetAngleUnit('G');
  EXPECT_EQ(qmEvalExpStrToNum("asin 1"), 63.6619772368 * 1.5707963267948966);
  qmSetAngleUnit('M');
  EXPECT_EQ(qmEvalExpStrToNum("asin 1"), 159.15494309189535 * 1.5707963267948966);
  qmSetAngleUnit('R');
  EXPECT_EQ(qmEvalExpStrToNum("asin 1"), 1.5707963267948966);
}

/** Angle unit, base, coordinates, allow, force, digits of the current context. */
std::string Live() {
  return std::string{qmGetAngleUnit(),
                     qmGetOutputBase(),
                     qmGetCoordinateFormat(),
                     qmGetAllowComplexResults() ? 'a' : '-',
                     qmGetForceComplexResults() ? 'f' : '-',
                     ' '} +
         std::to_string(qmGetFormattedResultPrecisionLimit());
}

TEST_F(Settings, WordsOfExpressionsChangeOneSettingEachAndForGood) {
  constexpr long kPrecisionIsNegative = 3470;
  struct SQMWord {
    char const* text;
    char const* live;
    long code = kNone;
  };
  // each row begins with what the row before it left behind
  constexpr SQMWord kWords[] = {
      {"radians", "RDR-- 12"},
      {"grads; 1/0", "GDR-- 12", kDivisionByZero},
      {"millicles", "MDR-- 12"},
      {"degrees sin 90", "DDR-- 12"},
      {"1/0; radians", "DDR-- 12", kDivisionByZero},
      {"radians; unknown+1", "DDR-- 12", kNotDefined},
      {"polar", "DDP-- 12"},
      {"hex", "DHP-- 12"},
      {"duodec", "DTP-- 12"},
      {"octal", "DOP-- 12"},
      {"binary", "DBP-- 12"},
      {"decimal; rect", "DDR-- 12"},
      {"precision 2.9", "DDR-- 2"},
      {"precision -1", "DDR-- 2", kPrecisionIsNegative},
      {"precision 3000000000", "DDR-- 2", kPrecisionIsNegative},
      {"precision -0.5", "DDR-- 0"},
      {"forcecomplex", "DDR-f 0"},
      {"realonly", "DDR-f 0"},
      {"allowcomplex", "DDRaf 0"},
      {"forcecomplex", "DDRaf 0"},
      {"realonly", "DDR-f 0"},
  };
  for (auto const& [text, live, code] : kWords) {
    SCOPED_TRACE(text);
    qmEvalExpStr(text);
    EXPECT_EQ(qmGetLastErrorID(), code);
    EXPECT_EQ(Live(), live);
  }
  EXPECT_NE(qmParseExp("grads; 1+1"), 0U);
  EXPECT_EQ(Live(), "DDR-f 0") << "words act when they run";
  // the host's own setters follow other rules
  qmSetAllowComplexResults(false);
  EXPECT_EQ(Live(), "DDR-- 0");
}

// Each kind of context takes over a part of the settings of the thread that makes it.
TEST_F(Settings, CopiesOfEachKindOfContext) {
  auto const choose = [] {
    qmClearContext();
    qmSetAllowImpliedMult(false);
    qmSetRadixMark('C');
    qmSetQuoteMark('1');
    qmSetBooleanTrue('N');
    qmSetInvertArrayIndices(true);
    qmSetOutputBase('H');
    qmSetAngleUnit('G');
    qmSetCoordinateFormat('P');
    qmSetAllowComplexResults(true);
    qmSetDefaultVariableScope('G');
    qmSetFormattedResultPrecisionLimit(3);
  };
  auto const expectCommon = [] {
    EXPECT_FALSE(qmGetAllowImpliedMult());
    EXPECT_EQ(qmGetRadixMark(), 'C');
    EXPECT_EQ(qmGetQuoteMark(), '1');
    EXPECT_EQ(qmGetBooleanTrue(), 'N');
    EXPECT_EQ(qmGetOutputBase(), 'H');
    EXPECT_EQ(qmGetAngleUnit(), 'G');
    EXPECT_EQ(qmGetCoordinateFormat(), 'P');
    EXPECT_TRUE(qmGetAllowComplexResults());
  };
  choose();
  ASSERT_NE(qmCreatePrivateContext("own"), 0U);
  ASSERT_NE(qmSetContext("own", false), 0U);
  expectCommon();
  EXPECT_TRUE(qmGetInvertArrayIndices());
  EXPECT_EQ(qmGetDefaultVariableScope(), 'G');
  EXPECT_EQ(qmGetFormattedResultPrecisionLimit(), 3);

  choose();
  ASSERT_NE(qmCreatePublicContext("all"), 0U);
  ASSERT_NE(qmSetContext("all", false), 0U);
  expectCommon();
  EXPECT_FALSE(qmGetInvertArrayIndices());
  EXPECT_EQ(qmGetDefaultVariableScope(), 'L');
  EXPECT_EQ(qmGetFormattedResultPrecisionLimit(), 12);
}

TEST_F(Settings, AFreshThreadForcesComplexResultsInPrivateContextsOnly) {
  OnAnotherThread([] {
    EXPECT_TRUE(qmGetForceComplexResults());
    qmCreatePrivateContext("own");
    qmCreatePublicContext("all");
    qmSetContext("own", false);
    EXPECT_TRUE(qmGetForceComplexResults());
    EXPECT_FALSE(qmGetAllowComplexResults());
    EXPECT_EQ(qmEvalExpStr("sqrt(0-4)"), 'C');
    EXPECT_EQ(qmGetLastImagResult(), 2.0);
    qmSetContext("all", false);
    EXPECT_FALSE(qmGetForceComplexResults());
    qmClearContext();
    EXPECT_FALSE(qmGetForceComplexResults());
  });
}

TEST_F(Settings, AContextThatBecomesCurrentOverwritesTheCopies) {
  qmSetAngleUnit('G');
  qmSetOutputBase('H');
  qmSetContext("Qumel", false);
  qmSetAngleUnit('R');
  qmSetContext("test", false);
  EXPECT_EQ(qmGetAngleUnit(), 'G');
  EXPECT_EQ(qmGetOutputBase(), 'H');
  qmCreatePrivateContext("heir");  // by the copies, which are those of "test"
  qmSetContext("heir", false);
  EXPECT_EQ(qmGetAngleUnit(), 'G');
  EXPECT_EQ(qmGetOutputBase(), 'H');
  qmSetContext("Qumel", false);
  qmSetAngleUnit('D');
}

}  // namespace
}  // namespace qumel::testing
