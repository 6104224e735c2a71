// Runs small programs on the engine alone: a context without settings of its own, a handful of computing
// operators, and a notation that is turned into postfix text word by word.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "engine/expression.h"
#include "engine/operator_factory.h"
#include "engine/resolver.h"
#include "tables/symbol_table.h"

namespace qumel::test {

/** Programs are postfix words with blanks between them: `x 5 = ; x 1 + ;`. A word that begins with a digit is
 * a number, with ' a text, [n indexes by n numbers, others are operators by their tokens, or else names. */
std::string PostfixOf(std::string_view program);

class CQMTestContext final : public CQMOperatorContext {
 public:
  CQMTestContext();

  /** Compiles and runs program once: `5`, `1+2i`, `'text`, `true`, `none`, or `error 3060`. */
  std::string Run(std::string_view program);
  std::unique_ptr<CQMExpression> Compile(std::string_view program);
  /** Runs what was compiled, and describes it as Run does. */
  static std::string Resolve(CQMExpression& expression);
  /** The value of a datum as Run writes it. */
  static std::string Describe(CQMDatum* datum);
  CQMDatum* Find(char scope, std::string_view name);
  /** Enters a variable; the table owns it. */
  CQMDatum& AddGlobal(std::unique_ptr<CQMDatum> variable);

  bool allowComplex = true;
  bool forceComplex = false;
  char defaultScope = Scope::kLocal;
  long arrayBase = 0;
  bool invertIndices = false;
  double toRadians = 1.0;
  CQMOperatorFactory* factory = nullptr;  // in place of the own one

  double const& GetAngleFactorToRadians() const override { return toRadians; }
  double const& GetAngleFactorFromRadians() const override { return m_fromRadians; }
  bool GetAllowComplexResults() const override { return allowComplex; }
  bool GetForceComplexResults() const override { return forceComplex; }
  char GetDefaultVariableScope() const override { return defaultScope; }
  long GetArrayBase() const override { return arrayBase; }
  bool GetInvertArrayIndices() const override { return invertIndices; }
  void SetAngleUnit(char) override {}
  void SetNumberBase(char) override {}
  void SetCoordinateFormat(char) override {}
  void SetFormattedResultPrecisionLimit(int) override {}
  void SetAllowComplexFlag(bool) override {}
  void SetForceComplexFlag(bool) override {}
  SQMLastResult GetLastResult() const override { return {TypeLetter::kNone, 0.0, 0.0, false, ""}; }
  CQMRandomGenerator& GetRandomGenerator() override { return m_generator; }
  void SetLastError(long) override {}
  CQMResolver* GetResolver(EQMResolverClass kind) override;
  CQMOperatorFactory* GetOperatorFactory() override { return factory != nullptr ? factory : &m_factory; }
  CQMSymbolTable* GetCosmicSymbolTable() override { return &m_cosmic; }
  CQMSymbolTable* GetGlobalSymbolTable() override { return &m_global; }
  std::shared_ptr<SQMOperatorDefinition const> FindOperatorDefinition(long) override { return nullptr; }

 private:
  CQMRandomGenerator m_generator;
  CQMSymbolTable m_cosmic;
  CQMSymbolTable m_global;
  CQMOperatorFactory m_factory;
  CQMRealOptimizedResolver m_real;
  double m_fromRadians = 1.0;
  CQMComplexBaselineResolver m_complex;
};

/** One program and what it comes to, each run in a context of its own. */
struct SQMProgram {
  char const* text;
  char const* outcome;
};
void ExpectOutcomes(std::span<SQMProgram const> programs);

}  // namespace qumel::test
