// Moves of an axis, compared with a trapezoidal profile that is calculated here.
#include "host/motion/builtin/profile_job.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "host/motion/builtin/builtin_cmds.h"
#include "tests/host/motion/world.h"

namespace motion::host::builtin {
namespace {

using core::cmd::CmdState;
using core::job::JobListTypes;
using core::job::JobResult;

constexpr double CYCLE = 0.001;  // [s]

/// Accelerate, cruise, decelerate; without cruising when the distance is too short for the velocity. SI units.
class Trapezoid {
 public:
  Trapezoid(double start, double target, double velocity, double acceleration)
      : m_start(start),
        m_sign(target < start ? -1.0 : 1.0),
        m_distance(std::abs(target - start)),
        m_acceleration(acceleration) {
    m_peak = std::min(velocity, std::sqrt(m_distance * acceleration));
    m_ramp = m_peak / acceleration;
    m_duration = m_distance > 0.0 ? m_distance / m_peak + m_ramp : 0.0;
  }

  [[nodiscard]] double duration() const { return m_duration; }
  [[nodiscard]] double position(double time) const {
    if (time >= m_duration) {
      return m_start + m_sign * m_distance;
    }
    const double left = m_duration - time;
    if (time < m_ramp) {
      return m_start + m_sign * m_acceleration * time * time / 2.0;
    }
    if (left < m_ramp) {
      return m_start + m_sign * (m_distance - m_acceleration * left * left / 2.0);
    }
    return m_start + m_sign * (m_peak * time - m_peak * m_ramp / 2.0);
  }
  [[nodiscard]] double velocity(double time) const {
    const double left = std::max(0.0, m_duration - time);
    return m_sign * std::min({m_peak, m_acceleration * time, m_acceleration * left});
  }

