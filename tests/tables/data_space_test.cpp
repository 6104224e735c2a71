// The data space: assigning, splitting and spilling chunks, and the regions of atoms laid over them.
#include "tables/data_space.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <cstring>
#include <filesystem>
#include <random>
#include <thread>

#include "support/failing_allocation.h"
#include "support/scratch_folder.h"
#include "tables/data_space_region.h"

namespace qumel {
namespace {

namespace fs = std::filesystem;

SQMChunkInfo InfoOf(CQMDataSpace const& space, long chunk) { return space.GetChunkInfo(chunk).value(); }

long CountInMemory(CQMDataSpace const& space) {
  long count = 0;
  for (long chunk = 0; chunk < space.GetChunkCount(); ++chunk) count += InfoOf(space, chunk).isInMemory;
  return count;
}

void Fill(CQMDataSpace& space, long chunk, int value) {
  std::memset(space.FindChunk(chunk), value, static_cast<std::size_t>(InfoOf(space, chunk).size));
  space.SetNeedsFlush(chunk);
}

bool IsFilledWith(CQMDataSpace& space, long chunk, int value) {
  std::byte const* const memory = space.FindChunk(chunk);
  if (memory == nullptr) return false;
  return std::all_of(memory, memory + InfoOf(space, chunk).size,
                     [value](std::byte b) { return std::to_integer<int>(b) == value; });
}

// ---- chunks ----

TEST(DataSpace, AFreeChunkOfTheSizeIsTakenBeforeTheSmallestLargerOneIsSplit) {
  CQMTestFolder const folder;
  CQMDataSpace space(folder.Path().c_str());
  ASSERT_TRUE(space.SetFileBacked(true));
  for (long size : {9216L, 20000L, 9216L, 4096L}) space.AssignChunk(size);
  Fill(space, 0, 7);
  for (long chunk : {1L, 0L, 2L, 3L}) space.FreeChunk(chunk);
  EXPECT_EQ(space.GetSize(), 0);

  EXPECT_EQ(space.AssignChunk(4096), 3);
  EXPECT_EQ(InfoOf(space, 3).writeCount, 0);  // its place is cleared, which does not count
  EXPECT_EQ(space.AssignChunk(9216), 0);      // of two, the one that was freed first
  EXPECT_TRUE(IsFilledWith(space, 0, 0));
  EXPECT_EQ(space.AssignChunk(4096), 4);  // from the front of chunk 2, not of the larger chunk 1
  EXPECT_EQ(InfoOf(space, 4).offset, 9216 + 20000);
  EXPECT_EQ(InfoOf(space, 2).offset, 9216 + 20000 + 4096);
  EXPECT_EQ(InfoOf(space, 2).size, 5120);
  EXPECT_TRUE(InfoOf(space, 2).isFree);
  EXPECT_EQ(space.AssignChunk(20001), 5);  // nothing fits: at the end of the file
  EXPECT_EQ(InfoOf(space, 5).offset, 2 * 9216 + 20000 + 4096);
  EXPECT_EQ(InfoOf(space, 5).writeCount, 1);
  EXPECT_EQ(space.GetSize(), 4096 + 9216 + 4096 + 20001);
}

TEST(DataSpace, AbsurdChunksAndSizesDoNothing) {
  CQMDataSpace space;
  for (long size : {0L, -1L, std::numeric_limits<long>::min()}) EXPECT_EQ(space.AssignChunk(size), -1);
  ASSERT_EQ(space.AssignChunk(10), 0);
  for (long chunk : {-1L, 1L, 128L, std::numeric_limits<long>::max(), std::numeric_limits<long>::min()}) {
    EXPECT_EQ(space.FindChunk(chunk), nullptr);
    EXPECT_FALSE(space.GetChunkInfo(chunk).has_value());
    EXPECT_FALSE(space.CopyChunkToDisk(chunk, true));
    EXPECT_FALSE(space.CopyChunkToRAM(chunk));
    space.FreeChunk(chunk);
    space.SetNeedsFlush(chunk);
    space.SetKeepInRAM(chunk, false);
  }
  space.FreeChunk(0);
  space.FreeChunk(0);  // must not enter the free list twice
  EXPECT_EQ(space.FindChunk(0), nullptr);
  EXPECT_EQ(space.AssignChunk(10), 0);
  EXPECT_EQ(space.AssignChunk(10), 1);
}

TEST(DataSpace, WithoutMemoryNoChunkIsAssignedAndNoneIsLost) {
  CQMDataSpace space;
  ASSERT_EQ(space.AssignChunk(100), 0);
  Fill(space, 0, 5);
  for (long spared = 0; spared < 3; ++spared) {
    long chunk;
    {
      testing::FailingAllocation const failing(spared);
      chunk = space.AssignChunk(200);
    }
    if (chunk >= 0) break;
  }
  EXPECT_TRUE(IsFilledWith(space, 0, 5));
  long const next = space.AssignChunk(200);
  EXPECT_TRUE(IsFilledWith(space, next, 0));
}

// ---- the scratch file ----

TEST(FileBackedDataSpace, KeepsAtMostTheLimitInMemoryAndLosesNothing) {
  CQMTestFolder const folder;
  constexpr long kChunks = 3 * CQMDataSpace::kMemoryLimit;
  std::string path;
  {
    CQMDataSpace space(folder.Path().c_str());
    ASSERT_TRUE(space.SetFileBacked(true));
    path = space.GetFilePath();
    EXPECT_TRUE(fs::exists(path));
    std::string const name = fs::path(path).filename();
    EXPECT_TRUE(name.starts_with("DS") && name.ends_with(".qmd")) << name;
    for (long chunk = 0; chunk < kChunks; ++chunk) {
      ASSERT_EQ(space.AssignChunk(1000 + chunk), chunk);
      Fill(space, chunk, static_cast<int>(chunk % 251));
      ASSERT_LE(CountInMemory(space), CQMDataSpace::kMemoryLimit);
    }
    for (int round = 0; round < 2; ++round) {
      for (long chunk = 0; chunk < kChunks; ++chunk)
        ASSERT_TRUE(IsFilledWith(space, chunk, static_cast<int>(chunk % 251))) << chunk;
    }
    EXPECT_EQ(InfoOf(space, 0).writeCount, 2);  // when assigned and when first moved out, not again unchanged
    EXPECT_EQ(InfoOf(space, 0).readCount, 2);
  }
  EXPECT_FALSE(fs::exists(path));
}

TEST(FileBackedDataSpace, ScramRAMMovesEverythingButTheKept) {
  CQMTestFolder const folder;
  CQMDataSpace space(folder.Path().c_str());
  ASSERT_TRUE(space.SetFileBacked(true));
  for (long chunk = 0; chunk < 10; ++chunk) {
    space.AssignChunk(100);
    Fill(space, chunk, static_cast<int>(chunk));
  }
  space.SetKeepInRAM(3, true);
  EXPECT_EQ(space.ReleaseRAM(8), 2);  // nine are listed: the two oldest go
  EXPECT_FALSE(InfoOf(space, 1).isInMemory);
  EXPECT_TRUE(InfoOf(space, 2).isInMemory);
  EXPECT_EQ(space.ScramRAM(), 7);
  EXPECT_TRUE(InfoOf(space, 3).isInMemory);
  EXPECT_EQ(InfoOf(space, 3).writeCount, 1);
  space.SetKeepInRAM(3, false);
  EXPECT_EQ(space.ScramRAM(), 1);
  EXPECT_EQ(space.ScramRAM(), 0);
  for (long chunk = 0; chunk < 10; ++chunk) EXPECT_TRUE(IsFilledWith(space, chunk, static_cast<int>(chunk)));
}

TEST(FileBackedDataSpace, WritesOnDemandWhenChangedOrForced) {
  CQMTestFolder const folder;
  CQMDataSpace space(folder.Path().c_str());
  ASSERT_TRUE(space.SetFileBacked(true));
  space.AssignChunk(100);
  struct Case {
    bool changed, force;
    long writes;
  };
  for (auto const& [changed, force, writes] :
       {Case{false, false, 1}, {true, false, 2}, {false, true, 3}, {false, false, 3}}) {
    if (changed) space.SetNeedsFlush(0);
    EXPECT_TRUE(space.CopyChunkToDisk(0, force));
    EXPECT_EQ(InfoOf(space, 0).writeCount, writes);
    EXPECT_FALSE(InfoOf(space, 0).needsFlush);
  }
}

TEST(FileBackedDataSpace, IsChosenBeforeTheFirstChunkAndOnlyWithAFile) {
  CQMTestFolder const folder;
  CQMDataSpace inMemory(folder.Path().c_str());
  inMemory.AssignChunk(10);
  EXPECT_FALSE(inMemory.SetFileBacked(true));
  EXPECT_FALSE(inMemory.OpenDataSpaceFile());
  EXPECT_TRUE(fs::is_empty(folder.Path()));

  CQMDataSpace nowhere((folder.Path() + "/missing").c_str());
  EXPECT_FALSE(nowhere.SetFileBacked(true));
  EXPECT_FALSE(nowhere.IsFileBacked());
  EXPECT_EQ(nowhere.AssignChunk(10), 0);

  CQMDataSpace first(folder.Path().c_str()), second(folder.Path().c_str());
  ASSERT_TRUE(first.SetFileBacked(true));
  ASSERT_TRUE(second.SetFileBacked(true));
  EXPECT_NE(first.GetFilePath(), second.GetFilePath());  // made within one second
  EXPECT_TRUE(first.SetFileBacked(false));
  EXPECT_FALSE(fs::exists(first.GetFilePath()));
}

TEST(FileBackedDataSpace, ClosingTheFileBringsItsChunksBack) {
  CQMTestFolder const folder;
  CQMDataSpace space(folder.Path().c_str());
  ASSERT_TRUE(space.SetFileBacked(true));
  for (long chunk = 0; chunk < 200; ++chunk) {
    space.AssignChunk(64);
    Fill(space, chunk, static_cast<int>(chunk));
  }
  space.CloseDataSpaceFile();
  EXPECT_FALSE(fs::exists(space.GetFilePath()));
  EXPECT_EQ(CountInMemory(space), 200);
  EXPECT_EQ(space.ScramRAM(), 0);
  EXPECT_EQ(space.AssignChunk(64), 200);
  ASSERT_TRUE(space.OpenDataSpaceFile());  // anew, and empty
  EXPECT_EQ(space.ScramRAM(), 200);
  for (long chunk = 0; chunk < 200; ++chunk) EXPECT_TRUE(IsFilledWith(space, chunk, static_cast<int>(chunk)));
}

TEST(FileBackedDataSpace, AChunkThatCannotBeReadIsNotThere) {
  CQMTestFolder const folder;
  CQMDataSpace space(folder.Path().c_str());
  ASSERT_TRUE(space.SetFileBacked(true));
  space.AssignChunk(5000);
  space.ScramRAM();
  fs::resize_file(space.GetFilePath(), 100);
  EXPECT_FALSE(space.CopyChunkToRAM(0));
  EXPECT_EQ(space.FindChunk(0), nullptr);
}

TEST(FileBackedDataSpace, ChunksThatCannotBeWrittenStayInMemory) {
  CQMTestFolder const folder;
  CQMDataSpace space(folder.Path().c_str());
  ASSERT_TRUE(space.SetFileBacked(true));
  rlimit old{};
  getrlimit(RLIMIT_FSIZE, &old);
  auto const oldHandler = std::signal(SIGXFSZ, SIG_IGN);
  rlimit const small{10000, old.rlim_max};
  setrlimit(RLIMIT_FSIZE, &small);
  for (long chunk = 0; chunk < 300; ++chunk) {
    space.AssignChunk(1000);
    Fill(space, chunk, static_cast<int>(chunk % 251));
  }
  long const untouched = space.AssignChunk(1000);
  space.ScramRAM();
  setrlimit(RLIMIT_FSIZE, &old);
  std::signal(SIGXFSZ, oldHandler);
  EXPECT_EQ(CountInMemory(space), 291);
  EXPECT_TRUE(IsFilledWith(space, untouched, 0));
  for (long chunk = 0; chunk < 300; ++chunk)
    ASSERT_TRUE(IsFilledWith(space, chunk, static_cast<int>(chunk % 251))) << chunk;
}

// ---- regions ----

TEST(DataSpaceRegion, ChunksStartSmallAndGrowToTheFullSize) {
  struct Case {
    long atomSize;
    std::vector<long> atomsOfChunks;  // up to the second full chunk
  };
  for (auto const& [atomSize, atomsOfChunks] : {Case{8, {4, 4, 8, 16, 32, 64, 128, 256, 512, 1024, 1024}},
                                                {1, {32, 32, 64, 128, 256, 512, 1024, 1024}},
                                                {64, {1, 1, 2, 4, 8, 16, 32, 64, 128, 256, 512, 1024, 1024}},
                                                {129, {1, 1, 2, 4, 8, 16, 32, 64, 128, 508, 508}},
                                                {32767, {1, 1, 2, 2}},
                                                {70000, {1, 1, 1}},
                                                {0, {32, 32, 64}},
                                                {-9, {32, 32, 64}}}) {
    SCOPED_TRACE(atomSize);
    CQMDataSpace space;
    CQMDataSpaceRegion region(atomSize, &space);
    EXPECT_EQ(space.GetSize(), 0) << "the first chunk comes with the first atom";
    long atom = 0, chunk = 0;
    for (long const atoms : atomsOfChunks) {
      for (long place = 0; place < atoms; ++place) {
        ASSERT_EQ(region.AppendAtom(), ++atom);
        ASSERT_EQ(region.GetAtomPtr(atom), space.FindChunk(chunk) + place * region.GetAtomSize());
      }
      ASSERT_EQ(space.GetChunkCount(), ++chunk);
      ASSERT_EQ(InfoOf(space, chunk - 1).size, atoms * region.GetAtomSize());
    }
    EXPECT_EQ(region.GetBytesUsed(), atom * region.GetAtomSize());
    for (long none : {0L, -1L, atom + 1, std::numeric_limits<long>::max(), std::numeric_limits<long>::min()})
      EXPECT_EQ(region.GetAtomPtr(none), nullptr);
    region.ReleaseRegion();
    EXPECT_EQ(region.GetAtomCount(), 0);
    EXPECT_EQ(region.GetAtomPtr(1), nullptr);
    EXPECT_EQ(space.GetSize(), 0);
    EXPECT_EQ(region.AppendAtom(), 1);
  }
}

class RegionInBothModes : public ::testing::TestWithParam<bool> {
 protected:
  CQMTestFolder m_folder;
  CQMDataSpace m_space{m_folder.Path().c_str()};
  void SetUp() override { ASSERT_TRUE(m_space.SetFileBacked(GetParam())); }
};
INSTANTIATE_TEST_SUITE_P(DataSpace, RegionInBothModes, ::testing::Bool(),
                         [](auto const& info) { return info.param ? "FileBacked" : "InMemory"; });

TEST_P(RegionInBothModes, KeepsManyChunksOfAtomsAndFlags) {
  CQMDataSpaceRegion region(4096, &m_space);  // 16 atoms a chunk
  constexpr long kAtoms = 16 * 200;
  for (long atom = 1; atom <= kAtoms; ++atom) {
    ASSERT_EQ(region.AppendAtom(), atom);
    std::memcpy(region.GetAtomPtr(atom), &atom, sizeof atom);
    region.SetFlushFlag(atom);
  }
  EXPECT_EQ(m_space.GetChunkCount(), 204);  // 199 full ones after 1, 1, 2, 4 and 8 atoms
  EXPECT_EQ(CountInMemory(m_space), GetParam() ? CQMDataSpace::kMemoryLimit : 204);
  for (long atom = 1; atom <= kAtoms; ++atom) {
    long kept = 0;
    std::memcpy(&kept, region.GetAtomPtr(atom), sizeof kept);
    ASSERT_EQ(kept, atom);
  }
}

TEST_P(RegionInBothModes, MovesAtomsAsOneArrayWould) {
  CQMDataSpaceRegion region(30000, &m_space);  // 1, 1 and then 2 atoms a chunk
  std::vector<std::byte> model(11);
  for (long atom = 1; atom <= 10; ++atom) {
    region.AppendAtom();
    model[static_cast<std::size_t>(atom)] = static_cast<std::byte>(atom);
    *region.GetAtomPtr(atom) = static_cast<std::byte>(atom);
    region.SetFlushFlag(atom);
  }
  std::mt19937 random(1);
  for (int i = 0; i < 300; ++i) {
    long const first = static_cast<long>(random() % 10) + 1, target = static_cast<long>(random() % 10) + 1;
    long const count = static_cast<long>(random() % static_cast<unsigned>(11 - std::max(first, target) + 1));
    ASSERT_TRUE(region.MoveAtoms(first, target, count));
    std::memmove(&model[static_cast<std::size_t>(target)], &model[static_cast<std::size_t>(first)],
                 static_cast<std::size_t>(count));
    if (i % 10 == 0) m_space.ScramRAM();
    for (long atom = 1; atom <= 10; ++atom)
      ASSERT_EQ(*region.GetAtomPtr(atom), model[static_cast<std::size_t>(atom)]) << first << target << count;
  }
  for (auto const& [first, target, count] : {std::array{0L, 1L, 1L},
                                             {1L, 0L, 1L},
                                             {1L, 2L, 10L},
                                             {2L, 1L, 10L},
                                             {1L, 2L, std::numeric_limits<long>::max()},
                                             {1L, 2L, -1L}})
    EXPECT_FALSE(region.MoveAtoms(first, target, count));
}

TEST(DataSpaceRegion, ThreadsShareASpaceEachWithItsOwnRegions) {
  CQMDataSpace space;
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&space, t] {
      for (int round = 0; round < 20; ++round) {
        CQMDataSpaceRegion region(4, &space);
        for (long atom = 1; atom <= 3000; ++atom) {
          region.AppendAtom();
          int const value = t * 100000 + static_cast<int>(atom);
          std::memcpy(region.GetAtomPtr(atom), &value, sizeof value);
        }
        for (long atom = 1; atom <= 3000; ++atom) {
          int value;
          std::memcpy(&value, region.GetAtomPtr(atom), sizeof value);
          ASSERT_EQ(value, t * 100000 + static_cast<int>(atom));
        }
      }
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(space.GetSize(), 0);
}

}  // namespace
}  // namespace qumel
