// A register of live allocations for diagnostics: who allocated what, what was never freed, and counters.
#pragma once

#include <cstdint>
#include <list>
#include <memory>
#include <string>

namespace qumel {

/** Process-wide and without a lock: meant for single-threaded diagnostic builds. Reports go to standard
 * output. */
class CQMMemoryAuditor {
 public:
  /** Made at the first call. */
  static CQMMemoryAuditor* GetMemoryAuditor();
  /** Forgets the entries and the counters. */
  static void DestroyMemoryAuditor();

  /** Enters an allocation; the texts may be null, and longer ones are cut. A null address counts as a failed
   * addition. Always 1. */
  long AddEntry(void const* address, long size, char const* text1, char const* text2);
  /** Moves the latest live entry of address to the removed ones; text may be null. True when the address is
   * live or was removed before. */
  bool DeleteEntry(void const* address, char const* text);
  long GetTotalRegisteredMemory() const;

  /** Lists the live entries, which are forgotten on the way, and the counters, which stay. Where standard
   * input is a terminal it waits for a key after every screenful and at the end. */
  void DumpMemoryRegister();
  void DumpRegisterStats() const;

 private:
  struct SQMEntry {
    std::int32_t number;
    void const* address;
    long size;
    std::string texts[3];  // two given when it was added, one when it was removed
  };
  struct SQMCounters {
    std::int32_t added = 0;  // the source of entry numbers too
    std::int32_t removed = 0;
    std::int32_t current = 0;
    std::int32_t failedAdditions = 0;
    std::int32_t nonExistentDeletions = 0;
    std::int32_t multipleDeletions = 0;
  };

  void PrintCounters(int labelWidth, long listed) const;

  static std::unique_ptr<CQMMemoryAuditor> sm_pMemoryAuditor;

  SQMCounters m_counters;
  std::list<SQMEntry> m_live;
  std::list<SQMEntry> m_removed;
};

}  // namespace qumel
