// The base of every library object: a reference count, a name, a class tag and a serial number.
#pragma once

#include <atomic>
#include <cstring>
#include <memory>
#include <string_view>

namespace qumel {

/** Class tags, set by the constructors. They tell the class of an object that was found by its handle. */
namespace TypeTag {
inline constexpr char kObject[] = "__O__";
inline constexpr char kLinkedObject[] = "__OLO__";
inline constexpr char kExecutor[] = "__OLOE__";
inline constexpr char kThreadInfo[] = "__OLOTI__";
inline constexpr char kDatum[] = "__OLOD__";
inline constexpr char kExpression[] = "__OLOX__";
inline constexpr char kOperator[] = "__OLOP__";
inline constexpr char kSymbolTable[] = "__OLOST__";
inline constexpr char kDataSpace[] = "__ODS__";
inline constexpr char kDataSpaceRegion[] = "__ODSR__";
inline constexpr char kColumn[] = "__OLOC__";
inline constexpr char kTable[] = "__OT";
inline constexpr char kOpInfo[] = "OOI_";
inline constexpr char kStackString[] = "ST__";
}  // namespace TypeTag

class CQMObject {
 public:
  // Inlined, since operators and datums are made by the thousand.
  CQMObject() : m_serialNumber(sm_lNextObjectID.fetch_add(1, std::memory_order_relaxed)) {}
  virtual ~CQMObject() = default;
  CQMObject(CQMObject const&) = delete;
  CQMObject& operator=(CQMObject const&) = delete;

  void ReserveRef() { m_references.fetch_add(kOneReference, std::memory_order_relaxed); }
  /** Drops a reference if there is one. Destroys the object if the count is 0 then and the delete mark is
   * set. */
  void ReleaseRef();
  /** Sets the count and clears the delete mark. */
  void ResetRefCount(long count);
  /** Sets or clears the delete mark, whatever the count is. To destroy an object as soon as nothing refers to
   * it, its owner takes a reference, sets the mark and releases the reference. */
  void DeleteOnRefCountZero(bool mark) {
    if (mark) m_references.fetch_or(kDeleteMark, std::memory_order_acq_rel);
    else m_references.fetch_and(~kDeleteMark, std::memory_order_acq_rel);
  }
  bool IsMarkedForDeletion() const {
    return (m_references.load(std::memory_order_acquire) & kDeleteMark) != 0;
  }
  long GetRefCount() const { return m_references.load(std::memory_order_acquire) / kOneReference; }

  /** Keeps a copy of name (empty for null) and returns it. */
  char const* SetObjectName(char const* name);
  /** Copies the name into destination (the caller provides the room) and returns it; without a destination
   * the object's own text. Never null. */
  char* GetObjectName(char* destination = nullptr);
  std::string_view Name() const { return m_name != nullptr ? m_name.get() : ""; }

  bool HasTypeTag(char const* tag) const { return tag == m_typeTag || std::strcmp(tag, m_typeTag) == 0; }
  char const* GetTypeTag() const { return m_typeTag; }
  long GetSerialNumber() const { return m_serialNumber; }

  static std::atomic<long> sm_lNextObjectID;   // the serial number of the next object
  static std::atomic<long> sm_lQMObjectCount;  // live linked objects

 protected:
  void SetTypeTag(char const* tag) { m_typeTag = tag; }  // tag: one of TypeTag, static storage

 private:
  // Count and mark are one word, since a thread must not read the object after it has dropped its reference.
  static constexpr long kDeleteMark = 1, kOneReference = 2;
  std::atomic<long> m_references{0};
  std::unique_ptr<char[]> m_name;
  char const* m_typeTag = TypeTag::kObject;
  long m_serialNumber;
};

}  // namespace qumel
