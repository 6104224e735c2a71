// The operator descriptor: how an operator is spelled, where it may stand, how it binds, and what runs it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "engine/operator_definition.h"
#include "storage/linked_object.h"

namespace qumel {

/** Where an operator stands among its operands. */
enum class EQMFix : std::uint32_t {
  None = 0,
  Prefix = 1,
  Infix = 2,
  Postfix = 3,
  Nofix = 4,
  StatementKeyword = 5,
  BlockKeyword = 6,
  ClosingBlock = 7,  // no standard entries of this and the next two
  MarkedPrefix = 8,  // written with "&" into postfix text
  MarkedPostfix = 9,
};

/** What a token is for its neighbours; see ContextMask for how classes meet the masks of an operator. */
enum class EQMItemClass : std::int32_t {
  Start = 0,
  End = 1,
  Separator = 2,
  OpenParen = 3,
  CloseParen = 4,
  OpenGroup = 5,
  CloseBracket = 6,
  Comma = 7,
  Operand = 8,
  Number = 9,
  Name = 10,
  String = 11,
  Operator = 12,  // 12 + fix is the class of an operator that was added
  Unknown = 99,   // a character that begins no token
};

/** Bits of the left and right context masks. */
namespace ContextBit {
constexpr std::uint8_t kSeparator = 1, kOperand = 2, kOpen = 4, kClose = 8, kPrefix = 16, kInfix = 32,
                       kPostfix = 64, kNofix = 128, kAnyOperator = 240, kAnywhere = 255;
}

/** Owns everything it describes; copies are independent but share the definition of a host's operator. */
class CQMOpInfo : public CQMLinkedObject {
 public:
  static constexpr char const* kTypeTag = TypeTag::kOpInfo;
  static constexpr std::size_t kLongestToken = 64;

  CQMOpInfo() { SetTypeTag(kTypeTag); }
  explicit CQMOpInfo(std::string_view text) : token(text) { SetTypeTag(kTypeTag); }
  CQMOpInfo& operator=(CQMOpInfo const& source);

  bool HasVariableOperands() const { return minOperands != maxOperands; }

  std::string token;
  long id = 0;
  EQMFix fix = EQMFix::None;
  std::int32_t minOperands = 0;
  std::int32_t maxOperands = 0;
  std::uint8_t leftContext = 0;
  std::uint8_t rightContext = 0;
  std::uint32_t precedence = 0;  // larger binds tighter
  bool rightAssociative = false;
  bool userDefined = false;
  bool enclose = false;  // a word that encloses its operands when shown
  bool bodyPending = false;
  EQMDataType returnType = EQMDataType::Undefined;  // Undefined: the operator decides
  /** Parameters, body and callback of a host's operator; null for the standard ones. */
  std::shared_ptr<SQMOperatorDefinition> definition;
};

}  // namespace qumel
