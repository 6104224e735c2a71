// The text files that columns and tables are dumped to.
#pragma once

#include <cstdio>
#include <memory>
#include <string>

namespace qumel {

/** A file in the working folder. When it cannot be opened, what is written to it is dropped. */
class CQMDumpFile {
 public:
  explicit CQMDumpFile(std::string const& name) : m_file(std::fopen(name.c_str(), "wt")) {}

  void Write(std::string const& text) {
    if (m_file != nullptr) std::fwrite(text.data(), 1, text.size(), m_file.get());
  }

 private:
  struct SQMCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };
  std::unique_ptr<std::FILE, SQMCloser> m_file;
};

}  // namespace qumel
