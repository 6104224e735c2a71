// A text that symbol tables hold: error messages.
#pragma once

#include <string>
#include <string_view>

#include "objects/object.h"

namespace qumel {

class CQMStackString : public CQMObject {
 public:
  static constexpr char const* kTypeTag = TypeTag::kStackString;

  explicit CQMStackString(std::string_view text) : m_text(text) { SetTypeTag(kTypeTag); }

  std::string const& GetText() const { return m_text; }

 private:
  std::string m_text;
};

}  // namespace qumel
