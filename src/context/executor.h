// A context: settings, operator and symbol tables, converter, resolvers, last error and last result of one
// evaluator.
#pragma once

#include <semaphore.h>

#include <array>
#include <atomic>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "base/errors.h"
#include "base/items.h"
#include "context/settings.h"
#include "engine/expression.h"
#include "engine/operator_context.h"
#include "language/operator_list.h"
#include "language/post_fixer.h"
#include "objects/linked_object.h"
#include "tables/symbol_table.h"

namespace qumel {

class CQMContextGate;
class CQMDatum;
class CQMExpression;
class CQMOperatorFactory;
class CQMResolver;
struct SQMResultView;
struct SQMCaller;

using ErrorCallback = void (*)(long code);

/** Used by one thread at a time, since calls enter it through its gate. */
class CQMExecutor final : public CQMLinkedObject, public CQMOperatorContext {
 public:
  static constexpr char const* kTypeTag = TypeTag::kExecutor;
  static constexpr std::size_t kResultSize = 1024;  // bytes of every formatted result, its end included

  CQMExecutor();
  ~CQMExecutor() override;

  // ---- lifecycle (executor_lifecycle.cpp) ----
  /** Makes a context that is initialised, has a handle and has copied those of the settings that its kind
   * copies. Throws std::bad_alloc. */
  static std::unique_ptr<CQMExecutor> Make(char const* name, SQMSettings const& settings,
                                           EQMContextKind kind);
  /** Builds the tables; the first context of the process builds the process-wide ones, too. Fixed settings
   * can only be chosen before. */
  bool Initialize();
  void CleanUp();
  CQMContextGate& GetGate() { return m_gate; }
  CQMContextGate* GetHandleGuard() override { return &m_gate; }
  // The advisory lock, which hosts take for sequences of calls that belong together.
  /** Waits for the lock, unless holder has it already. False when the context is being destroyed and when the
   * wait would never end. */
  bool AcquireExecutor(SQMCaller& holder);
  /** Releases the lock, if holder has it. */
  void ReleaseExecutor(SQMCaller& holder);
  /** Marks the context as being destroyed: it lives on only until no call uses it, and no thread waits for
   * its lock any more. */
  void Retire();
  bool IsRetired() const { return m_retired.load(); }

  // ---- evaluation (executor_evaluation.cpp) ----
  // Each member stores the last error and the last result; results of failed calls keep their earlier values.
  // A null text counts as an empty one. The text forms compile without optimisation.
  char Evaluate(char const* text);
  double EvaluateToNumber(char const* text);
  double EvaluateToComplex(char const* text, double* imaginary);
  bool EvaluateToBoolean(char const* text);
  char* EvaluateToString(char const* text);
  char Evaluate(CQMExpression* expression);
  double EvaluateToNumber(CQMExpression& expression) {
    // Formulas on numbers, which hosts evaluate by the million, need nothing else.
    CQMDetachedProgram* const program = expression.GetNumericProgram();
    if (program == nullptr) [[unlikely]]
      return EvaluateToNumberAtLength(expression);
    long const status = program->Run();
    m_lastError = Error::None;
    if (status != Error::None) [[unlikely]]
      return FollowNumericProgram(*program, status);
    double const result = program->GetNumber();
    StoreNumber(TypeLetter::kNumber, result, 0.0);
    return result;
  }
  double EvaluateToComplex(CQMExpression* expression, double* imaginary);
  bool EvaluateToBoolean(CQMExpression* expression);
  char* EvaluateToString(CQMExpression* expression);
  /** The handle of an expression kept as a child until DeleteExpression; 0 on failure. */
  Handle ParseExpression(char const* text);
  /** The items of text, which must outlive them; 0 or the error, which is also the last one. */
  long ConvertExpression(char const* text, CQMItemList& items);
  /** The postfix text, empty after an error. */
  char const* ConvertExpression(char const* text);
  char* AnnotateExpression(char const* text);
  char* AnnotateExpression(CQMExpression* expression);
  char* RevertExpression(CQMExpression* expression);
  char* GetParsedExpression(CQMExpression* expression);
  /** The expression as the library reads it, or the message of its error. */
  char const* CheckExpression(char const* text);
  /** An expression that is running is destroyed when its run ends. */
  void DeleteExpression(CQMExpression* expression);

