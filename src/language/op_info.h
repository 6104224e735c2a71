// The operator descriptor: how an operator is spelled, where it may stand, how it binds, and what runs it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "base/operator_table.h"
#include "language/operator_definition.h"
#include "objects/linked_object.h"

namespace qumel {

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

/** What describes an operator. */
struct SQMOperatorTraits {
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

  bool HasVariableOperands() const { return minOperands != maxOperands; }
};

/** Copies are independent but share the definition of a host's operator. */
class CQMOpInfo : public CQMLinkedObject, public SQMOperatorTraits {
 public:
  static constexpr char const* kTypeTag = TypeTag::kOpInfo;
  static constexpr std::size_t kLongestToken = 64;

  CQMOpInfo() { SetTypeTag(kTypeTag); }
  explicit CQMOpInfo(std::string_view text) : CQMOpInfo() { token = text; }
  CQMOpInfo& operator=(CQMOpInfo const& source) {
    SQMOperatorTraits::operator=(source);
    return *this;
  }
};

}  // namespace qumel
