// Checking, compiling and running of host operators that have a body, and the callbacks.
#include "engine/defined_operators.h"

#include <span>

#include "base/stack_room.h"
#include "engine/expression.h"
#include "engine/operator_context.h"

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

std::unique_ptr<CQMOperator> MakeDefinedOperator(std::shared_ptr<SQMOperatorDefinition const> definition) {
  if (definition->hasBody) {
    if (definition->isRecursive) return std::make_unique<CQMRecursiveOperator>(std::move(definition));
    return std::make_unique<CQMExpressionOperator>(std::move(definition));
  }
  if (definition->callback != nullptr) return std::make_unique<CQMCallbackOperator>(std::move(definition));
  return nullptr;
}

// ---- common ----

CQMDefinedOperator::CQMDefinedOperator(std::shared_ptr<SQMOperatorDefinition const> definition)
    : m_definition(std::move(definition)) {}

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

std::unique_ptr<CQMExpression> CQMDefinedOperator::CompileBody() {
  CQMOperatorContext& context = *GetContext();
  auto body = std::make_unique<CQMExpression>(context);
  CQMNesting const nesting;
  if (nesting.IsTooDeep()) {
    body->SetErrorState(Error::OutOfMemory);
    return body;
  }
  body->SetCosmicSymbolTable(context.GetCosmicSymbolTable());
  body->SetGlobalSymbolTable(context.GetGlobalSymbolTable());
  body->SetOperatorFactory(context.GetOperatorFactory());
  body->SetParsedExpression(m_definition, {GetOperandList(), static_cast<std::size_t>(GetOperandCount())},
                            false);
  // only now: each operator of the body looks for its root, past all bodies that this one is nested in
  body->SetParentObject(this);
  return body;
}

long CQMDefinedOperator::RunBody(CQMExpression& body, long& position) {
  CQMNesting const nesting;
  long status = nesting.IsTooDeep() ? static_cast<long>(Error::OutOfMemory) : body.Resolve();
  if (status == Status::Done) status = StoreBodyResult(body.GetResult());
  ++position;
  return status;
}

long CQMDefinedOperator::StoreBodyResult(CQMDatum* value) {
  bool const isNumeric = value != nullptr && OperandClassOf(value->GetType()) == EQMTypeClass::Numeric &&
                         value->GetType() != EQMDataType::Undefined;
  double const real = value == nullptr ? 0.0 : isNumeric ? value->Real() : CQMDatum::ConvertToDouble(value);
  switch (m_definition->returnType) {
    case EQMDataType::Number: StoreReal(real); break;
    case EQMDataType::Complex: {
      bool const inComplexMode = GetExpression()->IsInComplexMode();
      bool const isAllowed = GetContext()->GetAllowComplexResults() || GetContext()->GetForceComplexResults();
      if (!inComplexMode && !isAllowed) return Status::NeedsComplex;
      StoreComplex(real, isNumeric ? value->Imaginary() : 0.0);
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

// ---- with a body ----

CQMExpressionOperator::~CQMExpressionOperator() = default;

long CQMExpressionOperator::VerifyOperands() {
  if (long const code = CheckParameters(); code != Error::None) return code;
  // A mismatch is asked about again. What failed fails again while the operands are as they were, and trying
  // would double the work at every level of nesting.
  std::vector<EQMDataType> types;
  for (long i = 0; i < GetOperandCount(); ++i) types.push_back(Operand(i).GetType());
  bool const failedBefore = m_body != nullptr && m_body->GetErrorState() != Error::None;
  if (failedBefore && types == m_bodyTypes) return m_body->GetErrorState();
  m_bodyTypes = std::move(types);
  m_body = CompileBody();
  return m_body->GetErrorState();
}

long CQMExpressionOperator::DoOperation(long& position) {
  // an operand may have been a real number when the body was compiled, and complex now
  if (!m_body->IsInComplexMode() && HasComplexOperand()) m_body->EnterComplexMode();
  return RunBody(*m_body, position);
}

long CQMRecursiveOperator::VerifyOperands() {
  long const code = CheckParameters();
  return code != Error::None ? code : ComplexStatus();
}

long CQMRecursiveOperator::DoOperation(long& position) {
  std::unique_ptr<CQMExpression> const body = CompileBody();
  if (body->GetErrorState() == Error::None) return RunBody(*body, position);
  ++position;
  return body->GetErrorState();
}

// ---- callbacks ----

long CQMCallbackOperator::VerifyOperands() {
  long const code = CheckParameters();
  return code != Error::None ? code : ComplexStatus();
}

long CQMCallbackOperator::DoOperation(long& position) {
  if (m_handle == 0) {
    CQMOperatorContext* const context = GetContext();
    m_handle = GetObjectHandle(context != nullptr ? context->GetHandleGuard() : nullptr);
  }
  Result().ClearValue();  // nothing of an earlier run shows when the callback sets no result
  long const status = Definition().callback(m_handle);
  ++position;  // whatever the status is, the callback is not repeated
  if (GetExpression()->IsInComplexMode()) return status;
  if (Result().Imaginary() != 0.0)
    return status == Status::Done ? static_cast<long>(Status::NeedsComplex) : status;
  // a number again, of which this or an earlier run had set the imaginary part
  if (Result().IsComplex() && GetReturnType() == EQMDataType::Number) {
    double const real = Result().Real();
    Result().SetDatumType(EQMDataType::Number);
    Result().SetReal(real);
  }
  return status;
}

void CQMCallbackOperator::Report(long code) {
  if (CQMOperatorContext* const context = GetContext(); context != nullptr) context->SetLastError(code);
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
  StoreComplex(Result().Real(), value);
  return Error::None;
}

long CQMCallbackOperator::SetBooleanResult(bool value) {
  if (!Result().IsBoolean()) return Error::TypeMismatch;
  Result().SetBoolean(value);
  return Error::None;
}

long CQMCallbackOperator::SetStringResult(char const* value) {
  if (!Result().IsString()) return Error::TypeMismatch;
  Result().SetWholeText(value != nullptr ? value : "");
  return Error::None;
}

}  // namespace qumel