  // ---- results (executor_results.cpp) ----
  /** The text of datum by the settings, in the buffer that GetLastStrResult gives; cut to fit. Stores the
   * numbers too. */
  char* FormatResultString(SQMResultView const& result);
  char GetLastResultType() const { return m_lastType; }
  double GetLastRealResult() const { return m_lastReal; }
  double GetLastImagResult() const { return m_lastImaginary; }
  bool GetLastBoolResult() const { return m_lastBoolean; }
  char* GetLastStrResult() { return m_lastString; }
  long GetLastParseIndex() const { return m_lastParseIndex; }
  SQMLastResult GetLastResult() const override;

  // ---- settings (executor_settings.cpp) ----
  SQMSettings const& GetSettings() const { return m_settings; }
  // One setter for each row: those of fixed settings act only before Initialize, the others at any time.
#define QM_SETTING(group, member, name, exported, Type, ...) void Set##name(Type value) QM_OVERRIDE_##group;
#define QM_CONTEXT_SETTING(member, name, Type, initial) void Set##name(Type value);
#define QM_OVERRIDE_Fixed
#define QM_OVERRIDE_Live
#define QM_OVERRIDE_Switch
#define QM_OVERRIDE_Word override
#include "context/settings.inc"
#undef QM_OVERRIDE_Fixed
#undef QM_OVERRIDE_Live
#undef QM_OVERRIDE_Switch
#undef QM_OVERRIDE_Word
  // What mode words change: one flag each.
  void SetAllowComplexFlag(bool allow) override { m_settings.allowComplexResults = allow; }
  void SetForceComplexFlag(bool force) override { m_settings.forceComplexResults = force; }
  double const& GetAngleFactorToRadians() const override { return m_angle.toRadians; }
  double const& GetAngleFactorFromRadians() const override { return m_angle.fromRadians; }
  bool GetAllowComplexResults() const override { return m_settings.allowComplexResults; }
  bool GetForceComplexResults() const override { return m_settings.forceComplexResults; }
  char GetDefaultVariableScope() const override { return m_settings.defaultVariableScope; }
  long GetArrayBase() const override { return m_settings.arrayBase; }
  bool GetInvertArrayIndices() const override { return m_settings.invertArrayIndices; }
  double GetRadiusOrdinate(double real, double imaginary) const;
  double GetThetaOrdinate(double real, double imaginary) const;

  // ---- errors (executor_errors.cpp) ----
  static long LoadCosmicErrorMessage(long code, char const* text);
  long LoadGlobalErrorMessage(long code, char const* text);
  bool DefineError(char scope, long code, char const* text);
  /** The message of code, or that of UnknownError for an unknown code. It lives as long as its table. */
  char const* GetErrorText(long code);
  char const* GetLastErrorText() { return GetErrorText(m_lastError); }
  long GetLastErrorID() const { return m_lastError; }
  /** Negative codes are ignored. */
  void SetLastError(long code) override {
    if (code >= 0) m_lastError = code;
  }
  void ClearLastError() { m_lastError = Error::None; }
  /** Sets the function that is called with the error at the end of every evaluation that failed; null for
   * none. */
  void SetErrorFunction(ErrorCallback function) { m_errorCallback = function; }

  // ---- operators (executor_operators.cpp) ----
  /** Scope 'C' stands for the process-wide list, 'G' for the context's, any other for both. */
  bool IsOperator(char scope, char const* token) const;
  bool IsSymbol(char scope, char const* name);
  CQMPostFixer& GetPostFixer() { return *m_postFixer; }
  CQMOperatorList& GetGlobalOperatorList() { return *m_globalOperators; }
  static CQMOperatorList* GetCosmicOperatorList() { return sm_pCosmicOperatorList; }
  std::shared_ptr<SQMOperatorDefinition const> FindOperatorDefinition(long id) override;
  static long GetNextExternalOperatorID() { return sm_lNextExternalOperatorID++; }

