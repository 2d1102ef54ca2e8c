#include "host/run/expectations.h"

#include <gtest/gtest.h>

#include "host/datalayer/data_layer.h"

namespace motion::host::run {
namespace {

using core::cmd::CmdState;
using scenario::Moment;

TEST(FirstCycleFrom, CountsCyclesThatBeginAtOrAfterTheTime) {
  EXPECT_EQ(firstCycleFrom(0.0, 0.001), 1U);
  EXPECT_EQ(firstCycleFrom(0.0005, 0.001), 2U);
  EXPECT_EQ(firstCycleFrom(0.001, 0.001), 2U);
  EXPECT_EQ(firstCycleFrom(0.3, 0.001), 301U);
  EXPECT_EQ(firstCycleFrom(0.5, 0.00025), 2001U);
  EXPECT_EQ(firstCycleFrom(-1.0, 0.001), 1U);
}

class ExpectationsTest : public testing::Test {
 protected:
  ExpectationsTest() {
    m_objects.add({"A", core::ObjectType::AXIS, {0.25, 0, 0}, 0.001, 4, 0}, m_retired);
    m_objects.add({"K", core::ObjectType::KINEMATICS, {0.25, -0.1, 0.03}, 0.001, 4, 1}, m_retired);
    m_record.cycleTime = m_scenario.cycleTime;
    observe::CmdRecord first;
    first.number = 1;
    first.active = 5;
    first.state = CmdState::DONE;
    observe::CmdRecord second = first;
    second.number = 2;
    second.active = 9;
    second.state = CmdState::FAILED;
    second.name = "Dwell";
    second.failure = "broken";
    observe::CmdRecord third;
    third.number = 3;
    m_record.objects.push_back({"A", core::ObjectType::AXIS, {}, {}, {first, second, third}});
  }

  /// Judges one expectation and gives its verdict.
  template <typename WHAT>
  observe::ExpectationRecord verdict(WHAT what) {
    scenario::Expectation expectation;
    expectation.what = std::move(what);
    expectation.text = "as written";
    expectation.mark.line = 12;
    m_scenario.expectations = {expectation};
    m_record.expectations.clear();
    m_record.failures.clear();
    judge(m_scenario, m_probes, m_objects, m_watch, m_record);
    return m_record.expectations.at(0);
  }

