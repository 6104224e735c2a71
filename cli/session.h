// One run of the command: expressions evaluated one after another in one context, results and errors printed.
#pragma once

#include <iosfwd>
#include <string>
#include <string_view>

namespace qumel::cli {

class CQMSession {
 public:
  CQMSession(std::ostream& results, std::ostream& errors);

  /** Evaluates text and prints its result, or its error with the place where it is known. */
  void Evaluate(std::string const& text) { Evaluate(text, {}); }
  /** Evaluates the file as one program. */
  void EvaluateFile(std::string const& path);
  /** Evaluates lines up to the end of input. A prompt is printed before each when there is one. */
  void EvaluateLines(std::istream& lines, std::string_view prompt);

  bool HasFailed() const { return m_failed; }

 private:
  void Evaluate(std::string const& text, std::string const& path);
  void Report(std::string_view message);
  void ReportError(long code, std::string_view text, std::string const& path);

  std::ostream& m_results;
  std::ostream& m_errors;
  bool m_failed = false;
};

}  // namespace qumel::cli
