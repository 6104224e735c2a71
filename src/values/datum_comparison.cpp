// Comparison of datums, and their conversion to doubles and time stamps.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

#include "values/datum.h"

namespace qumel {

namespace {

/** 1, 0 or -1; unordered values are equal. */
template <class Value>
int Order(Value a, Value b) {
  return (a > b ? 1 : 0) - (a < b ? 1 : 0);
}

constexpr long kNegative = 1, kZero = 2, kPositive = 3;
constexpr long kImaginaryWeight = 10;

long SignClass(double value) { return value < 0.0 ? kNegative : value == 0.0 ? kZero : kPositive; }

// What strcmp gives: the difference of the first bytes that differ, the end counting as 0.
int CompareTexts(std::string_view a, std::string_view b) {
  auto const [atA, atB] = std::mismatch(a.begin(), a.end(), b.begin(), b.end());
  int const byteA = atA != a.end() ? static_cast<unsigned char>(*atA) : 0;
  int const byteB = atB != b.end() ? static_cast<unsigned char>(*atB) : 0;
  return byteA - byteB;
}

int CompareStamps(SQMTimeStamp const& a, SQMTimeStamp const& b) {
  for (int i = 0; i < 3; ++i) {
    if (int const order = Order(a.date[i], b.date[i]); order != 0) return order;
  }
  for (int i = 0; i < 3; ++i) {
    if (int const order = Order(a.time[i], b.time[i]); order != 0) return order;
  }
  return Order(a.fraction, b.fraction);
}

}  // namespace

/** Copies what the storage has there, zeros for the rest; false when it has not all. */
bool CQMDatum::ReadAt(std::size_t offset, void* out, std::size_t size) const {
  CQMDatum const& storage = Storage();
  std::size_t const here =
      storage.m_value != nullptr ? static_cast<std::size_t>(m_current - storage.m_value) : 0;
  std::size_t const end = storage.m_value != nullptr ? storage.m_storageBytes : kInlineBytes;
  std::size_t const there = end > here + offset ? std::min(size, end - here - offset) : 0;
  std::memset(out, 0, size);
  std::memcpy(out, m_current + (there > 0 ? offset : 0), there);
  return there == size;
}

// ---- values of one type ----

template <class Value>
int CQMDatum::CompareAs(CQMDatum const& other) const {
  Value mine, others;
  ReadAt(0, &mine, sizeof mine);
  other.ReadAt(0, &others, sizeof others);
  return Order(mine, others);
}

template <class Field, std::size_t count>
int CQMDatum::CompareFields(CQMDatum const& other) const {
  std::array<Field, count> mine, others;
  ReadAt(0, mine.data(), sizeof mine);
  other.ReadAt(0, others.data(), sizeof others);
  auto const [a, b] = std::mismatch(mine.begin(), mine.end(), others.begin());
  return a == mine.end() ? 0 : Order(*a, *b);
}

// Pointers are told apart by a word that lies behind them, on purpose; a value too near the end of its
// storage to have one is equal to every other.
int CQMDatum::CompareDistantWord(CQMDatum const& other) const {
  constexpr std::size_t kDistance = 32;
  std::uint32_t mine, others;
  bool const isThere =
      ReadAt(kDistance, &mine, sizeof mine) && other.ReadAt(kDistance, &others, sizeof others);
  return isThere ? Order(mine, others) : 0;
}

int CQMDatum::CompareBytes(CQMDatum const& other) const {
  std::size_t const size = std::min(RoomAt(m_current), other.RoomAt(other.m_current));
  int const order = std::memcmp(m_current, other.m_current, size);
  return Order(order, 0);
}

int CQMDatum::CompareSameType(CQMDatum const& other) const {
  if (IsBetween(m_type, EQMDataType::Byte, EQMDataType::LastByte)) return CompareAs<std::int8_t>(other);
  if (IsBetween(m_type, EQMDataType::Short, EQMDataType::LastShort)) return CompareAs<std::int16_t>(other);
  if (IsBetween(m_type, EQMDataType::Int, EQMDataType::LastInt)) return CompareAs<std::int32_t>(other);
  constexpr std::size_t kDateFields = 3;
  switch (m_type) {
    case EQMDataType::Single: return CompareAs<float>(other);
    case EQMDataType::Number:
    case EQMDataType::Real: return CompareAs<double>(other);
    case EQMDataType::Complex: return Order(SignedMagnitude(), other.SignedMagnitude());
    case EQMDataType::String:
    case EQMDataType::Text: return CompareTexts(GetText(), other.GetText());
    case EQMDataType::Boolean:
      if (BooleanByte() == other.BooleanByte()) return 0;
      return BooleanByte() == 1 ? 1 : -1;
    case EQMDataType::Date: return CompareFields<std::int16_t, kDateFields>(other);
    case EQMDataType::Time: return CompareFields<std::uint16_t, kDateFields>(other);
    case EQMDataType::TimeStamp: {
      SQMTimeStamp mine, others;
      ReadAt(0, &mine, sizeof mine);
      other.ReadAt(0, &others, sizeof others);
      return CompareStamps(mine, others);
    }
    case EQMDataType::Pointer: return CompareDistantWord(other);
    default: return CompareBytes(other);
  }
}

// ---- values of any types ----

/** The magnitude of the value read as a complex number, negative where the real part is. */
double CQMDatum::SignedMagnitude() const {
  double parts[2];
  ReadAt(0, parts, sizeof parts);
  double const magnitude = std::sqrt(parts[0] * parts[0] + parts[1] * parts[1]);
  return parts[0] < 0.0 ? -magnitude : magnitude;
}

long CQMDatum::CompareValue(CQMDatum* other) {
  if (other == nullptr) return 0;
  if (m_type == other->m_type) return CompareSameType(*other);
  if (IsString() && other->IsString()) return 0;
  if (m_class != other->m_class) return other->m_elementSize > m_elementSize ? 1 : -1;
  switch (m_class) {
    case EQMTypeClass::Numeric: {
      double real;
      if (IsComplex()) {
        other->ReadAt(0, &real, sizeof real);
        return Order(SignedMagnitude(), real);
      }
      ReadAt(0, &real, sizeof real);
      return Order(real, other->SignedMagnitude());
    }
    case EQMTypeClass::DateTime: {
      SQMTimeStamp mine, others;
      ConvertToTimeStamp(this, &mine);
      ConvertToTimeStamp(other, &others);
      return CompareStamps(mine, others);
    }
    default: return 0;
  }
}

long CQMDatum::GetDatumComplexity() const {
  if (m_type != EQMDataType::Number && m_type != EQMDataType::Complex) return 0;
  return kImaginaryWeight * SignClass(Imaginary()) + SignClass(Real());
}

// ---- conversion ----

double CQMDatum::ConvertToDouble(CQMDatum* datum) {
  if (datum == nullptr) return 0.0;
  auto const read = [datum]<class Value>(Value value) {
    datum->ReadAt(0, &value, sizeof value);
    return static_cast<double>(value);
  };
  EQMDataType const type = datum->m_type;
  if (IsBetween(type, EQMDataType::Byte, EQMDataType::LastByte)) return read(std::int8_t{});
  if (IsBetween(type, EQMDataType::Short, EQMDataType::LastShort)) return read(std::int16_t{});
  if (IsBetween(type, EQMDataType::Int, EQMDataType::LastInt)) return read(std::int32_t{});
  switch (type) {
    case EQMDataType::Single: return read(float{});
    case EQMDataType::Number:
    case EQMDataType::Complex: return read(double{});
    case EQMDataType::Boolean: return datum->BooleanByte() != 0 ? 1.0 : 0.0;
    default: return 0.0;
  }
}

void CQMDatum::ConvertToTimeStamp(CQMDatum* datum, SQMTimeStamp* stamp) {
  if (stamp == nullptr) return;
  *stamp = {};
  if (datum == nullptr) return;
  switch (datum->m_type) {
    case EQMDataType::Date: datum->ReadAt(0, stamp->date, sizeof stamp->date); break;
    case EQMDataType::Time: datum->ReadAt(0, stamp->time, sizeof stamp->time); break;
    case EQMDataType::TimeStamp: datum->ReadAt(0, stamp, sizeof *stamp); break;
    default: break;
  }
}

}  // namespace qumel
