// Putting a program together and taking it apart.
#include "compare/program.h"

#include <cctype>

namespace qumel::compare {

namespace {

bool IsWordLetter(char letter) {
  return std::isalnum(static_cast<unsigned char>(letter)) != 0 || letter == '_' || letter == '.' ||
         static_cast<unsigned char>(letter) >= 0x80;
}
bool StandsAlone(char letter) {
  return std::string_view("()[];: \n\"'").find(letter) != std::string_view::npos;
}

bool WouldMerge(char left, char right) {
  if (left == ',' || left == ';') return right != ' ';  // a comma may be a decimal point
  if (StandsAlone(left) || StandsAlone(right) || right == ',') return false;
  return IsWordLetter(left) == IsWordLetter(right);
}

template <class Part>
void DropFrom(std::vector<Part>& parts, std::set<std::size_t> const& numbers, std::size_t& number) {
  std::vector<Part> kept;
  for (Part& part : parts)
    if (!numbers.contains(number++)) kept.push_back(std::move(part));
  parts = std::move(kept);
}

}  // namespace

std::string Settings::Shown() const {
  std::string shown = isPrivate ? "private" : "public";
  shown += std::string(" radix ") + radixMark + " quote " + quoteMark + " true " + booleanTrue + " angle " +
           angleUnit + " base " + outputBase + " coordinates " + coordinateFormat + " scope " + defaultScope +
           " precision " + std::to_string(precision);
  if (!allowsImpliedMultiplication) shown += ", no implied multiplication";
  if (invertsIndices) shown += ", inverted indices";
  if (allowsComplex) shown += ", complex allowed";
  if (forcesComplex) shown += ", complex forced";
  return shown;
}

std::string Join(Pieces const& pieces) {
  std::string text;
  for (Piece const& piece : pieces) {
    if (piece.text.empty()) continue;
    if (!text.empty() && WouldMerge(text.back(), piece.text.front())) text += ' ';
    text += piece.text;
  }
  return text;
}

std::string Program::Shown() const {
  std::string shown = "    settings: " + settings.Shown() + "\n";
  for (Act const& act : preparations) shown += "    before: " + act.shown + "\n";
  shown += "    text: " + Escaped(Join(pieces).c_str()) + "\n";
  shown += startsByHandle ? "    by handle, then as text\n" : "    as text, then by handle\n";
  for (std::size_t run = 0; run < kRuns; ++run)
    for (Act const& act : changes[run])
      shown += "    before run " + std::to_string(run + 1) + ": " + act.shown + "\n";
  return shown;
}

std::size_t Program::PartCount() const {
  std::size_t count = preparations.size() + pieces.size();
  for (Acts const& acts : changes) count += acts.size();
  return count;
}

void Program::Drop(std::set<std::size_t> const& parts) {
  std::size_t number = 0;
  DropFrom(preparations, parts, number);
  for (Acts& acts : changes) DropFrom(acts, parts, number);
  DropFrom(pieces, parts, number);
}

}  // namespace qumel::compare
