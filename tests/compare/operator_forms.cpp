// Reading the tables of docs/operators.md.
#include "compare/operator_forms.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <stdexcept>
#include <string_view>

namespace qumel::compare {

namespace {

using Cells = std::vector<std::string>;

/** The cells of a table row; "\|" inside a cell is a "|". */
Cells SplitRow(std::string_view line) {
  Cells cells(1);
  for (std::size_t i = 1; i < line.size(); ++i) {
    if (line[i] == '\\' && i + 1 < line.size() && line[i + 1] == '|') cells.back() += line[++i];
    else if (line[i] == '|') cells.emplace_back();
    else cells.back() += line[i];
  }
  cells.pop_back();
  return cells;
}

/** The pieces of code in a cell, between one or two backticks. */
std::vector<std::string> CodesOf(std::string const& cell) {
  std::vector<std::string> codes;
  for (std::size_t begin = cell.find('`'); begin != std::string::npos; begin = cell.find('`', begin)) {
    std::size_t const first = cell.find_first_not_of('`', begin);
    if (first == std::string::npos) break;
    std::string const fence = cell.substr(begin, first - begin);
    std::size_t const end = cell.find(fence, first);
    if (end == std::string::npos) break;
    codes.push_back(cell.substr(first, end - first));
    begin = end + fence.size();
  }
  return codes;
}

bool IsWordLetter(char letter) { return std::isalnum(static_cast<unsigned char>(letter)) != 0; }
bool IsBracket(char letter) { return letter == '(' || letter == ')' || letter == ','; }

/** Cuts "root(n, x)" into its parts. Single letters are operands, "..." says that more may follow. */
OperatorForm ParseForm(std::string const& text) {
  OperatorForm form;
  for (std::size_t i = 0; i < text.size();) {
    std::size_t end = i + 1;
    if (IsWordLetter(text[i])) {
      while (end < text.size() && IsWordLetter(text[end])) ++end;
    } else if (text[i] != ' ' && !IsBracket(text[i])) {
      while (end < text.size() && text[end] != ' ' && !IsWordLetter(text[end]) && !IsBracket(text[end]))
        ++end;
    }
    std::string const part = text.substr(i, end - i);
    i = end;
    if (part == "...") {
      form.isList = true;
      form.parts.pop_back();  // the comma before it
    } else if (part.size() == 1 && std::isalpha(static_cast<unsigned char>(part[0])) != 0)
      form.parts.push_back({"", part[0]});
    else if (part != " ") form.parts.push_back({part});
  }
  return form;
}

/** The form in which token stands for whichever of the tokens the document writes. */
OperatorForm FormOf(OperatorForm form, std::vector<std::string> const& tokens, std::string const& token) {
  form.token = token;
  for (FormPart& part : form.parts)
    if (std::find(tokens.begin(), tokens.end(), part.text) != tokens.end()) part.text = token;
  return form;
}

Type ReturnTypeIn(std::string const& section, std::string const& token) {
  if (section == "Comparison" || section == "Logic") return Type::Boolean;
  return section == "Texts" && token != "length" ? Type::Text : Type::Number;
}

/** Sections whose operators are woven into statements: a writer of statements knows them. */
bool IsWrittenByStatements(std::string const& section) {
  return section == "Arrays and members" || section == "Declarations" || section == "Control flow";
}

void AddRow(std::string const& section, Cells const& cells, OperatorForms& forms) {
  auto const tokens = CodesOf(cells[0]);
  forms.tokens.insert(forms.tokens.end(), tokens.begin(), tokens.end());
  auto const examples = CodesOf(cells[cells.size() - 2]);
  forms.examples.insert(forms.examples.end(), examples.begin(), examples.end());
  if (IsWrittenByStatements(section)) return;
  auto const written = CodesOf(cells[1]);
  for (std::string const& token : tokens) {
    if (section == "Settings") {
      if (written.empty()) forms.modeWords.push_back(token);
      continue;
    }
    if (written.empty()) forms.operators.push_back({token, {{token}}, ReturnTypeIn(section, token)});
    for (std::string const& text : written) {
      OperatorForm form = FormOf(ParseForm(text), tokens, token);
      form.returns = ReturnTypeIn(section, token);
      (section == "Assignment" ? forms.assignments : forms.operators).push_back(std::move(form));
    }
  }
}

}  // namespace

OperatorForms ReadOperatorForms(std::string const& path) {
  std::ifstream file(path);
  OperatorForms forms;
  std::string section;
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with("## ")) section = line.substr(3);
    if (!line.starts_with("| `")) continue;
    Cells const cells = SplitRow(line);
    if (cells.size() == 6) AddRow(section, cells, forms);
  }
  if (forms.operators.empty()) throw std::runtime_error("no forms of operators in " + path);
  return forms;
}

}  // namespace qumel::compare
