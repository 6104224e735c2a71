/* A host in C11 that sees nothing but the public header: it compiles without warnings, links and runs. */
#include <qumel/qumel.h>
/* What the header needs it includes itself; these are for the test. */
#include <stdio.h>
#include <string.h>

static int failures = 0;

static void expect(bool holds, char const* what) {
  if (holds) return;
  ++failures;
  fprintf(stderr, "failed: %s\n", what);
}

static long reported = 0;

static void keep_code(long code) { reported = code; }

static int32_t twice(unsigned long long handle) {
  return (int32_t)qmSetNumResult(handle, 2 * qmGetNumParm(handle, 0));
}

int main(void) {
  expect(qmInitialize(NULL), "the library starts");
  expect(qmVersion() == (float)QUMEL_VERSION_MAJOR + (float)QUMEL_VERSION_MINOR / 10, "the versions agree");

  double value = 20;
  double imaginary = 1;
  expect(qmLinkNumVar('G', "value", &value), "a variable is linked");
  expect(qmLinkCallbackOp('G', "twice", "prefix", "number", "number x", NULL, twice) == QMErrorNone,
         "a callback is defined");
  expect(qmEvalExpStrToNum("value = twice(value + 1)") == 42 && value == 42,
         "a callback and a variable work");
  expect(qmEvalExpStrToComp("value", &imaginary) == 42 && imaginary == 0, "a complex result has two parts");
  expect(strcmp(qmEvalExpStrToStr("\"a\" $+ \"b\""), "ab") == 0, "a text is handed back");

  expect(qmSetErrorCallback(keep_code), "an error callback is set");
  unsigned long long const bad = qmParseExp("1 +* 2)");
  expect(bad == 0 && qmGetLastErrorID() == reported && reported != QMErrorNone, "an error is reported");

  long radix = 0;
  char* digits = NULL;
  bool is_integer = false;
  bool flag = true;
  expect(QMU_GetBaseConversionConstants('H', &radix, &digits) && radix == 16 && digits[10] == 'A',
         "values come back through pointers");
  expect(QMU_ConvertNumberToBaseTen("xFF", &is_integer, &flag) == 255 && is_integer && !flag,
         "truth values come back through pointers");

  struct SQMThread* const thread = uGetThreadInfo(false);
  struct SQMContext const* const none = uFindExecutor("no such context");
  expect(thread != NULL && none == NULL && !uIsExecutor(none), "opaque pointers are handed around");
  expect(qmUnloadQumel(), "the library is unloaded");
  return failures == 0 ? 0 : 1;
}
