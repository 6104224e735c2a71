// Entering and removing allocations, and the two reports.
#include "tables/memory_auditor.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <string_view>

namespace qumel {

namespace {

constexpr std::size_t kLongestText = 127;
constexpr long kLinesPerScreen = 16;
constexpr int kRegisterLabelWidth = 23;
constexpr int kStatsLabelWidth = 25;

std::string Shorten(char const* text) {
  return std::string(std::string_view(text != nullptr ? text : "").substr(0, kLongestText));
}

void PauseForKey() {
  std::fflush(stdout);
  if (isatty(STDIN_FILENO) == 0) return;
  std::getchar();
  std::clearerr(stdin);
}

}  // namespace

std::unique_ptr<CQMMemoryAuditor> CQMMemoryAuditor::sm_pMemoryAuditor;

CQMMemoryAuditor* CQMMemoryAuditor::GetMemoryAuditor() {
  if (sm_pMemoryAuditor == nullptr) sm_pMemoryAuditor = std::make_unique<CQMMemoryAuditor>();
  return sm_pMemoryAuditor.get();
}

void CQMMemoryAuditor::DestroyMemoryAuditor() { sm_pMemoryAuditor.reset(); }

long CQMMemoryAuditor::AddEntry(void const* address, long size, char const* text1, char const* text2) {
  if (address == nullptr) {
    ++m_counters.failedAdditions;
    return 1;
  }
  m_live.push_back({m_counters.added + 1, address, size, {Shorten(text1), Shorten(text2), {}}});
  ++m_counters.added;
  ++m_counters.current;
  return 1;
}

bool CQMMemoryAuditor::DeleteEntry(void const* address, char const* text) {
  auto const hasAddress = [address](SQMEntry const& entry) { return entry.address == address; };
  auto const latest = std::find_if(m_live.rbegin(), m_live.rend(), hasAddress);
  if (latest != m_live.rend()) {
    latest->texts[2] = Shorten(text);
    m_removed.splice(m_removed.end(), m_live, std::prev(latest.base()));
    ++m_counters.removed;
    --m_counters.current;
    return true;
  }
  bool const wasRemoved = std::any_of(m_removed.begin(), m_removed.end(), hasAddress);
  ++(wasRemoved ? m_counters.multipleDeletions : m_counters.nonExistentDeletions);
  return wasRemoved;
}

long CQMMemoryAuditor::GetTotalRegisteredMemory() const {
  unsigned long total = 0;
  for (SQMEntry const& entry : m_live) total += static_cast<unsigned long>(entry.size);
  return static_cast<long>(total);
}

void CQMMemoryAuditor::DumpMemoryRegister() {
  long const leaked = GetTotalRegisteredMemory();
  long listed = 0;
  for (; !m_live.empty(); m_live.pop_front()) {
    SQMEntry const& entry = m_live.front();
    std::printf("%ld: %-30s %-27s %ld bytes\n", static_cast<long>(entry.number), entry.texts[1].c_str(),
                entry.texts[0].c_str(), entry.size);
    if (++listed % kLinesPerScreen == 0) PauseForKey();
  }
  PrintCounters(kRegisterLabelWidth, listed);
  std::printf("Total Leaked Memory:   %ld bytes\r\n", leaked);
  PauseForKey();
}

void CQMMemoryAuditor::DumpRegisterStats() const {
  PrintCounters(kStatsLabelWidth, static_cast<long>(m_live.size()));
  std::printf("Total Registered Memory: %ld bytes\r\n", GetTotalRegisteredMemory());
}

void CQMMemoryAuditor::PrintCounters(int labelWidth, long listed) const {
  struct SQMLine {
    char const* label;
    long value;
  };
  SQMLine const lines[] = {
      {"Entries Added", m_counters.added},
      {"Failed Additions", m_counters.failedAdditions},
      {"Entries Removed", m_counters.removed},
      {"Multiple Deletions", m_counters.multipleDeletions},
      {"Non-Existent Deletions", m_counters.nonExistentDeletions},
      {"Total Entries", m_counters.current},
      {"Entries Listed", listed},
  };
  std::printf("\r\n");
  for (SQMLine const& line : lines) std::printf("%-*s%ld\r\n", labelWidth, line.label, line.value);
  std::printf("\r\n");
}

}  // namespace qumel
