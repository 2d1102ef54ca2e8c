// A kinematics that moves, as its users see it: standing still when it loses its command, and the beginning of a motion.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/motion/builtin/cmd_kin_move.h"
#include "host/motion/builtin/kin_path_job.h"
#include "host/motion/motion_object.h"
#include "host/motion/section_mgr.h"
#include "tests/host/motion/world.h"

namespace motion::host {
namespace {

using builtin::KinMovePars;
using core::cmd::CmdResult;
using core::cmd::CmdState;
using core::job::JobResult;
using testing::ElementsAre;

struct MotionObjectKinematicsTest : testing::Test {
  test::World world;
  MotionObject& axis = world.addAxis("X", 0.25);  ///< the first object
};

TEST_F(MotionObjectKinematicsTest, aKinematicsThatLosesItsCommandStandsStill) {
  MotionObject& robot = world.addKinematics("Robot");
  core::IContainer* setpoint = nullptr;
  ASSERT_EQ(robot.data().registerRead(KinSetpoint::getMyID(), SectionMgr::OBJ_DATA, 1, "test", setpoint),
            JobResult::NoEffect);
  const auto id = world.issue(robot, "MoveLin", KinMovePars({{30, 40, 0}, {}, 0, 100, 1000}));
  world.step(20);
  const Point before = robot.pose();
  EXPECT_NEAR(before[1], before[0] * 4 / 3, 1e-12);
  EXPECT_DOUBLE_EQ(robot.velocity(), 0.02);
  robot.abortAll();
  world.step();
  EXPECT_EQ(robot.getCmdState(id), CmdState::ABORTED);
  EXPECT_EQ(robot.velocity(), 0.0);
  EXPECT_EQ(robot.pose(), before);
  EXPECT_EQ(KinSetpoint::safeCast(setpoint)->get().velocity, 0.0);
  world.step(10);
  EXPECT_EQ(robot.pose(), before);
}

/// Fails in its 20th cycle, between the stage that calculates the next position and the one that makes it the pose.
class FailingJob : public core::job::JobObjectBase {
 public:
  [[nodiscard]] core::IAmCreatable* createNew() const override { return new FailingJob; }
  [[nodiscard]] const char* getID() const override { return "failing_job"; }
  [[nodiscard]] std::string getJobString() const override { return ""; }
  JobResult addJobsToJoblist(core::job::IJobList* list, core::job::JobListTypes type) override {
    const auto job = [this] { return ++m_calls == 20 ? JobResult::InvalidJobData : JobResult::NoEffect; };
    return type == core::job::JobListTypes::CYCLIC_EXECUTION ? list->addJob(job, "failing", SectionMgr::EXEC_DYNAMICS)
                                                             : JobResult::ListTypeNotServed;
  }

 private:
  int m_calls = 0;
};

/// A move with that job.
class FailingMove : public builtin::CmdKinMove {
 public:
  explicit FailingMove(core::IObjFactory& factory) : CmdKinMove(builtin::PathKind::LINEAR, factory) {}
  [[nodiscard]] const std::vector<std::string>& getJobNames() const override {
    static const std::vector<std::string> names{builtin::KinPathJob::NAME, "failing_job"};
    return names;
  }
};

TEST_F(MotionObjectKinematicsTest, aKinematicsWhoseCommandFailsStandsWhereOthersHaveSeenIt) {
  std::unique_ptr<core::IAmCreatable> job = std::make_unique<FailingJob>();
  ASSERT_EQ(world.runtime.objFactory().registerObj(job, 0), core::ObjFactoryResult::Okay);
  CmdEntry entry = *world.runtime.cmdFactory().find({core::ObjectType::KINEMATICS, "MoveLin"});
  entry.id.name = "FailingMove";
  entry.create = wrapCreate<core::ObjectType::KINEMATICS>(
      [](core::IObjFactory& factory, bool, core::cmd::CmdGeneric<core::ObjectType::KINEMATICS>*& cmd, std::string&) {
        cmd = new FailingMove(factory);
        return CmdResult::Okay;
      });
  ASSERT_TRUE(world.runtime.cmdFactory().addBuiltIn(entry));
  MotionObject& robot = world.addKinematics("Robot");
  const auto id = world.issue(robot, "FailingMove", KinMovePars({{100, 0, 0}, {}, 0, 100, 1000}));
  world.step(19);
  const Point before = robot.pose();
  EXPECT_GT(before[0], 0.0);
  world.step();
  EXPECT_EQ(robot.getCmdState(id), CmdState::FAILED);
  EXPECT_EQ(robot.velocity(), 0.0);
  EXPECT_EQ(robot.pose(), before);
  const auto next = world.issue(robot, "MoveLin", KinMovePars({{0, 0, 0}, {}, 0, 100, 1000}));
  world.step(500);
  EXPECT_EQ(robot.getCmdState(next), CmdState::DONE);
}

TEST_F(MotionObjectKinematicsTest, noticesWhenAKinematicsBeginsToMove) {
  MotionObject& robot = world.addKinematics("Robot");
  world.issue(robot, "MoveLin", KinMovePars({{1, 0, 0}, {}, 0, 100, 1000}));
  world.issue(robot, "MoveLin", KinMovePars({{1, 0, 0}, {}, 0, 100, 1000}));
  world.issue(robot, "MoveLin", KinMovePars({{2, 0, 0}, {}, 0, 100, 1000}));
  world.step(200);
  EXPECT_THAT(world.takeEvents(), ElementsAre("1: object 1 command 1 ACTIVE", "1: object 1 command 1 MOTION_BEGAN",    //
                                              "64: object 1 command 1 DONE",                                           //
                                              "65: object 1 command 2 ACTIVE", "65: object 1 command 2 DONE",          //
                                              "66: object 1 command 3 ACTIVE", "66: object 1 command 3 MOTION_BEGAN",  //
                                              "129: object 1 command 3 DONE"));
}

}  // namespace
}  // namespace motion::host
