// The operators, the notation and the context of test programs.
#include "program_runner.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>
#include <unordered_map>

#include "support/postfix.h"

namespace qumel::test {

namespace {

struct SQMWord {
  long id;
  int operands;
};

std::unordered_map<std::string_view, SQMWord> const kWords = {
    {"|_", {OpId::RectangularComplex, 2}},
    {"=", {OpId::Assign, 2}},
    {"+=", {OpId::AddAssign, 2}},
    {"-=", {OpId::SubtractAssign, 2}},
    {"*=", {OpId::MultiplyAssign, 2}},
    {"/=", {OpId::DivideAssign, 2}},
    {"%=", {OpId::ModuloAssign, 2}},
    {"<=>", {OpId::Exchange, 2}},
    {"==", {OpId::Equal, 2}},
    {"<", {OpId::LessThan, 2}},
    {"+", {OpId::Addition, 2}},
    {"neg", {OpId::TightMinus, 1}},
    {"sqrt", {OpId::SquareRoot, 1}},
    {"true", {OpId::True, 0}},
    {"pi", {OpId::Pi, 0}},
    {"if", {OpId::If, 1}},
    {"unless", {OpId::Unless, 1}},
    {"then", {OpId::Then, 0}},
    {"else", {OpId::Else, 0}},
    {"while", {OpId::While, 0}},
    {"until", {OpId::Until, 0}},
    {"always", {OpId::Always, 0}},
    {"do", {OpId::Do, 1}},
    {"end", {OpId::End, 0}},
    {"next", {OpId::Next, 0}},
    {"goto", {OpId::Goto, 1}},
    {"label", {OpId::LabelMark, 1}},
    {"select", {OpId::Select, 1}},
    {"case", {OpId::Case, 1}},
    {"default", {OpId::Default, 0}},
    {"when", {OpId::When, 1}},
    {"is", {OpId::Is, 1}},
    {"otherwise", {OpId::Otherwise, 0}},
    {"break", {OpId::Break, 0}},
    {"continue", {OpId::Continue, 0}},
    {"return", {OpId::Return, 1}},
    {"exit", {OpId::Exit, 0}},
    {"seterror", {OpId::SetError, 1}},
    {"clearerror", {OpId::ClearError, 0}},
    {"cosmic", {OpId::CosmicScope, 0}},
    {"global", {OpId::GlobalScope, 0}},
    {"local", {OpId::LocalScope, 0}},
    {"complex", {OpId::ComplexWord, 0}},
    {"number", {OpId::NumberWord, 1}},
    {"string", {OpId::StringWord, 1}},
    {"boolean", {OpId::BooleanWord, 1}},
};

std::string OperatorItem(SQMWord const& word) {
  return "!" + std::to_string(word.id) + "." + std::to_string(word.operands);
}

}  // namespace

std::string PostfixOf(std::string_view program) {
  std::istringstream words{std::string(program)};
  std::string postfix;
  for (std::string word; words >> word;) {
    char const first = word.front();
    if (first == ';') {
      postfix += ';';
    } else if (first >= '0' && first <= '9') {
      postfix += "#d" + word;
    } else if (first == '\'') {
      postfix += "$" + std::to_string(word.size() - 1) + ":" + word.substr(1);
    } else if (first == '[') {
      postfix += OperatorItem({OpId::ArrayIndex, 1 + std::stoi(word.substr(1))});
    } else if (auto const found = kWords.find(word); found != kWords.end()) {
      postfix += OperatorItem(found->second);
    } else {
      postfix += "@" + word;
    }
  }
  return postfix;
}

CQMTestContext::CQMTestContext() { m_factory.Initialize(this); }

CQMResolver* CQMTestContext::GetResolver(EQMResolverClass kind) {
  if (kind == EQMResolverClass::Complex) return &m_complex;
  return &m_real;
}

std::unique_ptr<CQMExpression> CQMTestContext::Compile(std::string_view program) {
  auto expression = std::make_unique<CQMExpression>(*this);
  expression->SetParsedExpression(ReadPostfix(PostfixOf(program)), true);
  return expression;
}

std::string CQMTestContext::Resolve(CQMExpression& expression) {
  long const code = expression.Resolve();
  return code == Error::None ? Describe(expression.GetResultDatum()) : "error " + std::to_string(code);
}

std::string CQMTestContext::Run(std::string_view program) { return Resolve(*Compile(program)); }

std::string CQMTestContext::Describe(CQMDatum* datum) {
  std::ostringstream text;
  text.precision(15);
  switch (datum != nullptr ? datum->GetType() : EQMDataType::Undefined) {
    case EQMDataType::Undefined:
    case EQMDataType::Untyped: return "none";
    case EQMDataType::Boolean: return datum->BooleanByte() == 1 ? "true" : "false";
    case EQMDataType::String: return "'" + std::string(datum->GetText());
    case EQMDataType::Complex:
      text << datum->Real() << (datum->Imaginary() < 0.0 ? "" : "+") << datum->Imaginary() << "i";
      return text.str();
    default: text << datum->Real(); return text.str();
  }
}

CQMDatum* CQMTestContext::Find(char scope, std::string_view name) {
  CQMSymbolTable& table = scope == Scope::kCosmic ? m_cosmic : m_global;
  return static_cast<CQMDatum*>(table.GetSymbol(name, true));
}

CQMDatum& CQMTestContext::AddGlobal(std::unique_ptr<CQMDatum> variable) {
  CQMDatum& entered = *variable.release();
  m_global.AddSymbol(&entered);
  return entered;
}

void ExpectOutcomes(std::span<SQMProgram const> programs) {
  for (SQMProgram const& program : programs) {
    CQMTestContext context;
    EXPECT_EQ(context.Run(program.text), program.outcome) << program.text;
  }
}

}  // namespace qumel::test