 private:
  double m_start;
  double m_sign;
  double m_distance;
  double m_acceleration;
  double m_peak = 0.0;
  double m_ramp = 0.0;
  double m_duration = 0.0;
};

struct Move {
  const char* name;
  double start;  // [m]
  bool relative;
  AxisMoveParsT values;  // [mm]
  double target;         // [m]
};

class ProfileJobMoveTest : public testing::TestWithParam<Move> {};

TEST_P(ProfileJobMoveTest, followsTheTrapezoidAndEndsExactlyAtItsTarget) {
  const Move& move = GetParam();
  test::World world({CYCLE, 4});
  MotionObject& axis = world.addAxis("X", move.start);
  const Trapezoid expected(move.start, move.target, move.values.velocity * 1e-3, move.values.acceleration * 1e-3);
  const auto id = world.issue(axis, move.relative ? "MoveRel" : "MoveAbs", AxisMovePars(move.values));
  unsigned cycle = 0;
  do {
    world.step();
    ++cycle;
    const double time = cycle * CYCLE;
    ASSERT_NEAR(axis.position(), expected.position(time), 1e-12) << cycle;
    ASSERT_NEAR(axis.velocity(), expected.velocity(time), 1e-12) << cycle;
  } while (axis.getCmdState(id) == CmdState::ACTIVE && cycle < 100'000);
  EXPECT_EQ(axis.getCmdState(id), CmdState::DONE);
  EXPECT_EQ(cycle, std::max(1.0, std::ceil(expected.duration() / CYCLE - 1e-6)));
  EXPECT_EQ(axis.position(), move.target);
  EXPECT_EQ(axis.velocity(), 0.0);
}

INSTANTIATE_TEST_SUITE_P(Moves, ProfileJobMoveTest,
                         testing::Values(Move{"absolute", 0.0, false, {250.0, 500.0, 2000.0}, 0.25},
                                         Move{"backwards", 0.25, false, {-30.0, 170.0, 900.0}, -0.03},
                                         Move{"fromElsewhere", 0.1, false, {250.0, 333.0, 1234.5}, 0.25},
                                         Move{"relative", 0.5, true, {125.0, 100.0, 1000.0}, 0.625},
                                         Move{"relativeBackwards", 0.5, true, {-125.0, 100.0, 1000.0}, 0.375},
                                         Move{"tooShortForTheVelocity", 0.0, false, {10.0, 5000.0, 1000.0}, 0.01},
                                         Move{"tooShortBackwards", 0.0, true, {-7.0, 5000.0, 1300.0}, -0.007},
                                         Move{"justReachesTheVelocity", 0.0, false, {10.0, 100.0, 1000.0}, 0.01},
                                         Move{"shorterThanACycle", 0.0, false, {1e-4, 1000.0, 1e6}, 1e-4 * 1e-3},
                                         Move{"noDistance", 0.125, false, {125.0, 100.0, 1000.0}, 0.125},
                                         Move{"noDistanceRelative", 0.125, true, {0.0, 100.0, 1000.0}, 0.125}),
                         [](const auto& test) { return test.param.name; });

TEST(ProfileJobTest, theFirstCycleHasAVelocity) {
  test::World world;
  MotionObject& axis = world.addAxis("X");
  world.issue(axis, "MoveAbs", AxisMovePars({100.0, 100.0, 1000.0}));
  world.step();
  EXPECT_DOUBLE_EQ(axis.velocity(), 0.001);
  EXPECT_DOUBLE_EQ(axis.position(), 0.5e-6);
}

TEST(ProfileJobTest, aRelativeMoveStartsWhereTheOneBeforeItEnded) {
  test::World world;
  MotionObject& axis = world.addAxis("X", 1.0);
  for (int i = 0; i < 4; ++i) {
    world.issue(axis, "MoveRel", AxisMovePars({-250.0, 1000.0, 10'000.0}));
  }
  world.step(2000);
  EXPECT_EQ(axis.position(), 0.0);
}

TEST(ProfileJobTest, anAbsoluteMoveDoesNotDependOnWhereItStarts) {
  test::World world;
  MotionObject& axis = world.addAxis("X", 1.0);
  world.issue(axis, "MoveRel", AxisMovePars({31.7, 1000.0, 10'000.0}));
  world.issue(axis, "MoveAbs", AxisMovePars({250.0, 1000.0, 10'000.0}));
  world.step(2000);
  EXPECT_EQ(axis.position(), 0.25);
}

struct ProfileJobInputsTest : testing::Test {
  test::World world;
  MotionObject& axis = world.addAxis("X");
  ProfilePars pars{ProfileParsT{true, 0.25, 0.5, 2.0}};
  JobDataHandler handler{&axis.data()};
  ProfileJob sut;
};

TEST_F(ProfileJobInputsTest, needsParametersSetpointAndObject) {
  EXPECT_EQ(sut.registerInputs(&handler), JobResult::DataNotPublished);
  handler.registerPublish(ProfilePars::getMyID(), SectionMgr::CMD_DATA, "test", &pars);
  EXPECT_EQ(sut.registerInputs(&handler), JobResult::NoEffect);

  JobDataHandler ofKinematics(&world.addKinematics("Robot").data());
  ofKinematics.registerPublish(ProfilePars::getMyID(), SectionMgr::CMD_DATA, "test", &pars);
  EXPECT_EQ(ProfileJob().registerInputs(&ofKinematics), JobResult::DataNotPublished) << "a kinematics has no axis set-point";
}

TEST_F(ProfileJobInputsTest, plansBeforeExecutionAndFollowsInTheCycle) {
  JobList list;
  EXPECT_EQ(sut.addJobsToJoblist(&list, JobListTypes::COMMAND_PREPARED), JobResult::ListTypeNotServed);
  EXPECT_EQ(list.size(), 0U);
  EXPECT_EQ(sut.addJobsToJoblist(&list, JobListTypes::BEFORE_EXECUTION), JobResult::NoEffect);
  EXPECT_EQ(sut.addJobsToJoblist(&list, JobListTypes::CYCLIC_EXECUTION), JobResult::NoEffect);
  EXPECT_EQ(list.size(), 2U);
}

TEST_F(ProfileJobInputsTest, describesItself) {
  EXPECT_EQ(sut.getJobString(), "No inputs registered");
  handler.registerPublish(ProfilePars::getMyID(), SectionMgr::CMD_DATA, "test", &pars);
  ASSERT_EQ(sut.registerInputs(&handler), JobResult::NoEffect);
  EXPECT_EQ(sut.getJobString(), "moveRel(target=0.25,velocity=0.5,acceleration=2)");
  pars.getRef().relative = false;
  EXPECT_EQ(sut.getJobString(), "moveAbs(target=0.25,velocity=0.5,acceleration=2)");
}

}  // namespace
}  // namespace motion::host::builtin
