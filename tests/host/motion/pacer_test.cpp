// When cycles begin.
#include "host/motion/pacer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sched.h>
#include <sys/mman.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>

namespace motion::host {
namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

void spinFor(Clock::duration time) {
  for (const auto end = Clock::now() + time; Clock::now() < end;) {
  }
}

TEST(VirtualPacerTest, neverWaits) {
  VirtualPacer sut;
  const auto start = Clock::now();
  for (int i = 0; i < 100; ++i) {
    sut.waitForCycle();
  }
  EXPECT_LT(Clock::now() - start, 10s);
}

TEST(RealTimePacerTest, waitsForOnePeriodPerCycle) {
  RealTimePacer sut(0.01);
  const auto start = Clock::now();
  for (int cycle = 1; cycle <= 4; ++cycle) {
    sut.waitForCycle();
    EXPECT_GE(Clock::now() - start, cycle * 10ms) << cycle;
  }
  EXPECT_EQ(sut.punctuality().cycles, 4U);
  EXPECT_GE(sut.punctuality().latestWakeUp, 0);
}

TEST(RealTimePacerTest, workWithinTheCycleDoesNotDelayTheNextOne) {
  // With due times that are relative to the end of the work, the fourth cycle would begin 4 * 60 + 3 * 50 ms after the
  // start.
  RealTimePacer sut(0.06);
  const auto start = Clock::now();
  auto begin = start;
  for (int cycle = 1; cycle <= 4; ++cycle) {
    sut.waitForCycle();
    begin = Clock::now();
    spinFor(50ms);
  }
  const auto punctuality = sut.punctuality();
  // Only a machine that lost a whole cycle may have needed longer.
  EXPECT_TRUE(punctuality.overruns > 0 || begin - start < 380ms + std::chrono::nanoseconds(punctuality.latestWakeUp));
}

TEST(RealTimePacerTest, countsOverrunsAndTheirLateness) {
  RealTimePacer sut(0.002);
  sut.waitForCycle();
  EXPECT_EQ(sut.punctuality().cycles, 1U);
  const auto overrunsBefore = sut.punctuality().overruns;
  spinFor(9ms);
  sut.waitForCycle();
  EXPECT_EQ(sut.punctuality().cycles, 2U);
  EXPECT_EQ(sut.punctuality().overruns, overrunsBefore + 1);
  EXPECT_GT(sut.punctuality().latestWakeUp, 0);
}

TEST(RealTimePacerTest, doesNotMakeUpForLostCyclesInABurst) {
  RealTimePacer sut(0.005);
  sut.waitForCycle();
  spinFor(52ms);
  const auto start = Clock::now();
  for (int i = 0; i < 3; ++i) {
    sut.waitForCycle();
  }
  EXPECT_GE(Clock::now() - start, 5ms) << "the schedule goes on from here";
}

TEST(RealTimePacerTest, livesWithAPeriodBelowTheResolutionOfTheClock) {
  RealTimePacer sut(1e-12);
  sut.waitForCycle();
  sut.waitForCycle();
  EXPECT_EQ(sut.punctuality().cycles, 2U);
}

/// What a thread of an ordinary user is told, as exit code of this process: 0 = the right warning.
[[noreturn]] void askAsOrdinaryUser() {
  const sched_param ordinary{};
  pthread_setschedparam(pthread_self(), SCHED_OTHER, &ordinary);
  if (::geteuid() == 0 && ::setuid(65534) != 0) {
    std::_Exit(10);
  }
  const std::string warning = requestRealTime();
  int policy = -1;
  sched_param parameter{};
  pthread_getschedparam(pthread_self(), &policy, &parameter);
  const bool saysThatItIsNotRealTime = warning.find("CAP_SYS_NICE") != std::string::npos;
  if (saysThatItIsNotRealTime != (policy != SCHED_FIFO)) {
    std::_Exit(11);
  }
  const bool saysThatMemoryIsNotLocked = warning.find("memlock") != std::string::npos;
  const bool isLockable = ::mlockall(MCL_CURRENT | MCL_FUTURE) == 0;
  std::_Exit(saysThatMemoryIsNotLocked != isLockable ? 0 : 12);
}

TEST(RequestRealTimeTest, warnsOfWhatIsNotPermitted) {
  testing::GTEST_FLAG(death_test_style) = "threadsafe";
  EXPECT_EXIT(askAsOrdinaryUser(), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace motion::host
