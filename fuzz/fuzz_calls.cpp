// Calls exported functions in any order with arguments from small pools: names, scopes, handles, sizes,
// texts. Inputs are written as in fuzz/seeds/fuzz_calls: a call a line, a letter a choice.
#include <initializer_list>
#include <iterator>
#include <utility>
#include <vector>

#include "fuzz/harness.h"

namespace {

/** Reads a text as choices, a character each: 'a' is the first choice, 'b' the second. White space only makes
 * texts readable; behind the end every choice is the first. */
class Choices {
 public:
  explicit Choices(std::string text) : m_text(std::move(text)) {
    std::erase_if(m_text, [](char c) { return c == ' ' || c == '\n'; });
  }

  bool IsAtEnd() const { return m_next == m_text.size(); }
  std::size_t Below(std::size_t count) {
    return IsAtEnd() ? 0 : static_cast<std::uint8_t>(m_text[m_next++] - 'a') % count;
  }
  bool YesOrNo() { return Below(2) == 0; }
  template <class Value>
  Value OneOf(std::initializer_list<Value> values) {
    return values.begin()[Below(values.size())];
  }

 private:
  std::string m_text;
  std::size_t m_next = 0;
};

class Calls {
 public:
  explicit Calls(std::string text) : m_choices(std::move(text)) {}

  void Run() {
    using Call = void (Calls::*)();
    static constexpr Call kCalls[] = {
        &Calls::CreateScalar, &Calls::CreateArray,  &Calls::Link,   &Calls::Set,    &Calls::Get,
        &Calls::SetElement,   &Calls::GetElement,   &Calls::Handle, &Calls::Delete, &Calls::Evaluate,
        &Calls::Parse,        &Calls::RunParsed,    &Calls::Define, &Calls::Forget, &Calls::SwitchContext,
        &Calls::DropContext,  &Calls::ChangeSetting};
    while (!m_choices.IsAtEnd()) (this->*kCalls[m_choices.Below(std::size(kCalls))])();
  }

 private:
  char Scope() { return m_choices.OneOf({'L', 'G', 'C', 'x'}); }
  char const* Name() {
    return m_choices.OneOf<char const*>({"a", "b", "c", "d", "pi", "", nullptr, "a b", "1a"});
  }
  double Number() { return m_choices.OneOf({0.0, 1.0, -2.5, 1e300, 1e10}); }
  long Small() { return static_cast<long>(m_choices.Below(7)) - 1; }
  std::uint64_t AnyHandle() {
    if (m_handles.empty()) return m_choices.Below(40);
    return m_choices.YesOrNo() ? m_handles[m_choices.Below(m_handles.size())] : m_choices.Below(40);
  }
  void Keep(std::uint64_t handle) {
    if (handle != 0) m_handles.push_back(handle);
  }
  char const* Text() {
    return m_choices.OneOf<char const*>({"a = 1",
                                         "a + b",
                                         "a[1] = 2",
                                         "b = \"text\"",
                                         "number c; c++",
                                         "global d = 3",
                                         "a <=> b",
                                         "sqrt(-4)",
                                         "twice(a)",
                                         "local a = pi",
                                         "cosmic b = 1",
                                         "a[b[1]]",
                                         "complex a; a = 1; real a",
                                         "b $+= b",
                                         "sum(a)",
                                         "forcecomplex; a",
                                         "",
                                         nullptr,
                                         "(",
                                         "string b; b = \"x\"; insert(b, b, 1)"});
  }

