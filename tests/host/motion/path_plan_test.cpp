// Where planned paths begin: behind what is pending, behind what was aborted or failed, and while commands are tried out.
#include "host/motion/path_plan.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/motion/builtin/builtin_cmds.h"
#include "tests/host/motion/world.h"

namespace motion::host {
namespace {

using builtin::KinMovePars;
using core::FctResult;
using core::cmd::CmdState;
using core::job::JobResult;
using testing::HasSubstr;

constexpr Point HERE{1, 2, 3};
constexpr Point FIRST{4, 5, 6};
constexpr Point SECOND{7, 8, 9};
const auto ALL = [](std::uint64_t) { return true; };
const auto NONE = [](std::uint64_t) { return false; };

TEST(PathPlanTest, beginsWhereTheObjectStandsWhenNothingIsPending) {
  PathPlan sut(FIRST, 2);
  EXPECT_EQ(sut.start(), FIRST);
  sut.beginNext(HERE);
  EXPECT_EQ(sut.start(), HERE);
}

TEST(PathPlanTest, beginsWhereTheLatestPendingPathEnds) {
  PathPlan sut({}, 2);
  sut.append(1, FIRST);
  sut.append(2, SECOND);
  sut.dropEnded(ALL);
  sut.beginNext(HERE);
  EXPECT_EQ(sut.start(), SECOND);
  sut.dropEnded([](std::uint64_t cmdID) { return cmdID == 1; });
  sut.beginNext(HERE);
  EXPECT_EQ(sut.start(), FIRST);
  sut.dropEnded(NONE);
  sut.beginNext(HERE);
  EXPECT_EQ(sut.start(), HERE);
}

TEST(PathPlanTest, triesOutInAChainOfItsOwn) {
  PathPlan sut({}, 2);
  sut.append(1, FIRST);
  sut.beginTrial(HERE);
  EXPECT_EQ(sut.start(), FIRST);
  sut.appendTrial(SECOND);
  sut.beginTrial(HERE);
  EXPECT_EQ(sut.start(), SECOND);
  sut.beginNext(HERE);
  EXPECT_EQ(sut.start(), FIRST) << "what is issued does not care";
  sut.forgetTrials();
  sut.beginTrial(HERE);
  EXPECT_EQ(sut.start(), FIRST);
}

struct PlannedStartTest : testing::Test {
  /// Issues a move to a point [mm] that must be accepted.
  unsigned long move(std::vector<double> to) {
    return world.issue(robot, "MoveLin", KinMovePars({std::move(to), {}, 0, 100, 1000}));
  }
  /// Steps until the command is current no more.
  CmdState finish(unsigned long id) {
    for (int i = 0; i < 10'000 && robot.getCmdState(id) < CmdState::DONE; ++i) {
      world.step();
    }
    return robot.getCmdState(id);
  }
  FctResult tryOut(const std::string& name, const KinMovePars& values) {
    return world.runtime.preparation().tryOut(robot, CmdRequest{name, values, world.source}, world.problem);
  }
  const KinMovePars lin(std::vector<double> to) { return KinMovePars({std::move(to), {}, 0, 100, 1000}); }
  const KinMovePars circ(std::vector<double> via, std::vector<double> to) {
    return KinMovePars({std::move(to), std::move(via), 0, 100, 1000});
  }

