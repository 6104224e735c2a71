// A compiled expression: operators in execution order, operands, local symbols, and the steps that make it
// runnable.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "base/items.h"
#include "engine/compilation.h"
#include "engine/detached_program.h"
#include "engine/operator.h"
#include "engine/operator_context.h"
#include "engine/result_view.h"
#include "language/operator_definition.h"
#include "values/datum.h"

namespace qumel {

class CQMReachableDefinitions;
class CQMResolver;
class CQMSymbolTable;

/** Compiles items, then runs any number of times. Owns its program, what that was compiled to, and its
 * local symbols. The first error is kept and stops every later step. */
class CQMExpression : public CQMLinkedObject {
 public:
  static constexpr char const* kTypeTag = TypeTag::kExpression;
  static constexpr long kNoPosition = -1;

  explicit CQMExpression(CQMOperatorContext& context);
  ~CQMExpression() override;

  CQMOperatorContext& GetContext() const { return m_context; }

  // ---- compiling ----
  /** Replaces what was compiled before, and keeps the items. Returns the error state. */
  long SetParsedExpression(CQMItemList&& items, bool optimize);
  /** Compiles the items of converted once, with the memory that it brings along. */
  long SetConvertedExpression(std::unique_ptr<SQMCompilation> converted);
  /** Compiles the body of a host's operator; its parameter names stand for the datums of parameters. */
  long SetParsedExpression(std::shared_ptr<SQMOperatorDefinition const> definition,
                           std::span<CQMDatum* const> parameters, bool optimize);
  /** Compiles the items of original once more, with the names bound as they are there: a copy has operators
   * and intermediate results of its own, and shares everything else with its original, which outlives it. */
  long SetCopyOf(CQMExpression& original, std::span<CQMDatum* const> parameters);
  CQMItemList const& GetItems() const { return *m_items; }
  /** After compiling: lets go of what the program can do without, if it can: of most expressions on numbers
   * only the steps and their values are left. What goes is made again when a run asks for it. */
  void Detach();
  /** Before compiling: other, which lives as long as this one, keeps the definitions of host operators for
   * both. */
  void ShareDefinitions(CQMExpression const& other) { m_definitions = other.m_definitions; }

  // ---- symbols ----
  void SetNextSymbolScope(char scope) { m_nextScope = scope; }
  char UseNextSymbolScope();
  void SetNextSymbolComplexity(char complexity) { m_nextComplexity = complexity; }
  char UseNextSymbolComplexity();
  /** Number, or Complex after the complex word; uses the one-shot complexity up. */
  EQMDataType GetNextNumericSymbolDataType();
  void AddSymbol(std::unique_ptr<CQMDatum> symbol);
  CQMDatum* GetSymbol(std::string_view name) const {
    return m_locals != nullptr ? m_locals->Find(name) : nullptr;
  }
  bool OwnsSymbol(CQMDatum const& symbol) const { return GetSymbol(symbol.Name()) == &symbol; }
  /** Places a pending name in the table that the next symbol scope, or the context's default scope, names.
   * Returns 0 or the table's error. Does nothing for a datum that is not pending. */
  long ConfirmSymbol(CQMDatum* datum);

  // ---- running ----
  /** Where a run that begins now takes place: here or, while a run is going on here, in a copy. Copies are
   * kept for later runs. One that cannot be compiled says so when it is to run. */
  CQMExpression& ForNewRun() { return m_isRunning ? CopyForNewRun() : *this; }
  long Resolve();
  /** The program of a detached expression that can run as it stands and comes to a number; null otherwise. */
  CQMDetachedProgram* GetNumericProgram() const {
    CQMDetachedProgram* const program = m_numericProgram;
    return program != nullptr && program->IsCurrent() ? program : nullptr;
  }
  /** As above, whatever it comes to. */
  CQMDetachedProgram* GetCurrentProgram() const {
    return m_detached != nullptr && m_detached->IsCurrent() ? m_detached.get() : nullptr;
  }
  /** Goes on where a run of a detached program ended. */
  long FollowNumericProgram(long status) {
    return status == Status::NeedsComplex ? ContinueInComplex(m_detached->EndPosition()) : status;
  }
  /** The result of the last run. Texts live until the next run and as long as the expression. */
  SQMResultView GetResult() const;
  /** The datum that holds it, or null; not of a detached expression. It lives as long as the expression. */
  CQMDatum* GetResultDatum() const;
  bool IsInComplexMode() const { return m_complexMode; }
  /** Whether a run is sure not to call the host: then nothing can happen to the expression meanwhile. */
  bool IsQuiet() const { return m_detached != nullptr || Program().IsQuiet(); }
  /** For good. Needs no permission: whoever calls this has it, or has complex operands. */
  void EnterComplexMode();

  // ---- variables that become complex (expression_promotion.cpp) ----
  /** What this run made complex so far is its own doing. To be called before another expression or the host
   * is.
   */
  void AcceptPromotions();
  /** To be called when these have returned with status, where the run goes on at next: verifies what follows
   * if they made a variable complex, and may enter complex mode. Gives status, or the code that ends the run.
   */
  long FollowCall(long status, long next);

