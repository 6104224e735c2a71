// The settings of contexts and of thread records, and the rules of the values that they accept; the settings
// themselves are the rows of context/settings.inc.
#pragma once

#include <atomic>
#include <optional>
#include <string_view>

#include "base/letters.h"

namespace qumel {

/** A value that other threads may copy while the thread in the context changes it. */
template <class Value>
class CQMSetting {
 public:
  constexpr CQMSetting(Value value) : m_value(value) {}
  CQMSetting(CQMSetting const& other) : CQMSetting(static_cast<Value>(other)) {}
  CQMSetting& operator=(CQMSetting const& other) { return *this = static_cast<Value>(other); }
  CQMSetting& operator=(Value value) {
    m_value.store(value, std::memory_order_relaxed);
    return *this;
  }
  operator Value() const { return m_value.load(std::memory_order_relaxed); }

 private:
  std::atomic<Value> m_value;
};

/** Each member starts with its default. */
struct SQMSettings {
#define QM_SETTING(group, member, name, exported, Type, initial, ...) CQMSetting<Type> member = initial;
#include "context/settings.inc"
};

/** Includes the settings that belong to contexts alone. */
struct SQMContextSettings : SQMSettings {
#define QM_CONTEXT_SETTING(member, name, Type, initial) Type member = initial;
#include "context/settings.inc"
};

/** The groups that context/settings.inc explains. */
enum class EQMSettingGroup { Fixed, Live, Word, Switch };

/** Kinds of contexts. A new context copies those settings of its creator that its kind copies. */
enum class EQMContextKind : unsigned { Primary = 1, Public = 2, Private = 4 };

class CQMExecutor;
/** Copies settings to a context that is not initialised yet. */
void CopySettings(SQMSettings const& from, EQMContextKind kind, CQMExecutor& to);

/** Rules of accepted values: functions that return the value to store, if any. With kPassesStored, the setter
 * of a record passes on the value that the record holds then, instead of its argument. */
namespace SettingRule {

struct Any {
  static constexpr bool kPassesStored = false;
  constexpr std::optional<bool> operator()(bool value) const { return value; }
};

struct OneOf {
  static constexpr bool kPassesStored = false;
  constexpr explicit OneOf(std::string_view accepted) : letters(accepted) {}
  constexpr std::optional<char> operator()(char value) const {
    return letters.find(value) != letters.npos ? std::optional(value) : std::nullopt;
  }
  std::string_view letters;
};

/** A value that is not accepted resets the setting. */
struct OneOfOr {
  static constexpr bool kPassesStored = false;
  constexpr OneOfOr(std::string_view accepted, char otherwise) : letters(accepted), reset(otherwise) {}
  constexpr std::optional<char> operator()(char value) const {
    return letters.find(value) != letters.npos ? value : reset;
  }
  std::string_view letters;
  char reset;
};

struct NotNegative {
  static constexpr bool kPassesStored = true;
  constexpr std::optional<int> operator()(int value) const {
    return value >= 0 ? std::optional(value) : std::nullopt;
  }
};

}  // namespace SettingRule

/** Stores value if rule accepts it, and tells whether it does. */
template <class Value, class Rule>
bool StoreAccepted(CQMSetting<Value>& setting, Rule const& rule, Value value) {
  std::optional<Value> const accepted = rule(value);
  if (accepted.has_value()) setting = *accepted;
  return accepted.has_value();
}

/** Factors of an angle unit. Those of degrees and gradians are short decimal forms: results that hosts have
 * stored stay the same to the last digit. */
struct SQMAngleFactors {
  double toRadians;
  double fromRadians;
};
SQMAngleFactors AngleFactorsOf(char unit);

}  // namespace qumel
