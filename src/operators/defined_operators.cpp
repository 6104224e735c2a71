// Checking, compiling and running of host operators that have a body, and the callbacks.
#include "operators/defined_operators.h"

#include <new>
#include <span>

#include "base/stack_room.h"
#include "base/temporary_value.h"
#include "engine/expression.h"
#include "engine/operator_context.h"
#include "engine/operator_factory.h"

namespace qumel {

namespace {

thread_local int nestedBodies = 0;

/** Counts one level of nesting while it lives. */
class CQMNesting {
 public:
  CQMNesting() { ++nestedBodies; }
  ~CQMNesting() { --nestedBodies; }
  CQMNesting(CQMNesting const&) = delete;
  CQMNesting& operator=(CQMNesting const&) = delete;
  bool IsTooDeep() const { return nestedBodies > kMostNestedBodies || IsStackLow(); }
};

/** The letter of an operand in a signature. */
char SignatureLetter(CQMDatum const& operand) {
  if (operand.IsComplex()) return 'C';
  switch (OperandClassOf(operand.GetType())) {
    case EQMTypeClass::String: return 'S';
    case EQMTypeClass::Boolean: return 'B';
    case EQMTypeClass::DateTime: return 'D';
    case EQMTypeClass::Pointer: return 'K';
    case EQMTypeClass::Word: return 'P';
    default: return 'N';
  }
}

bool Accepts(EQMDataType declared, EQMDataType actual) {
  return declared == EQMDataType::Any || declared == actual ||
         OperandClassOf(declared) == OperandClassOf(actual);
}

}  // namespace

CQMOperator* MakeDefinedOperator(std::shared_ptr<SQMOperatorDefinition const> definition, CQMArena& arena) {
  if (definition->HasBody()) {
    if (definition->isRecursive) return arena.Make<CQMRecursiveOperator>(std::move(definition));
    return arena.Make<CQMExpressionOperator>(std::move(definition));
  }
  return definition->callback != nullptr ? arena.Make<CQMCallbackOperator>(std::move(definition)) : nullptr;
}

// ---- common ----

CQMDefinedOperator::CQMDefinedOperator(std::shared_ptr<SQMOperatorDefinition const> definition)
    : m_definition(std::move(definition)) {}

CQMOperator* CQMDefinedOperator::MakeTwin(CQMArena& arena) {
  CQMOperator* const twin = MakeDefinedOperator(m_definition, arena);
  twin->SetId(GetId());
  static_cast<CQMDefinedOperator&>(*twin).m_original = this;
  return twin;
}

long CQMDefinedOperator::CheckParameters() {
  if (long const code = CheckOperandCounts(); code != Error::None) return code;
  for (long i = 0; i < GetOperandCount(); ++i) {
    CQMDatum const* const operand = GetOperandByIndex(i);
    if (operand == nullptr) return Error::NotEnoughOperands;
    if (operand->IsPending()) return Error::NotDefined;
    if (!Accepts(m_definition->parameters[static_cast<std::size_t>(i)].type, operand->GetType())) {
      return Error::TypeMismatch;
    }
  }
  return Error::None;
}

std::unique_ptr<CQMExpression> CQMDefinedOperator::CompileBody(CQMExpression* original) {
  CQMOperatorContext& context = GetContext();
  auto body = std::make_unique<CQMExpression>(context);
  CQMNesting const nesting;
  if (nesting.IsTooDeep()) {
    body->SetErrorState(Error::OutOfMemory);
    return body;
  }
  std::span<CQMDatum* const> const operands = GetOperandList();
  if (original != nullptr) {
    body->SetCopyOf(*original, operands);
  } else {
    body->ShareDefinitions(*GetExpression());
    body->SetParsedExpression(m_definition, operands, false);
  }
  body->SetParentObject(GetExpression());
  return body;
}

/** Results of the operator's own expression are computed anew each time. A body that works on them may make
 * them complex, or arrays; they are given back as they were verified. Variables stay what they became, and so
 * does what a calling expression has lent. */
class CQMDefinedOperator::CQMLoan {
 public:
  explicit CQMLoan(CQMDefinedOperator& borrower) : m_borrower(borrower) {}
  ~CQMLoan() {
    for (long i = 0; i < m_borrower.GetOperandCount(); ++i) {
      CQMDatum& operand = m_borrower.Operand(i);
      EQMDataType const type = m_borrower.m_verifiedTypes[static_cast<std::size_t>(i)];
      bool const isChanged = operand.GetType() != type || operand.IsArray();
      bool const isResult = operand.GetOwningExpression() == m_borrower.GetExpression() && !operand.IsProxy();
      if (isChanged && isResult) operand.BecomeScalar(type);
    }
  }
  CQMLoan(CQMLoan const&) = delete;
  CQMLoan& operator=(CQMLoan const&) = delete;

