// Counting what records tell.
#include "compare/coverage.h"

#include <cstdio>
#include <set>
#include <string_view>

#include "compare/operator_forms.h"
#include "compare/record.h"

namespace qumel::compare {

namespace {

constexpr std::uint64_t kFewSuccesses = 20;

/** Operators of an annotated text: "!1301.2\t\t*", escaped. */
std::set<std::string> OperatorsIn(std::string_view annotated) {
  std::set<std::string> operators;
  for (std::size_t at = annotated.find("\\n!"); at != std::string_view::npos;
       at = annotated.find("\\n!", at + 1)) {
    std::size_t const id = at + 3, dot = annotated.find('.', id), token = annotated.find("\\t\\t", id);
    std::size_t const end = annotated.find("\\n", id);
    if (dot > token || token > end) continue;  // an operator of the host has no token here
    operators.insert(std::string(annotated.substr(id, dot - id)) + " " +
                     std::string(annotated.substr(token + 4, end - token - 4)));
  }
  return operators;
}

/** What stands behind a word of control flow may not have run. */
bool MayHaveBeenPassedBy(std::set<std::string> const& operators) {
  for (std::string const& op : operators)
    if (op.size() > 4 && op.starts_with("50") && op[4] == ' ') return true;
  return false;
}
bool IsWord(std::string const& op) { return op[0] == '5' && op[4] == ' '; }

}  // namespace

void Coverage::Add(std::string const& record) {
  ++m_programs;
  std::string_view const title = LineAt(record, 0);
  if (title.find("mistake") != std::string_view::npos) ++m_mistaken;
  if (title.find("shared") != std::string_view::npos) ++m_shared;
  std::set<std::string> operators;
  for (std::size_t at = 0; at < record.size();) {
    std::string_view const line = LineAt(record, at);
    at += line.size() + 1;
    std::string_view const label = LabelOf(line), code = FieldOf(line, "code");
    if (code.empty() || label == "act") continue;
    Count& way = m_ways[std::string(label)];
    ++way.programs;
    if (code == "0") ++way.succeeded;
    if (label == "annotate") operators = OperatorsIn(FieldOf(line, "answer"));
    if (label != "text to text") continue;
    ++m_codes[std::string(code)];
    bool const isDoubtful = MayHaveBeenPassedBy(operators);
    for (std::string const& op : operators) {
      Count& count = m_operators[op];
      ++count.programs;
      if (code == "0" && (!isDoubtful || IsWord(op))) ++count.succeeded;
    }
  }
}

void Coverage::Print() const {
  auto const print = [](std::map<std::string, Count> const& counts) {
    for (auto const& [name, count] : counts)
      std::printf("  %-24s %8llu %8llu%s\n", name.c_str(), static_cast<unsigned long long>(count.programs),
                  static_cast<unsigned long long>(count.succeeded),
                  count.succeeded < kFewSuccesses ? "  few" : "");
  };
  std::printf("programs: %llu, with a mistake: %llu, in a shared context: %llu\n",
              static_cast<unsigned long long>(m_programs), static_cast<unsigned long long>(m_mistaken),
              static_cast<unsigned long long>(m_shared));
  std::printf("ways of running, how often taken and how often without an error\n");
  print(m_ways);
  std::printf("operators by id and token, in how many programs, and in how many of those without an error\n");
  print(m_operators);
  std::printf("codes of texts\n");
  for (auto const& [code, count] : m_codes)
    std::printf("  %-24s %8llu\n", code.c_str(), static_cast<unsigned long long>(count));
  std::set<std::string> seen;
  for (auto const& [name, count] : m_operators) seen.insert(name.substr(name.find(' ') + 1));
  seen.insert("]");  // belongs to "["
  for (std::string const& token : ReadOperatorForms(QUMEL_OPERATORS_DOCUMENT).tokens)
    if (!seen.contains(token)) std::printf("never seen: %s\n", token.c_str());
}

}  // namespace qumel::compare
