// Counters and reports of the memory auditor.
#include "tables/memory_auditor.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace qumel {
namespace {

class MemoryAuditor : public ::testing::Test {
 protected:
  ~MemoryAuditor() override { CQMMemoryAuditor::DestroyMemoryAuditor(); }
  static CQMMemoryAuditor& Auditor() { return *CQMMemoryAuditor::GetMemoryAuditor(); }
  static std::string Output(void (*dump)()) {
    ::testing::internal::CaptureStdout();
    dump();
    return ::testing::internal::GetCapturedStdout();
  }
  static std::string Register() {
    return Output([] { Auditor().DumpMemoryRegister(); });
  }
  static std::string Stats() {
    return Output([] { Auditor().DumpRegisterStats(); });
  }

  char m_memory[64] = {};
};

TEST_F(MemoryAuditor, ReportsCountersAndTotals) {
  EXPECT_EQ(Auditor().AddEntry(&m_memory[0], 100, "file.cpp", "Buffer"), 1);
  EXPECT_EQ(Auditor().AddEntry(nullptr, 100, "file.cpp", "None"), 1);
  EXPECT_EQ(Auditor().AddEntry(&m_memory[1], 20, nullptr, nullptr), 1);
  Auditor().AddEntry(&m_memory[2], 3, "x", "y");
  EXPECT_TRUE(Auditor().DeleteEntry(&m_memory[2], "freed"));
  EXPECT_TRUE(Auditor().DeleteEntry(&m_memory[2], nullptr)) << "removed before";
  EXPECT_FALSE(Auditor().DeleteEntry(&m_memory[3], "never there"));
  EXPECT_FALSE(Auditor().DeleteEntry(nullptr, nullptr));
  EXPECT_EQ(Auditor().GetTotalRegisteredMemory(), 120);
  char const* const stats =
      "\r\n"
      "Entries Added            3\r\n"
      "Failed Additions         1\r\n"
      "Entries Removed          1\r\n"
      "Multiple Deletions       1\r\n"
      "Non-Existent Deletions   2\r\n"
      "Total Entries            2\r\n"
      "Entries Listed           2\r\n"
      "\r\n"
      "Total Registered Memory: 120 bytes\r\n";
  EXPECT_EQ(Stats(), stats);
  EXPECT_EQ(Register(),
            "1: Buffer                         file.cpp                    100 bytes\n"
            "2:                                                            20 bytes\n"
            "\r\n"
            "Entries Added          3\r\n"
            "Failed Additions       1\r\n"
            "Entries Removed        1\r\n"
            "Multiple Deletions     1\r\n"
            "Non-Existent Deletions 2\r\n"
            "Total Entries          2\r\n"
            "Entries Listed         2\r\n"
            "\r\n"
            "Total Leaked Memory:   120 bytes\r\n");
  // The listed entries are gone, the counters are not.
  EXPECT_EQ(Auditor().GetTotalRegisteredMemory(), 0);
  EXPECT_NE(Stats().find("Total Entries            2\r\nEntries Listed           0\r\n"), std::string::npos);
  EXPECT_FALSE(Auditor().DeleteEntry(&m_memory[0], nullptr));
  Auditor().AddEntry(&m_memory[4], 1, "a", "b");
  EXPECT_EQ(Register().substr(0, 3), "4: ");
}

TEST_F(MemoryAuditor, AnAddressUsedAgainIsRemovedLatestFirst) {
  Auditor().AddEntry(m_memory, 1, "first", "");
  Auditor().AddEntry(m_memory, 10, "second", "");
  Auditor().DeleteEntry(m_memory, "");
  EXPECT_EQ(Auditor().GetTotalRegisteredMemory(), 1);
  Auditor().DeleteEntry(m_memory, "");
  Auditor().AddEntry(m_memory, 5, "third", "");
  EXPECT_TRUE(Auditor().DeleteEntry(m_memory, ""));
  EXPECT_EQ(Auditor().GetTotalRegisteredMemory(), 0);
  EXPECT_NE(Stats().find("Entries Removed          3\r\nMultiple Deletions       0\r\n"), std::string::npos);
}

TEST_F(MemoryAuditor, CutsLongTextsAndForgetsThemWhenDestroyed) {
  Auditor().AddEntry(m_memory, 1, std::string(500, 'a').c_str(), std::string(127, 'b').c_str());
  EXPECT_EQ(Register().substr(0, 3 + 127 + 1 + 127 + 9),
            "1: " + std::string(127, 'b') + ' ' + std::string(127, 'a') + " 1 bytes\n");
  Auditor().AddEntry(m_memory, 1, "a", "b");
  CQMMemoryAuditor::DestroyMemoryAuditor();
  EXPECT_EQ(Auditor().GetTotalRegisteredMemory(), 0);
  EXPECT_NE(Stats().find("Entries Added            0\r\n"), std::string::npos);
}

/** Puts another descriptor in the place of standard input. */
class InputFrom {
 public:
  explicit InputFrom(int descriptor) : m_saved(dup(STDIN_FILENO)) {
    dup2(descriptor, STDIN_FILENO);
    close(descriptor);
  }
  ~InputFrom() {
    dup2(m_saved, STDIN_FILENO);
    close(m_saved);
  }

 private:
  int m_saved;
};

TEST_F(MemoryAuditor, WaitsForKeysAtATerminalOnly) {
  struct Case {
    char const* what;
    bool isTerminal;
    int entries, keys;
  };
  constexpr Case kCases[] = {
      {"a pipe is not read", false, 40, 0},
      {"after the report", true, 15, 1},
      {"after a full screen too", true, 16, 2},
      {"after every screen", true, 33, 3},
  };
  for (Case const& c : kCases) {
    SCOPED_TRACE(c.what);
    int write_end, read_end;
    if (c.isTerminal) {
      write_end = posix_openpt(O_RDWR | O_NOCTTY);
      ASSERT_TRUE(grantpt(write_end) == 0 && unlockpt(write_end) == 0);
      read_end = open(ptsname(write_end), O_RDWR | O_NOCTTY);
    } else {
      int ends[2];
      ASSERT_EQ(pipe(ends), 0);
      read_end = ends[0], write_end = ends[1];
    }
    ASSERT_GE(read_end, 0);
    InputFrom const input(read_end);
    ASSERT_EQ(write(write_end, "0123456789\n", 11), 11);
    for (int i = 0; i < c.entries; ++i) Auditor().AddEntry(m_memory, 1, "", "");
    Register();
    EXPECT_EQ(std::getchar(), '0' + c.keys);
    for (int rest = std::getchar(); rest != '\n' && rest != EOF;) rest = std::getchar();
    close(write_end);
  }
}

}  // namespace
}  // namespace qumel
