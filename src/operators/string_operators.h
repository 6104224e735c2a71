// Operators on texts: joining, parts of a text, changes within a variable, length. Positions count from 0.
#pragma once

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "base/conversions.h"

namespace qumel {

/** What an operand must be. */
enum class EQMWanted {
  Text,
  Count,       // a number, truncated when it is used
  TextTarget,  // a text that may be changed: no literal
};

/** Checks operands against a list; optional ones stand at its end. */
template <EQMDataType returnType, long optional, EQMWanted... wanted>
class CQMTextOperator : public CQMOperator {
 public:
  long GetOperandsNeeded() override { return static_cast<long>(sizeof...(wanted)) - optional; }
  long GetOperandsMaximum() override { return static_cast<long>(sizeof...(wanted)); }
  EQMDataType GetReturnType() override { return returnType; }
  long VerifyOperands() override {
    static constexpr std::array<EQMWanted, sizeof...(wanted)> kWanted{wanted...};
    if (long const code = CheckOperands(); code != Error::None) return code;
    for (long i = 0; i < GetOperandCount(); ++i) {
      EQMWanted const want = kWanted[static_cast<std::size_t>(i)];
      EQMTypeClass const wantedClass =
          want == EQMWanted::Count ? EQMTypeClass::Numeric : EQMTypeClass::String;
      if (GetTypeClass(Operand(i).GetType()) != wantedClass) return Error::TypeMismatch;
      if (want == EQMWanted::TextTarget && Operand(i).IsLiteral()) return LiteralTargetCode();
    }
    return Error::None;
  }

 protected:
  virtual long LiteralTargetCode() const { return Error::TargetIsConstant; }
  std::string_view Text(long index) const { return Operand(index).GetText(); }
  std::int32_t Count(long index) const { return TruncateToInt32(Real(index)); }
  long Finish(std::string_view text, long& position) {
    Result().SetWholeText(text);
    return Advance(position);
  }
  /** Whether text fits the buffer of a variable. Texts of the second kind have no fixed buffer. */
  bool Fits(std::string const& text) const {
    return Operand(0).GetType() != EQMDataType::String ||
           text.size() < static_cast<std::size_t>(std::max(Operand(0).GetElementSize(), 0));
  }
  /** Stores text in the variable and in the result; Overflow, with nothing changed, when it does not fit. */
  long StoreInTarget(std::string const& text, long& position) {
    if (!Fits(text)) return Error::Overflow;
    Operand(0).SetText(text);
    return Finish(text, position);
  }
};

class CQMConcatOperator final
    : public CQMTextOperator<EQMDataType::String, 0, EQMWanted::Text, EQMWanted::Text> {
 public:
  long DoOperation(long& position) override {
    Result().SetJoinedText(Operand(0), IsOnlyReader(0), Operand(1), IsOnlyReader(1));
    return Advance(position);
  }
};

class CQMAppendOperator final
    : public CQMTextOperator<EQMDataType::String, 0, EQMWanted::TextTarget, EQMWanted::Text> {
 public:
  long DoOperation(long& position) override {
    std::string joined(Text(0));
    joined += Text(1);
    return StoreInTarget(joined, position);
  }

 protected:
  long LiteralTargetCode() const override { return Error::NotAnLValue; }
};

/** left and right: the first or the last characters. */
template <bool fromEnd>
class CQMTextEnd final : public CQMTextOperator<EQMDataType::String, 0, EQMWanted::Text, EQMWanted::Count> {
 public:
  long DoOperation(long& position) override {
    std::string const text(Text(0));
    if (Count(1) < 0) return Error::Overflow;
    std::size_t const count = std::min(text.size(), static_cast<std::size_t>(Count(1)));
    return Finish(std::string_view(text).substr(fromEnd ? text.size() - count : 0, count), position);
  }
};

class CQMMidOperator final
    : public CQMTextOperator<EQMDataType::String, 0, EQMWanted::Text, EQMWanted::Count, EQMWanted::Count> {
 public:
  long DoOperation(long& position) override {
    std::string const text(Text(0));
    auto const start = static_cast<std::size_t>(std::max(Count(1), 0));
    auto const count = static_cast<std::size_t>(std::max(Count(2), 0));
    if (start >= text.size()) return Finish({}, position);
    return Finish(std::string_view(text).substr(start, count), position);
  }
};

class CQMInsertOperator final : public CQMTextOperator<EQMDataType::String, 0, EQMWanted::TextTarget,
                                                       EQMWanted::Text, EQMWanted::Count> {
 public:
  long DoOperation(long& position) override {
    std::string text(Text(0));
    std::string const inserted(Text(1));
    // an empty text goes in anywhere, whatever the position says
    if (inserted.empty()) return Finish(text, position);
    std::int32_t const at = Count(2);
    if (at < 0 || static_cast<std::size_t>(at) >= text.size()) return Error::IndexOutOfBounds;
    text.insert(static_cast<std::size_t>(at), inserted);
    return StoreInTarget(text, position);
  }
};

class CQMReplaceOperator final : public CQMTextOperator<EQMDataType::String, 1, EQMWanted::TextTarget,
                                                        EQMWanted::Text, EQMWanted::Count, EQMWanted::Count> {
 public:
  long DoOperation(long& position) override {
    std::string text(Text(0));
    std::string const replacement(Text(1));
    std::int32_t const at = Count(2);
    if (at < 0 || static_cast<std::size_t>(at) >= text.size()) return Refuse();
    std::size_t count = replacement.size();
    if (GetOperandCount() == GetOperandsMaximum()) {
      std::int32_t const wanted = Count(3);
      if (wanted < 1 || static_cast<std::size_t>(wanted) > text.size()) return Refuse();
      count = std::min(count, static_cast<std::size_t>(wanted));
    }
    auto const start = static_cast<std::size_t>(at);
    count = std::min(count, text.size() - start);  // the length stays; what would stick out is dropped
    text.replace(start, count, replacement, 0, count);
    return StoreInTarget(text, position);
  }

 private:
  long Refuse() {
    Result().SetText({});
    return Error::IndexOutOfBounds;
  }
};

class CQMLengthOperator final : public CQMTextOperator<EQMDataType::Number, 0, EQMWanted::Text> {
 public:
  long DoOperation(long& position) override {
    StoreReal(static_cast<double>(Text(0).size()));
    return Advance(position);
  }
};

}  // namespace qumel
