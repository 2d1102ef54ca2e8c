// The guard itself: it sees each kind of violation, and sees none where there is none.
#include "real_time_guard.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <memory>
#include <mutex>
#include <new>
#include <string>

namespace motion::host::test {
namespace {

TEST(RealTimeGuardTest, SeesNothingInPlainArithmetic) {
  volatile int number = 1;
  EXPECT_EQ(violationsOf([&] { number = number + 1; }), Violations{});
}

TEST(RealTimeGuardTest, SeesAllocationAndFree) {
  void* volatile block = nullptr;
  EXPECT_EQ(violationsOf([&] { block = std::malloc(10); }).allocations, 1);
  EXPECT_EQ(violationsOf([&] { std::free(block); }).frees, 1);
  std::unique_ptr<std::string> text;
  EXPECT_EQ(violationsOf([&] { text = std::make_unique<std::string>(100, 'x'); }).allocations, 2);
  EXPECT_EQ(violationsOf([&] { text.reset(); }).frees, 2);
}

TEST(RealTimeGuardTest, SeesLocks) {
  std::mutex mutex;
  EXPECT_EQ(violationsOf([&] { const std::lock_guard lock(mutex); }).locks, 1);
}

TEST(RealTimeGuardTest, SeesSystemCallAndLetsItThrough) {
  ::pid_t parent = 0;
  const Violations seen = violationsOf([&] { parent = ::getppid(); });
  EXPECT_EQ(seen.systemCalls, countsSystemCalls() ? 1 : 0);
  EXPECT_EQ(parent, ::getppid());
}

TEST(RealTimeGuardTest, FailsTheChosenAllocation) {
  for (const int number : {0, 1, 2}) {
    std::unique_ptr<int> first;
    std::unique_ptr<int> second;
    bool hasThrown = false;
    const bool hasFailed = failsDuring(number, [&] {
      try {
        first = std::make_unique<int>(1);
        second = std::make_unique<int>(2);
      } catch (const std::bad_alloc&) {
        hasThrown = true;
      }
    });
    EXPECT_EQ(hasFailed, number < 2) << number;
    EXPECT_EQ(hasThrown, number < 2) << number;
    EXPECT_EQ(first != nullptr, number > 0) << number;
    EXPECT_EQ(second != nullptr, number > 1) << number;
  }
}

}  // namespace
}  // namespace motion::host::test