  // ---- variables (variables.h has the operations) ----
  CQMSymbolTable* GetCosmicSymbolTable() override { return sm_pCosmicSymTab; }
  CQMSymbolTable* GetGlobalSymbolTable() override { return m_globalSymbols.get(); }
  bool IsVariable(char scope, char const* name);
  bool IsArray(char scope, char const* name);

  CQMRandomGenerator& GetRandomGenerator() override { return m_random; }
  CQMResolver* GetResolver(EQMResolverClass kind) override;
  CQMOperatorFactory* GetOperatorFactory() override { return m_factory.get(); }

  static std::atomic<long> sm_lExecutorCount;
  static CQMOperatorList* sm_pCosmicOperatorList;
  static CQMSymbolTable* sm_pCosmicSymTab;
  static CQMSymbolTable* sm_pCosmicErrTab;
  static std::atomic<long> sm_lNextExternalOperatorID;

 private:
  class CQMRun;

  // executor_lifecycle.cpp
  static void CreateCosmicTables(bool impliedMultiplication);
  static void DestroyCosmicTables();
  void BuildTables();
  // executor_errors.cpp
  static void LoadStandardMessages(CQMSymbolTable& table);
  // executor_settings.cpp: the effects of settings
  void FollowNothing() {}
  void FollowAngleUnit();
  void FollowAllowedComplex();
  void FollowForcedComplex();
  // executor_evaluation.cpp
  class CQMWorkingItems;
  long Convert(char const* text, CQMItemList& items);
  template <class Store>
  void EvaluateText(char const* text, Store store);
  template <class Store>
  void EvaluateExpression(CQMExpression* expression, Store store);
  template <class Store>
  long Run(CQMExpression& expression, Store store);
  long Annotate(CQMItemList const& items);
  long Revert(CQMItemList const& items);
  void Conclude(long code);
  // executor_results.cpp
  double EvaluateToNumberAtLength(CQMExpression& expression);
  double FollowNumericProgram(CQMDetachedProgram const& program, long status);
  void StoreResult(SQMResultView const& result);
  void StoreAsNumber(SQMResultView const& result);
  void StoreAsComplex(SQMResultView const& result, double* imaginary);
  void StoreAsBoolean(SQMResultView const& result);
  void StoreAsString(SQMResultView const& result);
  void StoreNumber(char type, double real, double imaginary) {
    m_lastReal = real;
    m_lastImaginary = imaginary;
    m_lastType = type;
  }
  void StoreText(std::string_view text);
  double NumberOfBoolean(bool value) const;
  std::string FormatNumber(double value) const;
  std::string FormatComplex(double real, double imaginary) const;

  CQMContextGate& m_gate;
  sem_t m_semaphore;
  std::atomic<SQMCaller*> m_lockHolder{nullptr};
  std::atomic<bool> m_retired{false};
  CQMRun* m_innermostRun = nullptr;
  CQMRandomGenerator m_random;
  bool m_initialized = false;
  SQMContextSettings m_settings;
  SQMAngleFactors m_angle{1.0, 1.0};  // radians, until the angle unit is set
  ErrorCallback m_errorCallback = nullptr;
  std::unique_ptr<CQMPostFixer> m_postFixer;
  std::unique_ptr<CQMOperatorFactory> m_factory;
  std::unique_ptr<CQMOperatorList> m_globalOperators;
  std::unique_ptr<CQMSymbolTable> m_globalSymbols;
  std::unique_ptr<CQMSymbolTable> m_errors;
  std::array<CQMResolver*, 3> m_resolvers{};  // children of this object, made on demand
  long m_lastError = Error::None;
  long m_lastParseIndex = 0;
  std::string m_conversion;  // postfix text that was asked for
  std::string m_annotation;
  std::string m_reversion;
  double m_lastReal = 0.0;
  double m_lastImaginary = 0.0;
  char m_lastString[kResultSize] = {};
  bool m_lastBoolean = false;
  char m_lastType = TypeLetter::kNone;
};

}  // namespace qumel
