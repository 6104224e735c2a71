// fparser: parsed formulas are optimised, as its guide advises for those that run often; texts are read by
// one parser.
#include <fparser.hh>

#include <numbers>
#include <stdexcept>

#include "bench/engine.h"

namespace bench {
namespace {

class Parser : public FunctionParser {
 public:
  Parser() { AddConstant("pi", std::numbers::pi); }

  void Read(std::string const& text) {
    static std::string const names = [] {
      std::string joined = Variables::kNames[0];
      for (std::size_t i = 1; i < Variables::kCount; ++i) joined += std::string(",") + Variables::kNames[i];
      return joined;
    }();
    if (Parse(text, names) >= 0) throw std::runtime_error(text + ": " + ErrorMsg());
  }
};

class Fparser final : public Engine {
 public:
  explicit Fparser(Variables& variables) : m_variables(variables) {}

  Dialect const& GetDialect() const override {
    static Dialect const dialect = {
        {{"&&", "&"}, {"||", "|"}, {"==", "="}}, {{"pow", "@1^@2"}}, "if(@1, @2, @3)"};
    return dialect;
  }

  std::unique_ptr<Formula> Compile(std::string const& text) override {
    auto parser = std::make_unique<Parser>();
    parser->Read(text);
    parser->Optimize();
    return MakeFormula(
        m_variables, [parser = std::move(parser), values = m_variables.now] { return parser->Eval(values); });
  }

  double EvaluateText(std::string const& text) override {
    m_parser.Read(text);
    return m_parser.Eval(m_variables.now);
  }

 private:
  Variables& m_variables;
  Parser m_parser;
};

}  // namespace

std::unique_ptr<Engine> MakeFparser(Variables& variables) { return std::make_unique<Fparser>(variables); }

}  // namespace bench
