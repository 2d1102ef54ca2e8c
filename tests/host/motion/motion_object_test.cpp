// A motion object's turn: taking commands, running their jobs, ending and aborting them, and what it tells about them.
#include "host/motion/motion_object.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string_view>

#include "host/motion/builtin/builtin_cmds.h"
#include "host/motion/unit_helper.h"
#include "tests/host/motion/world.h"

namespace motion::host {
namespace {

using builtin::AxisMovePars;
using core::FctResult;
using core::cmd::CmdResult;
using core::cmd::CmdState;
using core::job::JobResult;
using testing::ElementsAre;
using testing::IsEmpty;

const test::Script::JobFn ENDLESS = [](const std::string&, unsigned) { return JobResult::Busy; };

struct MotionObjectTest : testing::Test {
  test::World world;
  test::Script& script = world.script;
  MotionObject& sut = world.addAxis("X", 0.25);
};

TEST_F(MotionObjectTest, saysWhatItIs) {
  EXPECT_TRUE(sut.isAxis());
  EXPECT_FALSE(sut.isKinematics());
  EXPECT_FALSE(sut.isEncoder());
  EXPECT_EQ(sut.type(), core::ObjectType::AXIS);
  EXPECT_EQ(sut.name(), "X");
  EXPECT_DOUBLE_EQ(sut.getCycleTime(), 0.001);
  EXPECT_STREQ(sut.getUnitSettings().entries[0].name, "mm");
  EXPECT_EQ(&sut.getDia(), &sut.diaLog());
  EXPECT_DOUBLE_EQ(sut.position(), 0.25);
  EXPECT_EQ(sut.velocity(), 0.0);
  const MotionObject& kinematics = world.addKinematics("Robot");
  EXPECT_FALSE(kinematics.isAxis());
  EXPECT_TRUE(kinematics.isKinematics());
}

TEST_F(MotionObjectTest, publishesItsDataToItsCommands) {
  core::IContainer* out = nullptr;
  ASSERT_EQ(sut.data().registerRead(AxisSetpoint::getMyID(), SectionMgr::OBJ_DATA, 1, "test", out), JobResult::NoEffect);
  EXPECT_DOUBLE_EQ(AxisSetpoint::safeCast(out)->get().position, 0.25);
  EXPECT_EQ(sut.data().registerRead(core::KinPose::getMyID(), SectionMgr::GEOMETRY_TOOL_OFFSET, 1, "test", out),
            JobResult::DataNotPublished);

  MotionObject* robot = world.runtime.addObject("Robot", core::ObjectType::KINEMATICS, {1.0, 2.0, 3.0});
  ASSERT_EQ(robot->data().registerRead(core::KinPose::getMyID(), SectionMgr::GEOMETRY_TOOL_OFFSET, 1, "test", out),
            JobResult::NoEffect);
  const core::KinPoseT pose = core::KinPose::safeCast(out)->get();
  EXPECT_THAT((std::array{pose.x, pose.y, pose.z, pose.a, pose.b, pose.c}), ElementsAre(1.0, 2.0, 3.0, 0.0, 0.0, 0.0));
  EXPECT_EQ(robot->data().registerRead(AxisSetpoint::getMyID(), SectionMgr::OBJ_DATA, 1, "test", out),
            JobResult::DataNotPublished);
  ASSERT_EQ(robot->data().registerRead(KinSetpoint::getMyID(), SectionMgr::OBJ_DATA, 1, "test", out), JobResult::NoEffect);
  EXPECT_EQ(KinSetpoint::safeCast(out)->get().position, (Point{1.0, 2.0, 3.0}));
  EXPECT_EQ(sut.data().registerRead(KinSetpoint::getMyID(), SectionMgr::OBJ_DATA, 1, "test", out),
            JobResult::DataNotPublished);
  EXPECT_EQ(robot->pose(), (Point{1.0, 2.0, 3.0}));
  EXPECT_EQ(sut.pose(), (Point{0.25, 0.0, 0.0}));
}

TEST_F(MotionObjectTest, countsCycles) {
  EXPECT_EQ(sut.getCycleCount(), 0U);
  world.step();
  EXPECT_EQ(sut.getCycleCount(), 1U);
  world.step(4);
  EXPECT_EQ(sut.getCycleCount(), 5U);
}

TEST_F(MotionObjectTest, aPreparedCommandBecomesCurrentAndRunsInTheSameCycle) {
  script.prepared = script.before = [](const std::string&, unsigned) { return JobResult::NoEffect; };
  script.cyclic = ENDLESS;
  const auto id = world.issue(sut, "A");
  EXPECT_EQ(sut.getLatestPreparedCmdID(), 0U);
  world.runtime.preparation().prepareAll();
  EXPECT_EQ(sut.getLatestPreparedCmdID(), id);
  EXPECT_EQ(sut.getCurrentCmdID(), 0U);
  EXPECT_EQ(sut.getCmdState(id), CmdState::PREPARED);
  EXPECT_THAT(script.takeJournal(), ElementsAre("A BUFFERED", "A prepared", "A PREPARED"));

  world.runtime.cycle().run();
  EXPECT_EQ(sut.getCurrentCmdID(), id);
  EXPECT_EQ(sut.getCmdState(id), CmdState::ACTIVE);
  EXPECT_THAT(script.takeJournal(), ElementsAre("A ACTIVE", "A activate", "A before", "A cyclic"));

  world.step();
  EXPECT_THAT(script.takeJournal(), ElementsAre("A cyclic"));
}

TEST_F(MotionObjectTest, theNextCommandStartsInTheCycleAfterTheOneThatFinished) {
  script.cyclic = [](const std::string&, unsigned call) { return call == 2 ? JobResult::CmdFinished : JobResult::Busy; };
  const auto first = world.issue(sut, "A");
  const auto second = world.issue(sut, "B");
  world.step(2);
  EXPECT_EQ(sut.getCmdState(first), CmdState::DONE);
  EXPECT_EQ(sut.getCmdState(second), CmdState::PREPARED);
  EXPECT_EQ(sut.getCurrentCmdID(), 0U);
  world.step(2);
  EXPECT_EQ(sut.getCmdState(second), CmdState::DONE);
  EXPECT_THAT(world.takeEvents(), ElementsAre("1: object 0 command 1 ACTIVE", "2: object 0 command 1 DONE",
                                              "3: object 0 command 2 ACTIVE", "4: object 0 command 2 DONE"));
  EXPECT_THAT(script.takeJournal(), ElementsAre("A BUFFERED", "B BUFFERED", "A PREPARED", "B PREPARED", "A ACTIVE",
                                                "A activate", "A cyclic", "A cyclic", "A exit", "A DONE", "A destroyed",
                                                "B ACTIVE", "B activate", "B cyclic", "B cyclic", "B exit", "B DONE"));
}

TEST_F(MotionObjectTest, busyAndNoEffectKeepACommand) {
  for (const JobResult result : {JobResult::Busy, JobResult::NoEffect}) {
    test::World own;
    MotionObject& object = own.addAxis("X");
    own.script.cyclic = [result](const std::string&, unsigned) { return result; };
    const auto id = own.issue(object, "A");
    own.step(20);
    EXPECT_EQ(object.getCmdState(id), CmdState::ACTIVE);
    EXPECT_EQ(object.getCurrentCmdID(), id);
  }
}

TEST_F(MotionObjectTest, aBeforeExecutionJobThatSaysFinishedDoesNotEndACommand) {
  script.before = [](const std::string&, unsigned) { return JobResult::CmdFinished; };
  script.cyclic = ENDLESS;
  const auto id = world.issue(sut, "A");
  world.step(3);
  EXPECT_EQ(sut.getCmdState(id), CmdState::ACTIVE);
}

// Failures

TEST_F(MotionObjectTest, aFailingJobEndsItsCommandAndAbortsWhatIsBufferedBehindIt) {
  script.cyclic = [](const std::string& label, unsigned call) {
    return label == "B" && call == 2 ? JobResult::InvalidJobData : (label == "B" ? JobResult::Busy : JobResult::CmdFinished);
  };
  const auto a = world.issue(sut, "A");
  const auto b = world.issue(sut, "B");
  const auto c = world.issue(sut, "C");
  const auto d = world.issue(sut, "D");
  world.step(3);
  EXPECT_EQ(sut.getCmdState(a), CmdState::DONE);
  EXPECT_EQ(sut.getCmdState(b), CmdState::FAILED);
  const auto later = world.issue(sut, "E");
  world.step();
  EXPECT_EQ(sut.getCmdState(c), CmdState::ABORTED);
  EXPECT_EQ(sut.getCmdState(d), CmdState::ABORTED);
  EXPECT_EQ(sut.getCmdState(later), CmdState::DONE) << "commands issued afterwards run";
  world.step();
  EXPECT_EQ(world.runtime.preparation().alive(), 0U);
  EXPECT_EQ(sut.bufferedCount(), 0U);
}

TEST_F(MotionObjectTest, anEventOfAFailureCarriesTheJobsResult) {
  script.cyclic = [](const std::string&, unsigned) { return JobResult::InvalidJobData; };
  world.issue(sut, "A");
  world.step();
  Event event;
  ASSERT_TRUE(world.events.read(event));
  ASSERT_TRUE(world.events.read(event));
  EXPECT_EQ(event.kind, EventKind::CMD_FAILED);
  EXPECT_EQ(event.detail, core::toCode(JobResult::InvalidJobData));
}

/// What a listener is told of commands that have ended.
class FailureListener : public ICmdListener {
 public:
  void onBuffered(const CmdFrame& /*frame*/, std::uint64_t /*cycle*/) noexcept override {}
  void onPrepared(const CmdFrame& /*frame*/, std::uint64_t /*cycle*/) noexcept override {}
  void onDropped(const CmdFrame& /*frame*/, std::uint64_t /*cycle*/) noexcept override {}
  void onRetired(const CmdFrame& frame) noexcept override {
    state = frame.getCmdState();
    failedJob = frame.failure.failedJob != nullptr ? frame.failure.failedJob : "";
    result = frame.failure.result;
  }

