// Life, symbols and running of compiled expressions.
#include "engine/expression.h"

#include <algorithm>
#include <utility>

#include "base/temporary_value.h"
#include "engine/operator_factory.h"
#include "engine/resolver.h"
#include "tables/symbol_table.h"

namespace qumel {

namespace {

/** Marks a name as a variable that stands in the table of scope. */
void SettleSymbol(CQMDatum& name, char scope) {
  name.SetPending(false);
  name.SetTemporary(false);
  name.SetOwningExpression(nullptr);
  name.SetScope(scope);
}

}  // namespace

CQMExpression::CQMExpression(CQMOperatorContext& context) : m_context(context) { SetTypeTag(kTypeTag); }

CQMExpression::~CQMExpression() {
  ReleaseCompilation();
  ReleaseReferences(m_references);
}

// ---- compiling ----

long CQMExpression::SetParsedExpression(CQMItemList&& items, bool optimize) {
  ReleaseCompilation();
  m_definition.reset();
  m_ownItems = std::make_unique<CQMItemList>(std::move(items));
  m_items = m_ownItems.get();
  return Compile({}, optimize);
}

long CQMExpression::SetConvertedExpression(std::unique_ptr<SQMCompilation> converted) {
  ReleaseCompilation();
  m_compilation = std::move(converted);
  m_items = &m_compilation->items;
  return Compile({}, false);
}

long CQMExpression::SetParsedExpression(std::shared_ptr<SQMOperatorDefinition const> definition,
                                        std::span<CQMDatum* const> parameters, bool optimize) {
  ReleaseCompilation();
  m_definition = std::move(definition);
  SQMOperatorBody const* const body = m_definition != nullptr ? m_definition->GetBody() : nullptr;
  m_items = body != nullptr ? &body->items : nullptr;
  return Compile(parameters, optimize);
}

long CQMExpression::SetCopyOf(CQMExpression& original, std::span<CQMDatum* const> parameters) {
  ReleaseCompilation();
  m_original = &original;
  m_definition = original.m_definition;
  m_definitions = original.m_definitions;
  m_items = original.m_items;
  return Compile(parameters, original.m_isOptimized);
}

/** Nothing of an earlier compilation is left by now. */
long CQMExpression::Compile(std::span<CQMDatum* const> parameters, bool optimize) {
  ReleaseReferences(m_references);
  ReleaseDetached();
  m_isOptimized = optimize;
  m_complexMode = false;
  long const code = CompileItems(parameters);
  // a setting that was made since has no part in a copy
  bool const isForced = m_original == nullptr && m_context.GetForceComplexResults();
  if (m_complexMode || isForced) EnterComplexMode();
  return code;
}

/** From the items to the program. */
long CQMExpression::CompileItems(std::span<CQMDatum* const> parameters) {
  if (m_compilation == nullptr) m_compilation = m_context.TakeCompilation();
  m_promotionsBeforeRun = m_promotions = CQMDatum::GetPromotionCount();
  m_promotedWithinRun = EQMPromoted::Nothing;
  m_errorState = Error::None;
  long code = CreateTokenLists(parameters);
  if (code == Error::None) code = Verify(0);
  if (code == Error::None && m_isOptimized) code = Optimize();
  if (code == Error::None) code = Finalize();
  if (code == Error::None) code = Link();
  m_runnable = code == Error::None;
  m_parameters = parameters;
  m_complexCounts = CountComplex();
  m_resolver = m_context.GetResolver(EQMResolverClass::RealOptimized);
  if (code != Error::None) return Fail(code);
  m_compilation->program.Make(m_compilation->operators, *this, m_resolver->GetWay());
  return Error::None;
}

void CQMExpression::ReleaseCompilation() {
  m_runnable = false;
  m_stopPosition = kNoPosition;
  m_copies.clear();  // first: they stand on what follows
  m_parameters = {};
  if (m_compilation == nullptr) return;
  ReleaseReferences(m_compilation->references);
  m_context.GiveBack(std::move(m_compilation));
}

void CQMExpression::ReleaseReferences(std::vector<CQMDatum*>& references) {
  for (CQMDatum* symbol : references) {
    if (symbol != nullptr)
      symbol->ReleaseRef();  // a place stays empty when memory runs out before its symbol
  }
  references.clear();
}

void CQMExpression::EnterComplexMode() {
  m_resolver = m_context.GetResolver(EQMResolverClass::Complex);  // first, as there may be no memory for it
  m_complexMode = true;
  if (m_original != nullptr) m_original->m_startsComplex = true;
  if (!m_runnable) return;
  m_compilation->program.Make(m_compilation->operators, *this, m_resolver->GetWay());
}

// An expression and its copies are complex together, each from its next run on.
void CQMExpression::FollowModes() {
  bool const isOriginalComplex =
      m_original != nullptr && (m_original->m_complexMode || m_original->m_startsComplex);
  if (!m_complexMode && (m_startsComplex || isOriginalComplex)) EnterComplexMode();
}

// ---- detached expressions ----

/** Whether all names are known, and those of the expression itself keep the types that they have. */
bool CQMExpression::HasDetachableNames() const {
  if (!m_compilation->names.empty()) return false;
  return m_locals == nullptr || std::ranges::all_of(m_locals->symbols, [](auto const& symbol) {
           return !symbol->IsArray() && (symbol->GetType() == EQMDataType::Number || symbol->IsBoolean());
         });
}

void CQMExpression::ReleaseDetached() {
  m_numericProgram = nullptr;
  m_detached.reset();
}

void CQMExpression::Detach() {
  bool const mayBe = m_runnable && !m_complexMode && m_definition == nullptr && m_original == nullptr &&
                     HasDetachableNames() && Program().IsQuiet();
  CQMDatum* const result = GetResultDatum();
  if (!mayBe || result == nullptr || m_ownItems == nullptr) return;
  std::unique_ptr<CQMDetachedProgram> detached =
      CQMDetachedProgram::Make(m_compilation->operators, *this, *result);
  if (detached == nullptr) return;
  auto operand = m_compilation->operands.begin();
  for (SQMItem& item : m_ownItems->GetItems()) {
    if (item.kind == EQMItem::Name) item.bound = *operand;
    if (IsOperand(item)) ++operand;
  }
  if (!m_compilation->references.empty()) m_references = m_compilation->references;
  m_compilation->references.clear();
  detached->Sign(*m_ownItems);
  m_detached = std::move(detached);
  if (m_detached->HasNumber()) m_numericProgram = m_detached.get();
  m_context.GiveBack(std::move(m_compilation));
}

/** Compiles the items of a detached expression once more, with its names bound as they were. Without memory
 * for that, or with variables that its operators refuse now, it stays as it is. */
long CQMExpression::Restore() {
  long code = Error::None;
  try {
    code = CompileItems({});
  } catch (...) {
    GiveUpRestoring();
    throw;
  }
  if (code != Error::None) GiveUpRestoring();
  return code;
}

void CQMExpression::GiveUpRestoring() {
  ReleaseCompilation();
  m_errorState = Error::None;
  m_complexMode = false;
  m_runnable = true;
}

long CQMExpression::ResolveDetached() {
  if (!m_detached->IsCurrent() && !m_detached->RemainsCurrent(*m_ownItems)) {
    if (long const code = Restore(); code != Error::None) return code;
    ReleaseDetached();
    if (m_complexMode) EnterComplexMode();
    Detach();
    return Resolve();
  }
  return FollowNumericProgram(m_detached->Run());
}

/** Goes on from the operator that asked for complex evaluation, with the values that the others have. */
long CQMExpression::ContinueInComplex(long position) {
  if (!m_context.MayBecomeComplex()) return Error::ResultIsComplex;
  if (long const code = Restore(); code != Error::None) return code;
  try {
    m_detached->HandOver(m_compilation->operators, *this);
  } catch (...) {
    GiveUpRestoring();
    throw;
  }
  ReleaseDetached();
  EnterComplexMode();
  CQMTemporaryValue<bool> const running(m_isRunning, true);
  long const status = m_resolver->Resolve(m_compilation->program, position);
  return ConcludeRun(status, position);
}

// ---- symbols ----

char CQMExpression::UseNextSymbolScope() { return std::exchange(m_nextScope, Scope::kDefault); }

char CQMExpression::UseNextSymbolComplexity() {
  return std::exchange(m_nextComplexity, Complexity::kDefault);
}

EQMDataType CQMExpression::GetNextNumericSymbolDataType() {
  switch (UseNextSymbolComplexity()) {
    case Complexity::kDefault:
    case Complexity::kSimple: return EQMDataType::Number;
    case Complexity::kComplex: return EQMDataType::Complex;
    default: return EQMDataType::Undefined;
  }
}

void CQMExpression::AddSymbol(std::unique_ptr<CQMDatum> symbol) {
  if (m_locals == nullptr) m_locals = std::make_unique<SQMLocals>();
  CQMDatum* const added = m_locals->symbols.emplace_back(std::move(symbol)).get();
  m_locals->byName.try_emplace(added->Name(), added);
}

long CQMExpression::ConfirmSymbol(CQMDatum* datum) {
  if (datum == nullptr || !datum->IsPending()) return Error::None;
  auto& names = m_compilation->names;
  auto const owned = names.find(datum);
  if (owned == names.end()) return Error::NotFound;
  char scope = UseNextSymbolScope();
  if (scope == Scope::kDefault) scope = m_context.GetDefaultVariableScope();
  CQMSymbolTable* const table = scope == Scope::kCosmic   ? m_context.GetCosmicSymbolTable()
                                : scope == Scope::kGlobal ? m_context.GetGlobalSymbolTable()
                                                          : nullptr;
  // The same name may have been confirmed earlier in this statement: `x = (x = 5) + 1` has one x.
  CQMDatum* known = nullptr;
  if (table == nullptr) {
    known = GetSymbol(datum->Name());
  } else if (long const code = EnterTableSymbol(*table, scope, *datum, known); code != Error::None) {
    return code;
  }
  if (known != nullptr) {
    datum->SetPending(false);
    *datum = *known;
    return Error::None;
  }
  if (table == nullptr) {
    SettleSymbol(*datum, Scope::kLocal);
    AddSymbol(std::move(owned->second));
  } else {
    static_cast<void>(owned->second.release());  // the table owns it now
  }
  names.erase(owned);
  return Error::None;
}

long CQMExpression::EnterTableSymbol(CQMSymbolTable& table, char scope, CQMDatum& datum, CQMDatum*& known) {
  while ((known = ReserveTableSymbol(table, datum.Name())) == nullptr) {
    m_compilation->references.push_back(&datum);
    // before another thread can find the symbol, and delete it
    SettleSymbol(datum, scope);
    datum.ReserveRef();
    long const code = table.AddNewSymbol(datum);
    if (code == Error::None) break;
    m_compilation->references.pop_back();
    datum.ReleaseRef();
    datum.SetPending(true);
    datum.SetTemporary(true);
    if (code != Error::AlreadyExists) return code;
    // another thread entered the name meanwhile; its variable is this one too
  }
  return Error::None;
}

// ---- running ----

CQMExpression& CQMExpression::CopyForNewRun() {
  auto const idle =
      std::find_if(m_copies.begin(), m_copies.end(), [](auto const& copy) { return !copy->m_isRunning; });
  if (idle != m_copies.end() && (*idle)->m_runnable) return **idle;
  if (idle != m_copies.end()) m_copies.erase(idle);
  CQMExpression& copy = *m_copies.emplace_back(std::make_unique<CQMExpression>(m_context));
  copy.SetCopyOf(*this, {});
  copy.SetParentObject(this);
  return copy;
}

long CQMExpression::Resolve() {
  m_stopPosition = kNoPosition;
  if (m_detached != nullptr) return ResolveDetached();
  if (!m_runnable)
    return m_errorState != Error::None ? m_errorState : static_cast<long>(Error::BadExpression);
  if (m_startsComplex || m_original != nullptr) FollowModes();
  if (CQMDatum::GetPromotionCount() != m_promotionsBeforeRun) {
    if (long const code = VerifyBeforeRun(); code != Error::None) return code;
  }
  CQMTemporaryValue<bool> const running(m_isRunning, true);
  for (SQMBlock* const block : m_compilation->blocksToReset) *block = {};
  long position = 0;
  long status = Status::NeedsComplex;
  if (!m_complexMode) {
    status = m_resolver->Resolve(m_compilation->program, position);
    if (status == Status::NeedsComplex && !m_complexMode) {
      if (!m_context.MayBecomeComplex()) return Error::ResultIsComplex;
      EnterComplexMode();  // for good, and from the operator that asked for it on
    }
  }
  if (status == Status::NeedsComplex) status = m_resolver->Resolve(m_compilation->program, position);
  return ConcludeRun(status, position);
}

long CQMExpression::ConcludeRun(long status, long position) {
  if (m_complexMode) AcceptPromotions();
  if (status != Status::Stop) return status;
  m_stopPosition = position;
  return Error::None;
}

CQMDatum* CQMExpression::GetResultDatum() const {
  auto const& operators = m_compilation->operators;
  if (m_stopPosition >= 0 && m_stopPosition < GetOperatorCount()) {
    return operators[static_cast<std::size_t>(m_stopPosition)]->GetResultOperand();
  }
  if (!operators.empty()) return operators.back()->GetResultOperand();
  return m_compilation->operands.empty() ? nullptr : m_compilation->operands.back();
}

SQMResultView CQMExpression::GetResult() const {
  if (m_detached != nullptr) return m_detached->GetResult();
  CQMDatum const* const datum = m_compilation != nullptr ? GetResultDatum() : nullptr;
  if (datum == nullptr) return {};
  SQMResultView view{datum->GetType(), true, datum->GetValue() != nullptr};
  switch (view.type) {
    case EQMDataType::Complex: view.imaginary = datum->Imaginary(); [[fallthrough]];
    case EQMDataType::Number:
    case EQMDataType::Real: view.real = datum->Real(); break;
    case EQMDataType::String:
    case EQMDataType::Text: view.text = datum->GetText(); break;
    case EQMDataType::Boolean: view.boolean = datum->BooleanByte() != 0; break;
    default: break;
  }
  return view;
}

CQMOperator* CQMExpression::GetOperatorByIndex(long index) const {
  return index >= 0 && index < GetOperatorCount() ? m_compilation->operators[static_cast<std::size_t>(index)]
                                                  : nullptr;
}

CQMDatum* CQMExpression::GetOperandByIndex(long index) const {
  bool const isThere =
      m_compilation != nullptr && index >= 0 && index < static_cast<long>(m_compilation->operands.size());
  return isThere ? m_compilation->operands[static_cast<std::size_t>(index)] : nullptr;
}

}  // namespace qumel
