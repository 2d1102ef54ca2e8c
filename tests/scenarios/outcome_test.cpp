// How runs end that are not fine, and what the tool says then; buffers, aborts and limits seen from outside.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>

#include "tool_run.h"

namespace motion::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

class Outcome : public testing::Test {
 protected:
  ToolResult run(const std::string& scenario, std::vector<std::string> more = {}) {
    std::vector<std::string> arguments{"run", m_scratch.write("scenario.yaml", scenario), "--bundle", KAVO_BUNDLE};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return runTool(arguments);
  }

  ScratchDir m_scratch;
};

TEST_F(Outcome, AFailedExpectationSaysWhyAndExitsWith1) {
  const ToolResult result =
      run("objects: [{name: A, type: axis}]\n"
          "program:\n"
          "  A:\n"
          "    - MoveAbs: {to: 10}\n"
          "    - SetSignal: {signalId: 3}\n"
          "expect:\n"
          "  - {at: end, signal: 3, value: false}\n"
          "  - {at: end, object: A, position: 11}\n"
          "  - {order: [A#2, A#1]}\n"
          "  - {same cycle: [A#1, A#2]}\n"
          "  - {command: A#1, state: aborted}\n"
          "  - {at: end, object: A, position: 10}\n");
  EXPECT_EQ(result.exitCode, 1) << show(result);
  EXPECT_THAT(result.out, HasSubstr("\u2717 at: end, signal: 3, value: false  -- line 7: signal 3 was set"));
  EXPECT_THAT(result.out, HasSubstr("-- line 8: A was at 10 mm"));
  EXPECT_THAT(result.out, HasSubstr("-- line 9: A#2 started in cycle 201, A#1 started in cycle 1"));
  EXPECT_THAT(result.out, HasSubstr("-- line 10: A#1 started in cycle 1, A#2 started in cycle 201"));
  EXPECT_THAT(result.out, HasSubstr("-- line 11: A#1 is done"));
  EXPECT_THAT(result.out, HasSubstr("\u2713 at: end, object: A, position: 10"));
  EXPECT_THAT(result.out, HasSubstr("NOT OK"));
}

TEST_F(Outcome, AnObjectThatWaitsForeverIsNamedAndExitsWith1) {
  const ToolResult result =
      run("signals: {9: never set}\n"
          "objects: [{name: A, type: axis}, {name: B, type: kinematics}]\n"
          "program:\n"
          "  A:\n"
          "    - Dwell: {time: 0.01}\n"
          "    - WaitForSignal: {signalId: 9}\n"
          "    - MoveAbs: {to: 10}\n"
          "  B:\n"
          "    - SetSignal: {signalId: 1}\n"
          "    - WaitForSignalReset: {signalId: 1}\n");
  EXPECT_EQ(result.exitCode, 1) << show(result);
  EXPECT_THAT(result.out, HasSubstr("STUCK: since cycle 11 nothing can happen any more"));
  EXPECT_THAT(result.out, HasSubstr("A waits in A#2 WaitForSignal (line 6) since cycle 11 for signal 9 'never set'"));
  EXPECT_THAT(result.out, HasSubstr("B waits in B#2 WaitForSignalReset (line 10) since cycle 2 for signal 1"));
  EXPECT_THAT(result.out, HasSubstr("never started"));
  EXPECT_THAT(result.out, HasSubstr("NOT OK"));
}

TEST_F(Outcome, TheLimitEndsALongRun) {
  const ToolResult result =
      run("limit: 100 ms\n"
          "objects: [{name: A, type: axis}]\n"
          "program: {A: [Dwell: {time: 3600}]}\n");
  EXPECT_EQ(result.exitCode, 1) << show(result);
  EXPECT_THAT(result.out, HasSubstr("the limit of 0.1 s was reached"));
  EXPECT_THAT(result.out, HasSubstr("A is busy in A#1 Dwell (line 3) since cycle 1"));
}

TEST_F(Outcome, AStuckRealTimeRunIsGivenUpToo) {
  const ToolResult result =
      run("objects: [{name: A, type: axis}]\n"
          "program: {A: [WaitForSignal: {signalId: 9}]}\n",
          {"--real-time"});
  EXPECT_EQ(result.exitCode, 1) << show(result);
  EXPECT_THAT(result.out, HasSubstr("nothing can happen any more"));
}

TEST_F(Outcome, AFullBufferLosesNothing) {
  const ToolResult result =
      run("buffer: 2\n"
          "objects: [{name: A, type: axis}]\n"
          "program:\n"
          "  A:\n"
          "    - MoveRel: {by: 1}\n"
          "    - MoveRel: {by: 2}\n"
          "    - MoveRel: {by: 3}\n"
          "    - MoveRel: {by: 4}\n"
          "    - MoveRel: {by: 5}\n"
          "    - MoveRel: {by: 6}\n"
          "expect:\n"
          "  - {at: end, object: A, position: 21}\n"
          "  - {order: [A#1, A#2, A#3, A#4, A#5, A#6]}\n");
  EXPECT_EQ(result.exitCode, 0) << show(result);
}