  CmdState state = CmdState::CREATED;
  std::string failedJob;
  JobResult result = JobResult::NoEffect;
};

struct FailingPlace {
  const char* name;
  std::function<void(test::Script&)> arrange;
  const char* failedJob;
  JobResult result;
};

class MotionObjectFailureTest : public testing::TestWithParam<FailingPlace> {};

TEST_P(MotionObjectFailureTest, endsTheCommandAsFailedAndKeepsTheReason) {
  test::World world;
  FailureListener listener;
  world.runtime.preparation().setListener(&listener);
  MotionObject& sut = world.addAxis("X");
  GetParam().arrange(world.script);
  const auto id = world.issue(sut, "A");
  world.step();
  EXPECT_EQ(sut.getCmdState(id), CmdState::FAILED);
  EXPECT_EQ(sut.getCurrentCmdID(), 0U);
  world.step();
  EXPECT_EQ(listener.state, CmdState::FAILED);
  EXPECT_EQ(listener.failedJob, GetParam().failedJob);
  EXPECT_EQ(listener.result, GetParam().result);
  EXPECT_EQ(world.runtime.preparation().alive(), 0U);
}

JobResult fail(const std::string& /*label*/, unsigned /*call*/) {
  return JobResult::InvalidObject;
}
JobResult throwInstead(const std::string& /*label*/, unsigned /*call*/) {
  throw std::runtime_error("no");
}

INSTANTIATE_TEST_SUITE_P(
    Places, MotionObjectFailureTest,
    testing::Values(FailingPlace{"cyclicJob", [](test::Script& s) { s.cyclic = fail; }, "cyclic", JobResult::InvalidObject},
                    FailingPlace{"cyclicJobThrows", [](test::Script& s) { s.cyclic = throwInstead; }, "cyclic",
                                 JobResult::ExecutionFailed},
                    FailingPlace{"beforeJob", [](test::Script& s) { s.before = fail; }, "before", JobResult::InvalidObject},
                    FailingPlace{"activation", [](test::Script& s) { s.activateResult = CmdResult::Refused; },
                                 "onCmdActivate", JobResult::ExecutionFailed},
                    FailingPlace{"activationThrows",
                                 [](test::Script& s) {
                                   s.at = [](std::string_view operation) {
                                     if (operation == "onCmdActivate") {
                                       throw 7;
                                     }
                                   };
                                 },
                                 "onCmdActivate", JobResult::ExecutionFailed}),
    [](const auto& test) { return test.param.name; });

TEST_F(MotionObjectTest, aCommandWhoseBeforeJobFailsNeverRunsItsCyclicJobs) {
  script.before = fail;
  world.issue(sut, "A");
  world.step(2);
  EXPECT_THAT(script.takeJournal(), ElementsAre("A BUFFERED", "A PREPARED", "A ACTIVE", "A activate", "A before", "A exit",
                                                "A FAILED", "A destroyed"));
}

TEST_F(MotionObjectTest, anExceptionOnExitChangesNothing) {
  script.at = [](std::string_view operation) {
    if (operation == "onCmdExit" || operation == "onCmdStateChanged") {
      throw std::runtime_error("no");
    }
  };
  const auto a = world.issue(sut, "A");
  const auto b = world.issue(sut, "B");
  world.step(2);
  EXPECT_EQ(sut.getCmdState(a), CmdState::DONE);
  EXPECT_EQ(sut.getCmdState(b), CmdState::DONE);
}

// Buffer

TEST(MotionObjectBufferTest, refusesWhenFullAndLosesNothing) {
  test::World world({0.001, 3});
  MotionObject& sut = world.addAxis("X");
  std::vector<unsigned long> ids;
  for (const char* label : {"A", "B", "C"}) {
    ids.push_back(world.issue(sut, label));
  }
  unsigned long refused = 4711;
  EXPECT_EQ(world.tryIssue(sut, "D", refused), FctResult::TooManyCommands);
  EXPECT_EQ(refused, 4711U);
  EXPECT_EQ(world.problem, "the command buffer of 'X' is full (3 commands)");
  EXPECT_EQ(sut.bufferedCount(), 3U);
  EXPECT_EQ(world.script.commandsAlive, 3);

  world.step();
  ids.push_back(world.issue(sut, "E"));
  EXPECT_EQ(world.tryIssue(sut, "F", refused), FctResult::TooManyCommands) << "two that waited, and the new one";
  world.step(3);
  EXPECT_THAT(ids, testing::Each(testing::ResultOf([&sut](auto id) { return sut.getCmdState(id); }, CmdState::DONE)));
  std::vector<std::string> done;
  for (const std::string& entry : world.script.takeJournal()) {
    if (entry.ends_with("DONE")) {
      done.push_back(entry);
    }
  }
  EXPECT_THAT(done, ElementsAre("A DONE", "B DONE", "C DONE", "E DONE"));
  EXPECT_EQ(sut.bufferedCount(), 0U);
}

TEST(MotionObjectBufferTest, theCurrentCommandTakesNoPlace) {
  test::World world({0.001, 1});
  MotionObject& sut = world.addAxis("X");
  world.script.cyclic = ENDLESS;
  world.issue(sut, "A");
  world.step();
  EXPECT_EQ(sut.bufferedCount(), 0U);
  world.issue(sut, "B");
  world.step();
  unsigned long refused = 0;
  EXPECT_EQ(world.tryIssue(sut, "C", refused), FctResult::TooManyCommands) << "prepared commands wait as well";
}

TEST(MotionObjectBufferTest, aRefusedCommandTakesNoPlace) {
  test::World world({0.001, 1});
  MotionObject& sut = world.addAxis("X");
  unsigned long id = 0;
  world.script.validateResult = CmdResult::Refused;
  EXPECT_EQ(world.tryIssue(sut, "A", id), FctResult::InvalidParameter);
  world.script.validateResult = CmdResult::Okay;
  world.issue(sut, "B");
  EXPECT_EQ(sut.bufferedCount(), 1U);
}

TEST(MotionObjectBufferTest, eachObjectHasItsOwn) {
  test::World world({0.001, 1});
  MotionObject& x = world.addAxis("X");
  MotionObject& y = world.addAxis("Y");
  world.issue(x, "A");
  world.issue(y, "B");
  EXPECT_EQ(y.bufferedCount(), 1U);
}

// Abort

TEST_F(MotionObjectTest, abortReachesACommandThatIsNotPreparedYet) {
  const auto id = world.issue(sut, "A");
  sut.abortAll();
  world.step();
  EXPECT_EQ(sut.getCmdState(id), CmdState::ABORTED);
  EXPECT_EQ(sut.getLatestPreparedCmdID(), 0U);
  EXPECT_THAT(script.takeJournal(), ElementsAre("A BUFFERED", "A ABORTED", "A destroyed"));
  EXPECT_THAT(world.takeEvents(), IsEmpty()) << "it never reached the cycle";
  EXPECT_EQ(sut.bufferedCount(), 0U);
}

TEST_F(MotionObjectTest, abortReachesAPreparedCommand) {
  const auto id = world.issue(sut, "A");
  world.runtime.preparation().prepareAll();
  sut.abortAll();
  EXPECT_EQ(sut.getCmdState(id), CmdState::PREPARED);
  world.runtime.cycle().run();
  EXPECT_EQ(sut.getCmdState(id), CmdState::ABORTED);
  EXPECT_THAT(script.takeJournal(), ElementsAre("A BUFFERED", "A PREPARED", "A ABORTED"));
  EXPECT_THAT(world.takeEvents(), ElementsAre("1: object 0 command 1 ABORTED"));
  EXPECT_EQ(sut.bufferedCount(), 0U);
}

TEST_F(MotionObjectTest, abortReachesTheCurrentCommandInTheNextTurn) {
  script.cyclic = ENDLESS;
  const auto a = world.issue(sut, "A");
  const auto b = world.issue(sut, "B");
  world.step(2);
  static_cast<void>(script.takeJournal());
  sut.abortAll();
  EXPECT_EQ(sut.getCmdState(a), CmdState::ACTIVE);
  world.step();
  EXPECT_EQ(sut.getCurrentCmdID(), 0U);
  EXPECT_EQ(sut.getCmdState(a), CmdState::ABORTED);
  EXPECT_EQ(sut.getCmdState(b), CmdState::ABORTED);
  EXPECT_THAT(script.takeJournal(), ElementsAre("A exit", "A ABORTED", "B ABORTED"));
  EXPECT_THAT(world.takeEvents(),
              ElementsAre("1: object 0 command 1 ACTIVE", "3: object 0 command 1 ABORTED", "3: object 0 command 2 ABORTED"));
}

TEST_F(MotionObjectTest, abortDoesNotTouchLaterCommands) {
  script.cyclic = [](const std::string& label, unsigned) { return label == "A" ? JobResult::Busy : JobResult::CmdFinished; };
  const auto a = world.issue(sut, "A");
  world.step();
  sut.abortAll();
  const auto b = world.issue(sut, "B");
  world.step();
  EXPECT_EQ(sut.getCmdState(a), CmdState::ABORTED);
  EXPECT_EQ(sut.getCmdState(b), CmdState::DONE) << "in the very cycle in which the other was aborted";
}

TEST_F(MotionObjectTest, abortWithNothingThereChangesNothing) {
  sut.abortAll();
  world.step();
  sut.abortAll();
  const auto id = world.issue(sut, "A");
  world.step();
  EXPECT_EQ(sut.getCmdState(id), CmdState::DONE);
  sut.abortAll();
  world.step();
  EXPECT_EQ(sut.getCmdState(id), CmdState::DONE) << "what has ended stays as it ended";
}

TEST_F(MotionObjectTest, abortLeavesOtherObjectsAlone) {
  MotionObject& other = world.addAxis("Y");
  script.cyclic = ENDLESS;
  const auto first = world.issue(other, "A");
  const auto second = world.issue(sut, "B");
  world.step();
  sut.abortAll();
  world.step();
  EXPECT_EQ(other.getCmdState(first), CmdState::ACTIVE);
  EXPECT_EQ(sut.getCmdState(second), CmdState::ABORTED);
}

TEST_F(MotionObjectTest, anAbortedAxisStandsStill) {
  world.issue(sut, "MoveAbs", AxisMovePars({1000.0, 100.0, 1000.0}));
  world.step(300);
  EXPECT_DOUBLE_EQ(sut.velocity(), 0.1);
  const double position = sut.position();
  EXPECT_GT(position, 0.25);
  sut.abortAll();
  world.step(5);
  EXPECT_EQ(sut.velocity(), 0.0);
  EXPECT_EQ(sut.position(), position);

  world.issue(sut, "MoveRel", AxisMovePars({10.0, 100.0, 1000.0}));
  world.step(300);
  EXPECT_DOUBLE_EQ(sut.position(), position + 0.010) << "the next move starts where the axis stands";
}

// States and events

TEST_F(MotionObjectTest, speaksTheUnitsThatItIsGiven) {
  const MotionObject* metres = world.runtime.addObject("Metres", core::ObjectType::AXIS, {},
                                                       UnitHelper::settings(LengthUnit::METRE, TimeUnit::MILLISECOND));
  EXPECT_STREQ(metres->getUnitSettings().entries[0].name, "m");
  EXPECT_STREQ(metres->getUnitSettings().entries[6].name, "ms");
}

TEST_F(MotionObjectTest, noticesWhenMotionBegins) {
  world.issue(sut, "Dwell", builtin::DwellPars({0.002}));
  world.issue(sut, "MoveRel", AxisMovePars({10.0, 100.0, 1000.0}));
  world.issue(sut, "MoveRel", AxisMovePars({0.0, 100.0, 1000.0}));
  world.issue(sut, "MoveRel", AxisMovePars({-10.0, 100.0, 1000.0}));
  world.step(420);
  EXPECT_THAT(world.takeEvents(), ElementsAre("1: object 0 command 1 ACTIVE", "2: object 0 command 1 DONE",              //
                                              "3: object 0 command 2 ACTIVE", "3: object 0 command 2 MOTION_BEGAN",      //
                                              "202: object 0 command 2 DONE",                                            //
                                              "203: object 0 command 3 ACTIVE", "203: object 0 command 3 DONE",          //
                                              "204: object 0 command 4 ACTIVE", "204: object 0 command 4 MOTION_BEGAN",  //
                                              "403: object 0 command 4 DONE"));
}

TEST_F(MotionObjectTest, anUnknownCommandCountsAsDone) {
  EXPECT_EQ(sut.getCmdState(0), CmdState::DONE);
  EXPECT_EQ(sut.getCmdState(4711), CmdState::DONE);
}

TEST(MotionObjectStateTest, forgetsCommandsThatEndedLongAgoButNoneThatIsAlive) {
  test::World world({0.001, 2});
  MotionObject& sut = world.addAxis("X");
  const auto failed = world.issue(sut, "failing");
  world.script.cyclic = fail;
  world.step(2);
  EXPECT_EQ(sut.getCmdState(failed), CmdState::FAILED);

  world.script.cyclic = ENDLESS;
  const auto current = world.issue(sut, "endless");
  world.step();
  world.script.prepared = fail;
  for (int i = 0; i < 100; ++i) {
    const auto id = world.issue(sut, "unprepared");
    world.step();
    ASSERT_EQ(sut.getCmdState(id), CmdState::FAILED);
  }
  EXPECT_EQ(sut.getCmdState(current), CmdState::ACTIVE);
  EXPECT_EQ(sut.getCmdState(failed), CmdState::DONE) << "forgotten";
  EXPECT_EQ(sut.getCurrentCmdID(), current);
}

// Taking everything back

TEST_F(MotionObjectTest, clearAbortsTheCurrentCommandAndWhatIsPrepared) {
  script.cyclic = ENDLESS;
  const auto a = world.issue(sut, "A");
  const auto b = world.issue(sut, "B");
  world.step();
  sut.clear();
  EXPECT_EQ(sut.getCmdState(a), CmdState::ABORTED);
  EXPECT_EQ(sut.getCmdState(b), CmdState::ABORTED);
  EXPECT_EQ(sut.getCurrentCmdID(), 0U);
  EXPECT_EQ(sut.bufferedCount(), 0U);
  EXPECT_EQ(script.commandsAlive, 2) << "destroyed by preparation";
  world.runtime.preparation().prepareAll();
  EXPECT_EQ(script.commandsAlive, 0);
  EXPECT_EQ(world.runtime.preparation().alive(), 0U);
}

TEST_F(MotionObjectTest, worksWithoutAReaderOfEvents) {
  sut.setEvents(nullptr);
  const auto id = world.issue(sut, "A");
  world.step();
  EXPECT_EQ(sut.getCmdState(id), CmdState::DONE);
  EXPECT_THAT(world.takeEvents(), IsEmpty());
}

}  // namespace
}  // namespace motion::host
