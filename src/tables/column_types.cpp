// The table of column types, and the text forms and orders that it names.
#include "tables/column_types.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <limits>

#include "base/number_text.h"
#include "tables/text_hash.h"

namespace qumel {

namespace {

template <class T>
T Load(void const* atom, std::size_t index = 0) {
  T value;
  std::memcpy(&value, static_cast<std::byte const*>(atom) + index * sizeof(T), sizeof(T));
  return value;
}

template <class T>
void Store(std::byte* atom, T value, std::size_t index = 0) {
  std::memcpy(atom + index * sizeof(T), &value, sizeof(T));
}

// ---- reading integers ----

constexpr bool IsBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
constexpr bool IsDigit(char c) { return c >= '0' && c <= '9'; }

/** Reads a text from left to right as the scanning functions of C do, with every result defined: a signed
 * number out of range is the nearest 32-bit one, an unsigned one the largest, and narrower types keep the low
 * bits. */
class Scanner {
 public:
  static constexpr int kAnyWidth = std::numeric_limits<int>::max();

  explicit Scanner(char const* text) : m_next(text) {}

  /** Skips blanks and reads a number of at most width characters, its sign included. */
  bool Read(int width) {
    SkipBlanks();
    m_negative = *m_next == '-';
    if (*m_next == '-' || *m_next == '+') {
      ++m_next;
      --width;
    }
    char const* const digits = m_next;
    m_magnitude = 0;
    for (; width > 0 && IsDigit(*m_next); ++m_next, --width)
      m_magnitude = std::min(m_magnitude * 10 + (*m_next - '0'), kBeyond);
    return m_next != digits;
  }
  void SkipBlanks() {
    while (IsBlank(*m_next)) ++m_next;
  }
  bool SkipMark(char mark) {
    if (*m_next != mark) return false;
    ++m_next;
    return true;
  }

  std::int32_t Signed() const {
    using Limits = std::numeric_limits<std::int32_t>;
    std::int64_t const value = m_negative ? -m_magnitude : m_magnitude;
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(value, Limits::min(), Limits::max()));
  }
  std::uint32_t Unsigned() const {
    if (m_magnitude == kBeyond) return std::numeric_limits<std::uint32_t>::max();
    auto const value = static_cast<std::uint32_t>(m_magnitude);
    return m_negative ? 0 - value : value;
  }

