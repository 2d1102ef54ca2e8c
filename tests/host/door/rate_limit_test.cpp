#include "host/door/rate_limit.h"

#include <gtest/gtest.h>

namespace motion::host::door {
namespace {

using namespace std::chrono_literals;

class RateLimitTest : public testing::Test {
 protected:
  /// How many are granted before the first refusal.
  int granted() {
    int count = 0;
    while (sut.take()) {
      ++count;
    }
    return count;
  }

  std::chrono::steady_clock::time_point now{};
  RateLimit sut{100.0, 10.0, [this] { return now; }};
};

TEST_F(RateLimitTest, GrantsABurstAndNoMore) {
  EXPECT_EQ(granted(), 10);
  EXPECT_FALSE(sut.take());
}

TEST_F(RateLimitTest, FillsWithTime) {
  EXPECT_EQ(granted(), 10);
  now += 9ms;
  EXPECT_FALSE(sut.take());
  now += 1ms;
  EXPECT_EQ(granted(), 1);
  now += 50ms;
  EXPECT_EQ(granted(), 5);
}

TEST_F(RateLimitTest, SavesNoMoreThanABurst) {
  now += 1h;
  EXPECT_EQ(granted(), 10);
}

}  // namespace
}  // namespace motion::host::door
