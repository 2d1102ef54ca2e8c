#include "host/run/player.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <thread>
#include <utility>

#include "host/observe/text_report.h"
#include "host/scenario/scenario_reader.h"

namespace motion::host::run {
namespace {

using core::cmd::CmdState;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class PlayerTest : public testing::Test {
 protected:
  /// Plays a scenario in a session of its own; in real time when somebody watches.
  observe::RunRecord play(const std::string& text, const std::optional<Watch>& watch = {}, std::uint64_t stuckAfter = 0) {
    const auto read = scenario::readScenarioText(text, "test.yaml");
    EXPECT_TRUE(read.scenario) << (read.problems.empty() ? "" : read.problems[0].text());
    return play(*read.scenario, watch, stuckAfter);
  }

  observe::RunRecord play(const scenario::Scenario& scenario, const std::optional<Watch>& watch = {},
                          std::uint64_t stuckAfter = 0) {
    Session session({KAVO_BUNDLE, {scenario.cycleTime, scenario.bufferSize}, std::chrono::seconds(30), false});
    std::string problem;
    EXPECT_TRUE(session.open(problem)) << problem;
    for (const auto& object : scenario.objects) {
      session.runtime().addObject(object.name, object.type, object.start);
    }
    auto program = prepareProgram(scenario, session.runtime(), [&] { return session.takeMessages(); });
    EXPECT_TRUE(program.problems.empty()) << program.problems[0].text();
    Player sut(session, scenario, std::move(program.programs));
    EXPECT_TRUE(sut.connect(problem)) << problem;
    if (watch) {
      sut.setStuckAfter(stuckAfter);
      sut.playReal(*watch);
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
  EXPECT_DOUBLE_EQ(record.objects.at(1).endPosition[0], 0.001);
}

TEST_F(PlayerTest, RepeatsItselfExactly) {
  EXPECT_EQ(observe::eventList(play(HAND_OVER)), observe::eventList(play(HAND_OVER)));
}

TEST_F(PlayerTest, PlaysTheSameInRealTime) {
  const auto record = play(HAND_OVER, Watch());
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
  Watch watch;
  watch.onProgress = [&](const Progress& progress) { told.push_back(progress); };
  play("objects: [{name: A, type: axis}]\nprogram: {A: [Dwell: {time: 0.7}, Dwell: {time: 0.01}]}\n", watch);
  ASSERT_FALSE(told.empty());
  EXPECT_EQ(told[0].total, 2U);
  EXPECT_EQ(told[0].issued, 2U);
  EXPECT_EQ(told[0].ended, 0U);
  EXPECT_GT(told[0].time, 0.0);
}

TEST_F(PlayerTest, ExplainsWhoWaitsForWhomWhenSomebodyWantsToKnow) {
  std::string told;
  Watch watch;
  watch.wantsExplanation = [&] { return told.find("A is busy") == std::string::npos; };
  watch.onExplanation = [&](const std::string& text) { told = text; };
  const auto record = play(
      "objects: [{name: A, type: axis}, {name: B, type: axis}]\n"
      "program:\n"
      "  A: [Dwell: {time: 0.7}, SetSignal: {signalId: 1}]\n"
      "  B: [WaitForSignal: {signalId: 1}, MoveAbs: {to: 1}]\n",
      watch);
  EXPECT_TRUE(record.isFine()) << "the run goes on";
  EXPECT_THAT(told, StartsWith("cycle "));
  EXPECT_THAT(told, HasSubstr(":\n  A is busy in A#1 Dwell (line 3) since cycle "));
  EXPECT_THAT(told, HasSubstr("\n  B waits in B#1 WaitForSignal (line 4) since cycle "));
  EXPECT_THAT(told, HasSubstr("\n    A#2 SetSignal (line 3) would set it, but A is busy in A#1"));
  EXPECT_THAT(told, Not(HasSubstr("needs a write from outside")));
}

constexpr const char* NEVER_SET = "objects: [{name: A, type: axis}]\nprogram: {A: [WaitForSignal: {signalId: 7}]}\n";

TEST_F(PlayerTest, GivesUpAStuckRealTimeRunAfterAQuarterOfASecond) {
  const auto record = play(NEVER_SET, Watch());
  EXPECT_THAT(record.stuck, HasSubstr("nothing can happen any more"));
  EXPECT_GE(record.cycles, record.objects.at(0).commands.at(0).active + 250);
}

TEST_F(PlayerTest, GivesUpAStuckRealTimeRunAfterTheCyclesThatWereAskedFor) {
  const auto soon = play(NEVER_SET, Watch(), 20);
  EXPECT_THAT(soon.stuck, HasSubstr("nothing can happen any more"));
  EXPECT_GE(soon.cycles, soon.objects.at(0).commands.at(0).active + 20);
  const auto late = play(NEVER_SET, Watch(), 600);
  EXPECT_GE(late.cycles, late.objects.at(0).commands.at(0).active + 600);
}

TEST_F(PlayerTest, WaitsForTheEffectOfAWriteThatItMadeLate) {
  bool isLate = false;
  Watch watch;
  watch.wantsExplanation = [&isLate] {
    if (!std::exchange(isLate, true)) {
      std::this_thread::sleep_for(std::chrono::milliseconds(700));
    }
    return false;
  };
  const auto record = play(
      "cycle: 20 ms\n"
      "objects: [{name: A, type: axis}]\n"
      "program: {A: [WaitForSignal: {signalId: 7}]}\n"
      "outside: [{at: 0.4 s, signal: 7, value: true}]\n",
      watch);
  EXPECT_EQ(record.stuck, "");
  EXPECT_TRUE(record.isFine());
}

TEST_F(PlayerTest, ExplainsACircleWhenItIsStuck) {
  const auto record = play(
      "objects: [{name: A, type: axis}, {name: B, type: axis}, {name: C, type: axis}]\n"
      "program:\n"
      "  A: [Join: {group: [B]}, Join: {group: [C]}]\n"
      "  B: [Dwell: {time: 0.01}, Join: {group: [C]}, Join: {group: [A]}]\n"
      "  C: [Dwell: {time: 0.02}, Join: {group: [A]}, Join: {group: [B]}]\n");
  EXPECT_THAT(record.stuck, HasSubstr("since cycle 21 nothing can happen any more:\n  A waits in A#1 Join (line 3)"));
  EXPECT_THAT(record.stuck, HasSubstr("\n    missing: B, who has yet to come to B#3 Join (line 4), but B waits in B#2\n"));
  EXPECT_THAT(record.stuck, HasSubstr("\n  circle: A waits for B, B waits for C, C waits for A; closed in cycle 21 by C\n"
                                      "  certain deadlock of A, B, C: no write from outside can help"));
}

TEST_F(PlayerTest, AThousandMembersOfAJoinEndInTheSameCycle) {
  // More than a file can hold: each member names all of them.
  constexpr std::size_t COUNT = 1000;
  scenario::Scenario scenario;
  scenario::Value group;
  group.kind = scenario::Value::Kind::LIST;
  for (std::size_t i = 0; i < COUNT; ++i) {
    scenario.objects.push_back(
        {"M" + std::to_string(i), i % 2 == 0 ? core::ObjectType::AXIS : core::ObjectType::KINEMATICS, {}, {}});
    group.items.emplace_back();
    group.items.back().kind = scenario::Value::Kind::SCALAR;
    group.items.back().text = scenario.objects.back().name;
  }
  const auto read =
      scenario::readScenarioText("objects: [{name: M, type: axis}]\nprogram: {M: [Dwell: {time: 0.01}]}\n", "t");
  scenario::CommandCall join;
  join.name = "Join";
  join.parameters.kind = scenario::Value::Kind::MAP;
  join.parameters.fields.emplace_back("group", std::move(group));
  for (const scenario::ObjectDef& object : scenario.objects) {
    scenario.programs.push_back({object.name, {join}, {}});
  }
  auto& last = scenario.programs[COUNT / 2].commands;
  last.insert(last.begin(), read.scenario->programs.at(0).commands.at(0));
  const auto record = play(scenario);
  EXPECT_TRUE(record.isFine()) << record.stuck;
  for (const observe::ObjectRecord& object : record.objects) {
    ASSERT_EQ(object.commands.back().state, CmdState::DONE) << object.name;
    ASSERT_EQ(object.commands.back().ended, 12U) << object.name;
  }
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
  EXPECT_NEAR(record.objects.at(0).endPosition[0], 0.020, 1e-12);
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

// Options

constexpr const char* ON_THE_WAY =
    "buffer: 1\n"
    "objects: [{name: K, type: kinematics}]\n"
    "program:\n"
    "  K:\n"
    "    - MoveLin: {to: [10, 0, 0], options: [SetSignal: {permType: PermOn, signalId: 1}]}\n"
    "    - Dwell: {time: 0.01}\n"
    "    - MoveLin: {to: [20, 0, 0], options: [SwitchOnPath: {permType: Once, signalId: 2, targetPosition: [15, 0, 0], "
    "radius: "
    "1}]}\n"
    "    - MoveLin: {to: [30, 0, 0], options: [SwitchOnPath: {permType: Once, signalId: 3, targetPosition: [50, 0, 0], "
    "radius: "
    "1}]}\n";

TEST_F(PlayerTest, IssuesOptionsWithTheirCommandsAndReportsTheirConditions) {
  const auto record = play(ON_THE_WAY);
  EXPECT_TRUE(record.isFine());
  ASSERT_EQ(record.signals.size(), 2U);
  EXPECT_EQ(record.signals[0].number, 1U);
  EXPECT_EQ(record.signals[1].number, 3U);
  ASSERT_EQ(record.triggers.size(), 2U) << "a full buffer makes nobody try twice";
  ASSERT_TRUE(record.triggers[0].fired);
  EXPECT_EQ(record.triggers[0].fired->number, 3U);
  EXPECT_EQ(record.triggers[0].fired->cycle, record.signals[1].cycle);
  EXPECT_EQ(record.triggers[0].line, 7U);
  EXPECT_FALSE(record.triggers[1].fired);
  EXPECT_EQ(record.triggers[1].nearest->cycle, record.cycles);
}

TEST_F(PlayerTest, PlaysOptionsInRealTimeToo) {
  const auto real = play(ON_THE_WAY, Watch());
  const auto simulated = play(ON_THE_WAY);
  EXPECT_TRUE(real.isFine());
  ASSERT_EQ(real.triggers.size(), 2U);
  ASSERT_TRUE(real.triggers[0].fired);
  EXPECT_EQ(real.triggers[0].fired->number, 3U);
  EXPECT_EQ(real.triggers[0].fired->position, simulated.triggers[0].fired->position);
  EXPECT_FALSE(real.triggers[1].fired);
}

TEST_F(PlayerTest, KeepsTheDiagnosesOfEveryObject) {
  const auto read = scenario::readScenarioText(
      "objects: [{name: A, type: axis}, {name: B, type: axis}]\nprogram: {B: [Dwell: {time: 0.01}]}\n", "test.yaml");
  ASSERT_TRUE(read.scenario);
  Session session({KAVO_BUNDLE, {}, std::chrono::seconds(30), false});
  std::string problem;
  ASSERT_TRUE(session.open(problem)) << problem;
  for (const auto& object : read.scenario->objects) {
    session.runtime().addObject(object.name, object.type, object.start);
  }
  auto program = prepareProgram(*read.scenario, session.runtime(), [&] { return session.takeMessages(); });
  Player sut(session, *read.scenario, std::move(program.programs));
  ASSERT_TRUE(sut.connect(problem)) << problem;
  session.runtime().objMgr().find("B")->diaLog().report(0x090F2030, 0x0C5701B1, {"client", "file", 2}, {}, "odd");
  sut.playVirtual();
  ASSERT_EQ(sut.record().diagnoses.size(), 1U);
  EXPECT_EQ(sut.record().diagnoses[0].object, 1U);
  EXPECT_EQ(sut.record().diagnoses[0].mainCode, 0x090F2030U);
  EXPECT_EQ(sut.record().diagnoses[0].detailCode, 0x0C5701B1U);
  EXPECT_EQ(sut.record().diagnoses[0].line, 2U);
  EXPECT_EQ(sut.record().diagnoses[0].text, "odd");
}

/// Preparation on a thread of its own, beside the cycle; the thread sanitizer looks on.
TEST_F(PlayerTest, JoinsInRealTimeWhileMembersAreAborted) {
  std::string joins;
  for (int i = 0; i < 60; ++i) {
    joins += "Join: {group: [A, B, C], syncStartNextCmd: true}, Dwell: {time: 0.002}, ";
  }
  const auto record = play(
      "cycle: 1 ms\n"
      "objects: [{name: A, type: axis}, {name: B, type: kinematics}, {name: C, type: axis}, {name: D, type: axis}, {name: "
      "E, type: axis}]\n"
      "program:\n"
      "  A: [" +
          joins + "Dwell: {time: 0.001}]\n" + "  B: [" + joins + "Dwell: {time: 0.001}]\n" + "  C: [" + joins +
          "Dwell: {time: 0.001}]\n" +
          "  D: [Join: {group: [E]}, Dwell: {time: 0.001}]\n"
          "  E: [Dwell: {time: 0.1}, Join: {group: [D]}]\n"
          "outside: [{at: 0.05 s, abort: D}, {at: 0.15 s, abort: E}]\n",
      Watch{});
  EXPECT_TRUE(record.stuck.empty()) << record.stuck;
  const auto& a = record.objects.at(0).commands;
  for (std::size_t i = 0; i < a.size(); i += 2) {
    EXPECT_EQ(a[i].state, CmdState::DONE) << i;
    EXPECT_EQ(record.objects.at(1).commands.at(i).ended, a[i].ended);
    EXPECT_EQ(record.objects.at(2).commands.at(i).ended, a[i].ended);
  }
  EXPECT_EQ(record.objects.at(3).commands.at(0).state, CmdState::ABORTED);
  EXPECT_EQ(record.objects.at(4).commands.at(1).state, CmdState::ABORTED);
}

}  // namespace
}  // namespace motion::host::run
