// No exception leaves guarded work.
#include "impl/guarded.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>

namespace motion::kavo {
namespace {

TEST(GuardedTest, HandsTheResultOn) {
  EXPECT_EQ(guarded(1, [] { return 2; }), 2);
}

TEST(GuardedTest, AnswersEveryExceptionWithTheGivenResult) {
  EXPECT_EQ(guarded(1, []() -> int { throw std::bad_alloc(); }), 1);
  EXPECT_EQ(guarded(1, []() -> int { throw std::runtime_error("trouble"); }), 1);
  EXPECT_EQ(guarded(1, []() -> int { throw 5; }), 1);
}

TEST(GuardedTest, TellsWhetherWorkWithoutAResultWasDone) {
  int done = 0;
  EXPECT_TRUE(guarded([&done] { ++done; }));
  EXPECT_FALSE(guarded([&done] {
    ++done;
    throw std::bad_alloc();
  }));
  EXPECT_EQ(done, 2);
}

}  // namespace
}  // namespace motion::kavo
