// A folder for the files that a test makes.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>

namespace qumel {

/** A new folder, gone with everything in it when the object goes. */
class CQMTestFolder {
 public:
  CQMTestFolder() {
    m_path = (std::filesystem::temp_directory_path() / "qumel-test-XXXXXX").string();
    if (mkdtemp(m_path.data()) == nullptr) std::abort();
  }
  ~CQMTestFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
  }
  CQMTestFolder(CQMTestFolder const&) = delete;
  CQMTestFolder& operator=(CQMTestFolder const&) = delete;

  std::string const& Path() const { return m_path; }

 private:
  std::string m_path;
};

/** The working folder is a new one while the object lives. */
class CQMTestWorkingFolder : public CQMTestFolder {
 public:
  CQMTestWorkingFolder() : m_previous(std::filesystem::current_path()) {
    std::filesystem::current_path(Path());
  }
  ~CQMTestWorkingFolder() {
    std::error_code ignored;
    std::filesystem::current_path(m_previous, ignored);
  }

 private:
  std::filesystem::path m_previous;
};

}  // namespace qumel
