// Gates of contexts from inside: who owns one and for how long, the order of those that wait, and circles of
// waits; with the system's barriers and with fences.
#include "context/context_gate.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <thread>
#include <vector>

#include "context/executor.h"

namespace qumel {
namespace {

using EQMEntry = CQMContextGate::EQMEntry;

/** The parameter tells whether announcements need fences, as where the system has no barriers. */
class ContextGate : public ::testing::TestWithParam<bool> {
 protected:
  void SetUp() override {
    Self();
    m_neededFences = CQMAsymmetricBarrier::NeedsFences();
    CQMAsymmetricBarrier::SetNeedsFences(GetParam() || m_neededFences);
  }
  void TearDown() override { CQMAsymmetricBarrier::SetNeedsFences(m_neededFences); }

  static SQMCaller& Self() { return ObtainCaller(static_cast<unsigned long>(pthread_self())); }

  EQMEntry Enter() { return m_gate.EnterAsOwner(Self()) ? EQMEntry::AsOwner : m_gate.Acquire(Self()); }
  void Leave(EQMEntry entry) {
    if (entry == EQMEntry::AsOwner) m_gate.LeaveAsOwner(Self());
    else if (entry == EQMEntry::Queued) m_gate.Release();
  }
  /** How many turns the calling thread takes until it is the owner. */
  int TurnsUntilOwner() {
    for (int turn = 1; turn < 5000; ++turn) {
      EQMEntry const entry = Enter();
      Leave(entry);
      if (entry == EQMEntry::AsOwner) return turn;
    }
    return -1;
  }

  CQMExecutor m_context;
  CQMContextGate& m_gate = m_context.GetGate();

 private:
  bool m_neededFences = false;
};

INSTANTIATE_TEST_SUITE_P(Barriers, ContextGate, ::testing::Values(false, true),
                         [](auto const& info) { return std::string(info.param ? "Fences" : "System"); });

TEST_P(ContextGate, ThreadThatIsAloneBecomesTheOwnerAndLaterEachTime) {
  EXPECT_EQ(TurnsUntilOwner(), 1);
  EXPECT_EQ(TurnsUntilOwner(), 1);
  int expected = 1;
  for (int round = 0; round < 8; ++round) {
    expected *= 2;
    std::thread([&] { EXPECT_EQ(TurnsUntilOwner(), expected); }).join();
    expected *= 2;
    EXPECT_EQ(TurnsUntilOwner(), std::min(expected, 1024));
    EXPECT_EQ(TurnsUntilOwner(), 1);
    expected = std::min(expected, 512);
  }
}

TEST_P(ContextGate, ThreadsNeverMeetInside) {
  constexpr int kThreads = 4, kTurns = 3000;
  long turns = 0;  // guarded by the gate alone
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&, i] {
      for (int turn = 0; turn < kTurns; ++turn) {
        EQMEntry const entry = Enter();
        ++turns;
        Leave(entry);
        // in bursts, so that threads become the owner and lose it again
        if (turn % (64 << i) == 0) std::this_thread::yield();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(turns, kThreads * kTurns);
}

TEST_P(ContextGate, ThreadsComeInInTheOrderInWhichTheyCame) {
  for (bool const isOwner : {true, false}) {
    if (!isOwner) std::thread([this] { Leave(Enter()); }).join();
    EQMEntry const own = Enter();
    EXPECT_EQ(own, isOwner ? EQMEntry::AsOwner : EQMEntry::Queued);
    std::vector<int> order;  // guarded by the gate alone
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
      threads.emplace_back([&, i] {
        EQMEntry const entry = Enter();
        order.push_back(i);
        Leave(entry);
      });
      while (m_gate.CountWaiters() <= i) std::this_thread::yield();
    }
    Leave(own);
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(order, (std::vector{0, 1, 2, 3}));
  }
}

TEST_P(ContextGate, ThreadsThatWaitAreSentAwayWhenItCloses) {
  auto context = std::make_unique<CQMExecutor>();
  CQMContextGate& gate = context->GetGate();
  CQMExecutor* const kept = gate.Keep();
  EXPECT_EQ(kept, context.get());
  ASSERT_EQ(gate.Acquire(Self()), EQMEntry::AsOwner);
  std::thread waiting([&] { EXPECT_EQ(gate.Acquire(Self()), EQMEntry::Closed); });
  while (gate.CountWaiters() == 0) std::this_thread::yield();
  long const contexts = CQMExecutor::sm_lExecutorCount;
  EXPECT_EQ(gate.Close(std::move(context)), nullptr);
  waiting.join();
  EXPECT_EQ(gate.Keep(), nullptr);
  gate.LeaveAsOwner(Self());
  EXPECT_EQ(CQMExecutor::sm_lExecutorCount, contexts) << "it is still kept";
  gate.LetGo();
  EXPECT_EQ(CQMExecutor::sm_lExecutorCount, contexts - 1);
  EXPECT_EQ(gate.Acquire(Self()), EQMEntry::Closed);
  CQMExecutor next;
  EXPECT_EQ(&next.GetGate(), &gate) << "gates are used again";
  EXPECT_EQ(gate.Acquire(Self()), EQMEntry::AsOwner);
  gate.LeaveAsOwner(Self());
}

TEST(Waits, OfThreadsThatCloseACircleAreRefused) {
  SQMCaller first(1), second(2), third(3);
  std::atomic<SQMCaller*> ofFirst{&first}, ofSecond{&second}, ofThird{&third}, ofNobody{nullptr};
  EXPECT_FALSE(CQMWaits::Begin(first, ofFirst));
  EXPECT_TRUE(CQMWaits::Begin(first, ofSecond));
  EXPECT_FALSE(CQMWaits::Begin(second, ofFirst));
  EXPECT_TRUE(CQMWaits::Begin(second, ofThird));
  EXPECT_FALSE(CQMWaits::Begin(third, ofFirst));
  EXPECT_FALSE(CQMWaits::Begin(third, ofSecond));
  EXPECT_TRUE(CQMWaits::Begin(third, ofNobody));
  CQMWaits::HandOver(ofThird, second);  // its wait is over
  EXPECT_TRUE(CQMWaits::Begin(third, ofSecond));
  CQMWaits::End(third);
}

}  // namespace
}  // namespace qumel
