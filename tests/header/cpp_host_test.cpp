// A host in C++17 that sees nothing but the public header. It is compiled twice: as it stands, and with
// QM_PLAIN_POINTERS, where values come back through pointers as in C.
#include <qumel/qumel.h>
// What the header needs it includes itself; these are for the test.
#include <iostream>
#include <string>
#include <type_traits>

namespace {

#ifdef QM_PLAIN_POINTERS
template <typename T>
T* Reference(T& value) {
  return &value;
}
static_assert(std::is_same_v<QM_REF(long), long*>);
#else
template <typename T>
T& Reference(T& value) {
  return value;
}
static_assert(std::is_same_v<QM_REF(long), long&>);
#endif

int failures = 0;

void Expect(bool holds, char const* what) {
  if (holds) return;
  ++failures;
  std::cerr << "failed: " << what << '\n';
}

}  // namespace

int main() {
  Expect(qmInitialize(""), "the library starts");

  long radix = 0;
  char* digits = nullptr;
  bool isInteger = false;
  bool flag = true;
  Expect(QMU_GetBaseConversionConstants('T', Reference(radix), Reference(digits)) && radix == 12 &&
             std::string(digits) == "0123456789DE",
         "values come back");
  Expect(QMU_ConvertNumberToBaseTen("b101", Reference(isInteger), Reference(flag)) == 5 && isInteger && !flag,
         "truth values come back");

  Expect(qmLinkCallbackOp('G', "shout", "postfix", "string", "string s", nullptr,
                          [](unsigned long long handle) -> std::int32_t {
                            return qmSetStrResult(handle,
                                                  (std::string(qmGetStrParm(handle, 0)) + "!").c_str());
                          }) == QMErrorNone,
         "a lambda is a callback");
  Expect(std::string(qmEvalExpStrToStr("\"hey\" shout")) == "hey!", "a callback is called");
  EQMErrorCode const missing = QMErrorNotFound;
  Expect(qmDeleteVar('G', "missing") == missing, "error codes are an enumeration");
  SQMContext const* const none = uFindExecutor("no such context");
  Expect(none == nullptr && !uIsExecutor(none), "opaque pointers are handed around");
  Expect(qmUnloadQumel(), "the library is unloaded");
  return failures == 0 ? 0 : 1;
}
