// Exported setters and getters of the settings, one of each for every row of context/settings.inc.
#include "api/guard.h"
#include "qumel/qumel.h"

using namespace qumel;

namespace {

/** What a getter returns when the thread can have no record. */
template <class Value>
constexpr Value kMissing{};
template <>
constexpr char kMissing<char> = ' ';

}  // namespace

#define QM_SETTER(name, exported, Type)                                \
  void qmSet##exported(Type value) {                                   \
    OnThread([=](CQMThreadInfo& record) { record.Set##name(value); }); \
  }
#define QM_SETTER_Fixed QM_SETTER
#define QM_SETTER_Live QM_SETTER
#define QM_SETTER_Word QM_SETTER
#define QM_SETTER_Switch(name, exported, Type)                       \
  void qmSet##exported(void) {                                       \
    OnThread([](CQMThreadInfo& record) { record.Set##name(true); }); \
  }

#define QM_SETTING(group, member, name, exported, Type, ...)                                                \
  QM_SETTER_##group(name, exported, Type) Type qmGet##exported(void) {                                      \
    return OnSettings(kMissing<Type>, [](SQMSettings const& settings) -> Type { return settings.member; }); \
  }
#include "context/settings.inc"
