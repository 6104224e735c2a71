// The definitions of hosts that an expression can come to, and the giving of bodies, which adds to them.
#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "base/errors.h"
#include "language/operator_definition.h"

namespace qumel {

/** The definitions that the text of an expression names, those that their bodies name, and so on; a body that
 * comes later adds what it names. They live as long as the expression, which goes on with them whatever is
 * deleted or defined anew. One thread at a time uses the set; any thread may give bodies. */
class CQMReachableDefinitions {
 public:
  using Definition = std::shared_ptr<SQMOperatorDefinition const>;

  explicit CQMReachableDefinitions(CQMOperatorContext const& context) : m_context(context) {}
  ~CQMReachableDefinitions();
  CQMReachableDefinitions(CQMReachableDefinitions const&) = delete;
  CQMReachableDefinitions& operator=(CQMReachableDefinitions const&) = delete;

  /** Adds definition and all that can be reached from it. */
  void Add(Definition definition);
  /** Null for an id that is not reached. */
  Definition Find(long id);

  /** A body with the operators that context finds by their ids. */
  static SQMOperatorBody MakeBody(CQMItemList items, CQMOperatorContext& context);
  /** OperatorExists when the operator has a body, NotFound when it is deleted, else 0. */
  static long GiveBody(SQMOperatorDefinition& definition, SQMOperatorBody body);

 private:
  /** Calls take with each definition that body names and this set may hold. */
  template <class Take>
  void ForEachNamed(SQMOperatorBody const& body, Take take) const;
  void WaitFor(Definition const& definition);
  void Announce(SQMOperatorDefinition const& awaited, SQMOperatorBody const& body);
  void TakeAnnounced();

  CQMOperatorContext const& m_context;
  std::unordered_map<long, Definition> m_known;
  std::atomic<bool> m_hasAnnounced{false};
  // under the lock of all bodies
  std::vector<Definition> m_announced;  // by threads that gave bodies
  std::vector<Definition> m_awaited;    // those that had no body
};

}  // namespace qumel
