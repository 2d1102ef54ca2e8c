// The job of the option SwitchOnPath in the cycle: when conditions fire, in which order, and what becomes of those that
// fail.
#include "impl/switch_on_path/job_obj_switch_on_path.h"
#include "switch_on_path/switch_on_path_fixture.h"

namespace motion::kavo::job {
namespace {

using core::job::JobResult;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto FAILED = static_cast<JobResult>(0xF0000004);
const std::string ACTION_FAILED = "Error job_obj_switch_on_path execute: signal action failed";
constexpr auto RESET = SwitchOnPathAction::RESET_SIGNAL;
constexpr auto NO_ACTION = static_cast<SwitchOnPathAction>(2);

class JobObjSwitchOnPathRunTest : public SwitchOnPathBothWaysTest {
 protected:
  /// The traces of the job itself.
  [[nodiscard]] std::vector<std::string> ownTraces() const {
    std::vector<std::string> result;
    for (const auto& entry : m_host.traceSink.entries()) {
      if (entry.file == "job_obj_switch_on_path") {
        result.push_back(entry.summary());
      }
    }
    return result;
  }
};

TEST_P(JobObjSwitchOnPathRunTest, SetsItsSignalWhenTheToolEntersTheSphere) {
  const auto armed = sphere(7, {10, 0, 0}, 2);
  arm({armed});
  for (double x = 0; x < 7.5; x += 1) {
    EXPECT_EQ(cycleAt({x, 0, 0}), JobResult::NoEffect);
    EXPECT_EQ(in(7), 0) << x;
    EXPECT_FALSE(armed->reached);
  }
  EXPECT_EQ(cycleAt({8, 0, 0}), JobResult::NoEffect) << "it never ends or holds the command";
  EXPECT_EQ(in(7), 1);
  EXPECT_TRUE(armed->reached);
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_P(JobObjSwitchOnPathRunTest, ResetsItsSignalWhenTheToolEntersTheSphere) {
  out(7) = 9;
  arm({sphere(7, {0, 0, 0}, 1, 0, RESET)});
  EXPECT_EQ(cycleAt({0, 0, 0}), JobResult::NoEffect);
  EXPECT_EQ(in(7), 9);
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_P(JobObjSwitchOnPathRunTest, FiresOnceOnlyHoweverThePathGoesOn) {
  arm({sphere(7, {0, 0, 0}, 1)});
  for (const double x : {2.0, 1.0, 0.0, 0.5, 3.0, 0.5, 0.0, 3.0, -0.5}) {
    EXPECT_EQ(cycleAt({x, 0, 0}), JobResult::NoEffect);
  }
  EXPECT_EQ(in(7), 1);
}

TEST_P(JobObjSwitchOnPathRunTest, DoesNothingWithoutConditions) {
  arm({});
  EXPECT_EQ(cycleAt({0, 0, 0}), JobResult::NoEffect);
  EXPECT_THAT(m_host.calls.all(), IsEmpty());
}

TEST_P(JobObjSwitchOnPathRunTest, LeavesFiredConditionsAlone) {
  const auto fired = sphere(7, {0, 0, 0}, 1);
  fired->reached = true;
  arm({fired, sphere(8, {0, 0, 0}, 1)});
  EXPECT_EQ(cycleAt({0, 0, 0}), JobResult::NoEffect);
  EXPECT_EQ(in(7), 0);
  EXPECT_EQ(in(8), 1);
}

TEST_P(JobObjSwitchOnPathRunTest, LooksAtEveryConditionInEachCycle) {
  arm({sphere(1, {1, 0, 0}, 0.1), sphere(2, {3, 0, 0}, 0.1), sphere(3, {1, 0, 0}, 0.1), sphere(4, {2, 0, 0}, 0.1)});
  std::vector<std::vector<int>> signals;
  for (const double x : {1.0, 2.0, 3.0}) {
    ASSERT_EQ(cycleAt({x, 0, 0}), JobResult::NoEffect);
    signals.push_back({in(1), in(2), in(3), in(4)});
  }
  EXPECT_THAT(signals, ElementsAre(ElementsAre(1, 0, 1, 0), ElementsAre(1, 0, 1, 1), ElementsAre(1, 1, 1, 1)));
}

TEST_P(JobObjSwitchOnPathRunTest, DoesOppositeActionsOnOneSignalInTheOrderOfTheList) {
  arm({sphere(7, {0, 0, 0}, 1), sphere(7, {0, 0, 0}, 1, 0, RESET)});
  EXPECT_EQ(cycleAt({0, 0, 0}), JobResult::NoEffect);
  EXPECT_EQ(in(7), out(7)) << "reset last";
  EXPECT_EQ(m_host.calls.count("memory.beginAccess signals_in"), 2);

  arm({sphere(7, {0, 0, 0}, 1, 0, RESET), sphere(7, {0, 0, 0}, 1)});
  EXPECT_EQ(cycleAt({0, 0, 0}), JobResult::NoEffect);
  EXPECT_NE(in(7), out(7)) << "set last";
}

TEST_P(JobObjSwitchOnPathRunTest, StopsAtAnActionThatItDoesNotKnow) {
  const auto unknown = sphere(7, {0, 0, 0}, 1, 0, NO_ACTION);
  const auto behind = sphere(8, {0, 0, 0}, 1);
  const auto before = sphere(9, {0, 0, 0}, 1);
  arm({before, unknown, behind});
  EXPECT_EQ(cycleAt({0, 0, 0}), FAILED);
  EXPECT_THAT(traces(), ElementsAre(ACTION_FAILED));
  EXPECT_EQ(m_host.traceSink.entries()[0].format, "%s");
  EXPECT_EQ(in(9), 1);
  EXPECT_EQ(in(8), 0) << "those behind it wait for the next cycle";
  EXPECT_TRUE(unknown->reached);
  EXPECT_FALSE(behind->reached);

  forget();
  EXPECT_EQ(cycleAt({0, 0, 0}), JobResult::NoEffect);
  EXPECT_EQ(in(8), 1);
  EXPECT_EQ(in(7), 0) << "what failed is not tried again";
  EXPECT_EQ(in(9), 1);
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_P(JobObjSwitchOnPathRunTest, StopsWhenASignalCannotBeSwitched) {
  for (const auto action : {SwitchOnPathAction::SET_SIGNAL, RESET}) {
    in(7) = 0;
    out(7) = action == RESET ? 1 : 0;
    in(8) = 0;
    const auto failing = sphere(7, {0, 0, 0}, 1, 0, action);
    arm({failing, sphere(8, {0, 0, 0}, 1)});
    m_host.calls.fail("memory.beginAccess signals_in", 0x80060001, 1);
    EXPECT_EQ(cycleAt({0, 0, 0}), FAILED);
    EXPECT_THAT(ownTraces(), ElementsAre(ACTION_FAILED));
    EXPECT_TRUE(failing->reached);
    EXPECT_EQ(in(8), 0);
    forget();
    m_host.calls.failNothing();
    EXPECT_EQ(cycleAt({0, 0, 0}), JobResult::NoEffect);
    EXPECT_EQ(in(7), 0) << "what failed is not tried again";
    EXPECT_EQ(in(8), 1);
    EXPECT_THAT(ownTraces(), IsEmpty());
  }
}

TEST_P(JobObjSwitchOnPathRunTest, MarksAConditionBeforeItSwitches) {
  const auto armed = sphere(7, {0, 0, 0}, 1);
  arm({armed});
  bool wasReached = false;
  const auto watch = m_host.calls.onCall("memory.beginAccess signals_in", [&] { wasReached = armed->reached; });
  EXPECT_EQ(cycleAt({0, 0, 0}), JobResult::NoEffect);
  EXPECT_TRUE(wasReached);
}

TEST_P(JobObjSwitchOnPathRunTest, FailsWhenTheSignalsAreGone) {
  const auto first = sphere(7, {0, 0, 0}, 1);
  const auto second = sphere(8, {0, 0, 0}, 1, 0, RESET);
  arm({first, second});
  rt_data::RtSignals::getInstance().terminate();
  EXPECT_EQ(cycleAt({0, 0, 0}), FAILED);
  EXPECT_EQ(cycleAt({0, 0, 0}), FAILED);
  EXPECT_EQ(cycleAt({0, 0, 0}), JobResult::NoEffect) << "both were tried once";
}

TEST_P(JobObjSwitchOnPathRunTest, LooksNotAheadInItsFirstCycle) {
  arm({sphere(7, {2, 0, 0}, 0.5, 0.001), sphere(8, {3, 0, 0}, 0.5, 0.001)});
  EXPECT_EQ(cycleAt({1, 0, 0}), JobResult::NoEffect);
  EXPECT_EQ(in(7), 0) << "from the origin it would seem to run to 2";
  EXPECT_EQ(cycleAt({2, 0, 0}), JobResult::NoEffect);
  EXPECT_EQ(in(8), 1) << "the next point on the line is 3";
}

TEST_P(JobObjSwitchOnPathRunTest, LooksAtWhereItIsInItsFirstCycle) {
  arm({sphere(7, {1, 0, 0}, 0, 0.001)});
  EXPECT_TRUE(firesAt({1, 0, 0}, 7));
}

TEST_P(JobObjSwitchOnPathRunTest, LooksAheadOnlyWhereItIsAskedTo) {
  arm({sphere(1, {10, 0, 0}, 0.5), sphere(2, {10, 0, 0}, 0.5, 0.002), sphere(3, {10, 0, 0}, 0.5, 0.004)});
  std::array<int, 4> firstCycle{};
  for (int x = 0; x <= 12; ++x) {
    ASSERT_EQ(cycleAt({static_cast<double>(x), 0, 0}), JobResult::NoEffect);
    for (const std::uint32_t signal : {1U, 2U, 3U}) {
      firstCycle[signal] = firstCycle[signal] == 0 && in(signal) != 0 ? x : firstCycle[signal];
    }
  }
  EXPECT_THAT(firstCycle, ElementsAre(0, 10, 8, 6)) << "two and four cycles earlier";
}

TEST_P(JobObjSwitchOnPathRunTest, LooksNotPastAPointWhereItStands) {
  arm({sphere(7, {1, 0, 0}, 0, 0.5)});
  EXPECT_FALSE(firesAt({0, 0, 0}, 7));
  EXPECT_FALSE(firesAt({0, 0, 0}, 7));
  arm({sphere(7, {1, 0, 0}, 0, 0.5)});
  EXPECT_TRUE(firesAt({1, 0, 0}, 7));
}

TEST_P(JobObjSwitchOnPathRunTest, AsksTheObjectForItsCycleTime) {
  m_obj.m_cycleTime = 0.004;
  arm({sphere(7, {4, 0, 0}, 0.25, 0.008)});
  EXPECT_FALSE(firesAt({1, 0, 0}, 7));
  EXPECT_TRUE(firesAt({2, 0, 0}, 7)) << "two cycles ahead";
}

TEST_P(JobObjSwitchOnPathRunTest, RemembersThePointBeforeAFailureOnly) {
  const auto failing = sphere(6, {2, 0, 0}, 0, 0, NO_ACTION);
  arm({failing, sphere(7, {5, 0, 0}, 0, 0.001)});
  ASSERT_EQ(cycleAt({1, 0, 0}), JobResult::NoEffect);
  ASSERT_EQ(cycleAt({2, 0, 0}), FAILED);
  // From 1, not from 2, to 3: the next point would be 5.
  EXPECT_TRUE(firesAt({3, 0, 0}, 7));
}

TEST_P(JobObjSwitchOnPathRunTest, IsStillInItsFirstCycleAfterAFailureThere) {
  arm({sphere(6, {1, 0, 0}, 0, 0, NO_ACTION), sphere(7, {4, 0, 0}, 0, 0.001), sphere(8, {2, 0, 0}, 0, 0.001)});
  ASSERT_EQ(cycleAt({1, 0, 0}), FAILED);
  EXPECT_FALSE(firesAt({2, 0, 0}, 7)) << "neither from the origin";
  EXPECT_EQ(in(8), 1) << "it looks at where it is";
}

TEST_P(JobObjSwitchOnPathRunTest, StartsAnewWithEveryJob) {
  const auto carried = sphere(7, {4, 0, 0}, 0, 0.001);
  arm({carried});
  ASSERT_FALSE(firesAt({1, 0, 0}, 7));
  const auto next = makeJob({carried});
  m_pose.set({2.5, 0, 0, 0, 0, 0});
  EXPECT_EQ(next->execute(), JobResult::NoEffect);
  EXPECT_EQ(in(7), 0) << "from 1 to 2.5 it would look at 4";
  m_pose.set({3.25, 0, 0, 0, 0, 0});
  EXPECT_EQ(next->execute(), JobResult::NoEffect);
  EXPECT_EQ(in(7), 1);
}

TEST_P(JobObjSwitchOnPathRunTest, FiresNoConditionTwiceThatTwoJobsShare) {
  const auto shared = sphere(7, {0, 0, 0}, 1);
  const auto first = makeJob({shared});
  const auto second = makeJob({shared});
  EXPECT_EQ(first->execute(), JobResult::NoEffect);
  EXPECT_EQ(second->execute(), JobResult::NoEffect);
  EXPECT_EQ(in(7), 1);
}

TEST_P(JobObjSwitchOnPathRunTest, NeedsAnObjectAndAPose) {
  m_objPtr.set(nullptr);
  arm({sphere(7, {0, 0, 0}, 1)});
  EXPECT_TRUE(core::isFailure(sut().execute()));
  m_objPtr.set(&m_obj);
  const auto list = listOf({sphere(7, {0, 0, 0}, 1)});
  const auto published = m_handler.m_published;
  for (const auto& [missing, container] : published) {
    m_handler.m_published.erase(missing);
    JobObjSwitchOnPath job(m_arithmetic);
    EXPECT_EQ(job.setJobData(&list), JobResult::NoEffect);
    EXPECT_TRUE(core::isFailure(job.registerInputs(&m_handler)));
    EXPECT_TRUE(core::isFailure(job.execute()));
    m_handler.m_published = published;
  }
  EXPECT_EQ(in(7), 0);
}

TEST_P(JobObjSwitchOnPathRunTest, AllocatesNothing) {
  arm({sphere(7, {1, 0, 0}, 0.5), sphere(8, {2, 0, 0}, 0.5, 0.001), sphere(9, {5, 0, 0}, 0.5)});
  const test::AllocationCount count;
  for (const double x : {0.0, 1.0, 2.0}) {
    m_pose.getRef().x = x;
    (void)sut().execute();
  }
  EXPECT_EQ(count.get(), 0);
  EXPECT_EQ(in(7) + in(8), 2);
}

/// Counts how often it is asked for the cycle time, and may refuse to tell it.
class AskedObj : public test::FakeObj {
 public:
  using FakeObj::FakeObj;
  double getCycleTime() const override {
    ++m_asked;
    return m_isSilent ? throw std::runtime_error("no answer now") : m_cycleTime;
  }

  mutable int m_asked = 0;
  bool m_isSilent = false;
};

TEST_P(JobObjSwitchOnPathRunTest, FailsWhenItsObjectDoesNotTellTheCycleTime) {
  AskedObj obj(m_host.calls);
  m_objPtr.set(&obj);
  arm({sphere(7, {5, 0, 0}, 0.5, 0.001)});
  EXPECT_EQ(cycleAt({0, 0, 0}), core::job::JobResult::NoEffect);
  obj.m_isSilent = true;
  EXPECT_EQ(cycleAt({1, 0, 0}), core::job::JobResult::ExecutionFailed);
  obj.m_isSilent = false;
  EXPECT_EQ(cycleAt({1, 0, 0}), core::job::JobResult::NoEffect);
}

TEST_P(JobObjSwitchOnPathRunTest, AsksForTheCycleTimeOnceACycleAndOnlyToLookAhead) {
  AskedObj obj(m_host.calls);
  obj.m_cycleTime = 0.001;
  m_objPtr.set(&obj);
  arm({sphere(7, {500, 0, 0}, 0.5, 0.001), sphere(8, {500, 0, 0}, 0.5), sphere(9, {500, 0, 0}, 0.5, 0.002)});
  EXPECT_FALSE(firesAt({0, 0, 0}, 7));
  EXPECT_EQ(obj.m_asked, 0);
  EXPECT_FALSE(firesAt({1, 0, 0}, 7));
  EXPECT_EQ(obj.m_asked, 1);
}

INSTANTIATE_TEST_SUITE_P(All, JobObjSwitchOnPathRunTest, testing::ValuesIn(bothWays()), nameOfWay);

}  // namespace
}  // namespace motion::kavo::job