TEST_F(Outcome, AnAbortEndsTheObjectsProgramAndNothingElse) {
  const ToolResult result =
      run("buffer: 2\n"
          "objects: [{name: A, type: axis}, {name: B, type: axis}]\n"
          "program:\n"
          "  A:\n"
          "    - WaitForSignal: {signalId: 4}\n"
          "    - MoveAbs: {to: 5}\n"
          "    - MoveAbs: {to: 6}\n"
          "    - MoveAbs: {to: 7}\n"
          "    - MoveAbs: {to: 8}\n"
          "  B:\n"
          "    - MoveAbs: {to: 100, velocity: 100}\n"
          "outside:\n"
          "  - {at: 0.1 s, abort: A}\n"
          "expect:\n"
          "  - {command: A#1, state: aborted}\n"
          "  - {command: A#2, state: aborted}\n"
          "  - {command: A#3, state: aborted}\n"
          "  - {command: B#1, state: done}\n"
          "  - {at: end, object: A, position: 0}\n"
          "  - {at: end, object: B, position: 100}\n");
  EXPECT_EQ(result.exitCode, 0) << show(result);
  EXPECT_THAT(result.out, HasSubstr("never started"));
}

TEST_F(Outcome, AnAbortedMoveStandsStill) {
  const ToolResult result =
      run("objects: [{name: A, type: axis}]\n"
          "program: {A: [MoveAbs: {to: 100, velocity: 100, acceleration: 100000}]}\n"
          "outside: [{at: 0.5 s, abort: A}]\n"
          "expect:\n"
          "  - {command: A#1, state: aborted}\n"
          "  - {at: 0.8 s, object: A, position: 50, within: 1}\n");
  EXPECT_EQ(result.exitCode, 0) << show(result);
}

TEST_F(Outcome, TheCycleTimeChangesTimesButNotTheHandOver) {
  const std::string program =
      "objects: [{name: A, type: axis}, {name: B, type: axis}]\n"
      "program:\n"
      "  A: [Dwell: {time: 0.02}, SetSignal: {signalId: 1}]\n"
      "  B: [WaitForSignal: {signalId: 1}, MoveAbs: {to: 1}]\n";
  for (const char* cycle : {"1 ms", "250 us", "4 ms"}) {
    const ToolResult result = run(std::string("cycle: ") + cycle + "\n" + program, {"--json"});
    ASSERT_EQ(result.exitCode, 0) << show(result);
    const auto objects = nlohmann::json::parse(result.out).at("objects");
    const auto set = objects.at(0).at("commands").at(1).at("ended").get<int>();
    EXPECT_EQ(objects.at(1).at("commands").at(0).at("ended"), set) << cycle;
    EXPECT_EQ(objects.at(1).at("commands").at(1).at("moves"), set + 1) << cycle;
  }
}

TEST_F(Outcome, ADoubleSetIsReportedAsMessage) {
  const ToolResult result =
      run("objects: [{name: A, type: axis}]\n"
          "program: {A: [Dwell: {time: 0.01}, SetSignal: {signalId: 2}]}\n"
          "outside: [{at: 5 ms, signal: 2, value: true}]\n"
          "expect: [{at: end, signal: 2, value: true}]\n");
  EXPECT_EQ(result.exitCode, 0) << show(result);
  EXPECT_THAT(result.out,
              HasSubstr("Signal(2) might be set by both the system function SetSignal as well as the command SetSignal"));
}

TEST_F(Outcome, AScenarioWithoutProgramsEndsAtOnce) {
  const ToolResult result = run("objects: [{name: A, type: axis}]\n");
  EXPECT_EQ(result.exitCode, 0) << show(result);
  EXPECT_THAT(result.out, HasSubstr("nothing to do"));
}

TEST(Tool, TellsItsVersion) {
  const ToolResult result = runTool({"--version"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.out, "kavo " KAVO_VERSION "\n");
}

TEST(Tool, HelpIsEnoughToUseIt) {
  const ToolResult result = runTool({"--help"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_THAT(result.out, AllOf(HasSubstr("run"), HasSubstr("check"), HasSubstr("Exit codes: 0 fine")));
  const ToolResult run = runTool({"run", "--help"});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_THAT(run.out, AllOf(HasSubstr("FILE"), HasSubstr("--bundle"), HasSubstr("--real-time"), HasSubstr("--json"),
                             HasSubstr("--events"), HasSubstr("--start-limit")));
}

TEST(Tool, WrongArgumentsExitWith2) {
  EXPECT_EQ(runTool({}).exitCode, 2);
  EXPECT_EQ(runTool({"fly"}).exitCode, 2);
  EXPECT_EQ(runTool({"run"}).exitCode, 2);
  EXPECT_EQ(runTool({"run", "x.yaml", "--fast"}).exitCode, 2);
  EXPECT_EQ(runTool({"run", "x.yaml", "--start-limit", "0"}).exitCode, 2);
}

TEST(Tool, OptionsOfRealTimeAreRefusedInVirtualTime) {
  const std::string example = KAVO_SOURCE_DIR "/examples/01_hand_over.yaml";
  for (const std::vector<std::string>& words : {std::vector<std::string>{"--stuck-after", "5"}, {"--no-door"}}) {
    std::vector<std::string> arguments{"run", example, "--bundle", KAVO_BUNDLE};
    arguments.insert(arguments.end(), words.begin(), words.end());
    const ToolResult result = runTool(arguments);
    EXPECT_EQ(result.exitCode, 2) << show(result);
    EXPECT_THAT(result.err, HasSubstr("--real-time"));
  }
}

TEST(Tool, EventsAndJsonExcludeEachOther) {
  const ToolResult result =
      runTool({"run", KAVO_SOURCE_DIR "/examples/01_hand_over.yaml", "--events", "--json", "--bundle", KAVO_BUNDLE});
  EXPECT_EQ(result.exitCode, 2) << show(result);
}

}  // namespace
}  // namespace motion::test
