// The letters by which hosts and expressions name result types, scopes and settings.
#pragma once

namespace qumel {

/** What an evaluation or a variable yields. */
namespace TypeLetter {
constexpr char kNumber = 'N', kComplex = 'C', kString = 'S', kBoolean = 'B', kNone = 'X';
}

/** Where a variable lives. */
namespace Scope {
constexpr char kCosmic = 'C';   // process-wide
constexpr char kGlobal = 'G';   // the context's own table
constexpr char kLocal = 'L';    // the expression; in lookups the context's table, then the process-wide one
constexpr char kDefault = 'D';  // what the context's default scope says
}  // namespace Scope

/** One-shot complexity of the next declared number. */
namespace Complexity {
constexpr char kDefault = 'D', kSimple = 'S', kComplex = 'C';
}

namespace AngleUnit {
constexpr char kDegrees = 'D', kGrads = 'G', kMillicles = 'M', kRadians = 'R';
}
namespace NumberBase {
constexpr char kBinary = 'B', kOctal = 'O', kDecimal = 'D', kDuodecimal = 'T', kHexadecimal = 'H';
}
namespace CoordinateFormat {
constexpr char kRectangular = 'R', kPolar = 'P';
}
namespace QuoteMark {
constexpr char kSingle = '1', kDouble = '2';
}
namespace RadixMark {
constexpr char kPoint = 'P', kComma = 'C';
}
namespace BooleanTrue {
constexpr char kOne = 'C', kMinusOne = 'N';
}

}  // namespace qumel
