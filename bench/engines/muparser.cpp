// muParser: one parser, to which variables are bound by address.
#include <muParser.h>

#include <cmath>
#include <numbers>
#include <stdexcept>

#include "bench/engine.h"

namespace bench {
namespace {

class Parser : public mu::Parser {
 public:
  explicit Parser(Variables& variables) {
    for (std::size_t i = 0; i < Variables::kCount; ++i) DefineVar(Variables::kNames[i], &variables.now[i]);
    DefineConst("pi", std::numbers::pi);  // the library's own has twelve digits
    DefineFun("cbrt", static_cast<double (*)(double)>(std::cbrt));
    DefineFun("floor", static_cast<double (*)(double)>(std::floor));
    DefineFun("ceil", static_cast<double (*)(double)>(std::ceil));
  }
};

/** Runs a function that may end in an exception of the library. */
template <typename Call>
auto Guarded(std::string const& text, Call call) {
  try {
    return call();
  } catch (mu::Parser::exception_type const& error) {
    throw std::runtime_error(text + ": " + error.GetMsg());
  }
}

class MuParser final : public Engine {
 public:
  explicit MuParser(Variables& variables) : m_variables(variables), m_parser(variables) {}

  Dialect const& GetDialect() const override {
    static Dialect const dialect = {{}, {{"pow", "@1^@2"}}};
    return dialect;
  }

  std::unique_ptr<Formula> Compile(std::string const& text) override {
    return Guarded(text, [&] {
      auto parser = std::make_unique<Parser>(m_variables);
      parser->SetExpr(text);
      parser->Eval();
      return MakeFormula(m_variables, [parser = std::move(parser)] { return parser->Eval(); });
    });
  }

  double EvaluateText(std::string const& text) override {
    return Guarded(text, [&] {
      m_parser.SetExpr(text);
      return m_parser.Eval();
    });
  }

 private:
  Variables& m_variables;
  Parser m_parser;
};

}  // namespace

std::unique_ptr<Engine> MakeMuParser(Variables& variables) { return std::make_unique<MuParser>(variables); }

}  // namespace bench
