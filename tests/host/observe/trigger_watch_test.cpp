#include "host/observe/trigger_watch.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>

#include "host/motion/motion_object.h"
#include "host/motion/section_mgr.h"
#include "motion/core/obj/kin_pose.h"
#include "motion/kavo/cmd_options.h"
#include "support/fake_allocation.h"
#include "tests/host/motion/scripted_cmd.h"

namespace motion::host::observe {
namespace {

using core::ObjectType;
using core::job::JobResult;
using kavo::SwitchOnPathPars;
using kavo::SwitchOnPathParsList;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

using Condition = std::shared_ptr<SwitchOnPathPars>;

constexpr double CYCLE_TIME = 0.001;

/// An option that only keeps conditions.
class PathOption : public core::cmd::GenericCmdOption {
 public:
  explicit PathOption(std::vector<Condition> conditions) : m_conditions(std::move(conditions)) {}

  core::cmd::CmdResult setParameter(const core::IContainer* /*values*/, core::IObjFactory& /*factory*/,
                                    const core::IObj& /*obj*/, core::dia::IDia& /*dia*/) override {
    return core::cmd::CmdResult::Okay;
  }
  core::cmd::CmdResult getParameter(const core::IContainer*& values) override {
    values = &m_conditions;
    return core::cmd::CmdResult::Okay;
  }
  std::vector<core::job::IJobObject*> createJobs(core::IObjFactory& /*factory*/) const override { return {}; }

 private:
  SwitchOnPathParsList m_conditions;
};

/// Shows the conditions, and fires none: the tests do that.
class PathJob : public core::job::JobObjectBase {
 public:
  explicit PathJob(std::unique_ptr<core::IContainer> data) : m_data(std::move(data)) {}

  [[nodiscard]] core::IAmCreatable* createNew() const override { return nullptr; }
  [[nodiscard]] const char* getID() const override { return "path_job"; }
  JobResult addJobsToJoblist(core::job::IJobList* /*list*/, core::job::JobListTypes /*type*/) override {
    return JobResult::ListTypeNotServed;
  }
  [[nodiscard]] std::string getJobString() const override { return {}; }
  [[nodiscard]] const core::IContainer* getJobData() const override { return m_data.get(); }

 private:
  std::unique_ptr<core::IContainer> m_data;
};

/// "command in cycle"
std::vector<std::string> carriersOf(const TriggerRecord& trigger) {
  std::vector<std::string> texts;
  for (const TriggerRecord::Carrier& carrier : trigger.carriers) {
    texts.push_back(fmt::format("{} in {}", carrier.number, carrier.cycle));
  }
  return texts;
}

class TriggerWatchTest : public testing::Test {
 protected:
  TriggerWatchTest() {
    m_script.jobNames = {};
    core::IContainer* pose = nullptr;
    EXPECT_EQ(m_robot.data().registerRead(core::KinPose::getMyID(), SectionMgr::GEOMETRY_TOOL_OFFSET, core::job::READ_ONE,
                                          "test", pose),
              JobResult::NoEffect);
    m_pose = core::KinPose::safeCast(pose);
  }