 private:
  CQMDefinedOperator& m_borrower;
};

long CQMDefinedOperator::RunBody(CQMExpression& body, CQMCall& call) {
  CQMExpression& caller = *GetExpression();
  bool const wasReal = !caller.IsInComplexMode();
  CQMNesting const nesting;
  CQMLoan const loan(*this);
  caller.AcceptPromotions();
  long status = nesting.IsTooDeep() ? static_cast<long>(Error::OutOfMemory) : body.Resolve();
  call.MoveOn();
  status = caller.FollowCall(status, call.NextPosition());
  if (status == Status::Done) status = StoreBodyResult(body.GetResultDatum());
  bool const becameComplex = wasReal && caller.IsInComplexMode();
  return status == Status::Done && becameComplex ? static_cast<long>(Status::NeedsComplex) : status;
}

long CQMDefinedOperator::StoreBodyResult(CQMDatum* value) {
  bool const isNumeric = value != nullptr && OperandClassOf(value->GetType()) == EQMTypeClass::Numeric &&
                         value->GetType() != EQMDataType::Undefined;
  double const real = value == nullptr ? 0.0 : isNumeric ? value->Real() : CQMDatum::ConvertToDouble(value);
  switch (m_definition->returnType) {
    case EQMDataType::Number: StoreReal(real); break;
    case EQMDataType::Complex: {
      bool const inComplexMode = GetExpression()->IsInComplexMode();
      if (!inComplexMode && !GetContext().MayBecomeComplex()) return Status::NeedsComplex;
      Result().SetComplex(real, isNumeric ? value->Imaginary() : 0.0);
      // the position has moved on, so the body does not run again after the switch
      if (!inComplexMode) return Status::NeedsComplex;
      break;
    }
    case EQMDataType::String:
      Result().SetWholeText(value != nullptr && value->IsString() ? value->GetText() : std::string_view());
      break;
    case EQMDataType::Boolean:
      Result().SetBoolean(value != nullptr && value->IsBoolean() && value->BooleanByte() != 0);
      break;
    default: break;
  }
  return Status::Done;
}

std::vector<EQMDataType> CQMDefinedOperator::OperandTypes() const {
  std::vector<EQMDataType> types;
  types.reserve(static_cast<std::size_t>(GetOperandCount()));
  for (long i = 0; i < GetOperandCount(); ++i) types.push_back(Operand(i).GetType());
  return types;
}

// ---- with a body ----

CQMExpressionOperator::~CQMExpressionOperator() = default;

long CQMExpressionOperator::VerifyOperands() {
  if (long const code = CheckParameters(); code != Error::None) return code;
  // A mismatch is asked about again. What failed fails again while the operands are as they were, and trying
  // would double the work at every level of nesting.
  std::vector<EQMDataType> types = OperandTypes();
  bool const failedBefore = m_body != nullptr && m_body->GetErrorState() != Error::None;
  if (failedBefore && types == m_verifiedTypes) return m_body->GetErrorState();
  m_verifiedTypes = std::move(types);
  auto const* const original = static_cast<CQMExpressionOperator*>(GetOriginal());
  m_body = CompileBody(original != nullptr ? original->m_body.get() : nullptr);
  return m_body->GetErrorState();
}

long CQMExpressionOperator::Do(CQMCall& call) {
  auto& op = static_cast<CQMExpressionOperator&>(*call.Step().object);
  // an operand may have been a real number when the body was compiled, and complex now
  if (!op.m_body->IsInComplexMode() && call.HasComplexOperand()) op.m_body->EnterComplexMode();
  return op.RunBody(*op.m_body, call);
}

long CQMRecursiveOperator::VerifyOperands() {
  if (long const code = CheckParameters(); code != Error::None) return code;
  m_verifiedTypes = OperandTypes();
  return ComplexStatus();
}

long CQMRecursiveOperator::Do(CQMCall& call) {
  auto& op = static_cast<CQMRecursiveOperator&>(*call.Step().object);
  std::unique_ptr<CQMExpression> const body = op.CompileBody(nullptr);
  if (body->GetErrorState() == Error::None) return op.RunBody(*body, call);
  call.MoveOn();
  return body->GetErrorState();
}

// ---- callbacks ----

long CQMCallbackOperator::VerifyOperands() {
  long const code = CheckParameters();
  return code != Error::None ? code : ComplexStatus();
}

// A place in an expression has one handle in all its runs. It belongs to the original, and answers for the
// innermost call that has not returned.
long CQMCallbackOperator::CallHost() {
  auto& original = GetOriginal() != nullptr ? static_cast<CQMCallbackOperator&>(*GetOriginal()) : *this;
  if (original.m_place == nullptr) original.m_place = std::make_unique<CQMCallbackPlace>(original);
  CQMCallbackPlace& place = *original.m_place;
  if (m_handle == 0) m_handle = place.GetObjectHandle(GetContext().GetHandleGuard());
  if (m_handle == 0) return Error::OutOfMemory;  // the host could neither read parameters nor set a result
  CQMTemporaryValue<CQMCallbackOperator*> const answering(place.Answering(), this);
  return Definition().callback(m_handle);
}

long CQMCallbackOperator::Do(CQMCall& call) {
  return static_cast<CQMCallbackOperator&>(*call.Step().object).Run(call);
}

long CQMCallbackOperator::Run(CQMCall& call) {
  m_isOutOfMemory = false;
  Result().ClearValue();  // nothing of an earlier run shows when the callback sets no result
  CQMExpression& expression = *GetExpression();
  bool const wasReal = !expression.IsInComplexMode();
  expression.AcceptPromotions();
  long status = CallHost();
  if (status == Status::Done && m_isOutOfMemory) status = Error::OutOfMemory;
  // The position of a stop tells whose result the evaluation has. Otherwise the callback is not repeated,
  // whatever the status is.
  if (status != Status::Stop) call.MoveOn();
  status = expression.FollowCall(status, call.NextPosition());
  if (!wasReal) return status;
  if (Result().Imaginary() != 0.0) return StatusOfComplexResult(status);
  // a number again, of which this or an earlier run had set the imaginary part
  if (Result().IsComplex() && GetReturnType() == EQMDataType::Number) {
    double const real = Result().Real();
    Result().SetDatumType(EQMDataType::Number);
    Result().SetReal(real);
  }
  // a variable became complex, and with it the run
  bool const becameComplex = expression.IsInComplexMode();
  return status == Status::Done && becameComplex ? static_cast<long>(Status::NeedsComplex) : status;
}

/** What becomes of the callback's status where it gave a real evaluation a complex result. */
long CQMCallbackOperator::StatusOfComplexResult(long status) {
  if (status == Status::Done) return Status::NeedsComplex;
  if (status != Status::Stop) return status;
  // nothing is left to compute, so only the permission is asked for
  if (!GetContext().MayBecomeComplex()) return Error::ResultIsComplex;
  GetExpression()->EnterComplexMode();
  return status;
}

void CQMCallbackOperator::Report(long code) { GetContext().SetLastError(code); }

void CQMCallbackOperator::NoteOutOfMemory() {
  m_isOutOfMemory = true;
  Report(Error::OutOfMemory);
}

CQMDatum* CQMCallbackOperator::Parameter(long index) {
  CQMDatum* const operand = GetOperandByIndex(index);
  if (operand == nullptr) Report(Error::NotEnoughOperands);
  return operand;
}

char const* CQMCallbackOperator::GetParameterSignature() {
  m_signature.clear();
  for (long i = 0; i < GetOperandCount(); ++i) m_signature += SignatureLetter(Operand(i));
  return m_signature.c_str();
}

char CQMCallbackOperator::GetParameterType(long index) {
  CQMDatum const* const operand = Parameter(index);
  if (operand == nullptr) return TypeLetter::kNone;
  switch (operand->GetType()) {
    case EQMDataType::Number: return TypeLetter::kNumber;
    case EQMDataType::Complex: return TypeLetter::kComplex;
    case EQMDataType::Boolean: return TypeLetter::kBoolean;
    case EQMDataType::String:
    case EQMDataType::Text: return TypeLetter::kString;
    default: return TypeLetter::kNone;
  }
}

double CQMCallbackOperator::GetRealParameter(long index) {
  CQMDatum* const operand = Parameter(index);
  if (operand == nullptr) return 0.0;
  return operand->GetType() == EQMDataType::Real ? operand->Real() : CQMDatum::ConvertToDouble(operand);
}

double CQMCallbackOperator::GetImaginaryParameter(long index) {
  CQMDatum const* const operand = Parameter(index);
  return operand != nullptr ? operand->Imaginary() : 0.0;
}

bool CQMCallbackOperator::GetBooleanParameter(long index) {
  CQMDatum const* const operand = Parameter(index);
  if (operand == nullptr) return false;
  if (operand->IsBoolean()) return operand->BooleanByte() == 1;
  Report(Error::TypeMismatch);
  return false;
}

char const* CQMCallbackOperator::GetStringParameter(long index) {
  CQMDatum const* const operand = Parameter(index);
  if (operand == nullptr) return nullptr;
  if (!operand->IsString()) {
    Report(Error::TypeMismatch);
    return nullptr;
  }
  m_texts.resize(static_cast<std::size_t>(GetOperandCount()));
  return (m_texts[static_cast<std::size_t>(index)] = operand->GetText()).c_str();
}

bool CQMCallbackOperator::HasNumericResult() const {
  return Result().GetType() == EQMDataType::Number || Result().IsComplex();
}

long CQMCallbackOperator::SetNumericResult(double value) {
  if (!HasNumericResult()) return Error::TypeMismatch;
  StoreReal(value);
  return Error::None;
}

long CQMCallbackOperator::SetRealResult(double value) {
  if (!HasNumericResult()) return Error::TypeMismatch;
  Result().SetReal(value);
  return Error::None;
}

long CQMCallbackOperator::SetImaginaryResult(double value) {
  if (!HasNumericResult()) return Error::TypeMismatch;
  Result().SetComplex(Result().Real(), value);
  return Error::None;
}

long CQMCallbackOperator::SetBooleanResult(bool value) {
  if (!Result().IsBoolean()) return Error::TypeMismatch;
  Result().SetBoolean(value);
  return Error::None;
}

long CQMCallbackOperator::SetStringResult(char const* value) {
  if (!Result().IsString()) return Error::TypeMismatch;
  try {
    Result().SetWholeText(value != nullptr ? value : "");
    return Error::None;
  } catch (std::bad_alloc const&) {
    NoteOutOfMemory();
    return Error::OutOfMemory;
  }
}

}  // namespace qumel
