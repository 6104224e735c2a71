// Calls exported functions in any order with arguments from small pools: names, scopes, handles, sizes,
// texts.
#include <fuzzer/FuzzedDataProvider.h>

#include <vector>

#include "fuzz/harness.h"

namespace {

class Calls {
 public:
  Calls(std::uint8_t const* data, std::size_t size) : m_data(data, size) {}

  void Run() {
    using Call = void (Calls::*)();
    static constexpr Call kCalls[] = {
        &Calls::CreateScalar, &Calls::CreateArray,  &Calls::Link,   &Calls::Set,    &Calls::Get,
        &Calls::SetElement,   &Calls::GetElement,   &Calls::Handle, &Calls::Delete, &Calls::Evaluate,
        &Calls::Parse,        &Calls::RunParsed,    &Calls::Define, &Calls::Forget, &Calls::SwitchContext,
        &Calls::DropContext,  &Calls::ChangeSetting};
    while (m_data.remaining_bytes() > 0) (this->*m_data.PickValueInArray(kCalls))();
  }

 private:
  char Scope() { return m_data.PickValueInArray({'L', 'G', 'C', 'x'}); }
  char const* Name() {
    return m_data.PickValueInArray<char const*>({"a", "b", "c", "d", "pi", "", nullptr, "a b", "1a"});
  }
  double Number() { return m_data.PickValueInArray({0.0, 1.0, -2.5, 1e300, 1e10}); }
  long Small() { return m_data.ConsumeIntegralInRange<long>(-1, 5); }
  std::uint64_t AnyHandle() {
    if (m_handles.empty() || m_data.ConsumeBool()) return m_data.ConsumeIntegralInRange<std::uint64_t>(0, 40);
    return m_handles[m_data.ConsumeIntegralInRange<std::size_t>(0, m_handles.size() - 1)];
  }
  void Keep(std::uint64_t handle) {
    if (handle != 0) m_handles.push_back(handle);
  }
  char const* Text() {
    return m_data.PickValueInArray<char const*>({"a = 1",
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
    switch (m_data.ConsumeIntegralInRange(0, 3)) {
      case 0: Keep(qmCreateNumVar(scope, name, Number())); break;
      case 1: Keep(qmCreateComplexVar(scope, name, Number(), Number())); break;
      case 2: Keep(qmCreateBoolVar(scope, name, m_data.ConsumeBool())); break;
      default: Keep(qmCreateStrVar(scope, name, Small() * 7, Name())); break;
    }
  }
  void CreateArray() {
    char const scope = Scope();
    char const* const name = Name();
    long const dims = Small() + 2;
    long const e1 = Small(), e2 = Small(), e3 = Small();
    switch (m_data.ConsumeIntegralInRange(0, 3)) {
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
    switch (m_data.ConsumeIntegralInRange(0, 4)) {
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
    qmSetBoolVar(scope, name, m_data.ConsumeBool());
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
    if (m_data.ConsumeBool()) Keep(qmGetVarHandle(Scope(), Name()));
    qmIsArrayHandle(AnyHandle());
    if (m_data.ConsumeBool()) qmReleaseVarHandle(AnyHandle());
  }
  void Delete() { qmDeleteVar(Scope(), Name()); }
  void Evaluate() { qmEvalExpStr(Text()); }
  void Parse() { Keep(qmParseExp(Text())); }
  void RunParsed() {
    std::uint64_t const handle = AnyHandle();
    qmEvalExpHndl(handle);
    qmAnnotateParsedExp(handle);
    qmRevertParsedExp(handle);
    if (m_data.ConsumeBool()) qmDeleteExp(handle);
  }
  void Define() {
    char const scope = Scope();
    if (m_data.ConsumeBool()) qmDefineExpOp(scope, "twice", "prefix", "number", "number n", "", "n*2");
    else qmLinkCallbackOp(scope, "twice", "prefix", "number", "number n", "", OnTwice);
  }
  void Forget() { qmDeleteOp(Scope(), "twice"); }
  void SwitchContext() {
    char const* const name = m_data.PickValueInArray({"fuzz", "other", "Qumel"});
    if (m_data.ConsumeBool()) qmCreatePublicContext(name);
    qmSetContext(name, m_data.ConsumeBool());
  }
  void DropContext() {
    switch (m_data.ConsumeIntegralInRange(0, 3)) {
      case 0: qmClearContext(); break;
      case 1: qmDestroyPublicContext("other"); break;
      case 2: qmReset(); break;
      default: qmDestroyPrivateContext("fuzz"); break;
    }
  }
  void ChangeSetting() {
    qmSetRadixMark(m_data.PickValueInArray({'.', ',', 'x'}));
    qmSetOutputBase(m_data.PickValueInArray({'d', 'h', 'b', 'D', 'H'}));
    qmSetFormattedResultPrecisionLimit(static_cast<int>(Small()) * 400);
    qmSetDefaultVariableScope(Scope());
    qmSetLastError(Small() * 1000);
  }

  static std::int32_t OnTwice(unsigned long long handle) {
    qmEvalExpStr("a = a + 1");
    return static_cast<std::int32_t>(qmSetNumResult(handle, 2 * qmGetNumParm(handle, 0)));
  }

  FuzzedDataProvider m_data;
  std::vector<std::uint64_t> m_handles;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  {
    qumel_fuzz::Context const context(0);
    Calls(data, size).Run();
  }
  for (char const* name : {"a", "b", "c", "d"})
    for (char const scope : {'G', 'C'}) qmDeleteVar(scope, name);
  return 0;
}