  void CreateScalar() {
    char const scope = Scope();
    char const* const name = Name();
    switch (m_choices.Below(4)) {
      case 0: Keep(qmCreateNumVar(scope, name, Number())); break;
      case 1: Keep(qmCreateComplexVar(scope, name, Number(), Number())); break;
      case 2: Keep(qmCreateBoolVar(scope, name, m_choices.YesOrNo())); break;
      default: Keep(qmCreateStrVar(scope, name, Small() * 7, Name())); break;
    }
  }
  void CreateArray() {
    char const scope = Scope();
    char const* const name = Name();
    long const dims = Small() + 2;
    long const e1 = Small(), e2 = Small(), e3 = Small();
    switch (m_choices.Below(4)) {
      case 0: Keep(qmCreateNumArray(scope, name, dims, e1, e2, e3, 2, 2, 2)); break;
      case 1: Keep(qmCreateComplexArray(scope, name, dims, e1, e2, e3, 2, 2, 2)); break;
      case 2: Keep(qmCreateBoolArray(scope, name, dims, e1, e2, e3, 2, 2, 2)); break;
      default: Keep(qmCreateStrArray(scope, name, Small() * 7, dims, e1, e2, e3, 2, 2, 2)); break;
    }
  }
  // The memory of links outlives every context that sees it.
  void Link() {
    static double number = 1, numbers[16] = {}, parts[2] = {};
    static bool flag = false;
    static char text[16] = "linked";
    char const scope = Scope();
    char const* const name = Name();
    switch (m_choices.Below(5)) {
      case 0: qmLinkNumVar(scope, name, &number); break;
      case 1: qmLinkComplexVar(scope, name, parts); break;
      case 2: qmLinkBoolVar(scope, name, &flag); break;
      case 3: qmLinkStrVar(scope, name, text, sizeof text - 1); break;
      default: qmLinkNumArray(scope, name, numbers, 2, 4, 4, 0, 0, 0, 0); break;
    }
  }
  void Set() {
    char const scope = Scope();
    char const* const name = Name();
    qmSetNumVar(scope, name, Number());
    qmSetStrVarByHandle(AnyHandle(), Text());
    qmSetComplexVarByHandle(AnyHandle(), Number(), Number());
    qmSetBoolVar(scope, name, m_choices.YesOrNo());
  }
  void Get() {
    double real = 0, imaginary = 0;
    qmGetNumVarValue(Scope(), Name());
    qmGetComplexVarValue(Scope(), Name(), &real, &imaginary);
    qmGetStrVarValueByHandle(AnyHandle());
    qmGetBoolVarValueByHandle(AnyHandle());
    qmGetVarType(Scope(), Name());
  }
  void SetElement() {
    qmSetNumArrayElement(Scope(), Name(), Number(), Small(), Small(), Small(), Small(), 0, 0, 0);
    qmSetStrArrayElementByHandle(AnyHandle(), Text(), Small(), Small(), Small(), 0, 0, 0, 0);
    qmSetComplexArrayElementByHandle(AnyHandle(), Number(), Number(), Small(), Small(), Small(), 0, 0, 0, 0);
  }
  void GetElement() {
    qmGetNumArrayElementByHandle(AnyHandle(), Small(), Small(), Small(), Small(), 0, 0, 0);
    qmGetStrArrayElement(Scope(), Name(), Small(), Small(), Small(), Small(), 0, 0, 0);
    qmGetBoolArrayElement(Scope(), Name(), Small(), Small(), Small(), Small(), 0, 0, 0);
  }
  void Handle() {
    if (m_choices.YesOrNo()) Keep(qmGetVarHandle(Scope(), Name()));
    qmIsArrayHandle(AnyHandle());
    if (m_choices.YesOrNo()) qmReleaseVarHandle(AnyHandle());
  }
  void Delete() { qmDeleteVar(Scope(), Name()); }
  void Evaluate() { qmEvalExpStr(Text()); }
  void Parse() { Keep(qmParseExp(Text())); }
  void RunParsed() {
    std::uint64_t const handle = AnyHandle();
    qmEvalExpHndl(handle);
    qmAnnotateParsedExp(handle);
    qmRevertParsedExp(handle);
    if (m_choices.YesOrNo()) qmDeleteExp(handle);
  }
  void Define() {
    char const scope = Scope();
    if (m_choices.YesOrNo()) qmDefineExpOp(scope, "twice", "prefix", "number", "number n", "", "n*2");
    else qmLinkCallbackOp(scope, "twice", "prefix", "number", "number n", "", OnTwice);
  }
  void Forget() { qmDeleteOp(Scope(), "twice"); }
  void SwitchContext() {
    char const* const name = m_choices.OneOf({"fuzz", "other", "Qumel"});
    if (m_choices.YesOrNo()) qmCreatePublicContext(name);
    qmSetContext(name, m_choices.YesOrNo());
  }
  void DropContext() {
    switch (m_choices.Below(4)) {
      case 0: qmClearContext(); break;
      case 1: qmDestroyPublicContext("other"); break;
      case 2: qmReset(); break;
      default: qmDestroyPrivateContext("fuzz"); break;
    }
  }
  void ChangeSetting() {
    qmSetRadixMark(m_choices.OneOf({'P', 'C', 'x'}));
    qmSetOutputBase(m_choices.OneOf({'D', 'H', 'B', 'O', 'T', 'x'}));
    qmSetFormattedResultPrecisionLimit(static_cast<int>(Small()) * 400);
    qmSetDefaultVariableScope(Scope());
    qmSetLastError(Small() * 1000);
  }

  static std::int32_t OnTwice(unsigned long long handle) {
    qmEvalExpStr("a = a + 1");
    return static_cast<std::int32_t>(qmSetNumResult(handle, 2 * qmGetNumParm(handle, 0)));
  }

  Choices m_choices;
  std::vector<std::uint64_t> m_handles;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  auto const [text, dialect] = qumel_fuzz::Input(data, size);
  qumel_fuzz::Context const context(dialect);
  Calls(text).Run();
  // what outlives the context
  qmSetContext("Qumel", false);
  qmDeleteOp('C', "twice");
  for (char const* name : {"a", "b", "c", "d"}) {
    for (char const scope : {'G', 'C'}) qmDeleteVar(scope, name);
  }
  qmDestroyPublicContext("other");
  return 0;
}
