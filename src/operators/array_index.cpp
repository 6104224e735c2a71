// The array index: makes an array at its first use, and picks an element afterwards.
#include "operators/array_index.h"

#include <array>
#include <span>

#include "base/conversions.h"
#include "engine/operator_context.h"
#include "operators/declarations.h"

namespace qumel {

namespace {

SQMStep const* RefuseIndex(SQMStep const* step, SQMFrame& frame) {
  frame.position = step - frame.begin;
  frame.status = Error::IndexOutOfBounds;
  return nullptr;
}

}  // namespace

long CQMArrayIndexOperator::VerifyOperands() {
  if (long const code = CheckOperandCounts(); code != Error::None) return code;
  if (Operand(0).IsLiteral()) return Error::NotAnLValue;
  if (Operand(0).IsPending() && !m_hasAskedAgain) {
    // what stands behind the brackets, as a type word or an assignment, may declare the array
    m_hasAskedAgain = true;
    return Error::VerifyAgain;
  }
  for (long i = 1; i < GetOperandCount(); ++i) {
    if (long const code = CheckDefined(&Operand(i)); code != Error::None) return code;
    EQMDataType const type = VariableTypeFor(Operand(i).GetType());
    if (type != EQMDataType::Number && type != EQMDataType::Complex) return Error::NotANumber;
  }
  if (Operand(0).IsPending()) return DeclareName(*this, Operand(0), EQMDataType::Number);
  if (Array().GetType() == EQMDataType::Untyped) return Error::NotDefined;
  return VariableTypeFor(Array().GetType()) == EQMDataType::Undefined ? Error::TypeMismatch : Error::None;
}

long CQMArrayIndexOperator::Do(CQMCall& call) {
  std::array<double, kMostIndices> values;
  std::size_t count = 0;
  for (long i = 1; i < call.OperandCount(); ++i) values[count++] = call.Real(i);
  std::span<double const> const indices(values.data(), count);
  CQMDatum& array = call.Operand(0).FinalTarget();
  long element = 0;
  if (array.IsArray()) {
    element = array.GetElementPosition(indices);
    if (element < 0) return Error::IndexOutOfBounds;
  } else if (long const code = Dimension(array, call.Context(), indices); code != Error::None) {
    return code;
  }
  return call.Result().SetCurrentElement(element);
}

// One index of an array of numbers. A refused one leaves the element that was current.
template <EQMSource source>
SQMStep const* CQMArrayIndexOperator::Select(SQMStep const* step, SQMFrame& frame, double carried) {
  if (!step->element->SelectElement(TruncateToInt32(qumel::Operand<source>(step->first, carried)))) {
    return RefuseIndex(step, frame);
  }
  return GoOn(step + 1, frame, 0.0);
}

// The same where a slot of the program holds the address of the element.
template <EQMSource source>
SQMStep const* CQMArrayIndexOperator::SelectInSlot(SQMStep const* step, SQMFrame& frame, double carried) {
  std::byte* const element =
      step->element->FindInRow(TruncateToInt32(qumel::Operand<source>(step->first, carried)));
  if (element == nullptr) return RefuseIndex(step, frame);
  *reinterpret_cast<std::byte**>(step->result) = element;
  return GoOn(step + 1, frame, 0.0);
}

bool CQMArrayIndexOperator::MakeStep(CQMStepMaker& maker, SQMStep& step) {
  CQMDatum& array = Array();
  bool const isSimple = GetOperandCount() == 2 && array.GetDimensionCount() == 1 &&
                        array.GetType() == EQMDataType::Number && array.GetValue() != nullptr &&
                        Result().GetProxyTarget() == &array;
  SQMStepOperand index;
  if (!isSimple || !maker.FindNumber(1, false, index)) return false;
  array.SetBound();
  step.first = index.address;
  bool const isIndirect = index.source == EQMSource::Indirect;
  if (maker.IsDetached()) {
    step.element = &array;
    step.result = maker.PlaceOf(Result());
    return maker.Use({isIndirect ? &SelectInSlot<EQMSource::Indirect> : &SelectInSlot<EQMSource::Direct>});
  }
  step.element = &Result();
  return maker.Use({isIndirect ? &Select<EQMSource::Indirect> : &Select<EQMSource::Direct>});
}

// The last extent of a string is the length of its buffer. The memory of a host is as large as the host said.
long CQMArrayIndexOperator::Dimension(CQMDatum& array, CQMOperatorContext const& context,
                                      std::span<double const> extents) {
  long const dimensions = static_cast<long>(extents.size()) - (array.IsString() ? 1 : 0);
  if (!array.OwnsStorage() || dimensions > CQMDatum::kMaximumDimensions) return Error::IndexOutOfBounds;
  array.SetArrayBase(context.GetArrayBase());
  array.SetInvertArrayIndices(context.GetInvertArrayIndices());
  return array.SetIsArray(extents);
}

}  // namespace qumel
