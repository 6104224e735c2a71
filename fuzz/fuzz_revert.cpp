// Parses the input, turns it back into text and parses that: both must mean the same.
#include "fuzz/harness.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  auto const [text, dialect] = qumel_fuzz::Input(data, size);
  qumel_fuzz::Context const context(dialect);
  char const* const pair = context.HasDecimalComma() ? "number a; number b" : "number a, number b";
  qmDefineExpOp('L', "twice", "postfix", "number", "number a", "", "a*2");
  qmDefineExpOp('L', "between", "infix", "number", pair, "+", "(a+b)/2");
  qmCheckExp(text.c_str());
  qmAnnotateExp(text.c_str());
  auto const first = qmParseExp(text.c_str());
  if (first == 0) return 0;
  std::string const annotated = qmAnnotateParsedExp(first);
  std::string const reverted = qmRevertParsedExp(first);
  qmDeleteExp(first);
  auto const second = qmParseExp(reverted.c_str());
  if (second == 0) qumel_fuzz::Fail("the reverted text does not parse", text, reverted);
  std::string const again = qmAnnotateParsedExp(second);
  if (annotated != again) qumel_fuzz::Fail("the reverted text means something else", text, reverted);
  qmDeleteExp(second);
  return 0;
}
