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
  DestroyTokenLists();
  m_localsByName.clear();
}

// ---- compiling ----

long CQMExpression::SetParsedExpression(CQMItemList&& items, bool optimize) {
  m_definition.reset();
  m_items = std::move(items);
  return Compile({}, optimize);
}

long CQMExpression::SetParsedExpression(std::shared_ptr<SQMOperatorDefinition const> definition,
                                        std::span<CQMDatum* const> parameters, bool optimize) {
  m_definition = std::move(definition);
  SQMOperatorBody const* const body = m_definition != nullptr ? m_definition->GetBody() : nullptr;
  m_items = body != nullptr ? body->items.Kept() : CQMItemList();
  return Compile(parameters, optimize);
}

long CQMExpression::SetCopyOf(CQMExpression& original, std::span<CQMDatum* const> parameters) {
  m_original = &original;
  m_cosmicTable = original.m_cosmicTable;
  m_globalTable = original.m_globalTable;
  m_factory = original.m_factory;
  m_definition = original.m_definition;
  m_definitions = original.m_definitions;
  m_items = original.m_items.Kept();
  return Compile(parameters, original.m_isOptimized);
}

long CQMExpression::Compile(std::span<CQMDatum* const> parameters, bool optimize) {
  DestroyTokenLists();
  m_isOptimized = optimize;
  m_promotionsBeforeRun = m_promotions = CQMDatum::GetPromotionCount();
  m_promotedWithinRun = EQMPromoted::Nothing;
  m_errorState = Error::None;
  m_complexMode = false;
  long code = CreateTokenLists(parameters);
  if (code == Error::None) code = Verify(0);
  if (code == Error::None && optimize) code = Optimize();
  if (code == Error::None) code = Finalize();
  if (code == Error::None) code = Link();
  m_runnable = code == Error::None;
  m_parameters = parameters;
  m_complexCounts = CountComplex();
  // a setting that was made since has no part in a copy
  bool const isForced = m_original == nullptr && m_context.GetForceComplexResults();
  m_resolver = m_context.GetResolver(EQMResolverClass::RealOptimized);
  if (code == Error::None) m_program.Make(m_operators, m_context, m_resolver->GetJoining());
  if (m_complexMode || isForced) EnterComplexMode();
  return code == Error::None ? code : Fail(code);
}

void CQMExpression::DestroyTokenLists() {
  m_runnable = false;
  m_stopPosition = kNoPosition;
  m_copies.clear();  // first: they stand on what follows
  m_program.Clear();
  m_openersToReset.clear();
  m_bodies.clear();
  m_parameters = {};
  m_unverified.clear();
  m_operators.clear();  // before the datums: results may be proxies of them
  m_operands.clear();
  m_temporaries.clear();
  m_names.clear();
  for (CQMDatum* symbol : m_references) {
    if (symbol != nullptr)
      symbol->ReleaseRef();  // a place stays empty when memory runs out before its symbol
  }
  m_references.clear();
}

void CQMExpression::EnterComplexMode() {
  m_resolver = m_context.GetResolver(EQMResolverClass::Complex);  // first, as there may be no memory for it
  m_complexMode = true;
  if (m_original != nullptr) m_original->m_startsComplex = true;
}

// An expression and its copies are complex together, each from its next run on.
void CQMExpression::FollowModes() {
  bool const isOriginalComplex =
      m_original != nullptr && (m_original->m_complexMode || m_original->m_startsComplex);
  if (!m_complexMode && (m_startsComplex || isOriginalComplex)) EnterComplexMode();
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
  CQMDatum* const added = m_locals.emplace_back(std::move(symbol)).get();
  m_localsByName.try_emplace(added->Name(), added);
}

CQMDatum* CQMExpression::GetSymbol(std::string_view name) const {
  if (m_localsByName.empty()) return nullptr;
  auto const found = m_localsByName.find(name);
  return found != m_localsByName.end() ? found->second : nullptr;
}

long CQMExpression::ConfirmSymbol(CQMDatum* datum) {
  if (datum == nullptr || !datum->IsPending()) return Error::None;
  auto const owned = m_names.find(datum);
  if (owned == m_names.end()) return Error::NotFound;
  char scope = UseNextSymbolScope();
  if (scope == Scope::kDefault) scope = m_context.GetDefaultVariableScope();
  CQMSymbolTable* const table = scope == Scope::kCosmic   ? m_cosmicTable
                                : scope == Scope::kGlobal ? m_globalTable
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
  m_names.erase(owned);
  return Error::None;
}

long CQMExpression::EnterTableSymbol(CQMSymbolTable& table, char scope, CQMDatum& datum, CQMDatum*& known) {
  while ((known = ReserveTableSymbol(table, datum.Name())) == nullptr) {
    m_references.push_back(&datum);
    // before another thread can find the symbol, and delete it
    SettleSymbol(datum, scope);
    datum.ReserveRef();
    long const code = table.AddNewSymbol(datum);
    if (code == Error::None) break;
    m_references.pop_back();
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
  if (!m_runnable)
    return m_errorState != Error::None ? m_errorState : static_cast<long>(Error::BadExpression);
  if (m_startsComplex || m_original != nullptr) FollowModes();
  if (CQMDatum::GetPromotionCount() != m_promotionsBeforeRun) {
    if (long const code = VerifyBeforeRun(); code != Error::None) return code;
  }
  CQMTemporaryValue<bool> const running(m_isRunning, true);
  for (CQMOperator* const opener : m_openersToReset) opener->ResetBlock();
  long position = 0;
  long status = Status::NeedsComplex;
  if (!m_complexMode) {
    status = m_resolver->Resolve(m_program, position);
    if (status == Status::NeedsComplex && !m_complexMode) {
      if (!m_context.MayBecomeComplex()) return Error::ResultIsComplex;
      EnterComplexMode();  // for good, and from the operator that asked for it on
    }
  }
  if (status == Status::NeedsComplex) status = m_resolver->Resolve(m_program, position);
  if (m_complexMode) AcceptPromotions();
  if (status != Status::Stop) return status;
  m_stopPosition = position;
  return Error::None;
}

CQMDatum* CQMExpression::GetResult() const {
  if (m_stopPosition >= 0 && m_stopPosition < GetOperatorCount()) {
    return m_operators[static_cast<std::size_t>(m_stopPosition)]->GetResultOperand();
  }
  if (!m_operators.empty()) return m_operators.back()->GetResultOperand();
  return m_operands.empty() ? nullptr : m_operands.back();
}

CQMOperator* CQMExpression::GetOperatorByIndex(long index) const {
  return index >= 0 && index < GetOperatorCount() ? m_operators[static_cast<std::size_t>(index)].get()
                                                  : nullptr;
}

CQMDatum* CQMExpression::GetOperandByIndex(long index) const {
  return index >= 0 && index < static_cast<long>(m_operands.size())
             ? m_operands[static_cast<std::size_t>(index)]
             : nullptr;
}

}  // namespace qumel
