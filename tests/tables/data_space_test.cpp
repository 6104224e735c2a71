// The data space and the regions of atoms laid over it, against plain maps and arrays; and what happens to
// the scratch file.
#include "tables/data_space.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <limits>
#include <map>
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
  return memory != nullptr && std::all_of(memory, memory + InfoOf(space, chunk).size,
                                          [value](std::byte b) { return std::to_integer<int>(b) == value; });
}

/** Each test runs in memory and with a scratch file. */
class DataSpace : public ::testing::TestWithParam<bool> {
 protected:
  CQMTestFolder m_folder;
  CQMDataSpace m_space{m_folder.Path().c_str()};
  std::mt19937 m_random{1};

  void SetUp() override { ASSERT_TRUE(m_space.SetFileBacked(GetParam())); }
  long Below(long bound) { return static_cast<long>(m_random() % static_cast<unsigned long>(bound)); }
};
INSTANTIATE_TEST_SUITE_P(Modes, DataSpace, ::testing::Bool(),
                         [](auto const& info) { return info.param ? "FileBacked" : "InMemory"; });

// ---- chunks ----

TEST_P(DataSpace, ChunksKeepWhatIsWrittenUntilTheyAreFreed) {
  std::map<long, std::pair<long, int>> model;  // size and filling by chunk
  long bytes = 0;
  for (int step = 1; step <= 4000; ++step) {
    if (model.empty() || Below(3) != 0) {
      long const size = 1 + Below(50), chunk = m_space.AssignChunk(size);
      ASSERT_TRUE(model.try_emplace(chunk, size, step % 251).second) << "it is in use";
      ASSERT_TRUE(IsFilledWith(m_space, chunk, 0));
      Fill(m_space, chunk, step % 251);
      bytes += size;
    } else {
      auto const place = std::next(model.begin(), Below(static_cast<long>(model.size())));
      m_space.FreeChunk(place->first);
      ASSERT_EQ(m_space.FindChunk(place->first), nullptr);
      m_space.FreeChunk(place->first);  // once more changes nothing
      bytes -= place->second.first;
      model.erase(place);
    }
    ASSERT_EQ(m_space.GetSize(), bytes);
    ASSERT_TRUE(!GetParam() || CountInMemory(m_space) <= CQMDataSpace::kMemoryLimit);
    if (step % 90 == 0) m_space.ScramRAM();
    if (step % 100 != 0) continue;
    for (auto const& [chunk, kept] : model) {
      ASSERT_EQ(InfoOf(m_space, chunk).size, kept.first);
      ASSERT_TRUE(IsFilledWith(m_space, chunk, kept.second)) << chunk;
    }
  }
  for (long size : {0L, -1L, std::numeric_limits<long>::min()}) EXPECT_EQ(m_space.AssignChunk(size), -1);
  for (long none : {-1L, m_space.GetChunkCount(), std::numeric_limits<long>::max()}) {
    EXPECT_EQ(m_space.FindChunk(none), nullptr);
    EXPECT_FALSE(m_space.GetChunkInfo(none).has_value());
    m_space.FreeChunk(none);
    m_space.SetNeedsFlush(none);
  }
}

TEST(DataSpaceChunks, AFreeOneOfTheSizeIsTakenBeforeTheSmallestLargerOneIsSplit) {
  CQMTestFolder const folder;
  CQMDataSpace space(folder.Path().c_str());
  ASSERT_TRUE(space.SetFileBacked(true));
  for (long size : {9216L, 20000L, 9216L, 4096L}) space.AssignChunk(size);
  Fill(space, 0, 7);
  for (long chunk : {1L, 0L, 2L, 3L}) space.FreeChunk(chunk);

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
}

// ---- the scratch file ----

TEST(ScratchFile, IsWrittenWhenAChunkChangedAndGoesWithTheSpace) {
  CQMTestFolder const folder;
  {
    CQMDataSpace space(folder.Path().c_str()), second(folder.Path().c_str()), third;
    ASSERT_TRUE(space.SetFileBacked(true));
    ASSERT_TRUE(second.SetFileBacked(true));
    EXPECT_NE(space.GetFilePath(), second.GetFilePath());  // made within one second
    EXPECT_TRUE(second.SetFileBacked(false));
    EXPECT_FALSE(fs::exists(second.GetFilePath()));
    std::string const name = fs::path(space.GetFilePath()).filename();
    EXPECT_TRUE(name.starts_with("DS") && name.ends_with(".qmd")) << name;

    EXPECT_EQ(space.AssignChunk(100), 0);
    Fill(space, 0, 1);
    for (int round = 0; round < 3; ++round) {
      EXPECT_EQ(space.ScramRAM(), 1);
      EXPECT_TRUE(IsFilledWith(space, 0, 1));
    }
    EXPECT_EQ(InfoOf(space, 0).writeCount, 2);  // when assigned and when first moved out, not again unchanged
    EXPECT_EQ(InfoOf(space, 0).readCount, 3);
    space.ScramRAM();
    fs::resize_file(space.GetFilePath(), 0);
    EXPECT_EQ(space.FindChunk(0), nullptr) << "a chunk that cannot be read is not there";
    third.AssignChunk(10);
    EXPECT_FALSE(third.SetFileBacked(true)) << "it has a chunk already";
    EXPECT_FALSE(CQMDataSpace((folder.Path() + "/missing").c_str()).SetFileBacked(true));
  }
  EXPECT_TRUE(fs::is_empty(folder.Path()));
}

