// What stacks carry: a text, a number, or an operand with a text and a position.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "objects/linked_object.h"

namespace qumel {

/** Text from the interface of stacks: null is the empty text. */
inline std::string_view TextOrEmpty(char const* text) { return text != nullptr ? text : std::string_view(); }

class CQMStackString : public CQMObject {
 public:
  static constexpr char const* kTypeTag = TypeTag::kStackString;

  CQMStackString() { SetTypeTag(kTypeTag); }
  explicit CQMStackString(std::string_view text) : m_text(text) { SetTypeTag(kTypeTag); }
  explicit CQMStackString(char const* text) : CQMStackString(TextOrEmpty(text)) {}

  /** Without a text, or with a length below 1, the string becomes empty. */
  void SetString(char const* text, std::int32_t length) {
    if (text != nullptr && length >= 1) m_text.assign(text, static_cast<std::size_t>(length));
    else m_text.clear();
  }
  CQMStackString& operator=(char const* text) {
    m_text = TextOrEmpty(text);
    return *this;
  }
  CQMStackString& operator=(CQMStackString const& source) {
    m_text = source.m_text;
    return *this;
  }

  std::string const& GetText() const { return m_text; }
  std::int32_t GetLength() const { return static_cast<std::int32_t>(m_text.size()); }

 private:
  std::string m_text;
};

class CQMStackNumber : public CQMObject {
 public:
  static constexpr char const* kTypeTag = TypeTag::kStackNumber;

  explicit CQMStackNumber(std::int32_t number = 0) : m_number(number) { SetTypeTag(kTypeTag); }

  std::int32_t GetNumber() const { return m_number; }
  void SetNumber(std::int32_t number) { m_number = number; }

 private:
  std::int32_t m_number;
};

class CQMOperand : public CQMLinkedObject {
 public:
  static constexpr char const* kTypeTag = TypeTag::kOperand;
  static constexpr std::int32_t kNoPosition = 9999999;

  CQMOperand() { SetTypeTag(kTypeTag); }
  explicit CQMOperand(std::string_view text) : m_text(text) { SetTypeTag(kTypeTag); }
  explicit CQMOperand(char const* text) : CQMOperand(TextOrEmpty(text)) {}

  /** A null text takes the position away too. */
  CQMOperand& operator=(char const* text) {
    m_text = TextOrEmpty(text);
    if (text == nullptr) m_position = kNoPosition;
    return *this;
  }
  CQMOperand& operator=(CQMOperand const& source) {
    m_text = source.m_text;
    m_position = source.m_position;
    return *this;
  }

  std::string const& GetText() const { return m_text; }
  std::int32_t GetPosition() const { return m_position; }
  void SetPosition(std::int32_t position) { m_position = position; }
  std::int32_t GetValue() const { return m_value; }
  void SetValue(std::int32_t value) { m_value = value; }

 private:
  std::string m_text;
  std::int32_t m_position = kNoPosition;
  std::int32_t m_value = 0;
};

}  // namespace qumel