 private:
  static constexpr std::int64_t kBeyond = std::int64_t{1} << 32;
  char const* m_next;
  bool m_negative = false;
  std::int64_t m_magnitude = 0;
};

void ParseCharacter(char const* text, std::byte* atom) { Store(atom, *text); }

template <class Stored>
void ParseSigned(char const* text, std::byte* atom) {
  Scanner scanner(text);
  if (scanner.Read(Scanner::kAnyWidth)) Store(atom, static_cast<Stored>(scanner.Signed()));
}

template <class Stored>
void ParseUnsigned(char const* text, std::byte* atom) {
  Scanner scanner(text);
  if (scanner.Read(Scanner::kAnyWidth)) Store(atom, static_cast<Stored>(scanner.Unsigned()));
}

// ---- reading other values ----

void ParseSmallReal(char const* text, std::byte* atom) { Store(atom, ParseSingle(text)); }

void ParseReal(char const* text, std::byte* atom) { Store(atom, ParseDouble(text)); }

void ParseBoolean(char const* text, std::byte* atom) {
  constexpr std::string_view kTrue = "TtYy1";
  Store(atom, static_cast<char>(*text != '\0' && kTrue.find(*text) != std::string_view::npos));
}

void ParseNothing(char const*, std::byte*) {}

// ---- dates and times ----

/** The order in which the fields of a text are kept, and the mark between them. */
struct SQMFields {
  std::array<std::size_t, 3> words;
  char mark;
};
constexpr SQMFields kDateFields{{1, 2, 0},
                                '/'};  // the last field first: comparing word by word then orders by it
constexpr SQMFields kTimeFields{{0, 1, 2}, ':'};
constexpr SQMFields kTimeFieldsOfStamp{{3, 4, 5}, ':'};
constexpr std::size_t kFractionWord = 3;  // of a time stamp, in words of 32 bits

/** Stores fields of at most two characters until one is missing. */
bool ReadFields(Scanner& scanner, SQMFields const& fields, std::byte* atom) {
  constexpr int kWidth = 2;
  bool isFirst = true;
  for (std::size_t const word : fields.words) {
    if (!isFirst && !scanner.SkipMark(fields.mark)) return false;
    if (!scanner.Read(kWidth)) return false;
    Store(atom, static_cast<std::int16_t>(scanner.Signed()), word);
    isFirst = false;
  }
  return true;
}

template <SQMFields const& fields>
void ParseFields(char const* text, std::byte* atom) {
  Scanner scanner(text);
  ReadFields(scanner, fields, atom);
}

void ParseTimeStamp(char const* text, std::byte* atom) {
  Scanner scanner(text);
  if (ReadFields(scanner, kDateFields, atom)) ReadFields(scanner, kTimeFieldsOfStamp, atom);
}

template <SQMFields const& fields>
void FormatFields(void const* atom, std::string& out) {
  bool isFirst = true;
  for (std::size_t const word : fields.words) {
    if (!isFirst) out += fields.mark;
    auto const value = Load<std::int16_t>(atom, word);
    if (value >= 0 && value <= 9) out += '0';
    out += std::to_string(value);
    isFirst = false;
  }
}

void FormatTimeStamp(void const* atom, std::string& out) {
  FormatFields<kDateFields>(atom, out);
  out += ' ';
  FormatFields<kTimeFieldsOfStamp>(atom, out);
}

// ---- showing other values ----

void FormatCharacter(void const* atom, std::string& out) {
  if (char const c = Load<char>(atom); c != '\0') out += c;
}

template <class Stored>
void FormatInteger(void const* atom, std::string& out) {
  out += std::to_string(Load<Stored>(atom));
}

template <class Stored>
void FormatReal(void const* atom, std::string& out) {
  constexpr long kPrecision = 6;
  char text[std::numeric_limits<double>::max_exponent10 + 16];
  out.append(text, FormatFixed(Load<Stored>(atom), kPrecision, text, sizeof text));
}

void FormatBoolean(void const* atom, std::string& out) { out += Load<char>(atom) != 0 ? "true" : "false"; }

void FormatText(void const* text, std::string& out) { out += static_cast<char const*>(text); }

void FormatNothing(void const*, std::string&) {}

// ---- orders ----

template <class T>
int Compare(T a, T b) {
  return (a > b) - (a < b);
}

template <class Stored>
int CompareAs(void const* a, void const* b) {
  return Compare(Load<Stored>(a), Load<Stored>(b));
}

template <std::size_t count>
int CompareWords(void const* a, void const* b) {
  for (std::size_t i = 0; i < count; ++i) {
    if (int const result = Compare(Load<std::int16_t>(a, i), Load<std::int16_t>(b, i)); result != 0)
      return result;
  }
  return 0;
}

int CompareTimeStamps(void const* a, void const* b) {
  constexpr std::size_t kFields = 6;
  if (int const result = CompareWords<kFields>(a, b); result != 0) return result;
  return Compare(Load<std::uint32_t>(a, kFractionWord), Load<std::uint32_t>(b, kFractionWord));
}

int CompareTexts(void const* a, void const* b) {
  if (a == nullptr || b == nullptr) return Compare(a != nullptr, b != nullptr);
  return Compare(std::strcmp(static_cast<char const*>(a), static_cast<char const*>(b)), 0);
}

template <std::size_t size>
std::uint64_t WordOfBytes(void const* atom) {
  return WordOf(std::string_view(static_cast<char const*>(atom), size));
}

std::uint64_t WordOfText(void const* text) { return WordOf(static_cast<char const*>(text)); }

template <class Stored>
constexpr SQMOrder kIntegers{CompareAs<Stored>, WordOfBytes<sizeof(Stored)>};
template <class Stored>
constexpr SQMOrder kReals{CompareAs<Stored>, nullptr};
constexpr SQMOrder kTexts{CompareTexts, WordOfText};
constexpr SQMOrder kThreeWords{CompareWords<3>, WordOfBytes<3 * sizeof(std::int16_t)>};
constexpr SQMOrder kTimeStamps{CompareTimeStamps, WordOfBytes<sizeof(SQMTimeStamp)>};
constexpr SQMOrder kAllEqual{[](void const*, void const*) { return 0; },
                             [](void const*) { return std::uint64_t{0}; }};

// ---- the table ----

// A fixed text declares its length; without a sensible one it takes the longest.
constexpr long kLongestDeclared = 32766, kUndeclaredTextSize = 32767;

struct SQMColumnTypeRow {
  std::int32_t first, last;  // type codes
  SQMColumnType type;
};

constexpr SQMColumnTypeRow kColumnTypes[] = {
    // codes size parse format order
    {0, 2, {1, ParseCharacter, FormatCharacter, kIntegers<std::int8_t>}},
    {3, 4, {1, ParseSigned<std::int8_t>, FormatCharacter, kIntegers<std::int8_t>}},
    {5, 5, {1, ParseUnsigned<std::uint8_t>, FormatCharacter, kIntegers<std::int8_t>}},
    {6, 7, {2, ParseSigned<std::int16_t>, FormatInteger<std::int16_t>, kIntegers<std::int16_t>}},
    {8, 8, {2, ParseUnsigned<std::uint16_t>, FormatInteger<std::uint16_t>, kIntegers<std::int16_t>}},
    {9, 10, {4, ParseSigned<std::int32_t>, FormatInteger<std::int32_t>, kIntegers<std::int32_t>}},
    {11, 11, {4, ParseUnsigned<std::uint32_t>, FormatInteger<std::uint32_t>, kIntegers<std::int32_t>}},
    {12, 13, {4, ParseSigned<std::int32_t>, FormatInteger<std::int32_t>, kIntegers<std::int32_t>}},
    {14, 14, {4, ParseUnsigned<std::uint32_t>, FormatInteger<std::uint32_t>, kIntegers<std::int32_t>}},
    {15, 15, {4, ParseSmallReal, FormatReal<float>, kReals<float>}},
    {16, 17, {8, ParseReal, FormatReal<double>, kReals<double>}},
    {18, 18, {8, ParseNothing, FormatNothing, kAllEqual}},
    {19, 19, {0, nullptr, FormatText, kTexts}},
    {20, 20, {1, ParseBoolean, FormatBoolean, kIntegers<std::int8_t>}},
    {21, 21, {sizeof(char*), nullptr, FormatText, kTexts}},
    {22, 22, {6, ParseFields<kDateFields>, FormatFields<kDateFields>, kThreeWords}},
    {23, 23, {6, ParseFields<kTimeFields>, FormatFields<kTimeFields>, kThreeWords}},
    {24, 24, {16, ParseTimeStamp, FormatTimeStamp, kTimeStamps}},
    {25, 25, {sizeof(void*), ParseNothing, FormatNothing, kIntegers<std::uintptr_t>}},
    {26, 26, {4, ParseNothing, FormatNothing, kAllEqual}},
};

static_assert(std::all_of(std::begin(kColumnTypes), std::end(kColumnTypes),
                          [](auto const& row) { return row.type.atomSize <= kLargestParsedAtom; }));

constexpr SQMColumnType kOtherType{1, ParseNothing, FormatNothing, kAllEqual};

}  // namespace

SQMColumnType const& ColumnTypeOf(EQMDataType type) {
  for (auto const& row : kColumnTypes) {
    if (Code(type) >= row.first && Code(type) <= row.last) return row.type;
  }
  return kOtherType;
}

long AtomSizeOf(EQMDataType type, long declaredLength) {
  if (long const size = ColumnTypeOf(type).atomSize; size != 0) return size;
  return declaredLength >= 1 && declaredLength <= kLongestDeclared ? declaredLength + 1 : kUndeclaredTextSize;
}

}  // namespace qumel