TEST(ScratchFile, LosesNothingWhenItIsFull) {
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
  }
}

TEST_P(DataSpace, RegionsFollowAPlainArray) {
  for (long const atomSize : {5L, 30000L}) {  // with many atoms a chunk, and with at most two
    CQMDataSpaceRegion region(atomSize, &m_space);
    std::vector<int> model;
    auto const set = [&](long atom, int value) {
      std::memcpy(region.GetAtomPtr(atom), &value, sizeof value);
      region.SetFlushFlag(atom);
    };
    for (int step = 1; step <= 1500; ++step) {
      auto const count = static_cast<long>(model.size());
      switch (Below(12)) {
        case 0:
          if (step % 9 == 0) m_space.ScramRAM();
          break;
        case 1:
          if (step % 60 != 0) break;
          region.ReleaseRegion();
          model.clear();
          break;
        case 2: {
          if (GetParam() || step % 5 != 0) break;  // addresses do not hold
          std::vector<std::int32_t> atoms;
          std::vector<int> kept;
          for (long atom = 1; atom <= count; ++atom) {
            if (Below(2) == 0) continue;
            atoms.push_back(static_cast<std::int32_t>(atom));
            kept.push_back(model[static_cast<std::size_t>(atom - 1)]);
          }
          region.KeepAtoms(atoms);
          model = kept;
          break;
        }
        case 3: {
          if (count == 0) break;
          long const first = 1 + Below(count), target = 1 + Below(count),
                     most = count + 1 - std::max(first, target);
          EXPECT_EQ(region.MoveAtoms(first, target, most + 1), first == target);
          long const moved =
              Below(std::min(most, 600 / atomSize + 3) + 1);  // few where each is a file access
          ASSERT_TRUE(region.MoveAtoms(first, target, moved));
          std::memmove(&model[static_cast<std::size_t>(target - 1)],
                       &model[static_cast<std::size_t>(first - 1)],
                       static_cast<std::size_t>(moved) * sizeof(int));
          break;
        }
        default:
          ASSERT_EQ(region.AppendAtom(), count + 1);
          ASSERT_EQ(*region.GetAtomPtr(count + 1), std::byte{0});
          set(count + 1, step);
          model.push_back(step);
      }
      ASSERT_EQ(region.GetAtomCount(), static_cast<long>(model.size()));
      if (step % 50 != 0) continue;
      for (std::size_t i = 0; i < model.size(); ++i)
        ASSERT_EQ(std::memcmp(region.GetAtomPtr(static_cast<long>(i) + 1), &model[i], sizeof model[i]), 0)
            << i;
    }
    EXPECT_FALSE(region.MoveAtoms(0, 1, 1) || region.MoveAtoms(1, 0, 1) || region.MoveAtoms(1, 2, -1));
    EXPECT_FALSE(region.MoveAtoms(1, 2, std::numeric_limits<long>::max()));
  }
  EXPECT_EQ(m_space.GetSize(), 0) << "regions give their chunks back";
}

TEST(DataSpaceRegion, LosesNothingWhenMemoryRunsOut) {
  CQMDataSpace space;
  CQMDataSpaceRegion region(4, &space);
  for (int atom = 1; atom <= 3000; ++atom) {
    long made;
    {
      testing::FailingAllocation const failing(atom % 5);
      made = region.AppendAtom();
    }
    if (made == 0) made = region.AppendAtom();
    ASSERT_EQ(made, atom);
    std::memcpy(region.GetAtomPtr(atom), &atom, sizeof atom);
  }
  for (int atom = 1; atom <= 3000; ++atom)
    ASSERT_EQ(std::memcmp(region.GetAtomPtr(atom), &atom, sizeof atom), 0);
}

TEST(DataSpaceRegion, ThreadsShareASpaceEachWithItsOwnRegions) {
  CQMDataSpace space;
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&space, t] {
      for (int round = 0; round < 20; ++round) {
        CQMDataSpaceRegion region(4, &space);
        for (int atom = 1; atom <= 3000; ++atom) {
          int const value = t * 100000 + atom;
          std::memcpy(region.GetAtomPtr(region.AppendAtom()), &value, sizeof value);
        }
        for (int atom = 1; atom <= 3000; ++atom) {
          int const value = t * 100000 + atom;
          ASSERT_EQ(std::memcmp(region.GetAtomPtr(atom), &value, sizeof value), 0);
        }
      }
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(space.GetSize(), 0);
}

}  // namespace
}  // namespace qumel
