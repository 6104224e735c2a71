// Cuts a formula into tokens and writes them again in another dialect. Only calls and choices need more than
// one token.
#include "bench/translation.h"

#include <cctype>
#include <cstdio>
#include <stdexcept>
#include <vector>

namespace bench {
namespace {

bool IsWordLetter(char letter) { return std::isalnum(static_cast<unsigned char>(letter)) || letter == '_'; }
bool IsNumber(std::string_view token) {
  return !token.empty() && std::isdigit(static_cast<unsigned char>(token.front()));
}

std::vector<std::string_view> Tokens(std::string_view text) {
  std::vector<std::string_view> tokens;
  for (std::size_t at = 0; at < text.size();) {
    std::size_t length = 1;
    if (IsWordLetter(text[at])) {
      bool const isNumber = IsNumber(text.substr(at));
      while (at + length < text.size() &&
             (IsWordLetter(text[at + length]) || (isNumber && text[at + length] == '.')))
        ++length;
    } else {
      for (std::string_view const sign : {"&&", "||", "==", "!=", "<=", ">="})
        if (text.substr(at).starts_with(sign)) length = sign.size();
    }
    if (text[at] != ' ') tokens.push_back(text.substr(at, length));
    at += length;
  }
  return tokens;
}

std::string Fill(std::string_view pattern, std::vector<std::string> const& operands) {
  std::string text;
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    if (pattern[i] == '@') text += operands.at(static_cast<std::size_t>(pattern[++i] - '1'));
    else text += pattern[i];
  }
  return text;
}

/** A piece of a formula in the other dialect. */
struct Piece {
  std::string text;
  bool isPrimary = false;  // needs no parentheses as an operand
  bool isChoice = false;
};

class Translator {
 public:
  Translator(std::string_view formula, Dialect const& dialect)
      : m_dialect(dialect), m_tokens(Tokens(formula)) {}

  std::string Formula() {
    Piece const whole = Sequence();
    if (m_next < m_tokens.size()) throw std::runtime_error("stray " + std::string(Peek()));
    return Fill(whole.isChoice ? m_dialect.formulaOfChoice : m_dialect.formula, {whole.text});
  }
  int Operators() const { return m_operators; }

 private:
  std::string_view Peek() const { return m_next < m_tokens.size() ? m_tokens[m_next] : std::string_view(); }

  /** Up to what ends it: a parenthesis, a comma, a colon or the end. */
  Piece Sequence() {
    Piece piece;
    for (std::string_view token = Peek(); !token.empty() && token != ")" && token != "," && token != ":";
         token = Peek()) {
      ++m_next;
      if (token == "?") return Choice(piece.text);
      Piece const operand = Operand(token);
      bool const isSign = !IsWordLetter(token.front()) && token != "(";
      bool const isInfix = isSign && !m_isBehindSign;
      m_operators += isSign;
      m_isBehindSign = isSign;
      piece.isPrimary = piece.text.empty() && operand.isPrimary && !isSign;
      piece.text += isInfix ? " " + operand.text + " " : operand.text;
    }
    return piece;
  }

  Piece Operand(std::string_view token) {
    if (token == "(") return {"(" + Group().front().text + ")", true};
    if (IsWordLetter(token.front()) && Peek() == "(") {
      ++m_next;
      return Call(token);
    }
    return {Word(token), true};
  }

  std::string Word(std::string_view token) const {
    auto const word = m_dialect.words.find(token);
    return word == m_dialect.words.end() ? std::string(token) : word->second;
  }

  /** What stands between parentheses, parted by commas. The opening one has been taken. */
  std::vector<Piece> Group() {
    std::vector<Piece> pieces;
    do {
      m_isBehindSign = true;
      pieces.push_back(Sequence());
    } while (m_tokens.at(m_next++) == ",");
    m_isBehindSign = false;
    return pieces;
  }

  Piece Call(std::string_view name) {
    ++m_operators;
    std::vector<Piece> const pieces = Group();
    auto const pattern = m_dialect.calls.find(name);
    if (pattern != m_dialect.calls.end()) {
      std::vector<std::string> operands;
      for (Piece const& piece : pieces)
        operands.push_back(piece.isPrimary ? piece.text : "(" + piece.text + ")");
      return {Fill(pattern->second, operands)};
    }
    std::string text = Word(name);
    char const* before = "(";
    for (Piece const& piece : pieces) {
      text += before + piece.text;
      before = ", ";
    }
    return {text + ")", true};
  }

  Piece Choice(std::string const& condition) {
    ++m_operators;
    m_isBehindSign = true;
    std::string const first = Branch();
    if (m_tokens.at(m_next++) != ":") throw std::runtime_error("a choice without a colon");
    m_isBehindSign = true;
    return {Fill(m_dialect.choice, {condition, first, Branch()}), false, true};
  }

  std::string Branch() {
    Piece const piece = Sequence();
    return piece.isChoice ? piece.text : Fill(m_dialect.branch, {piece.text});
  }

  Dialect const& m_dialect;
  std::vector<std::string_view> const m_tokens;
  std::size_t m_next = 0;
  bool m_isBehindSign = true;  // so that a sign is one before its operand
  int m_operators = 0;
};

}  // namespace

std::string Translate(std::string_view formula, Dialect const& dialect) {
  return Translator(formula, dialect).Formula();
}

int CountOperators(std::string_view formula) {
  Dialect const none;
  Translator translator(formula, none);
  translator.Formula();
  return translator.Operators();
}

std::string Salt(std::string_view formula, unsigned salt) {
  constexpr int kDigits = 16;
  char digits[kDigits];
  std::snprintf(digits, sizeof digits, "%07u", salt);
  auto const tokens = Tokens(formula);
  auto const insertBehind = [&](std::string_view token, std::string const& text) {
    auto const end = static_cast<std::size_t>(token.data() - formula.data()) + token.size();
    return std::string(formula.substr(0, end)) + text + std::string(formula.substr(end));
  };
  for (std::size_t i = tokens.size(); i-- > 0;) {
    bool const isExponent = i > 0 && tokens[i - 1] == ",";  // which stays whole
    if (!IsNumber(tokens[i]) || isExponent) continue;
    bool const hasPoint = tokens[i].find('.') != std::string_view::npos;
    return insertBehind(tokens[i], (hasPoint ? "" : ".") + std::string(digits));
  }
  std::size_t last = tokens.size() - 1;
  while (!IsWordLetter(tokens[last].front())) --last;
  return insertBehind(tokens[last], " + 0." + std::string(digits));
}

bool Mentions(std::string_view text, std::string_view name) {
  for (std::string_view const token : Tokens(text))
    if (token == name) return true;
  return false;
}

}  // namespace bench
