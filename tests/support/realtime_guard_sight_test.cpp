// The real-time guard within the program that relies on it: it sees each kind of violation, with sanitizers too, and sees
// none where there is none.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <memory>
#include <mutex>
#include <string>

#include "support/realtime_guard.h"

namespace motion::test {
namespace {

TEST(RealtimeGuardSightTest, SeesNothingInPlainArithmetic) {
  volatile int number = 1;
  EXPECT_EQ(violationsOf([&] { number = number + 1; }), Violations{});
}

TEST(RealtimeGuardSightTest, SeesAllocationAndFree) {
  void* volatile block = nullptr;
  EXPECT_EQ(violationsOf([&] { block = std::malloc(10); }).allocations, 1U);
  EXPECT_EQ(violationsOf([&] { std::free(block); }).deallocations, 1U);
  std::unique_ptr<std::string> text;
  EXPECT_EQ(violationsOf([&] { text = std::make_unique<std::string>(100, 'x'); }).allocations, 2U);
  EXPECT_EQ(violationsOf([&] { text.reset(); }).deallocations, 2U);
}

TEST(RealtimeGuardSightTest, SeesLocks) {
  std::mutex mutex;
  EXPECT_EQ(violationsOf([&] { const std::lock_guard lock(mutex); }).locks, 1U);
}

TEST(RealtimeGuardSightTest, SeesSystemCallAndLetsItThrough) {
  ::pid_t parent = 0;
  const Violations seen = violationsOf([&] { parent = ::getppid(); });
  EXPECT_EQ(seen.systemCalls, RealtimeGuard::countsSystemCalls() ? 1U : 0U);
  EXPECT_EQ(parent, ::getppid());
}

}  // namespace
}  // namespace motion::test
