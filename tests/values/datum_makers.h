// Datums of every kind for the tests, made and looked at in one line.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

#include "values/datum.h"

namespace qumel::testing {

using Longs = std::vector<long>;
using Doubles = std::vector<double>;

inline EQMDataType Type(int code) { return static_cast<EQMDataType>(code); }

inline double DoubleAt(void const* address) {
  double value;
  std::memcpy(&value, address, sizeof value);
  return value;
}

inline std::unique_ptr<CQMDatum> MakeNumber(double value) {
  auto datum = std::make_unique<CQMDatum>(EQMDataType::Number, "n");
  datum->SetReal(value);
  return datum;
}

inline std::unique_ptr<CQMDatum> MakeComplex(double real, double imaginary) {
  auto datum = std::make_unique<CQMDatum>(EQMDataType::Complex, "c");
  datum->SetComplex(real, imaginary);
  return datum;
}

inline std::unique_ptr<CQMDatum> MakeText(std::string_view text, EQMDataType type = EQMDataType::String) {
  auto datum = std::make_unique<CQMDatum>(type, "s");
  datum->SetText(text);
  return datum;
}

/** A datum of any type whose first bytes are those of value. */
template <class Value>
std::unique_ptr<CQMDatum> MakeRaw(int type, Value value) {
  auto datum = std::make_unique<CQMDatum>(Type(type), nullptr);
  std::memcpy(datum->Current(), &value,
              std::min<std::size_t>(sizeof value, static_cast<std::size_t>(datum->GetElementSize())));
  return datum;
}

inline std::unique_ptr<CQMDatum> MakeArray(EQMDataType type, Longs const& extents, long base = 0,
                                           bool invert = false) {
  auto datum = std::make_unique<CQMDatum>(type, "a");
  datum->SetArrayBase(base);
  datum->SetInvertArrayIndices(invert);
  EXPECT_EQ(datum->SetIsArray(extents), Error::None);
  return datum;
}

}  // namespace qumel::testing