  test::World world{{0.001, 4}};
  MotionObject& robot = world.addKinematics("R");
};

TEST_F(PlannedStartTest, isTheEndOfTheMoveBefore) {
  const auto first = move({20, 0, 0});
  const auto second = move({20, 10, 0});
  ASSERT_EQ(finish(first), CmdState::DONE);
  EXPECT_EQ(robot.pose(), (Point{0.02, 0, 0}));
  world.step(100);
  EXPECT_EQ(robot.getCmdState(second), CmdState::ACTIVE);
  EXPECT_EQ(robot.pose()[0], 0.02);
  EXPECT_GT(robot.pose()[1], 0.001);
  EXPECT_EQ(finish(second), CmdState::DONE);
  EXPECT_EQ(robot.pose(), (Point{0.02, 0.01, 0}));
}

TEST_F(PlannedStartTest, reachesOverCommandsThatDoNotMove) {
  move({20, 0, 0});
  world.issue(robot, "A");
  world.issue(robot, "Dwell", builtin::DwellPars({0.01}));
  EXPECT_EQ(finish(move({20, 10, 0})), CmdState::DONE);
  world.issue(robot, "B");
  EXPECT_EQ(finish(move({0, 10, 0})), CmdState::DONE);
}

TEST_F(PlannedStartTest, decidesWhetherAnArcExists) {
  move({20, 0, 0});
  EXPECT_EQ(finish(world.issue(robot, "MoveCirc", circ({30, 10, 0}, {40, 0, 0}))), CmdState::DONE);
  move({0, 0, 0});
  unsigned long id = 0;
  EXPECT_EQ(world.runtime.addCmd(world.source, "R", "MoveCirc", circ({10, 0, 0}, {20, 0, 0}), 1, &id),
            FctResult::InvalidParameter)
      << "on one line with the end of the pending move";
}

TEST_F(PlannedStartTest, doesNotCareForRefusedCommands) {
  move({20, 0, 0});
  unsigned long id = 0;
  ASSERT_EQ(world.runtime.addCmd(world.source, "R", "MoveLin", lin({30, 0}), 1, &id), FctResult::InvalidParameter);
  EXPECT_EQ(finish(move({20, 10, 0})), CmdState::DONE);
}

TEST_F(PlannedStartTest, keepsUpWithAnyNumberOfMoves) {
  for (int i = 1; i <= 50; ++i) {
    unsigned long id = 0;
    while (world.runtime.addCmd(world.source, "R", "MoveLin", lin({1.0 * (i % 3), 1.0 * (i % 7), 1.0 * i}), 1, &id) ==
           FctResult::TooManyCommands) {
      world.step();
    }
    ASSERT_NE(id, 0U);
  }
  EXPECT_EQ(finish(50), CmdState::DONE);
  EXPECT_EQ(robot.pose(), (Point{0.002, 0.001, 0.05}));
}

TEST_F(PlannedStartTest, isWhereAnAbortLeavesTheObject) {
  const auto aborted = move({20, 0, 0});
  const auto waiting = move({20, 20, 0});
  world.step(100);
  robot.abortAll();
  const Point left = robot.pose();
  EXPECT_GT(left[0], 0.001);
  const auto next = move({0, 0, 10});
  EXPECT_EQ(finish(next), CmdState::DONE);
  EXPECT_EQ(robot.getCmdState(aborted), CmdState::ABORTED);
  EXPECT_EQ(robot.getCmdState(waiting), CmdState::ABORTED);
  EXPECT_EQ(robot.pose(), (Point{0, 0, 0.01}));
}

TEST_F(PlannedStartTest, isWhereAFailureLeavesTheObject) {
  world.script.cyclic = [](const std::string&, unsigned) { return JobResult::InvalidJobData; };
  const auto reached = move({20, 0, 0});
  const auto failing = world.issue(robot, "A");
  const auto behind = move({20, 20, 0});
  EXPECT_EQ(finish(reached), CmdState::DONE);
  EXPECT_EQ(finish(failing), CmdState::FAILED);
  EXPECT_EQ(finish(move({0, 0, 10})), CmdState::DONE) << "although the move behind is not gone yet";
  EXPECT_EQ(robot.getCmdState(behind), CmdState::ABORTED);
}

TEST_F(PlannedStartTest, isTheEndOfWhatGoesOnAheadOfACommandThatCouldNotBePrepared) {
  world.script.prepared = [](const std::string&, unsigned) { return JobResult::InvalidObject; };
  const auto ahead = move({20, 0, 0});
  const auto failing = world.issue(robot, "A");
  const auto behind = move({20, 20, 0});
  world.step();
  EXPECT_EQ(robot.getCmdState(failing), CmdState::FAILED);
  EXPECT_EQ(robot.getCmdState(behind), CmdState::ABORTED);
  EXPECT_EQ(robot.getCmdState(ahead), CmdState::ACTIVE);
  EXPECT_EQ(finish(move({20, 0, 10})), CmdState::DONE);
  EXPECT_EQ(robot.pose(), (Point{0.02, 0, 0.01}));
}

TEST_F(PlannedStartTest, goesOnFromWhatWasTriedOutUntilThatIsForgotten) {
  EXPECT_EQ(tryOut("MoveLin", lin({20, 0, 0})), FctResult::Okay);
  EXPECT_EQ(tryOut("MoveLin", lin({30, 0})), FctResult::InvalidParameter) << "which changes nothing";
  EXPECT_EQ(tryOut("MoveCirc", circ({30, 10, 0}, {40, 0, 0})), FctResult::Okay);
  EXPECT_EQ(tryOut("MoveCirc", circ({30, 0, 0}, {20, 0, 0})), FctResult::InvalidParameter);
  EXPECT_THAT(world.problem, HasSubstr("must not lie on one line"));
  EXPECT_EQ(tryOut("MoveCirc", circ({10, 10, 0}, {0, 0, 0})), FctResult::Okay);
  EXPECT_EQ(tryOut("MoveCirc", circ({10, 10, 0}, {0, 0, 0})), FctResult::InvalidParameter) << "it would be there already";
  world.runtime.preparation().forgetTriedPaths(robot);
  EXPECT_EQ(tryOut("MoveCirc", circ({10, 10, 0}, {20, 0, 0})), FctResult::Okay) << "from where the object stands";
  EXPECT_EQ(finish(move({0, 0, 10})), CmdState::DONE) << "issuing never goes on from what was only tried out";
}

}  // namespace
}  // namespace motion::host
