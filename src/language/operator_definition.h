// What running an operator defined by a host needs to know: parameters, result type, body or callback.
#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

#include "base/data_type.h"
#include "base/items.h"

namespace qumel {

class CQMOperatorContext;
class CQMReachableDefinitions;
struct SQMOperatorDefinition;

/** Called with the handle of the running operator; returns the status of the operation. */
using OperatorCallback = int (*)(unsigned long long handle);

struct SQMOperatorParameter {
  std::string name;  // empty when the host gave none
  EQMDataType type;
};

struct SQMOperatorBody {
  CQMItemList items;
  /** The operators of hosts that the items name. They may name this one in turn, so no body keeps another
   * alive: expressions do, see CQMReachableDefinitions. */
  std::vector<std::weak_ptr<SQMOperatorDefinition const>> named;
};

/** Shared by the list that finds it and by the expressions that reach it. But for the last three members,
 * which the functions of reachable_definitions.h keep, it does not change once it is shared. */
struct SQMOperatorDefinition {
  long id = 0;
  CQMOperatorContext const* owner = nullptr;  // of an operator of one context; null of one that all have
  EQMDataType returnType = EQMDataType::Undefined;
  std::vector<SQMOperatorParameter> parameters;
  bool isRecursive = false;  // declared without a body and given one later: compiled afresh at every run
  OperatorCallback callback = nullptr;

  bool HasBody() const { return GetBody() != nullptr; }
  /** Null without one; the body of a recursive operator may come at any time, and stays. */
  SQMOperatorBody const* GetBody() const { return m_bodyInUse.load(std::memory_order_acquire); }
  /** Whether it has left its list, so that no new text can name it. */
  bool IsDeleted() const { return m_deleted.load(std::memory_order_acquire); }
  void MarkDeleted() const { m_deleted.store(true, std::memory_order_release); }

 private:
  friend class CQMReachableDefinitions;

  mutable std::atomic<bool> m_deleted{false};
  std::unique_ptr<SQMOperatorBody const> m_body;
  std::atomic<SQMOperatorBody const*> m_bodyInUse{nullptr};
  mutable std::unordered_set<CQMReachableDefinitions*> m_waiting;  // for what the body will name
};

}  // namespace qumel
