// Operator ids: the contract between the operator tables, postfix text, the factory and the resolvers.
#pragma once

namespace qumel {

namespace OpId {
// clang-format off
enum EQMOperatorId : long {
  RectangularComplex = 50, PolarComplex = 51,
  Assign = 101, AddAssign = 102, SubtractAssign = 103, MultiplyAssign = 104, DivideAssign = 105,
  ModuloAssign = 106, Append = 107, Exchange = 108,
  OrSign = 201, OrWord = 202, ExclusiveOrSign = 301, ExclusiveOrWord = 302, AndSign = 401, AndWord = 402,
  Implication = 501, Equivalence = 502, BitwiseOr = 601, BitwiseExclusiveOr = 701, BitwiseAnd = 801,
  Equal = 901, NotEqual = 902, Unequal = 903, LessThan = 1001, GreaterThan = 1002, LessOrEqual = 1003,
  GreaterOrEqual = 1004,
  Addition = 1101, Subtraction = 1102, Concatenation = 1103,
  Left = 1201, Right = 1202, Mid = 1203,
  Multiplication = 1301, ImpliedMultiplication = 1302, Division = 1303, Modulo = 1304, Factorial = 1305,
  Power = 1401, PowerStars = 1402,
  LooseMinus = 1501, LoosePlus = 1502, LooseNotSign = 1503, LooseNotWord = 1504, LooseComplement = 1505,
  Argument = 1801, Conjugate = 1802, RealPart = 1803, ImaginaryPart = 1804,
  Insert = 1901, Replace = 1902,
  Sine = 2001, Cosine = 2002, Tangent = 2003, Cotangent = 2004, Secant = 2005, Cosecant = 2006,
  Arcsine = 2011, Arccosine = 2012, Arctangent = 2013, Arccotangent = 2014, Arcsecant = 2015, Arccosecant = 2016,
  Hypersine = 2021, Hypercosine = 2022, Hypertangent = 2023, Hypercotangent = 2024, Hypersecant = 2025,
  Hypercosecant = 2026,
  Archypersine = 2031, Archypercosine = 2032, Archypertangent = 2033, Archypercotangent = 2034,
  Archypersecant = 2035, Archypercosecant = 2036,
  ShortArcsine = 2041, ShortArccosine = 2042, ShortArctangent = 2043, ShortArccotangent = 2044,
  ShortArcsecant = 2045, ShortArccosecant = 2046,
  ShortArchypersine = 2051, ShortArchypercosine = 2052, ShortArchypertangent = 2053,
  ShortArchypercotangent = 2054, ShortArchypersecant = 2055, ShortArchypercosecant = 2056,
  CommonLog = 2061, NaturalLog = 2062, Length = 2071,
  SquareRoot = 2101, CubeRoot = 2102, AbsoluteValue = 2111, Ceiling = 2112, Floor = 2113, IntegerPart = 2114,
  Fraction = 2115, Minimum = 2116, Maximum = 2117, NearestInteger = 2118,
  Random = 2121, RandomRange = 2122, Sign = 2123, Root = 2124, RandomSeed = 2125,
  Average = 2130, Sum = 2131, StandardDeviation = 2132, Variance = 2133, Range = 2134, GeometricMean = 2135,
  HarmonicMean = 2136, ArithmeticMean = 2137, RootMeanSquare = 2138, DiceRoll = 2139,
  Combinations = 2201, Permutations = 2202,
  TightMinus = 2501, TightPlus = 2502, TightNotSign = 2503, TightNotWord = 2504, TightComplement = 2505,
  PreIncrement = 2601, PostIncrement = 2602, PreDecrement = 2603, PostDecrement = 2604,
  ArrayIndex = 2701, Member = 2702,
  True = 2801, False = 2802, Pi = 2803, Phi = 2804, Euler = 2805,
  LastResult = 3001,
  Radians = 4001, Degrees = 4002, Grads = 4003, Millicles = 4004, Polar = 4010, Rect = 4011,
  Hex = 4020, Duodec = 4021, Decimal = 4022, Octal = 4023, Binary = 4024,
  Precision = 4030, RealOnly = 4031, AllowComplex = 4032, ForceComplex = 4033,
  If = 5001, Unless = 5002, Then = 5003, Else = 5004,
  While = 5011, Until = 5012, Always = 5013, Do = 5014, End = 5021, Next = 5022,
  Goto = 5031, LabelMark = 5032,
  Select = 5041, Case = 5042, Default = 5043, When = 5044, Is = 5045, Otherwise = 5046,
  Break = 5051, Continue = 5052, Return = 5061, Exit = 5062, SetError = 5071, ClearError = 5072,
  CosmicScope = 5201, GlobalScope = 5202, LocalScope = 5203, ComplexWord = 5204,
  NumberWord = 5211, StringWord = 5212, BooleanWord = 5213,
  // Substitutes without a token, made by optimisation only.
  Square = 8010, Cube = 8020, NumericConstant = 8030,

  LastStandard = 9999,
  FirstExternal = 10000,  // operators defined by hosts
};
// clang-format on
}  // namespace OpId

/** Mode words: they stand in a statement without a value of their own. */
constexpr bool IsModeOperator(long id) { return id >= 4000 && id <= 4099; }
/** Words of control flow, scope and declaration. */
constexpr bool IsKeywordOperator(long id) { return id >= 5000 && id <= 5999; }
/** Scope, declaration, control and mode words, the range that implied multiplication and hierarchy leave
 * alone. */
constexpr bool IsWordOperator(long id) { return id >= 4000 && id <= 5999; }

/** Whether a compiled operator leaves a value for the operators after it. "always" feeds its "do"; the type
 * words hand on the name that they declare. */
constexpr bool LeavesNothing(long id) {
  return IsModeOperator(id) || (IsKeywordOperator(id) && id != OpId::Always);
}
constexpr bool IsTypeWord(long id) { return id >= OpId::NumberWord && id <= OpId::BooleanWord; }

}  // namespace qumel
