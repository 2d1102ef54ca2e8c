#include "host/run/player.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/observe/text_report.h"
#include "host/scenario/scenario_reader.h"

namespace motion::host::run {
namespace {

using core::cmd::CmdState;
using testing::HasSubstr;

class PlayerTest : public testing::Test {
 protected:
  /// Plays a scenario in a session of its own; real time when asked for.
  observe::RunRecord play(const std::string& text, bool realTime = false,
                          const std::function<void(const Progress&)>& onProgress = {}) {
    const auto read = scenario::readScenarioText(text, "test.yaml");
    EXPECT_TRUE(read.scenario) << (read.problems.empty() ? "" : read.problems[0].text());
    Session session({KAVO_BUNDLE, {read.scenario->cycleTime, read.scenario->bufferSize}, std::chrono::seconds(30), false});
    std::string problem;
    EXPECT_TRUE(session.open(problem)) << problem;
    for (const auto& object : read.scenario->objects) {
      session.runtime().addObject(object.name, object.type, object.start);
    }
    auto program = prepareProgram(*read.scenario, session.runtime(), [&] { return session.takeMessages(); });
    EXPECT_TRUE(program.problems.empty()) << program.problems[0].text();
    Player sut(session, *read.scenario, std::move(program.programs));
    EXPECT_TRUE(sut.connect(problem)) << problem;
    if (realTime) {
      sut.playReal(onProgress);
    } else {
      sut.playVirtual();
    }
    EXPECT_EQ(session.runtime().preparation().alive(), 0U);
    return sut.record();
  }
};

constexpr const char* HAND_OVER =
    "objects: [{name: A, type: axis}, {name: B, type: axis}]\n"
    "program:\n"
    "  A: [Dwell: {time: 0.01}, SetSignal: {signalId: 1}]\n"
    "  B: [WaitForSignal: {signalId: 1, autoReset: true}, MoveAbs: {to: 1}]\n";

TEST_F(PlayerTest, PlaysToTheEnd) {
  const auto record = play(HAND_OVER);
  EXPECT_TRUE(record.isFine());
  const auto& b = record.objects.at(1).commands;
  EXPECT_EQ(b.at(0).ended, 11U);
  EXPECT_EQ(b.at(1).active, 12U);
  EXPECT_EQ(b.at(1).motionBegan, 12U);
  EXPECT_EQ(b.at(1).state, CmdState::DONE);
  EXPECT_EQ(record.cycles, b.at(1).ended);
  EXPECT_DOUBLE_EQ(record.objects.at(1).endPosition, 0.001);
}

TEST_F(PlayerTest, RepeatsItselfExactly) { EXPECT_EQ(observe::eventList(play(HAND_OVER)), observe::eventList(play(HAND_OVER))); }

TEST_F(PlayerTest, PlaysTheSameInRealTime) {
  const auto record = play(HAND_OVER, true);
  EXPECT_TRUE(record.isFine());
  EXPECT_TRUE(record.realTime);
  ASSERT_TRUE(record.punctuality);
  EXPECT_GT(record.punctuality->cycles, 11U);
  const auto& commands = record.objects.at(1).commands;
  EXPECT_EQ(commands.at(0).ended, record.objects.at(0).commands.at(1).ended);
  EXPECT_EQ(commands.at(1).active, commands.at(0).ended + 1);
}

TEST_F(PlayerTest, TellsItsProgressInRealTime) {
  std::vector<Progress> told;
  play("objects: [{name: A, type: axis}]\nprogram: {A: [Dwell: {time: 0.7}, Dwell: {time: 0.01}]}\n", true,
       [&](const Progress& progress) { told.push_back(progress); });
  ASSERT_FALSE(told.empty());
  EXPECT_EQ(told[0].total, 2U);
  EXPECT_EQ(told[0].issued, 2U);
  EXPECT_EQ(told[0].ended, 0U);
  EXPECT_GT(told[0].time, 0.0);
}

TEST_F(PlayerTest, WritesFromOutsideBeforeTheFirstCycleAtTheirTime) {
  const auto record = play(
      "objects: [{name: A, type: axis}]\n"
      "program: {A: [WaitForSignal: {signalId: 7}, WaitForSignalReset: {signalId: 7}]}\n"
      "outside:\n"
      "  - {at: 20 ms, signal: 7, value: false}\n"
      "  - {at: 10 ms, signal: 7, value: true}\n");
  EXPECT_TRUE(record.isFine());
  EXPECT_EQ(record.objects.at(0).commands.at(0).ended, 11U);
  EXPECT_EQ(record.objects.at(0).commands.at(1).ended, 21U);
}

TEST_F(PlayerTest, GoesOnUntilTheLastEventAndProbe) {
  EXPECT_EQ(play("objects: [{name: A, type: axis}]\noutside: [{at: 20 ms, signal: 7, value: true}]\n").cycles, 21U);
  EXPECT_EQ(play("objects: [{name: A, type: axis}]\nexpect: [{at: 30 ms, signal: 7, value: false}]\n").cycles, 31U);
}

TEST_F(PlayerTest, FindsThatNothingCanHappenAnyMore) {
  const auto record = play(
      "objects: [{name: A, type: axis}]\n"
      "program: {A: [Dwell: {time: 0.1}, WaitForSignal: {signalId: 7}]}\n");
  EXPECT_FALSE(record.isFine());
  EXPECT_THAT(record.stuck, HasSubstr("since cycle 101 nothing can happen any more"));
  EXPECT_THAT(record.stuck, HasSubstr("A waits in A#2 WaitForSignal (line 2) since cycle 101 for signal 7"));
  EXPECT_LT(record.cycles, 120U);
  EXPECT_EQ(record.objects.at(0).commands.at(1).state, CmdState::ACTIVE);
}

TEST_F(PlayerTest, IsNotStuckWhileSomethingIsStillToComeFromOutside) {
  const auto record = play(
      "objects: [{name: A, type: axis}]\n"
      "program: {A: [WaitForSignal: {signalId: 7}]}\n"
      "outside: [{at: 1 s, signal: 7, value: true}]\n");
  EXPECT_TRUE(record.isFine());
  EXPECT_EQ(record.objects.at(0).commands.at(0).ended, 1001U);
}

TEST_F(PlayerTest, StopsAtTheLimit) {
  const auto record = play("limit: 50 ms\nobjects: [{name: A, type: axis}]\nprogram: {A: [Dwell: {time: 10}]}\n");
  EXPECT_THAT(record.stuck, HasSubstr("the limit of 0.05 s was reached"));
  EXPECT_EQ(record.cycles, 50U);
}

TEST_F(PlayerTest, FeedsALongProgramThroughASmallBuffer) {
  std::string text = "buffer: 1\nobjects: [{name: A, type: axis}]\nprogram:\n  A:\n";
  for (int i = 0; i < 20; ++i) {
    text += "    - MoveRel: {by: 1}\n";
  }
  const auto record = play(text);
  EXPECT_TRUE(record.isFine());
  EXPECT_NEAR(record.objects.at(0).endPosition, 0.020, 1e-12);
  EXPECT_EQ(record.objects.at(0).commands.size(), 20U);
}

TEST_F(PlayerTest, AnAbortEndsTheProgramOfItsObject) {
  const auto record = play(
      "buffer: 1\nobjects: [{name: A, type: axis}]\n"
      "program: {A: [Dwell: {time: 1}, Dwell: {time: 1}, Dwell: {time: 1}, Dwell: {time: 1}]}\n"
      "outside: [{at: 10 ms, abort: A}]\n");
  EXPECT_TRUE(record.isFine());
  EXPECT_EQ(record.objects.at(0).commands.at(0).state, CmdState::ABORTED);
  EXPECT_EQ(record.objects.at(0).commands.at(3).state, CmdState::CREATED);
  EXPECT_LT(record.cycles, 20U);
}

TEST_F(PlayerTest, KeepsWhatTheComponentSays) {
  const auto record = play(
      "objects: [{name: A, type: axis}]\n"
      "program: {A: [Dwell: {time: 0.01}, SetSignal: {signalId: 2}]}\n"
      "outside: [{at: 5 ms, signal: 2, value: true}]\n");
  ASSERT_EQ(record.messages.size(), 1U);
  EXPECT_EQ(record.messages[0],
            "Signal(2) might be set by both the system function SetSignal as well as the command SetSignal");
}

}  // namespace
}  // namespace motion::host::run