  static Condition condition(const Point& target, double radius, double ahead = 0.0) {
    auto made = std::make_shared<SwitchOnPathPars>();
    made->signalId = 6;
    made->targetPos = target;
    made->radius = radius;
    made->preTriggerTime = ahead;
    return made;
  }
  static std::shared_ptr<const AcceptedOption> option(std::vector<Condition> conditions, std::uint32_t line) {
    auto entry = std::make_shared<CmdOptionEntry>();
    entry->id = {ObjectType::KINEMATICS, kavo::OPTION_SWITCH_ON_PATH};
    return std::make_shared<const AcceptedOption>(entry, std::make_unique<PathOption>(std::move(conditions)),
                                                  core::cmd::CmdOptDuration::ONE_COMMAND,
                                                  core::dia::CmdSourceInfo{"test", "file", line}, 1);
  }
  static std::unique_ptr<core::IContainer> listOf(std::vector<Condition> conditions) {
    return std::make_unique<SwitchOnPathParsList>(std::move(conditions));
  }
  CmdFrame& command(MotionObject& object, std::uint64_t id, std::unique_ptr<core::IContainer> data,
                    const std::shared_ptr<const AcceptedOption>& option) {
    auto cmd = std::make_unique<test::ScriptedCmd<ObjectType::KINEMATICS>>(m_script, m_factory);
    m_frames.push_back(
        std::make_unique<CmdFrame>(id, object, "Move", core::dia::CmdSourceInfo{}, std::move(cmd), object.data()));
    std::vector<OptionJob> jobs;
    if (data != nullptr) {
      jobs.push_back({option, std::make_unique<PathJob>(std::move(data))});
    }
    std::string problem;
    EXPECT_EQ(m_frames.back()->build(m_factory, std::move(jobs), problem), core::cmd::CmdResult::Okay) << problem;
    return *m_frames.back();
  }
  /// A command of the robot that an option with these conditions accompanies: the first is its own.
  CmdFrame& move(std::uint64_t id, const std::vector<Condition>& conditions, std::uint32_t line) {
    const auto given = option(conditions, line);
    sut.onAccepted(*given, m_robot);
    CmdFrame& frame = command(m_robot, id, listOf(conditions), given);
    EXPECT_EQ(sut.onBuilt(frame), JobResult::NoEffect);
    return frame;
  }
  /// One cycle, at whose end the tool is there.
  void cycle(const CmdFrame& frame, std::uint64_t number, const Point& position) {
    m_robot.runCycle(number);
    m_pose->set({position[0], position[1], position[2], 0, 0, 0});
    EXPECT_EQ(frame.cyclicJobs().run().result, JobResult::NoEffect);
  }
  /// The report of a run in which command `id` is number id - 100 of the robot.
  std::vector<TriggerRecord> report() {
    RunRecord record;
    record.objects.resize(2);
    for (std::uint64_t id = 101; id < 110; ++id) {
      CmdRecord made;
      made.id = id;
      made.number = id - 100;
      record.objects[1].commands.push_back(made);
    }
    sut.report(record);
    return record.triggers;
  }