  long GetErrorState() const { return m_errorState; }
  void SetErrorState(long code) { m_errorState = code; }
  // ---- what verification works on; nothing of a detached expression ----
  long GetOperatorCount() const {
    return m_compilation != nullptr ? static_cast<long>(m_compilation->operators.size()) : 0;
  }
  CQMOperator* GetOperatorByIndex(long index) const;
  CQMDatum* GetOperandByIndex(long index) const;
  /** Whether a goto may enter a block past its opener. */
  bool HasPassedByOpeners() const { return !m_compilation->blocksToReset.empty(); }

 private:
  struct SQMLocals {
    std::vector<std::unique_ptr<CQMDatum>> symbols;
    std::unordered_map<std::string_view, CQMDatum*> byName;
    CQMDatum* Find(std::string_view name) const {
      auto const found = byName.find(name);
      return found != byName.end() ? found->second : nullptr;
    }
  };
  using SQMWorkItem = SQMCompilation::SQMWorkItem;

  long Compile(std::span<CQMDatum* const> parameters, bool optimize);
  long CompileItems(std::span<CQMDatum* const> parameters);
  long Restore();
  void GiveUpRestoring();
  long ResolveDetached();
  bool HasDetachableNames() const;
  void ReleaseDetached();
  long ContinueInComplex(long position);
  long ConcludeRun(long status, long position);
  CQMProgram const& Program() const { return m_compilation->program; }
  CQMExpression& CopyForNewRun();
  void FollowModes();
  // reading items (expression_reading.cpp)
  long CreateTokenLists(std::span<CQMDatum* const> parameters);
  long ReadOperator(SQMItem const& item);
  CQMOperator* MakeOperatorAt(long index, long id);
  CQMDatum* ReadNumber(SQMItem const& item);
  CQMDatum* ReadString(std::string_view text);
  CQMDatum* ReadSymbol(SQMItem const& item, std::span<CQMDatum* const> parameters);
  CQMDatum* MakeTemporary();
  CQMDatum* FindParameter(std::string_view name, std::span<CQMDatum* const> parameters) const;
  /** The symbol, with a reference that this expression gives back; null where the table has none. */
  CQMDatum* ReserveTableSymbol(CQMSymbolTable& table, std::string_view name);
  CQMDatum* FindTableSymbol(std::string_view name);
  /** Enters datum in table, with a reference of this expression; where the table has the name, known is its
   * symbol instead. */
  long EnterTableSymbol(CQMSymbolTable& table, char scope, CQMDatum& datum, CQMDatum*& known);
  void ReleaseCompilation();
  static void ReleaseReferences(std::vector<CQMDatum*>& references);
  // verifying, optimising, finalising, linking (expression_verification.cpp, linking.cpp)
  long Verify(long first);
  long VerifyOperator(long index, bool finalPass, bool& askAgain, bool& progress);
  long Optimize();
  long Finalize();
  long Link();
  long Substitute(long index);
  /** Whether the code of a verification, which is no fault then, asks for complex evaluation. */
  bool AsksForComplex(long code) const;
  long Fail(long code) { return m_errorState = code; }
  // variables that become complex (expression_promotion.cpp)
  enum class EQMPromoted { Nothing, Other, TableVariable };  // each outweighs those before it
  struct SQMComplexCounts {
    long inTables, others, parameters;
  };
  long VerifyBeforeRun();
  long VerifyAnew(long first, EQMPromoted promoted);
  EQMPromoted FindPromoted() const;
  long CountComplexParameters() const;
  SQMComplexCounts CountComplex() const;
  long FirstThatMayFollow(long next) const;

  CQMOperatorContext& m_context;
  CQMResolver* m_resolver = nullptr;
  long m_errorState = Error::None;
  long m_stopPosition = kNoPosition;
  bool m_runnable = false;
  bool m_complexMode = false;
  bool m_startsComplex = false;  // a copy became complex: so does this expression when its next run begins
  bool m_isRunning = false;
  bool m_isOptimized = false;
  char m_nextScope = Scope::kDefault;
  char m_nextComplexity = Complexity::kDefault;

  CQMItemList const* m_items = nullptr;     // here, of a definition, of the original, or of the compilation
  std::unique_ptr<CQMItemList> m_ownItems;  // of a detached expression with its names bound
  std::unique_ptr<SQMLocals> m_locals;
  std::unique_ptr<SQMCompilation> m_compilation;   // null before the first, and of a detached expression
  CQMDetachedProgram* m_numericProgram = nullptr;  // what m_detached holds, where it comes to a number
  std::unique_ptr<CQMDetachedProgram> m_detached;  // what is left of a detached one
  std::vector<CQMDatum*> m_references;             // of a detached one, to table symbols
  std::shared_ptr<SQMOperatorDefinition const> m_definition;
  CQMExpression* m_original = nullptr;                     // of a copy
  std::shared_ptr<CQMReachableDefinitions> m_definitions;  // made with the first host operator
  std::vector<std::unique_ptr<CQMExpression>> m_copies;
  // what tells whether variables became complex
  std::span<CQMDatum* const> m_parameters;
  SQMComplexCounts m_complexCounts{};                      // of the operands, when they were last looked at
  std::uint32_t m_promotions = 0;                          // in the process, at that time
  std::uint32_t m_promotionsBeforeRun = 0;                 // and when that was done for a whole run
  EQMPromoted m_promotedWithinRun = EQMPromoted::Nothing;  // by others, since the last run began
};

}  // namespace qumel
