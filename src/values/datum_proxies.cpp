// Proxies: how a datum comes to stand for another, follows it, and is left or let go.
#include <algorithm>
#include <mutex>
#include <utility>

#include "values/datum.h"

namespace qumel {

namespace {

// Contexts of several threads may index and drop one process-wide variable at once; its links are theirs
// together.
constinit std::mutex g_sharedLinks;

bool IsShared(CQMDatum const& datum) { return datum.GetScope() == Scope::kCosmic; }

std::unique_lock<std::mutex> LockLinks(bool isShared) {
  return isShared ? std::unique_lock(g_sharedLinks) : std::unique_lock<std::mutex>();
}

/** From the last to the first; visit may take the proxy out of the list. */
template <class Visit>
void ForEachProxy(CQMDatum& target, Visit visit) {
  for (CQMLinkedObject* child = target.GetLastChildObject(); child != nullptr;) {
    CQMLinkedObject* const previous = child->GetPreviousObject();
    if (auto* const proxy = dynamic_cast<CQMDatum*>(child);
        proxy != nullptr && proxy->GetProxyTarget() == &target) {
      visit(*proxy);
    }
    child = previous;
  }
}

}  // namespace

// ---- making ----

CQMDatum::CQMDatum(CQMDatum& source) : m_current(m_inline) { AttachTo(source); }

CQMDatum& CQMDatum::operator=(CQMDatum& source) {
  CQMDatum& target = source.FinalTarget();
  if (&target == this || &source == this) return *this;
  bool const isShared = IsShared(*this) || IsShared(target);
  LeaveTarget();
  DropStorage();
  AttachTo(source);
  MoveEpoch();
  {
    // Whoever owns a proxy of this datum goes on using it.
    auto const links = LockLinks(isShared);
    ForEachProxy(*this, [&](CQMDatum& proxy) {
      proxy.m_target = &target;
      target.AddChildObject(&proxy);
      proxy.FollowTarget();
    });
  }
  DestroyChildren();
  return *this;
}

void CQMDatum::CopyDimensions(CQMDatum const& source) {
  std::unique_ptr<std::int32_t[]> dimensions;
  if (source.m_dimensionCount > 0) {
    auto const entries = static_cast<std::size_t>(source.m_dimensionCount) + 1;
    dimensions = std::make_unique<std::int32_t[]>(entries);
    std::copy_n(source.m_dimensions.get(), entries, dimensions.get());
  }
  m_dimensions = std::move(dimensions);
  m_dimensionCount = source.m_dimensionCount;
  m_arrayBase = source.m_arrayBase;
  m_invertIndices = source.m_invertIndices;
}

/** Copies what can be copied of a datum; this one must have neither storage nor target. */
void CQMDatum::AttachTo(CQMDatum& source) {
  if (!source.Name().empty() || !Name().empty()) SetObjectName(source.GetObjectName());
  CopyDimensions(source);
  SetTypeTag(source.GetTypeTag());
  m_type = source.m_type;
  m_class = source.m_class;
  m_elementSize = source.m_elementSize;
  m_partSize = source.m_partSize;
  m_revision = source.m_revision;
  m_literal = source.m_literal;
  m_literalAttributes[0] = source.m_literalAttributes[0];
  m_literalAttributes[1] = source.m_literalAttributes[1];
  m_scope = source.m_scope;
  m_pending = source.m_pending;
  m_temporary = source.m_temporary;
  m_ownsStorage = false;
  m_currentElement = source.m_currentElement;

  CQMDatum& target = source.FinalTarget();
  auto const links = LockLinks(IsShared(target));
  m_target = &target;
  target.AddChildObject(this);
  RefreshCurrent();
  m_value = target.m_value;
}

// ---- following ----

void CQMDatum::UpdateProxyDatums() {
  auto const links = LockLinks(IsShared(*this));
  ForEachProxy(*this, [](CQMDatum& proxy) { proxy.FollowTarget(); });
}

void CQMDatum::UpdateFromProxyTarget() {
  if (m_target != nullptr) FollowTarget();
}

void CQMDatum::FollowTarget() {
  m_revision = static_cast<std::int32_t>(static_cast<std::uint32_t>(m_revision) + 1U);
  m_ownsStorage = false;
  m_type = m_target->m_type;
  m_class = m_target->m_class;
  m_elementSize = m_target->m_elementSize;
  m_partSize = m_target->m_partSize;
  RefreshCurrent();
}

// ---- leaving ----

CQMDatum::~CQMDatum() {
  LeaveTarget();
  auto const links = LockLinks(IsShared(*this));
  ForEachProxy(*this, [this](CQMDatum& proxy) {
    ReleaseChildObject(&proxy);
    proxy.BecomeOwner();
  });
}

void CQMDatum::LeaveTarget() {
  if (m_target == nullptr) return;
  auto const links = LockLinks(IsShared(*m_target));
  m_target->ReleaseChildObject(this);
  m_target = nullptr;
  m_value = nullptr;
  m_current = m_inline;
}

void CQMDatum::BecomeOwner() {
  m_pending = IsPending();
  m_target = nullptr;
  m_value = nullptr;
  m_dimensions.reset();
  m_dimensionCount = 0;
  m_currentElement = 0;
  m_ownsStorage = true;
  if (!StoreElements(1, m_elementSize)) DropStorage();
  MoveEpoch();
}

}  // namespace qumel
