// Runs single operators, and small expressions in postfix text, against a context that keeps what it is told.
#pragma once

#include <complex>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "engine/expression.h"
#include "engine/operator_context.h"
#include "engine/operator_factory.h"
#include "engine/resolver.h"
#include "tables/symbol_table.h"

namespace qumel::test {

using Complex = std::complex<double>;

/** A status in place of a value. */
struct Fails {
  long status;
};
using Value = std::variant<double, Complex, bool, std::string, Fails>;

// Operands that are more than values.
struct Variable {  // a named number
  Value value;
};
struct Literal {
  Value value;
};
struct Unknown {};  // a name that nobody declared
struct Untyped {};  // a name declared without a type
struct Missing {};  // a slot that nothing filled
using Operand =
    std::variant<double, Complex, bool, std::string, Variable, Literal, Unknown, Untyped, Missing>;
using Operands = std::vector<Operand>;

std::unique_ptr<CQMDatum> MakeDatum(Operand const& operand);
/** Null counts as Fails with status 0. */
Value ValueOf(CQMDatum const* datum);
std::string Describe(Value const& value);
/** Whether the values agree: numbers to within tolerance times their size, or exactly, sign of zero included.
 */
bool Agree(Value const& actual, Value const& expected, double tolerance);

class CQMBenchContext final : public CQMOperatorContext {
 public:
  CQMBenchContext();

  double toRadians = 1.0;
  bool allowComplex = false;
  bool forceComplex = false;
  char angleUnit = ' ';
  char numberBase = ' ';
  char coordinateFormat = ' ';
  int precisionLimit = -1;
  SQMLastResult lastResult{TypeLetter::kNone, 0.0, 0.0, false, ""};

  double const& GetAngleFactorToRadians() const override { return toRadians; }
  double const& GetAngleFactorFromRadians() const override { return m_fromRadians = 1.0 / toRadians; }
  bool GetAllowComplexResults() const override { return allowComplex; }
  bool GetForceComplexResults() const override { return forceComplex; }
  char GetDefaultVariableScope() const override { return Scope::kLocal; }
  long GetArrayBase() const override { return 0; }
  bool GetInvertArrayIndices() const override { return false; }
  void SetAngleUnit(char unit) override { angleUnit = unit; }
  void SetNumberBase(char base) override { numberBase = base; }
  void SetCoordinateFormat(char format) override { coordinateFormat = format; }
  void SetFormattedResultPrecisionLimit(int digits) override { precisionLimit = digits; }
  void SetAllowComplexFlag(bool allow) override { allowComplex = allow; }
  void SetForceComplexFlag(bool force) override { forceComplex = force; }
  SQMLastResult GetLastResult() const override { return lastResult; }
  CQMRandomGenerator& GetRandomGenerator() override { return m_generator; }
  void SetLastError(long) override {}
  CQMResolver* GetResolver(EQMResolverClass kind) override;
  CQMOperatorFactory* GetOperatorFactory() override { return &m_factory; }
  CQMSymbolTable* GetCosmicSymbolTable() override { return &m_cosmic; }
  CQMSymbolTable* GetGlobalSymbolTable() override { return &m_global; }
  std::shared_ptr<SQMOperatorDefinition const> FindOperatorDefinition(long) override { return nullptr; }

  /** A compiled expression; its error state tells how it went. */
  std::unique_ptr<CQMExpression> Compile(std::string_view postfix, bool optimize);
  /** The result of expression, or the status that it failed with at compilation or now. */
  static Value Run(CQMExpression& expression);

 private:
  CQMRandomGenerator m_generator;
  CQMSymbolTable m_cosmic;
  CQMSymbolTable m_global;
  CQMOperatorFactory m_factory;
  CQMRealOptimizedResolver m_real;
  mutable double m_fromRadians = 1.0;
  CQMComplexBaselineResolver m_complex;
};

/** One operator with operands of its own, on a context unless told otherwise. */
class CQMBench {
 public:
  CQMBench(long id, Operands const& operands, CQMBenchContext* context = nullptr);

  CQMOperator& Op() { return *m_operators.front(); }
  CQMDatum& Given(std::size_t index) { return *m_operands[index]; }
  long Verify() { return Op().VerifyOperands(); }
  /** The result, or the status, of a program of this operator alone. A failure must leave 0 in the result and
   * the position alone, a success move it by one; what is otherwise is told by a text. */
  Value Run(EQMWay way);

 private:
  CQMBenchContext& m_context;
  CQMArena m_arena;
  std::vector<std::unique_ptr<CQMDatum>> m_operands;
  std::unique_ptr<CQMExpression> m_expression;
  std::vector<CQMOperator*> m_operators;  // one
};

/** An operation, and what becomes of it in real and in complex evaluation. */
struct SQMOperation {
  long id;
  Operands operands;
  Value inReal;
  Value inComplex;
};
/** Runs each operation both ways, and in complex evaluation once more with an earlier complex result in its
 * place. */
void ExpectOperations(std::vector<SQMOperation> const& operations, double tolerance = 0.0);

struct SQMVerification {
  long id;
  Operands operands;
  long code;
};
void ExpectVerifications(std::vector<SQMVerification> const& verifications);

}  // namespace qumel::test
