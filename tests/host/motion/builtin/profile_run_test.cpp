// How many cycles a profile takes, and its last step.
#include "host/motion/builtin/profile_run.h"

#include <gtest/gtest.h>

namespace motion::host::builtin {
namespace {

/// Steps up to and including the last one.
unsigned stepsOf(double start, double end, double velocity, double acceleration, double cycleTime) {
  ProfileRun sut;
  sut.plan(start, end, velocity, acceleration);
  for (unsigned steps = 1; steps < 100'000; ++steps) {
    const ProfileRun::Step step = sut.next(cycleTime);
    if (step.isLast) {
      EXPECT_EQ(step.position, end);
      EXPECT_EQ(step.velocity, 0.0);
      return steps;
    }
  }
  return 0;
}

TEST(ProfileRunTest, takesWholeCyclesWithoutOneMoreForRounding) {
  EXPECT_EQ(stepsOf(0.0, 0.1, 0.1, 1.0, 0.001), 1100U);
  EXPECT_EQ(stepsOf(0.0, 0.1, 0.1, 1.0, 0.0001), 11000U);
  EXPECT_EQ(stepsOf(0.0, 0.1, 0.1, 1.0, 0.003), 367U) << "366.67 cycles";
  EXPECT_EQ(stepsOf(0.1, 0.3, 0.1, 1.0, 0.001), 2100U);
}

TEST(ProfileRunTest, takesOneCycleForNoDistance) {
  EXPECT_EQ(stepsOf(0.7, 0.7, 0.1, 1.0, 0.001), 1U);
}

TEST(ProfileRunTest, hasAVelocityInItsFirstStepAndBeginsAgainWhenItIsPlannedAgain) {
  ProfileRun sut;
  for (int i = 0; i < 2; ++i) {
    sut.plan(0.0, 0.1, 0.1, 1.0);
    const ProfileRun::Step step = sut.next(0.001);
    EXPECT_DOUBLE_EQ(step.position, 0.5e-6);
    EXPECT_DOUBLE_EQ(step.velocity, 0.001);
    EXPECT_FALSE(step.isLast);
  }
}

}  // namespace
}  // namespace motion::host::builtin
