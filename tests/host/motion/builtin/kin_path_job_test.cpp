// Moves of a kinematics, cycle by cycle.
#include "host/motion/builtin/kin_path_job.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <vector>

#include "host/motion/builtin/builtin_cmds.h"
#include "tests/host/motion/world.h"

namespace motion::host::builtin {
namespace {

using core::cmd::CmdState;
using core::job::JobListTypes;
using core::job::JobResult;
using testing::ElementsAre;

constexpr double CYCLE = 0.001;  // [s]

struct Move {
  const char* name;
  const char* command;
  KinMoveParsT values;  // [mm], from [10, 20, 30]
  double length;        // [m]
};

class KinPathJobMoveTest : public testing::TestWithParam<Move> {};

/// Duration of a trapezoidal profile [s].
double durationOf(double length, double velocity, double acceleration) {
  const double peak = std::min(velocity, std::sqrt(length * acceleration));
  return length > 0.0 ? length / peak + peak / acceleration : 0.0;
}

TEST_P(KinPathJobMoveTest, keepsItsLimitsAndEndsExactlyAtItsEnd) {
  const Move& move = GetParam();
  const double velocity = move.values.velocity * 1e-3;
  const double acceleration = move.values.acceleration * 1e-3;
  test::World world({CYCLE, 4});
  MotionObject& robot = *world.runtime.addObject("R", core::ObjectType::KINEMATICS, {0.01, 0.02, 0.03});
  const auto id = world.issue(robot, move.command, KinMovePars(move.values));
  unsigned cycle = 0;
  double speed = 0.0;
  double way = 0.0;
  Point before = robot.pose();
  do {
    world.step();
    ++cycle;
    const double step = distance(robot.pose(), before);
    way += step;
    ASSERT_LE(step, velocity * CYCLE * (1.0 + 1e-9)) << cycle;
    ASSERT_LE(robot.velocity(), velocity * (1.0 + 1e-12)) << cycle;
    ASSERT_LE(std::abs(robot.velocity() - speed), acceleration * CYCLE * (1.0 + 1e-9)) << cycle;
    ASSERT_NEAR(step / CYCLE, (speed + robot.velocity()) / 2.0, acceleration * CYCLE) << "the velocity is the tool's";
    before = robot.pose();
    speed = robot.velocity();
  } while (robot.getCmdState(id) == CmdState::ACTIVE && cycle < 100'000);
  EXPECT_EQ(robot.getCmdState(id), CmdState::DONE);
  EXPECT_EQ(cycle, std::max(1.0, std::ceil(durationOf(move.length, velocity, acceleration) / CYCLE - 1e-6)));
  EXPECT_NEAR(way, move.length, 1e-6);
  EXPECT_EQ(robot.pose(), (Point{move.values.to[0] * 1e-3, move.values.to[1] * 1e-3, move.values.to[2] * 1e-3}));
  EXPECT_EQ(robot.velocity(), 0.0);
}

INSTANTIATE_TEST_SUITE_P(
    Moves, KinPathJobMoveTest,
    testing::Values(Move{"line", "MoveLin", {{40.1, 60.1, 30}, {}, 0, 100, 1000}, std::hypot(0.0301, 0.0401)},
                    Move{"lineInWholeCycles", "MoveLin", {{110, 20, 30}, {}, 0, 100, 1000}, 0.1},
                    Move{"shortLine", "MoveLin", {{10, 20, 31}, {}, 0, 100, 1000}, 0.001},
                    Move{"straightOn", "MoveLin", {{90, 20, 30}, {30, 20, 30, 50, 20, 30}, 0, 100, 1000}, 0.08},
                    Move{"rounded", "MoveLin", {{50, 60, 30}, {50, 20, 30}, 10, 150, 2000}, 0.06 + 0.005 * std::numbers::pi},
                    Move{"arc", "MoveCirc", {{-10, 20, 30}, {0, 20, 40}, 0, 100, 1000}, 0.01 * std::numbers::pi},
                    Move{"longArc", "MoveCirc", {{0, 20, 40}, {-10, 20, 30}, 0, 30, 1000}, 0.015 * std::numbers::pi},
                    Move{"nowhere", "MoveLin", {{10, 20, 30}, {}, 0, 100, 1000}, 0.0},
                    Move{"nowhereWithPoints", "MoveLin", {{10, 20, 30}, {10, 20, 30}, 0, 100, 1000}, 0.0}),
    [](const auto& test) { return test.param.name; });

TEST(KinPathJobTest, staysOnItsCircle) {
  test::World world({CYCLE, 4});
  MotionObject& robot = *world.runtime.addObject("R", core::ObjectType::KINEMATICS, {0.1, 0, 0});
  const auto id = world.issue(robot, "MoveCirc", KinMovePars({{0, 100, 0}, {-100, 0, 0}, 0, 500, 5000}));
  do {
    world.step();
    ASSERT_NEAR(distance(robot.pose(), {0, 0, 0}), 0.1, 1e-9);
  } while (robot.getCmdState(id) == CmdState::ACTIVE);
  EXPECT_EQ(robot.pose(), (Point{0, 0.1, 0}));
}

TEST(KinPathJobTest, followsAPolygonWithOneProfile) {
  test::World world({CYCLE, 4});
  MotionObject& robot = world.addKinematics("R");
  world.issue(robot, "MoveLin", KinMovePars({{100, 100, 0}, {100, 0, 0}, 0, 100, 1000}));
  unsigned slow = 0;
  for (unsigned cycle = 1; cycle < 2100; ++cycle) {
    world.step();
    slow += robot.velocity() < 0.1 - 1e-9 ? 1 : 0;
  }
  EXPECT_EQ(slow, 198U) << "the two ramps; it does not slow down at the corner";
}

TEST(KinPathJobTest, theFirstCycleHasAVelocity) {
  test::World world;
  MotionObject& robot = world.addKinematics("R");
  world.issue(robot, "MoveLin", KinMovePars({{100, 0, 0}, {}, 0, 100, 1000}));
  world.step();
  EXPECT_DOUBLE_EQ(robot.velocity(), 0.001);
  EXPECT_DOUBLE_EQ(robot.pose()[0], 0.5e-6);
  EXPECT_THAT(world.takeEvents(), ElementsAre("1: object 0 command 1 ACTIVE", "1: object 0 command 1 MOTION_BEGAN"));
}

struct KinPathJobInputsTest : testing::Test {
  KinPathJobInputsTest() {
    std::string problem;
    path = KinPath::alongLines({0, 0, 0}, {}, {0.1, 0, 0}, 0.0, {"mm", 1e-3}, problem);
    pars.set({path.get(), 0.1, 1.0});
  }
  /// Registers everything and gives the job's list of that type.
  JobList listOf(JobListTypes type) {
    handler.registerPublish(KinPathPars::getMyID(), SectionMgr::CMD_DATA, "test", &pars);
    EXPECT_EQ(sut.registerInputs(&handler), JobResult::NoEffect);
    JobList list;
    EXPECT_EQ(sut.addJobsToJoblist(&list, type), JobResult::NoEffect);
    return list;
  }
  core::KinPoseT& pose() {
    core::IContainer* data = nullptr;
    robot.data().registerRead(core::KinPose::getMyID(), SectionMgr::GEOMETRY_TOOL_OFFSET, 1, "test", data);
    return core::KinPose::safeCast(data)->getRef();
  }

  test::World world;
  MotionObject& robot = world.addKinematics("R");
  std::unique_ptr<KinPath> path;
  KinPathPars pars;
  JobDataHandler handler{&robot.data()};
  KinPathJob sut;
};

TEST_F(KinPathJobInputsTest, needsParametersSetpointPoseAndObject) {
  EXPECT_EQ(sut.registerInputs(&handler), JobResult::DataNotPublished);
  JobDataHandler ofAxis(&world.addAxis("X").data());
  ofAxis.registerPublish(KinPathPars::getMyID(), SectionMgr::CMD_DATA, "test", &pars);
  EXPECT_EQ(sut.registerInputs(&ofAxis), JobResult::DataNotPublished) << "an axis has no pose";
  JobList none;
  EXPECT_EQ(sut.addJobsToJoblist(&none, JobListTypes::COMMAND_PREPARED), JobResult::ListTypeNotServed);
}

TEST_F(KinPathJobInputsTest, calculatesInOneStageAndPosesInALaterOneOfTheSameCycle) {
  ASSERT_EQ(listOf(JobListTypes::BEFORE_EXECUTION).run().result, JobResult::NoEffect);
  std::vector<double> early;
  std::vector<double> late;
  const auto look = [this](std::vector<double>& seen) {
    return [this, &seen] {
      seen.push_back(pose().x);
      return JobResult::NoEffect;
    };
  };
  JobList list;
  list.addJob(look(late), "late", SectionMgr::EXEC_FINAL);
  ASSERT_EQ(sut.addJobsToJoblist(&list, JobListTypes::CYCLIC_EXECUTION), JobResult::NoEffect);
  list.addJob(look(early), "early", SectionMgr::EXEC_DYNAMICS);
  pose().a = 0.25;
  unsigned cycles = 1;
  while (list.run().result == JobResult::Busy) {
    ++cycles;
  }
  EXPECT_EQ(cycles, 1100U);
  EXPECT_DOUBLE_EQ(late.front(), 0.5e-6) << "the pose of this cycle";
  EXPECT_EQ(late.back(), 0.1) << "in the cycle in which the job says finished, too";
  EXPECT_EQ(early.front(), 0.0);
  EXPECT_EQ(early[1], late[0]);
  EXPECT_EQ(pose().a, 0.25) << "the orientation";
}

TEST_F(KinPathJobInputsTest, failsWhenItDoesNotStandWhereThePathBegins) {
  const JobList list = listOf(JobListTypes::BEFORE_EXECUTION);
  for (double core::KinPoseT::*coordinate : {&core::KinPoseT::x, &core::KinPoseT::y, &core::KinPoseT::z}) {
    for (const double off : {-1.1e-9, 1.1e-9, std::nan("")}) {
      pose().*coordinate = off;
      EXPECT_EQ(list.run().result, JobResult::ExecutionFailed) << off;
    }
    pose().*coordinate = 0.9e-9;
    EXPECT_EQ(list.run().result, JobResult::NoEffect);
    pose().*coordinate = 0.0;
  }
}

TEST_F(KinPathJobInputsTest, aKinematicsThatStandsElsewhereDoesNotMove) {
  const auto id = world.issue(robot, "MoveLin", KinMovePars({{100, 0, 0}, {}, 0, 100, 1000}));
  pose().y = 0.001;
  world.step();
  EXPECT_EQ(robot.getCmdState(id), CmdState::FAILED);
  EXPECT_EQ(robot.pose(), (Point{0, 0.001, 0}));
  EXPECT_EQ(robot.velocity(), 0.0);
}

TEST_F(KinPathJobInputsTest, describesItself) {
  EXPECT_EQ(sut.getJobString(), "No inputs registered");
  static_cast<void>(listOf(JobListTypes::BEFORE_EXECUTION));
  EXPECT_EQ(sut.getJobString(), "movePath(to=[0.1,0,0],length=0.1,velocity=0.1,acceleration=1)");
}

}  // namespace
}  // namespace motion::host::builtin
