// Qumel through its public header, in a private context that is current while the engine lives.
#include <utility>

#include "bench/engine.h"
#include "bench/qumel_context.h"

namespace bench {
namespace {

class Parsed {
 public:
  explicit Parsed(std::string const& text) : m_handle(qmParseExp(text.c_str())) { ThrowLastError(text); }
  Parsed(Parsed&& other) noexcept : m_handle(std::exchange(other.m_handle, 0)) {}
  Parsed& operator=(Parsed&&) = delete;
  ~Parsed() { qmDeleteExp(m_handle); }
  double operator()() const { return qmEvalExpHndlToNum(m_handle); }

 private:
  unsigned long long m_handle;
};

class Qumel final : public Engine {
 public:
  explicit Qumel(Variables& variables) : m_variables(variables) {
    for (std::size_t i = 0; i < Variables::kCount; ++i)
      qmLinkNumVar('L', Variables::kNames[i], &variables.now[i]);
  }

  Dialect const& GetDialect() const override {
    // There is no choice within an expression, so that a choice becomes statements; and no exponential
    // function.
    static Dialect const dialect = {{{"log", "ln"}, {"log10", "log"}},
                                    {{"pow", "@1^@2"}, {"exp", "2.718281828459045^@1"}},
                                    "if (@1) then @2 else @3 end",
                                    "r = @1;",
                                    "@1",
                                    "@1 return r"};
    return dialect;
  }

  std::unique_ptr<Formula> Compile(std::string const& text) override {
    return MakeFormula(m_variables, Parsed(text));
  }

  double EvaluateText(std::string const& text) override { return qmEvalExpStrToNum(text.c_str()); }

 private:
  Variables& m_variables;
  QumelContext const m_context;
};

}  // namespace

std::unique_ptr<Engine> MakeQumel(Variables& variables) { return std::make_unique<Qumel>(variables); }

std::unique_ptr<Formula> MakeQumelText(Variables& variables, std::string const& text) {
  return MakeFormula(variables, [text] { return qmEvalExpStrToNum(text.c_str()); });
}

}  // namespace bench
