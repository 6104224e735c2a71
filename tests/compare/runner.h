// Runs programs through a library and writes down all that can be observed.
#pragma once

#include <cstdint>
#include <set>
#include <string>

#include "compare/host.h"
#include "compare/operator_forms.h"
#include "compare/program.h"

namespace qumel::compare {

/** A record is a line "program N", lines of a label and fields parted by tabs, and a line "end". */
class Runner {
 public:
  /** Starts the library. */
  Runner(Library const& library, OperatorForms const& forms, std::uint64_t seed);

  /** The record of the program with that number, without the parts numbered in dropped. Programs of a block
   * that shares a context are to be run in their order, from its first or any other one on. */
  std::string Run(std::uint64_t number, std::set<std::size_t> const& dropped);

 private:
  void OpenContext(Settings const& settings);
  /** Destroys it and all that programs left process-wide, and notes how many objects stay. */
  void CloseContext();
  void RunAsText(Program const& program, std::string const& text);
  void RunByHandle(Program const& program, std::string const& text);
  void Perform(Acts const& acts);
  void DescribeWhatIsLeft(char const* label, std::set<std::string> const& names);

  /** Adds a line: what a call answered, and the state of the context after it. */
  void Observe(std::string const& label, std::string const& answer);
  void Line(std::string const& label, std::string const& content);

  Library const& m_library;
  OperatorForms const& m_forms;
  std::uint64_t m_seed;
  Host m_host;
  std::string m_record;
  static constexpr std::uint64_t kNone = UINT64_MAX;
  std::uint64_t m_openBlock = kNone;  // whose shared context is open
  bool m_isPrivate = false;           // the open context
  std::set<std::string> m_names;      // that may stand process-wide
  long m_objectsBefore = 0;
};

}  // namespace qumel::compare