  RetiredCmds m_retired;
  ObjMgr m_objects;
  datalayer::DataLayer m_dataLayer;
  observe::SignalWatch m_watch{m_dataLayer};
  observe::RunRecord m_record;
  scenario::Scenario m_scenario;
  std::vector<observe::Probe> m_probes;
};

TEST_F(ExpectationsTest, KeepTextAndLine) {
  const auto result = verdict(scenario::ExpectSignal{{}, 1, false});
  EXPECT_EQ(result.text, "as written");
  EXPECT_EQ(result.line, 12U);
  EXPECT_TRUE(result.holds);
  EXPECT_EQ(result.reason, "");
}

TEST_F(ExpectationsTest, JudgeSignalsAtTheEnd) {
  const auto result = verdict(scenario::ExpectSignal{{}, 1, true});
  EXPECT_FALSE(result.holds);
  EXPECT_EQ(result.reason, "signal 1 was reset");
}

TEST_F(ExpectationsTest, JudgeSignalsAtAMomentByTheirProbe) {
  const scenario::ExpectSignal expected{Moment{false, 0.3}, 1, true};
  EXPECT_EQ(verdict(expected).reason, "the run ended before 0.3 s");
  observe::Probe probe;
  probe.cycle = 301;
  probe.signal = 1;
  probe.taken = true;
  m_probes = {probe};
  EXPECT_EQ(verdict(expected).reason, "signal 1 was reset");
  m_probes[0].value = true;
  EXPECT_TRUE(verdict(expected).holds);
  m_probes[0].signal = 2;
  EXPECT_FALSE(verdict(expected).holds);
}

TEST_F(ExpectationsTest, JudgePositionsWithTolerance) {
  EXPECT_TRUE(verdict(scenario::ExpectPosition{{}, "A", {0.25}, 1e-6}).holds);
  EXPECT_TRUE(verdict(scenario::ExpectPosition{{}, "A", {0.26}, 0.011}).holds);
  EXPECT_EQ(verdict(scenario::ExpectPosition{{}, "A", {0.26}, 0.001}).reason, "A was at 250 mm");
}

TEST_F(ExpectationsTest, JudgePositionsOfAKinematicsByTheDistance) {
  EXPECT_TRUE(verdict(scenario::ExpectPosition{{}, "K", {0.25, -0.1, 0.03}, 1e-6}).holds);
  EXPECT_TRUE(verdict(scenario::ExpectPosition{{}, "K", {0.22, -0.06, 0.03}, 0.0501}).holds);
  EXPECT_FALSE(verdict(scenario::ExpectPosition{{}, "K", {0.22, -0.06, 0.03}, 0.0499}).holds);
  EXPECT_EQ(verdict(scenario::ExpectPosition{{}, "K", {0.25, -0.1, 0.0300011}, 1e-6}).reason, "K was at [250, -100, 30] mm");
}

TEST_F(ExpectationsTest, JudgePositionsAtAMomentByTheirProbe) {
  observe::Probe probe;
  probe.cycle = 11;
  probe.isSignal = false;
  probe.object = m_objects.find("A");
  probe.position = {0.1};
  probe.taken = true;
  m_probes = {probe};
  EXPECT_TRUE(verdict(scenario::ExpectPosition{Moment{false, 0.01}, "A", {0.1}, 1e-6}).holds);
  EXPECT_FALSE(verdict(scenario::ExpectPosition{Moment{false, 0.02}, "A", {0.1}, 1e-6}).holds);
}

TEST_F(ExpectationsTest, JudgeOrderAndSameCycle) {
  EXPECT_TRUE(verdict(scenario::ExpectOrder{{{"A", 1, {}}, {"A", 2, {}}}}).holds);
  EXPECT_EQ(verdict(scenario::ExpectOrder{{{"A", 2, {}}, {"A", 1, {}}}}).reason,
            "A#2 started in cycle 9, A#1 started in cycle 5");
  EXPECT_FALSE(verdict(scenario::ExpectOrder{{{"A", 1, {}}, {"A", 1, {}}}}).holds);
  EXPECT_TRUE(verdict(scenario::ExpectSameCycle{{{"A", 1, {}}, {"A", 1, {}}}}).holds);
  EXPECT_FALSE(verdict(scenario::ExpectSameCycle{{{"A", 1, {}}, {"A", 2, {}}}}).holds);
}

TEST_F(ExpectationsTest, ACommandThatNeverStartedIsInNoOrder) {
  EXPECT_EQ(verdict(scenario::ExpectOrder{{{"A", 2, {}}, {"A", 3, {}}}}).reason,
            "A#2 started in cycle 9, A#3 did not start");
  EXPECT_FALSE(verdict(scenario::ExpectSameCycle{{{"A", 3, {}}, {"A", 3, {}}}}).holds);
}

TEST_F(ExpectationsTest, JudgeStates) {
  EXPECT_TRUE(verdict(scenario::ExpectState{{"A", 1, {}}, "done"}).holds);
  EXPECT_TRUE(verdict(scenario::ExpectState{{"A", 2, {}}, "failed"}).holds);
  EXPECT_EQ(verdict(scenario::ExpectState{{"A", 1, {}}, "aborted"}).reason, "A#1 is done");
  EXPECT_EQ(verdict(scenario::ExpectState{{"A", 3, {}}, "done"}).reason, "A#3 is not started");
}

TEST_F(ExpectationsTest, AFailureIsFineOnlyWhenItIsExpected) {
  verdict(scenario::ExpectState{{"A", 2, {}}, "failed"});
  EXPECT_TRUE(m_record.failures.empty());
  verdict(scenario::ExpectState{{"A", 1, {}}, "failed"});
  ASSERT_EQ(m_record.failures.size(), 1U);
  EXPECT_EQ(m_record.failures[0], "A#2 Dwell: broken");
}

TEST_F(ExpectationsTest, OnlyMomentsBeforeTheEndNeedProbes) {
  scenario::Expectation signal;
  signal.what = scenario::ExpectSignal{Moment{false, 0.02}, 4, true};
  scenario::Expectation position;
  position.what = scenario::ExpectPosition{Moment{false, 0.01}, "A", 0, 0};
  scenario::Expectation end;
  end.what = scenario::ExpectSignal{Moment{}, 4, true};
  scenario::Expectation order;
  order.what = scenario::ExpectOrder{};
  m_scenario.expectations = {signal, position, end, order};
  const auto probes = probesFor(m_scenario, m_objects);
  ASSERT_EQ(probes.size(), 2U);
  EXPECT_EQ(probes[0].cycle, 11U);
  EXPECT_FALSE(probes[0].isSignal);
  EXPECT_EQ(probes[0].object, m_objects.find("A"));
  EXPECT_EQ(probes[1].cycle, 21U);
  EXPECT_TRUE(probes[1].isSignal);
  EXPECT_EQ(probes[1].signal, 4U);
}

}  // namespace
}  // namespace motion::host::run
