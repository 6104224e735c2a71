// Writing the fragments of a reverted text: operands as they were written, blanks where tokens would run
// together.
#include <algorithm>

#include "base/operator_ids.h"
#include "language/characters.h"
#include "language/reversion.h"

namespace qumel {

namespace {

constexpr char const* kEmptyText = "//";  // a note converts to nothing
constexpr char kPoint = '.';

struct SQMEscape {
  char character, letter;
};
constexpr SQMEscape kEscapes[] = {{'\b', 'b'}, {'\f', 'f'}, {'\n', 'n'}, {'\r', 'r'},
                                  {'\t', 't'}, {'\v', 'v'}, {'\\', '\\'}};

void AppendQuoted(std::string_view text, char quoteMark, std::string& out) {
  out += quoteMark;
  for (char const c : text) {
    auto const escape = std::ranges::find(kEscapes, c, &SQMEscape::character);
    bool const isEscape = escape != std::end(kEscapes);
    if (isEscape || c == quoteMark) out += '\\';
    out += isEscape ? escape->letter : c;
  }
  out += quoteMark;
}

/** How a base is written in front of its digits. */
std::string_view BaseMark(char letter) {
  switch (letter) {
    case 'b': return "0b";
    case 'h': return "0x";
    case 'o': return "0o";
    case 't': return "0t";
    default: return "0d";
  }
}

}  // namespace

std::string CQMReversion::Write(char quoteMark) {
  if (m_statements.empty()) return kEmptyText;
  std::string out;
  for (std::size_t i = 0; i < m_statements.size(); ++i) {
    bool const isLast = i + 1 == m_statements.size();
    PushList(FragmentsOf(m_statements[i]), false);
    WritePieces(quoteMark, out);
    if (!isLast || (m_isEnded && m_statements[i].count == 0)) out += ';';
    if (!isLast) out += ' ';
  }
  return out;
}

void CQMReversion::WritePieces(char quoteMark, std::string& out) {
  m_lastClass = EQMItemClass::Start;
  while (!m_pieces.empty()) {
    SQMPiece const piece = m_pieces.back();
    m_pieces.pop_back();
    if (piece.fragment == kNone) {
      if (piece.joins) {
        Join(piece.text, EQMItemClass::Operator, out);
      } else {
        out += piece.text;
        m_lastClass = EQMItemClass::Start;
      }
    } else if (SQMFragment const& fragment = m_fragments[piece.fragment]; fragment.op != nullptr) {
      PushFragment(fragment);
    } else {
      WriteOperand(fragment.item, quoteMark, out);
    }
  }
}

// Pieces are pushed last to first.

void CQMReversion::PushFragment(SQMFragment const& fragment) {
  bool const isWritten = fragment.op->info->id != OpId::ImpliedMultiplication;
  SQMPiece const token{kNone, isWritten ? fragment.op->info->token.c_str() : "", true};
  switch (fragment.shape) {
    case EQMShape::Before:
      PushPart(fragment.right);
      m_pieces.push_back(token);
      break;
    case EQMShape::Between:
      PushPart(fragment.right);
      m_pieces.push_back(token);
      PushPart(fragment.left);
      break;
    case EQMShape::Behind:
      m_pieces.push_back(token);
      PushPart(fragment.left);
      break;
    case EQMShape::Index: {
      bool const isWrapped = fragment.right.count == 0 || NeedsLeadingComma(fragment.right);
      m_pieces.push_back({kNone, "]"});
      if (isWrapped) {
        SQMPart wrapped = fragment.right;
        wrapped.isEnclosed = true;
        PushPart(wrapped);
      } else {
        if (NeedsTrailingComma(fragment.right)) m_pieces.push_back({kNone, ", "});
        PushList(FragmentsOf(fragment.right), true);
      }
      m_pieces.push_back({kNone, "["});
      PushPart(fragment.left);
      break;
    }
    case EQMShape::Listed: {
      SQMEdge const last = LastOf(fragment.left);
      bool const needsNoComma =
          LetsGo(fragment.op->info->fix) && IsChosen(last, last.inner, EQMItemClass::Operator);
      m_pieces.push_back(token);
      m_pieces.push_back({kNone, needsNoComma ? " " : ", "});
      PushList(FragmentsOf(fragment.left), true);
      break;
    }
    default: m_pieces.push_back(token);
  }
}

void CQMReversion::PushPart(SQMPart const& part) {
  bool const isEnclosed = part.isEnclosed || part.count == 0;
  if (isEnclosed) m_pieces.push_back({kNone, ")"});
  if (isEnclosed && NeedsTrailingComma(part)) m_pieces.push_back({kNone, ", "});
  if (part.isRow) {
    auto const row = FragmentsOf(part);
    for (auto at = row.rbegin(); at != row.rend(); ++at) m_pieces.push_back({*at});
  } else {
    PushList(FragmentsOf(part), true);
  }
  if (isEnclosed && NeedsLeadingComma(part)) m_pieces.push_back({kNone, ", "});
  if (isEnclosed) m_pieces.push_back({kNone, "(", true});
}

void CQMReversion::PushList(std::span<Index const> fragments, bool inList) {
  for (std::size_t i = fragments.size(); i > 0; --i) {
    m_pieces.push_back({fragments[i - 1]});
    if (i > 1) m_pieces.push_back({kNone, JointOf(fragments[i - 2], fragments[i - 1], inList)});
  }
}

void CQMReversion::WriteOperand(SQMPostfixItem const& item, char quoteMark, std::string& out) {
  if (item.mark == PostfixMark::kNumber) {
    std::string number = NumberText(item.text);
    // a blank behind it would end the number in front of its comma
    if (number.ends_with(',')) number = "(" + number + ")";
    Join(number, EQMItemClass::Number, out);
  } else if (item.mark == PostfixMark::kString) {
    std::string quoted;
    AppendQuoted(item.text, quoteMark, quoted);
    Join(quoted, EQMItemClass::String, out);
  } else {
    Join(item.text, EQMItemClass::Name, out);
  }
}

std::string CQMReversion::NumberText(std::string_view number) const {
  if (number.empty()) return {};
  std::string text(number.substr(1));
  bool const hasPoint = m_rules.radixMark == kPoint;
  bool const begins =
      !text.empty() &&
      (IsDigit(text[0]) || (text[0] == kPoint && hasPoint && text.size() > 1 && IsDigit(text[1])));
  if (!hasPoint) std::ranges::replace(text, kPoint, m_rules.radixMark);
  if (number.front() != 'd' || !begins) text.insert(0, BaseMark(number.front()));
  return text;
}

// One blank between two letters or two signs, where a digit or an underscore counts as a letter and square
// brackets never ask for one; and where two tokens would be read as one.
void CQMReversion::Join(std::string_view text, EQMItemClass itemClass, std::string& out) {
  if (text.empty()) return;
  char const last = out.empty() ? ' ' : out.back(), first = text.front();
  auto const isSign = [](char c) { return IsPunctuation(c) && c != '_'; };
  bool const isInside = last == '(' || last == '[';
  bool const lettersMeet = IsNamePart(last) && IsNamePart(first);
  bool const signsMeet = isSign(last) && isSign(first) && last != ']' && first != '[';
  // a sign goes on through underscores
  bool const lengthensSign =
      m_lastClass == EQMItemClass::Operator && IsPunctuation(last) && IsPunctuation(first);
  bool const lengthensNumber =
      m_lastClass == EQMItemClass::Number &&
      (isSign(last) || first == kPoint || ((last == 'E' || last == 'X') && (first == '+' || first == '-')));
  bool const makesNumber = last == kPoint && IsDigit(first);
  if (!isInside && (lettersMeet || signsMeet || lengthensSign || lengthensNumber || makesNumber)) out += ' ';
  out += text;
  m_lastClass = itemClass;
}

}  // namespace qumel
