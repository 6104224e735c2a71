// Evaluates, and shows people where an expression went wrong.
#include "session.h"

#include <qumel/qumel.h>

#include <algorithm>
#include <fstream>
#include <istream>
#include <iterator>
#include <optional>
#include <ostream>
#include <sstream>

namespace qumel::cli {

namespace {

constexpr char kWhiteSpace[] = " \t\n\v\f\r";
constexpr char kLineEnds[] = "\n\r";

bool IsBlank(std::string_view text) { return text.find_first_not_of(kWhiteSpace) == std::string_view::npos; }

/** Whether c is one of the bytes behind the first of a character in UTF-8. */
bool ContinuesCharacter(char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U; }

/** Whether reading the text ended in this error, so that the library knows how far it came. */
bool IsErrorOfReading(long code) {
  return (code >= QMErrorUnknownToken && code <= QMErrorCloseParenFailed) || code == QMErrorTooManyOperands;
}

/** Where the last character that was read begins, as an index into text. White space does not count. */
std::optional<std::size_t> FindErrorPlace(long code, std::string_view text) {
  std::size_t const first = text.find_first_not_of(kWhiteSpace);
  if (!IsErrorOfReading(code) || first == std::string_view::npos) return {};
  auto const read = static_cast<std::size_t>(std::max(qmGetLastParseIndex(), 1L));
  std::size_t place = std::min(first + read, text.size()) - 1;
  auto const isPassedOver = [](char c) {
    return std::string_view(kWhiteSpace).find(c) != std::string_view::npos || ContinuesCharacter(c);
  };
  while (place > first && isPassedOver(text[place])) --place;
  return place;
}

/** A line of a text and a place in it. */
struct SQMLine {
  std::string_view text;
  std::size_t number;  // from 1
  std::size_t column;  // from 0, in bytes
};

SQMLine LineAt(std::string_view text, std::size_t place) {
  std::size_t const previousEnd =
      place == 0 ? std::string_view::npos : text.find_last_of(kLineEnds, place - 1);
  std::size_t const start = previousEnd == std::string_view::npos ? 0 : previousEnd + 1;
  std::size_t const end = std::min(text.find_first_of(kLineEnds, place), text.size());
  auto const number = 1 + std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(start), '\n');
  return {text.substr(start, end - start), static_cast<std::size_t>(number), place - start};
}

/** What stands before a caret so that it comes to stand under the column: tabs as in the line, else spaces,
 * one for each character of UTF-8 text. */
std::string PaddingTo(SQMLine const& line) {
  std::string padding;
  for (std::size_t i = 0; i < line.column; ++i) {
    if (!ContinuesCharacter(line.text[i])) padding += line.text[i] == '\t' ? '\t' : ' ';
  }
  return padding;
}

std::optional<std::string> ReadFile(std::string const& path) {
  try {
    std::ifstream file(path, std::ios::binary);
    if (file.is_open()) return std::string{std::istreambuf_iterator<char>(file), {}};
  } catch (std::ios_base::failure const&) {  // a folder opens, but has nothing to read
  }
  return {};
}

}  // namespace

CQMSession::CQMSession(std::ostream& results, std::ostream& errors) : m_results(results), m_errors(errors) {
  qmInitialize("");
  qmSetDefaultVariableScope('G');  // so that variables outlive the expression that made them
}

void CQMSession::Evaluate(std::string const& text, std::string const& path) {
  if (text.find('\0') != std::string::npos) {
    Report((path.empty() ? "" : path + ": ") + "the expression holds a zero byte");
    return;
  }
  char const* const result = qmEvalExpStrToStr(text.c_str());
  if (long const code = qmGetLastErrorID(); code != QMErrorNone) {
    ReportError(code, text, path);
  } else {
    m_results << (result != nullptr ? result : "") << std::endl;
  }
}

void CQMSession::EvaluateFile(std::string const& path) {
  std::optional<std::string> const text = ReadFile(path);
  if (text) {
    Evaluate(*text, path);
  } else {
    Report("cannot read " + path);
  }
}

void CQMSession::EvaluateLines(std::istream& lines, std::string_view prompt) {
  std::string line;
  while ((m_results << prompt).flush() && std::getline(lines, line)) {
    if (!IsBlank(line)) Evaluate(line);
  }
  if (!prompt.empty()) m_results << std::endl;
}

void CQMSession::Report(std::string_view message) {
  m_failed = true;
  m_errors << "qumel: " << message << std::endl;
}

void CQMSession::ReportError(long code, std::string_view text, std::string const& path) {
  std::ostringstream message;
  std::optional<std::size_t> const place = FindErrorPlace(code, text);
  SQMLine const line = LineAt(text, place.value_or(0));
  if (!path.empty()) message << path << ':';
  if (!path.empty() && place) message << line.number << ':' << line.column + 1 << ':';
  if (!path.empty()) message << ' ';
  char const* const explanation = qmGetLastErrorText();
  message << (explanation != nullptr ? explanation : "unknown error") << " (" << code << ')';
  if (place) message << "\n  " << line.text << "\n  " << PaddingTo(line) << '^';
  Report(message.str());
}

}  // namespace qumel::cli
