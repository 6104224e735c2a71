// What operators, expressions and resolvers may see of the context that they run in.
#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "base/mersenne_twister.h"

namespace qumel {

class CQMContextGate;
class CQMOperatorFactory;
class CQMResolver;
class CQMSymbolTable;
struct SQMCompilation;
struct SQMOperatorDefinition;

/** Kinds of resolvers by number; every value not named here selects the optimised real resolver. */
enum class EQMResolverClass : long {
  RealOptimized = 1,
  RealBaseline = 2,
  Complex = 4,
  Complex5 = 5,
  Complex6 = 6
};

/** The last result as the "last" operator reads it; text is NUL-terminated and lives in the context. */
struct SQMLastResult {
  char type;  // a TypeLetter
  double real;
  double imaginary;
  bool boolean;
  char const* text;
};

/** Implemented by the context. One thread at a time. */
class CQMOperatorContext {
 public:
  CQMOperatorContext();
  virtual ~CQMOperatorContext();
  CQMOperatorContext(CQMOperatorContext const&) = delete;
  CQMOperatorContext& operator=(CQMOperatorContext const&) = delete;

  // what compilations use; what is given back serves the next one
  std::unique_ptr<SQMCompilation> TakeCompilation();
  void GiveBack(std::unique_ptr<SQMCompilation> compilation);

  // angles; programs keep the addresses
  virtual double const& GetAngleFactorToRadians() const = 0;
  virtual double const& GetAngleFactorFromRadians() const = 0;

  // settings that operators read
  virtual bool GetAllowComplexResults() const = 0;
  virtual bool GetForceComplexResults() const = 0;
  /** Whether an operation on real numbers may have a complex result. */
  bool MayBecomeComplex() const { return GetAllowComplexResults() || GetForceComplexResults(); }
  virtual char GetDefaultVariableScope() const = 0;
  virtual long GetArrayBase() const = 0;
  virtual bool GetInvertArrayIndices() const = 0;

  // settings that mode words change; each changes exactly one flag
  virtual void SetAngleUnit(char unit) = 0;
  virtual void SetNumberBase(char base) = 0;
  virtual void SetCoordinateFormat(char format) = 0;
  virtual void SetFormattedResultPrecisionLimit(int digits) = 0;
  virtual void SetAllowComplexFlag(bool allow) = 0;
  virtual void SetForceComplexFlag(bool force) = 0;

  /** What guards the objects of the context that are found by handle. */
  virtual CQMContextGate* GetHandleGuard() { return nullptr; }
  virtual SQMLastResult GetLastResult() const = 0;
  virtual CQMRandomGenerator& GetRandomGenerator() = 0;
  virtual void SetLastError(long code) = 0;

  // what a compilation needs
  virtual CQMResolver* GetResolver(EQMResolverClass kind) = 0;
  virtual CQMOperatorFactory* GetOperatorFactory() = 0;
  virtual CQMSymbolTable* GetCosmicSymbolTable() = 0;
  virtual CQMSymbolTable* GetGlobalSymbolTable() = 0;
  /** The definition of an operator made by a host; null for an unknown id. Kept alive by whoever holds it. */
  virtual std::shared_ptr<SQMOperatorDefinition const> FindOperatorDefinition(long id) = 0;

 private:
  std::vector<std::unique_ptr<SQMCompilation>> m_spare;
};

}  // namespace qumel
