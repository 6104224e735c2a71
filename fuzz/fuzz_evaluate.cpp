// Evaluates each line of the input in one context, as text and by handle, twice.
#include "fuzz/harness.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  auto const [text, dialect] = qumel_fuzz::Input(data, size);
  qumel_fuzz::Context const context(dialect);
  std::size_t begin = 0;
  while (begin < text.size()) {
    std::size_t const end = std::min(text.find('\n', begin), text.size());
    std::string const line = text.substr(begin, end - begin);
    begin = end + 1;
    bool const runs = !qumel_fuzz::MayLoop(line);
    if (runs) qmEvalExpStr(line.c_str());
    auto const handle = qmParseExp(line.c_str());
    for (int run = 0; run < 2 && runs; ++run) qmEvalExpHndl(handle);
    if (std::string(qmGetLastStrResult()).size() > 1023) std::abort();
    qmDeleteExp(handle);
  }
  return 0;
}
