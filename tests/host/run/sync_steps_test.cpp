#include "host/run/sync_steps.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/motion/runtime.h"
#include "host/scenario/scenario_reader.h"
#include "motion/kavo/cmd_groups.h"
#include "motion/kavo/signal_memory.h"

namespace motion::host::run {
namespace {

using core::ObjectType;
using observe::SyncKind;
using observe::SyncStep;
using testing::ElementsAre;

/// What stands behind a command in a scenario.
scenario::Value parameters(const std::string& text) {
  const auto read =
      scenario::readScenarioText("objects: [{name: A, type: axis}]\nprogram: {A: [X: " + text + "]}\n", "test.yaml");
  EXPECT_TRUE(read.scenario) << (read.problems.empty() ? "" : read.problems[0].text());
  return read.scenario->programs.at(0).commands.at(0).parameters;
}

class SyncSteps : public testing::Test {
 protected:
  SyncSteps() {
    for (const char* name : {"A", "B", "C", "D"}) {
      m_runtime.addObject(name, ObjectType::AXIS, {});
    }
  }

  SyncStep step(const std::string& name, const std::string& group, const std::string& text, const char* object = "B") {
    CmdEntry entry;
    entry.id = {ObjectType::AXIS, name};
    entry.groups = {"SomeGroup", group};
    return syncStepOf(entry, parameters(text), *m_runtime.objMgr().find(object), m_runtime.objMgr());
  }
  SyncStep join(const std::string& text, const char* object = "B") {
    return step("Join", kavo::GROUP_JOIN_CMD, text, object);
  }

  Runtime m_runtime{RuntimeConfig{}};
};

TEST_F(SyncSteps, ACommandOfNoKnownGroupIsNone) {
  EXPECT_EQ(step("SetSignal", "MoveGroup", "{signalId: 3}"), SyncStep());
}

TEST_F(SyncSteps, SendingCommandsSetOrReset) {
  const SyncStep set = step("SetSignal", kavo::GROUP_SEND_SIGNAL, "{signalId: 3}");
  EXPECT_EQ(set.kind, SyncKind::SETS);
  EXPECT_EQ(set.signal, 3U);
  EXPECT_FALSE(set.consumes);
  const SyncStep reset = step("ResetSignal", kavo::GROUP_SEND_SIGNAL, "{signalId: 99}");
  EXPECT_EQ(reset.kind, SyncKind::RESETS);
  EXPECT_EQ(reset.signal, 99U);
}

TEST_F(SyncSteps, WaitingCommandsWaitForEither) {
  const SyncStep wait = step("WaitForSignal", kavo::GROUP_SYNC_ON_SIGNAL, "{signalId: 3}");
  EXPECT_EQ(wait.kind, SyncKind::WAITS_SET);
  EXPECT_EQ(wait.signal, 3U);
  EXPECT_FALSE(wait.consumes);
  EXPECT_TRUE(step("WaitForSignal", kavo::GROUP_SYNC_ON_SIGNAL, "{signalId: 3, autoReset: true}").consumes);
  EXPECT_FALSE(step("WaitForSignal", kavo::GROUP_SYNC_ON_SIGNAL, "{signalId: 3, autoReset: false}").consumes);
  const SyncStep waitReset = step("WaitForSignalReset", kavo::GROUP_SYNC_ON_SIGNAL, "{signalId: 4}");
  EXPECT_EQ(waitReset.kind, SyncKind::WAITS_RESET);
  EXPECT_EQ(waitReset.signal, 4U);
}

TEST_F(SyncSteps, ASignalThatIsNotGivenIsTheFirst) {
  EXPECT_EQ(step("SetSignal", kavo::GROUP_SEND_SIGNAL, "{}").signal, 0U);
}

TEST_F(SyncSteps, ASignalThatDoesNotExistStaysWithinTheTable) {
  EXPECT_EQ(step("SetSignal", kavo::GROUP_SEND_SIGNAL, "{signalId: 4711}").signal, kavo::SIGNAL_COUNT - 1);
}

TEST_F(SyncSteps, AGroupIsCompletedAndOrdered) {
  const SyncStep sut = join("{group: [D, A]}");
  EXPECT_EQ(sut.kind, SyncKind::JOINS);
  EXPECT_THAT(sut.group, ElementsAre(0, 1, 3));
  EXPECT_FALSE(sut.namesTwice);
  EXPECT_FALSE(sut.awaitsNext);
  EXPECT_EQ(join("{group: [A, B, D]}"), sut);
  EXPECT_EQ(join("{group: [A, D]}"), sut);
  EXPECT_THAT(join("{group: [A]}", "D").group, ElementsAre(0, 3));
}

TEST_F(SyncSteps, AGroupThatNamesSomebodyTwiceIsMarkedAndHasEachOnce) {
  const SyncStep sut = join("{group: [D, A, D]}");
  EXPECT_THAT(sut.group, ElementsAre(0, 1, 3));
  EXPECT_TRUE(sut.namesTwice);
  EXPECT_TRUE(join("{group: [B, A, B]}").namesTwice);
}

TEST_F(SyncSteps, NamesThatNoObjectHasAreLeftOut) {
  EXPECT_THAT(join("{group: [A, Nobody]}").group, ElementsAre(0, 1));
}

TEST_F(SyncSteps, AJoinMayAwaitTheNextCommand) {
  EXPECT_TRUE(join("{group: [A], syncStartNextCmd: true}").awaitsNext);
  EXPECT_FALSE(join("{group: [A], syncStartNextCmd: false}").awaitsNext);
}

TEST_F(SyncSteps, AnAbsentGroupHasNobodyButTheObject) {
  EXPECT_THAT(join("{}").group, ElementsAre(1));
}

TEST(NamesOnlyItself, NeedsAName) {
  EXPECT_FALSE(namesOnlyItself(parameters("{}"), "A"));
  EXPECT_FALSE(namesOnlyItself(parameters("{group: []}"), "A"));
  EXPECT_TRUE(namesOnlyItself(parameters("{group: [A]}"), "A"));
  EXPECT_TRUE(namesOnlyItself(parameters("{group: [A, A]}"), "A"));
  EXPECT_FALSE(namesOnlyItself(parameters("{group: [B]}"), "A"));
  EXPECT_FALSE(namesOnlyItself(parameters("{group: [A, Nobody]}"), "A"));
}

}  // namespace
}  // namespace motion::host::run