  test::Script m_script;
  ObjFactory m_factory;
  RetiredCmds m_retired;
  MotionObject m_robot{{"R", ObjectType::KINEMATICS, {}, CYCLE_TIME, 64, 1}, m_retired};
  core::KinPose* m_pose = nullptr;
  TriggerWatch sut;
  std::vector<std::unique_ptr<CmdFrame>> m_frames;
};

TEST_F(TriggerWatchTest, HasNothingToReportWithoutConditions) {
  EXPECT_THAT(report(), IsEmpty());
}

TEST_F(TriggerWatchTest, KnowsWhatAConditionIsMadeOf) {
  const Condition made = condition({0.1, 0.2, 0.3}, 0.004, 0.008);
  made->action = kavo::SwitchOnPathAction::RESET_SIGNAL;
  sut.onAccepted(*option({made}, 12), m_robot);
  const auto triggers = report();
  ASSERT_THAT(triggers, SizeIs(1));
  EXPECT_EQ(triggers[0].object, 1U);
  EXPECT_EQ(triggers[0].line, 12U);
  EXPECT_EQ(triggers[0].signal, 6U);
  EXPECT_FALSE(triggers[0].sets);
  EXPECT_EQ(triggers[0].target, (Point{0.1, 0.2, 0.3}));
  EXPECT_EQ(triggers[0].radius, 0.004);
  EXPECT_EQ(triggers[0].preTriggerTime, 0.008);
  EXPECT_THAT(triggers[0].carriers, IsEmpty());
  EXPECT_FALSE(triggers[0].fired || triggers[0].entered || triggers[0].nearest || triggers[0].nearestPass);
  EXPECT_FALSE(triggers[0].isSpent);
}

TEST_F(TriggerWatchTest, AddsAJobOnlyWhereThereAreConditionsToLookAt) {
  const auto given = option({condition({}, 1)}, 1);
  MotionObject axis({"A", ObjectType::AXIS, {}, CYCLE_TIME, 64, 0}, m_retired);
  CmdFrame& without = command(m_robot, 101, nullptr, nullptr);
  CmdFrame& empty = command(m_robot, 102, listOf({}), given);
  CmdFrame& other = command(m_robot, 103, std::make_unique<test::Label>("label"), given);
  CmdFrame& ofAxis = command(axis, 104, listOf({condition({}, 1)}), given);
  for (CmdFrame* const frame : {&without, &empty, &other, &ofAxis}) {
    EXPECT_EQ(sut.onBuilt(*frame), JobResult::NoEffect);
    EXPECT_EQ(frame->cyclicJobs().size(), 0U) << frame->getCmdID();
  }
  EXPECT_THAT(report(), IsEmpty());
  CmdFrame& with = command(m_robot, 105, listOf({condition({}, 1), condition({}, 2)}), given);
  EXPECT_EQ(sut.onBuilt(with), JobResult::NoEffect);
  EXPECT_EQ(with.cyclicJobs().size(), 1U) << "one job for all conditions";
  EXPECT_THAT(report(), SizeIs(2));
}

TEST_F(TriggerWatchTest, NotesWhenAndWhereAConditionFired) {
  const Condition made = condition({0.010, 0.003, 0.004}, 0.006);
  const CmdFrame& frame = move(101, {made}, 5);
  cycle(frame, 7, {0.008, 0, 0});
  made->setReached();
  cycle(frame, 8, {0.010, 0, 0});
  cycle(frame, 9, {0.010, 0.003, 0.004});
  const auto triggers = report();
  ASSERT_THAT(triggers, SizeIs(1));
  EXPECT_THAT(carriersOf(triggers[0]), ElementsAre("1 in 7"));
  ASSERT_TRUE(triggers[0].fired);
  EXPECT_EQ(triggers[0].fired->cycle, 8U);
  EXPECT_EQ(triggers[0].fired->number, 1U);
  EXPECT_EQ(triggers[0].fired->position, (Point{0.010, 0, 0}));
  EXPECT_DOUBLE_EQ(triggers[0].fired->distance, 0.005);
  EXPECT_DOUBLE_EQ(triggers[0].fired->toolDistance, 0.005);
  ASSERT_TRUE(triggers[0].nearest);
  EXPECT_EQ(triggers[0].nearest->cycle, 8U) << "what comes afterwards does not count";
  ASSERT_TRUE(triggers[0].entered);
  EXPECT_EQ(triggers[0].entered->cycle, 8U);
  EXPECT_FALSE(triggers[0].isSpent);
}

TEST_F(TriggerWatchTest, NotesHowNearTheToolCame) {
  const CmdFrame& frame = move(101, {condition({0.010, 0.001, 0}, 0.0001)}, 5);
  for (const auto& [number, x] : {std::pair{1U, 0.005}, {2U, 0.008}, {3U, 0.011}, {4U, 0.014}}) {
    cycle(frame, number, {x, 0, 0});
  }
  const auto triggers = report();
  ASSERT_THAT(triggers, SizeIs(1));
  EXPECT_FALSE(triggers[0].fired);
  ASSERT_TRUE(triggers[0].nearest);
  EXPECT_EQ(triggers[0].nearest->cycle, 3U);
  EXPECT_DOUBLE_EQ(triggers[0].nearest->distance, std::hypot(0.001, 0.001));
  ASSERT_TRUE(triggers[0].nearestPass);
  EXPECT_EQ(triggers[0].nearestPass->cycle, 3U);
  EXPECT_NEAR(triggers[0].nearestPass->distance, 0.001, 1e-15);
  EXPECT_NEAR(triggers[0].nearestPass->speed, 3.0, 1e-12);
  EXPECT_FALSE(triggers[0].nearestPass->isLeap);
}

TEST_F(TriggerWatchTest, ThePathEndsAtItsPoints) {
  const CmdFrame& frame = move(101, {condition({0.020, 0, 0}, 0.001)}, 5);
  cycle(frame, 1, {0.010, 0, 0});
  cycle(frame, 2, {0.014, 0, 0});
  cycle(frame, 3, {0.014, 0, 0});
  const auto triggers = report();
  ASSERT_TRUE(triggers.at(0).nearestPass);
  EXPECT_NEAR(triggers[0].nearestPass->distance, 0.006, 1e-15) << "not where the line would lead to";
  EXPECT_EQ(triggers[0].nearestPass->cycle, 2U) << "the first that is as near";
}

TEST_F(TriggerWatchTest, WithASingleCycleThereIsNoPath) {
  const CmdFrame& frame = move(101, {condition({0.020, 0, 0}, 0.001)}, 5);
  cycle(frame, 1, {0.010, 0, 0});
  EXPECT_TRUE(report().at(0).nearest);
  EXPECT_FALSE(report().at(0).nearestPass);
}

// Looking ahead

TEST_F(TriggerWatchTest, LooksAheadFromTheSecondCycleOn) {
  const CmdFrame& frame = move(101, {condition({0.030, 0, 0}, 0.001, 0.0025)}, 5);
  cycle(frame, 1, {0.001, 0, 0});
  EXPECT_NEAR(report().at(0).nearest->distance, 0.029, 1e-15) << "no step is known yet";
  cycle(frame, 2, {0.003, 0, 0});
  EXPECT_NEAR(report().at(0).nearest->distance, 0.030 - 0.008, 1e-15) << "two and a half steps ahead";
  EXPECT_NEAR(report().at(0).nearest->toolDistance, 0.027, 1e-15);
  EXPECT_EQ(report().at(0).nearest->position, (Point{0.003, 0, 0}));
}

TEST_F(TriggerWatchTest, NotesWhenTheToolItselfIsInTheSphere) {
  const Condition made = condition({0.010, 0, 0}, 0.0005, 0.003);
  const CmdFrame& frame = move(101, {made}, 5);
  cycle(frame, 1, {0.006, 0, 0});
  made->setReached();
  cycle(frame, 2, {0.007, 0, 0});
  EXPECT_FALSE(report().at(0).entered);
  for (const unsigned step : {3, 4, 5, 6}) {
    cycle(frame, step, {0.005 + 0.001 * step, 0, 0});
  }
  const auto triggers = report();
  EXPECT_EQ(triggers[0].fired->cycle, 2U);
  EXPECT_NEAR(triggers[0].fired->distance, 0.0, 1e-15);
  EXPECT_NEAR(triggers[0].fired->toolDistance, 0.003, 1e-15);
  ASSERT_TRUE(triggers[0].entered);
  EXPECT_EQ(triggers[0].entered->cycle, 5U);
  EXPECT_NEAR(triggers[0].entered->toolDistance, 0.0, 1e-15);
}

TEST_F(TriggerWatchTest, WhatFiresWithoutLookingAheadIsInTheSphereEvenIfTheLastDigitSaysOtherwise) {
  const double distance = 0.005;
  const Condition plain = condition({0.010, 0.003, 0.004}, std::nextafter(distance, 0.0));
  const Condition looking = condition({0.010, 0.003, 0.004}, std::nextafter(distance, 0.0), 0.001);
  const CmdFrame& frame = move(101, {plain, looking}, 5);
  cycle(frame, 1, {0.009, 0, 0});
  plain->setReached();
  looking->setReached();
  cycle(frame, 2, {0.010, 0, 0});
  ASSERT_EQ(report()[0].fired->toolDistance, distance) << "more than the radius by the last digit";
  EXPECT_TRUE(report()[0].entered);
  EXPECT_FALSE(report()[1].entered) << "the point ahead was in the sphere, the tool was not";
}

TEST_F(TriggerWatchTest, TheBeginningOfLookingAheadIsALeap) {
  const CmdFrame& frame = move(101, {condition({0.004, 0, 0}, 0.0001, 0.005)}, 5);
  cycle(frame, 1, {0.001, 0, 0});
  cycle(frame, 2, {0.002, 0, 0});
  cycle(frame, 3, {0.003, 0, 0});
  const auto triggers = report();
  ASSERT_TRUE(triggers.at(0).nearestPass);
  EXPECT_EQ(triggers[0].nearestPass->cycle, 2U);
  EXPECT_NEAR(triggers[0].nearestPass->distance, 0.0, 1e-15);
  EXPECT_NEAR(triggers[0].nearestPass->speed, 1.0, 1e-12) << "of the tool, not of the point that leaps ahead";
  EXPECT_TRUE(triggers[0].nearestPass->isLeap);
}

TEST_F(TriggerWatchTest, TheLaterPathAheadIsNoLeap) {
  const CmdFrame& frame = move(101, {condition({0.0085, 0, 0}, 0.0001, 0.005)}, 5);
  for (const unsigned step : {1, 2, 3, 4}) {
    cycle(frame, step, {0.001 * step, 0, 0});
  }
  const auto triggers = report();
  EXPECT_EQ(triggers.at(0).nearestPass->cycle, 4U) << "from 8 mm to 9 mm";
  EXPECT_NEAR(triggers[0].nearestPass->speed, 1.0, 1e-12);
  EXPECT_FALSE(triggers[0].nearestPass->isLeap);
}

// From command to command

TEST_F(TriggerWatchTest, FollowsAConditionThatIsCarriedOver) {
  const Condition first = condition({0.030, 0, 0}, 0.001);
  const Condition second = condition({0.040, 0, 0}, 0.001);
  const CmdFrame& a = move(101, {first}, 5);
  const CmdFrame& b = move(102, {second, first}, 6);
  move(103, {condition({}, 1), second, first}, 7);
  cycle(a, 1, {0.010, 0, 0});
  cycle(b, 2, {0.020, 0, 0});
  first->setReached();
  cycle(b, 3, {0.030, 0, 0});
  const auto triggers = report();
  ASSERT_THAT(triggers, SizeIs(3));
  EXPECT_EQ(triggers[0].line, 5U) << "its own, wherever it is carried to";
  EXPECT_EQ(triggers[1].line, 6U);
  EXPECT_THAT(carriersOf(triggers[0]), ElementsAre("1 in 1", "2 in 2", "3 in 0"));
  EXPECT_THAT(carriersOf(triggers[1]), ElementsAre("2 in 2", "3 in 0"));
  EXPECT_EQ(triggers[0].fired->number, 2U);
  EXPECT_EQ(triggers[1].nearest->number, 2U);
}

TEST_F(TriggerWatchTest, ThePathGoesOnFromCommandToCommand) {
  const Condition made = condition({0.0125, 0, 0}, 0.0001);
  const CmdFrame& a = move(101, {made}, 5);
  const CmdFrame& b = move(102, {condition({}, 0), made}, 6);
  cycle(a, 1, {0.012, 0, 0});
  cycle(b, 2, {0.013, 0, 0});
  const auto triggers = report();
  ASSERT_TRUE(triggers.at(0).nearestPass);
  EXPECT_NEAR(triggers[0].nearestPass->distance, 0.0, 1e-15);
  EXPECT_NEAR(triggers[0].nearestPass->speed, 1.0, 1e-12);
}

TEST_F(TriggerWatchTest, ThePathDoesNotGoOnAcrossCyclesWithoutTheCondition) {
  const Condition made = condition({0.0125, 0, 0}, 0.0001);
  const CmdFrame& a = move(101, {made}, 5);
  const CmdFrame& b = move(102, {condition({}, 0), made}, 6);
  cycle(a, 1, {0.012, 0, 0});
  cycle(b, 3, {0.013, 0, 0});
  EXPECT_FALSE(report().at(0).nearestPass);
}

TEST_F(TriggerWatchTest, TheFirstPointOfACommandIsNoPointAheadAndEndsNoPath) {
  const Condition made = condition({0.0125, 0, 0}, 0.0001, 0.002);
  const CmdFrame& a = move(101, {made}, 5);
  const CmdFrame& b = move(102, {condition({}, 0), made}, 6);
  cycle(a, 1, {0.018, 0, 0});
  cycle(a, 2, {0.018, 0, 0});
  cycle(b, 3, {0.010, 0, 0});
  EXPECT_NEAR(report().at(0).nearestPass->distance, 0.0055, 1e-15) << "that of the first command only";
  EXPECT_NEAR(report().at(0).nearest->distance, 0.0025, 1e-15);
}

TEST_F(TriggerWatchTest, AConditionThatFiredUnseenIsSpent) {
  const Condition made = condition({0.010, 0, 0}, 0.001);
  const CmdFrame& frame = move(101, {made}, 5);
  cycle(frame, 1, {0.005, 0, 0});
  made->setReached();  // and the command fails before anybody can look
  EXPECT_TRUE(report().at(0).isSpent);
  EXPECT_FALSE(report().at(0).fired);
}

// Without memory

TEST_F(TriggerWatchTest, RefusesACommandThatItHasNoMemoryToWatch) {
  const auto given = option({condition({}, 1)}, 5);
  int nth = 0;
  for (bool hasFailed = true; hasFailed;) {
    CmdFrame& frame = command(m_robot, 101, listOf({condition({}, 1)}), given);
    JobResult result = JobResult::NoEffect;
    {
      const motion::test::AllocationFailure failure(++nth);
      result = sut.onBuilt(frame);
      hasFailed = failure.happened();
    }
    EXPECT_EQ(result, hasFailed ? JobResult::OutOfMemory : JobResult::NoEffect) << nth;
    EXPECT_EQ(frame.cyclicJobs().size(), hasFailed ? 0U : 1U) << nth;
  }
  EXPECT_GT(nth, 5);
  const auto triggers = report();
  EXPECT_EQ(std::ranges::count_if(triggers, [](const TriggerRecord& trigger) { return !trigger.carriers.empty(); }), 1)
      << "nothing was carried by a command that was refused";
}

TEST_F(TriggerWatchTest, AConditionThatCouldNotBeNotedAtFirstIsNotedWithItsCommand) {
  const std::vector<Condition> conditions{condition({}, 1)};
  const auto given = option(conditions, 5);
  {
    const motion::test::AllocationFailure failure(1);
    sut.onAccepted(*given, m_robot);
  }
  EXPECT_THAT(report(), IsEmpty());
  CmdFrame& frame = command(m_robot, 101, listOf(conditions), given);
  EXPECT_EQ(sut.onBuilt(frame), JobResult::NoEffect);
  EXPECT_THAT(report(), SizeIs(1));
}

}  // namespace
}  // namespace motion::host::observe
