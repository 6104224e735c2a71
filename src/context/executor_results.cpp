// Result datums stored as the last result, and written as text by the settings.
#include <algorithm>
#include <cmath>
#include <cstring>

#include "base/number_base.h"
#include "base/number_text.h"
#include "context/executor.h"
#include "engine/result_view.h"

namespace qumel {

namespace {

/** No number of any base has more digits behind the point, or its text is cut long before. */
constexpr int kMostDigits = 1100;

}  // namespace

SQMLastResult CQMExecutor::GetLastResult() const {
  return {m_lastType, m_lastReal, m_lastImaginary, m_lastBoolean, m_lastString};
}

void CQMExecutor::StoreText(std::string_view text) {
  std::size_t const length = std::min(text.size(), kResultSize - 1);
  std::memmove(m_lastString, text.data(), length);
  m_lastString[length] = '\0';
}

double CQMExecutor::NumberOfBoolean(bool value) const {
  if (!value) return 0.0;
  return m_settings.booleanTrue == BooleanTrue::kOne ? 1.0 : -1.0;
}

// ---- one member for each kind of evaluation ----

void CQMExecutor::StoreResult(SQMResultView const& result) {
  m_lastType = TypeLetter::kNone;
  if (!result.hasValue) return;
  switch (result.type) {
    case EQMDataType::Undefined: break;
    case EQMDataType::Number: StoreNumber(TypeLetter::kNumber, result.real, 0.0); break;
    case EQMDataType::Complex: StoreNumber(TypeLetter::kComplex, result.real, result.imaginary); break;
    case EQMDataType::String:
    case EQMDataType::Text:
      StoreText(result.text);
      m_lastType = TypeLetter::kString;
      break;
    case EQMDataType::Boolean:
      m_lastBoolean = result.boolean;
      m_lastType = TypeLetter::kBoolean;
      break;
    default: StoreNumber(TypeLetter::kNumber, 0.0, 0.0); break;
  }
}

void CQMExecutor::StoreAsNumber(SQMResultView const& result) {
  if (!result.exists) return StoreNumber(TypeLetter::kNone, 0.0, 0.0);
  switch (result.type) {
    case EQMDataType::Number: return StoreNumber(TypeLetter::kNumber, result.real, 0.0);
    case EQMDataType::Complex: return StoreNumber(TypeLetter::kComplex, result.real, result.imaginary);
    case EQMDataType::String:
    case EQMDataType::Text:
      StoreText(result.text);
      return StoreNumber(TypeLetter::kNumber, ParseDouble(m_lastString), 0.0);
    case EQMDataType::Boolean: return StoreNumber(TypeLetter::kNumber, NumberOfBoolean(result.boolean), 0.0);
    default: return StoreNumber(TypeLetter::kNumber, 0.0, 0.0);
  }
}

void CQMExecutor::StoreAsComplex(SQMResultView const& result, double* imaginary) {
  StoreNumber(TypeLetter::kNone, 0.0, 0.0);
  if (!result.exists) return;
  bool reportsImaginary = true;
  switch (result.type) {
    case EQMDataType::Number: m_lastReal = result.real; break;
    case EQMDataType::Complex:
      m_lastReal = result.real;
      m_lastImaginary = result.imaginary;
      break;
    case EQMDataType::Boolean: m_lastReal = NumberOfBoolean(result.boolean); break;
    case EQMDataType::String:
    case EQMDataType::Text:
      m_lastReal = ParseDouble(std::string(result.text).c_str());
      reportsImaginary = false;
      break;
    default: reportsImaginary = false; break;
  }
  m_lastType = TypeLetter::kComplex;
  if (reportsImaginary && imaginary != nullptr) *imaginary = m_lastImaginary;
}

void CQMExecutor::StoreAsBoolean(SQMResultView const& result) {
  m_lastType = TypeLetter::kNone;
  m_lastBoolean = false;
  if (!result.exists) return;
  switch (result.type) {
    case EQMDataType::Number: m_lastBoolean = result.real != 0.0; break;
    case EQMDataType::Complex:
      m_lastBoolean = result.real != 0.0 || (m_settings.allowComplexResults && result.imaginary != 0.0);
      break;
    case EQMDataType::String:
    case EQMDataType::Text:
      StoreText(result.text);
      m_lastBoolean = m_lastString[0] != '\0';
      break;
    case EQMDataType::Boolean: m_lastBoolean = result.boolean; break;
    default: break;
  }
  m_lastType = TypeLetter::kBoolean;
}

void CQMExecutor::StoreAsString(SQMResultView const& result) {
  StoreText("");
  m_lastType = TypeLetter::kNone;
  switch (result.type) {
    case EQMDataType::Undefined: break;
    case EQMDataType::Number: m_lastType = TypeLetter::kNumber; break;
    case EQMDataType::Complex: m_lastType = TypeLetter::kComplex; break;
    case EQMDataType::Boolean: m_lastType = TypeLetter::kBoolean; break;
    default: m_lastType = TypeLetter::kString; break;
  }
  FormatResultString(result);
}

// ---- formatting ----

char* CQMExecutor::FormatResultString(SQMResultView const& result) {
  if (result.type == EQMDataType::Undefined) {
    m_lastReal = m_lastImaginary = 0.0;
    StoreText("");
    return m_lastString;
  }
  if (!result.hasValue) return m_lastString;
  switch (result.type) {
    case EQMDataType::Number:
      m_lastReal = result.real;
      m_lastImaginary = 0.0;
      StoreText(FormatNumber(m_lastReal));
      break;
    case EQMDataType::Complex:
      m_lastReal = result.real;
      m_lastImaginary = result.imaginary;
      StoreText(FormatComplex(m_lastReal, m_lastImaginary));
      break;
    case EQMDataType::Boolean:
      m_lastBoolean = result.boolean;
      m_lastReal = NumberOfBoolean(m_lastBoolean);
      m_lastImaginary = 0.0;
      StoreText(m_lastBoolean ? "true" : "false");
      break;
    case EQMDataType::String:
    case EQMDataType::Text:
      m_lastReal = m_lastImaginary = 0.0;
      StoreText(result.text);
      break;
    default: break;
  }
  return m_lastString;
}

std::string CQMExecutor::FormatNumber(double value) const {
  long const digits = std::min<int>(m_settings.precisionLimit, kMostDigits);
  if (m_settings.numberBase != NumberBase::kDecimal) {
    return NumberToBasedText(value, m_settings.numberBase, m_settings.radixMark, digits);
  }
  char text[kResultSize];
  std::size_t const length = FormatFixed(value, digits, text, sizeof text);
  if (m_settings.radixMark == RadixMark::kComma) std::replace(text, text + length, '.', ',');
  return {text, length};
}

std::string CQMExecutor::FormatComplex(double real, double imaginary) const {
  bool const isDecimal = m_settings.numberBase == NumberBase::kDecimal;
  // not a number shows in decimal texts only: other bases have no form for it
  if (imaginary == 0.0 || (!isDecimal && std::isnan(imaginary))) return FormatNumber(real);
  bool const isPolar = m_settings.coordinateFormat == CoordinateFormat::kPolar;
  double const first = isPolar ? GetRadiusOrdinate(real, imaginary) : real;
  double const second = isPolar ? GetThetaOrdinate(real, imaginary) : imaginary;
  return "( " + FormatNumber(first) + (isPolar ? " |/ " : " |_ ") + FormatNumber(second) + " )";
}

}  // namespace qumel
