// Operators on texts: joining, parts of a text, changes within a variable, length. Positions count from 0.
#pragma once

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "base/conversions.h"
#include "engine/call.h"
#include "engine/operator.h"
#include "engine/program.h"

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
  long GetOperandsMaximum() override { return kMostOperands; }
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
  static constexpr long kMostOperands = sizeof...(wanted);

  virtual long LiteralTargetCode() const { return Error::TargetIsConstant; }
  static std::string_view Text(CQMCall const& call, long index) { return call.Operand(index).GetText(); }
  static std::int32_t Count(CQMCall const& call, long index) { return TruncateToInt32(call.Real(index)); }
  static long Finish(CQMCall const& call, std::string_view text) {
    call.Result().SetWholeText(text);
    return Status::Done;
  }
  /** Whether text fits the buffer of variable. Texts of the second kind have no fixed buffer. */
  static bool Fits(CQMDatum const& variable, std::string const& text) {
    return variable.GetType() != EQMDataType::String ||
           text.size() < static_cast<std::size_t>(std::max(variable.GetElementSize(), 0));
  }
  /** Stores text in the variable and in the result; Overflow, with nothing changed, when it does not fit. */
  static long StoreInTarget(CQMCall const& call, std::string const& text) {
    if (!Fits(call.Operand(0), text)) return Error::Overflow;
    call.Operand(0).SetText(text);
    return Finish(call, text);
  }
};

class CQMConcatOperator final
    : public CQMTextOperator<EQMDataType::String, 0, EQMWanted::Text, EQMWanted::Text> {
 public:
  void PrepareStep(CQMStepMaker&, SQMStep& step) override { step.readAlone = GetReadAlone(); }
  SQMWays GetWays() const override { return kWays<&Do>; }
  static long Do(CQMCall& call) {
    std::uint32_t const readAlone = call.Step().readAlone;
    call.Result().SetJoinedText(call.Operand(0), (readAlone & 1U) != 0, call.Operand(1),
                                (readAlone & 2U) != 0);
    return Status::Done;
  }
};

class CQMAppendOperator final
    : public CQMTextOperator<EQMDataType::String, 0, EQMWanted::TextTarget, EQMWanted::Text> {
 public:
  SQMWays GetWays() const override { return kWays<&Do>; }
  static long Do(CQMCall& call) {
    std::string joined(Text(call, 0));
    joined += Text(call, 1);
    return StoreInTarget(call, joined);
  }

 protected:
  long LiteralTargetCode() const override { return Error::NotAnLValue; }
};

/** left and right: the first or the last characters. */
template <bool fromEnd>
class CQMTextEnd final : public CQMTextOperator<EQMDataType::String, 0, EQMWanted::Text, EQMWanted::Count> {
 public:
  SQMWays GetWays() const override { return kWays<&Do>; }
  static long Do(CQMCall& call) {
    std::string const text(Text(call, 0));
    if (Count(call, 1) < 0) return Error::Overflow;
    std::size_t const count = std::min(text.size(), static_cast<std::size_t>(Count(call, 1)));
    return Finish(call, std::string_view(text).substr(fromEnd ? text.size() - count : 0, count));
  }
};

class CQMMidOperator final
    : public CQMTextOperator<EQMDataType::String, 0, EQMWanted::Text, EQMWanted::Count, EQMWanted::Count> {
 public:
  SQMWays GetWays() const override { return kWays<&Do>; }
  static long Do(CQMCall& call) {
    std::string const text(Text(call, 0));
    auto const start = static_cast<std::size_t>(std::max(Count(call, 1), 0));
    auto const count = static_cast<std::size_t>(std::max(Count(call, 2), 0));
    if (start >= text.size()) return Finish(call, {});
    return Finish(call, std::string_view(text).substr(start, count));
  }
};

class CQMInsertOperator final : public CQMTextOperator<EQMDataType::String, 0, EQMWanted::TextTarget,
                                                       EQMWanted::Text, EQMWanted::Count> {
 public:
  SQMWays GetWays() const override { return kWays<&Do>; }
  static long Do(CQMCall& call) {
    std::string text(Text(call, 0));
    std::string const inserted(Text(call, 1));
    // an empty text goes in anywhere, whatever the position says
    if (inserted.empty()) return Finish(call, text);
    std::int32_t const at = Count(call, 2);
    if (at < 0 || static_cast<std::size_t>(at) >= text.size()) return Error::IndexOutOfBounds;
    text.insert(static_cast<std::size_t>(at), inserted);
    return StoreInTarget(call, text);
  }
};

class CQMReplaceOperator final : public CQMTextOperator<EQMDataType::String, 1, EQMWanted::TextTarget,
                                                        EQMWanted::Text, EQMWanted::Count, EQMWanted::Count> {
 public:
  SQMWays GetWays() const override { return kWays<&Do>; }
  static long Do(CQMCall& call) {
    std::string text(Text(call, 0));
    std::string const replacement(Text(call, 1));
    std::int32_t const at = Count(call, 2);
    if (at < 0 || static_cast<std::size_t>(at) >= text.size()) return Refuse(call);
    std::size_t count = replacement.size();
    if (call.OperandCount() == kMostOperands) {
      std::int32_t const wanted = Count(call, 3);
      if (wanted < 1 || static_cast<std::size_t>(wanted) > text.size()) return Refuse(call);
      count = std::min(count, static_cast<std::size_t>(wanted));
    }
    auto const start = static_cast<std::size_t>(at);
    count = std::min(count, text.size() - start);  // the length stays; what would stick out is dropped
    text.replace(start, count, replacement, 0, count);
    return StoreInTarget(call, text);
  }

 private:
  static long Refuse(CQMCall const& call) {
    call.Result().SetText({});
    return Error::IndexOutOfBounds;
  }
};

class CQMLengthOperator final : public CQMTextOperator<EQMDataType::Number, 0, EQMWanted::Text> {
 public:
  SQMWays GetWays() const override { return kWays<&Do>; }
  static long Do(CQMCall& call) {
    call.StoreReal(static_cast<double>(Text(call, 0).size()));
    return Status::Done;
  }
};

}  // namespace qumel
