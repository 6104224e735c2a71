// The setters of a context, and the polar form of its results.
#include <cmath>
#include <numbers>

#include "context/executor.h"

namespace qumel {

// ---- before Initialize only: the converter takes these values over ----

void CQMExecutor::SetCaseSensitive(bool value) {
  if (!m_initialized) m_caseSensitive = value;
}

void CQMExecutor::SetHierarchical(bool value) {
  if (!m_initialized) m_hierarchical = value;
}

void CQMExecutor::SetArrayBase(long base) {
  if (!m_initialized) m_arrayBase = base;
}

void CQMExecutor::SetInvertArrayIndices(bool value) {
  if (!m_initialized) m_settings.invertArrayIndices = value;
}

void CQMExecutor::SetAllowImpliedMult(bool value) {
  if (!m_initialized) m_settings.allowImpliedMultiplication = value;
}

void CQMExecutor::SetRadixMark(char mark) {
  if (!m_initialized) StoreAccepted(m_settings.radixMark, Accepted::kRadixMarks, mark);
}

void CQMExecutor::SetQuoteMark(char mark) {
  if (!m_initialized) StoreAccepted(m_settings.quoteMark, Accepted::kQuoteMarks, mark);
}

void CQMExecutor::SetBooleanTrue(char mark) {
  if (!m_initialized) StoreAccepted(m_settings.booleanTrue, Accepted::kBooleanTrues, mark);
}

// ---- at any time ----

void CQMExecutor::SetAllowComplexResults(bool allow) {
  m_settings.forceComplexResults = false;
  m_settings.allowComplexResults = allow;
}

void CQMExecutor::SetForceComplexResults(bool force) {
  m_settings.forceComplexResults = force;
  if (force) m_settings.allowComplexResults = false;
}

void CQMExecutor::SetNumberBase(char base) {
  StoreAccepted(m_settings.numberBase, Accepted::kNumberBases, base);
}

void CQMExecutor::SetAngleUnit(char unit) {
  if (StoreAccepted(m_settings.angleUnit, Accepted::kAngleUnits, unit)) m_angle = AngleFactorsOf(unit);
}

void CQMExecutor::SetCoordinateFormat(char format) {
  StoreAccepted(m_settings.coordinateFormat, Accepted::kCoordinateFormats, format);
}

void CQMExecutor::SetDefaultVariableScope(char scope) {
  // an unknown scope resets the setting, it is not ignored
  if (!StoreAccepted(m_settings.defaultVariableScope, Accepted::kVariableScopes, scope)) {
    m_settings.defaultVariableScope = Scope::kLocal;
  }
}

void CQMExecutor::SetFormattedResultPrecisionLimit(int digits) {
  if (digits >= 0) m_settings.precisionLimit = digits;
}

// ---- polar form ----

double CQMExecutor::GetRadiusOrdinate(double real, double imaginary) const {
  return std::sqrt(real * real + imaginary * imaginary);
}

double CQMExecutor::GetThetaOrdinate(double real, double imaginary) const {
  // Quadrants and the sign of a purely imaginary number are not told apart, on purpose.
  double const angle = real == 0.0 ? std::numbers::pi / 2.0 : std::atan(imaginary / real);
  return angle * m_angle.fromRadians;
}

}  // namespace qumel
