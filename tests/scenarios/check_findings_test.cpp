// What `kavo check` finds before any cycle: file, line, remedy and exit code of each finding, and silence about good
// programs.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tool_run.h"

namespace motion::test {
namespace {

using testing::EndsWith;
using testing::HasSubstr;

struct Finding {
  std::string name;
  std::string programs;
  std::vector<std::string> lines;  ///< "line:column: message; remedy" of each
};

constexpr const char* OBJECTS = "objects: [{name: A, type: axis}, {name: B, type: axis}, {name: C, type: kinematics}]\n";
constexpr const char* COUNT_REMEDY = "; give each member as many joins with this very group";
constexpr const char* ORDER_REMEDY = "; bring the joins and signals of all programs into one order";

std::vector<Finding> findings() {
  return {
      {"DifferentCounts",
       "program:\n"
       "  A:\n"
       "    - Join: {group: [B]}\n"
       "    - Join: {group: [B]}\n"
       "  B:\n"
       "    - Join: {group: [A]}\n",
       {std::string("5:7: A#2 Join waits for ever: the members of [A, B] do not join equally often (A has 2, B has 1)") +
        COUNT_REMEDY}},
      {"DifferentGroups",
       "program:\n"
       "  A:\n"
       "    - Join: {group: [B]}\n"
       "  B:\n"
       "    - Dwell: {time: 1}\n"
       "    - Join: {group: [A, C]}\n",
       {std::string("4:7: A#1 Join waits for ever: the members of [A, B] do not join equally often (A has 1, B has 0)") +
            COUNT_REMEDY,
        std::string(
            "7:7: B#2 Join waits for ever: the members of [A, B, C] do not join equally often (A has 0, B has 1, C has "
            "0)") +
            COUNT_REMEDY}},
      {"NobodySets",
       "signals: {7: part in place}\n"
       "program:\n"
       "  A:\n"
       "    - WaitForSignal: {signalId: 7}\n",
       {"5:7: A#1 WaitForSignal waits for ever: nobody sets signal 7 'part in place'; set it in the program of another "
        "object, or "
        "under 'outside'"}},
      {"NobodyResets",
       "program:\n"
       "  A:\n"
       "    - SetSignal: {signalId: 7}\n"
       "    - WaitForSignalReset: {signalId: 7}\n"
       "  B:\n"
       "    - WaitForSignal: {signalId: 7}\n",
       {"5:7: A#2 WaitForSignalReset waits for ever: nobody resets signal 7, which A#1 SetSignal sets; reset it in the "
        "program of "
        "another object (ResetSignal, or a wait with autoReset), or under 'outside'"}},
      {"ShortSignal",
       "program:\n"
       "  A:\n"
       "    - SetSignal: {signalId: 7}\n"
       "    - ResetSignal: {signalId: 7}\n"
       "  B:\n"
       "    - WaitForSignal: {signalId: 7}\n",
       {"4:7: A#1 SetSignal and A#2 ResetSignal keep signal 7 set for one cycle only; B#1 WaitForSignal misses it unless it "
        "waits "
        "already; let the waiting command reset the signal (autoReset), or wait for an answer before resetting it"}},
      {"NamedTwice",
       "program:\n"
       "  A:\n"
       "    - Join: {group: [B, B]}\n"
       "  B:\n"
       "    - Join: {group: [A]}\n",
       {"4:7: A#1 Join waits for ever: 'group' names an object twice; such a join never completes; name each object once"}},
      {"NoNextCommand",
       "program:\n"
       "  A:\n"
       "    - Join: {group: [B], syncStartNextCmd: true}\n"
       "  B:\n"
       "    - Join: {group: [A]}\n",
       {"4:7: A#1 Join waits for ever: syncStartNextCmd asks for a command behind it, and there is none; put a command "
        "behind it, "
        "or leave out syncStartNextCmd"}},
      {"JoinsInACircle",
       "program:\n"
       "  A:\n"
       "    - Join: {group: [B]}\n"
       "    - Join: {group: [C]}\n"
       "  B:\n"
       "    - Join: {group: [C]}\n"
       "    - Join: {group: [A]}\n"
       "  C:\n"
       "    - Join: {group: [A]}\n"
       "    - Join: {group: [B]}\n",
       {std::string("4:7: A#1 Join waits for ever: B stays in B#1 Join") + ORDER_REMEDY,
        std::string("7:7: B#1 Join waits for ever: C stays in C#1 Join") + ORDER_REMEDY,
        std::string("10:7: C#1 Join waits for ever: A stays in A#1 Join") + ORDER_REMEDY}},
      {"SignalsInACircle",
       "program:\n"
       "  A:\n"
       "    - WaitForSignal: {signalId: 1}\n"
       "    - SetSignal: {signalId: 2}\n"
       "  B:\n"
       "    - WaitForSignal: {signalId: 2}\n"
       "    - SetSignal: {signalId: 1}\n",
       {std::string("4:7: A#1 WaitForSignal waits for ever: nobody comes to set signal 1; B#2 SetSignal stands behind B#1 "
                    "WaitForSignal, which waits in turn") +
            ORDER_REMEDY,
        std::string("7:7: B#1 WaitForSignal waits for ever: nobody comes to set signal 2; A#2 SetSignal stands behind A#1 "
                    "WaitForSignal, which waits in turn") +
            ORDER_REMEDY}},
  };
}

class Finds : public testing::TestWithParam<Finding> {
 protected:
  ToolResult runOn(const std::string& subcommand, const std::vector<std::string>& more = {}) {
    m_file = m_scratch.write("scenario.yaml", OBJECTS + GetParam().programs);
    std::vector<std::string> arguments{subcommand, m_file, "--bundle", KAVO_BUNDLE};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return runTool(arguments);
  }

  ScratchDir m_scratch;
  std::string m_file;
};

TEST_P(Finds, ItsPlaceReasonAndRemedy) {
  const ToolResult result = runOn("check");
  EXPECT_EQ(result.exitCode, 1) << show(result);
  std::string expected;
  for (const std::string& line : GetParam().lines) {
    expected += "warning: " + m_file + ":" + line + "\n";
  }
  EXPECT_EQ(result.err, expected);
  EXPECT_EQ(result.out, "");
}

TEST_P(Finds, TheSameForPrograms) {
  const ToolResult result = runOn("check", {"--json"});
  EXPECT_EQ(result.exitCode, 1) << show(result);
  const auto json = nlohmann::json::parse(result.out);
  EXPECT_EQ(json.at("ok"), false);
  ASSERT_EQ(json.at("problems").size(), GetParam().lines.size());
  for (std::size_t i = 0; i < GetParam().lines.size(); ++i) {
    const auto& problem = json.at("problems").at(i);
    EXPECT_EQ(problem.at("file"), m_file);
    EXPECT_EQ(problem.at("warning"), true);
    EXPECT_EQ(std::to_string(problem.at("line").get<int>()) + ":" + std::to_string(problem.at("column").get<int>()) + ": " +
                  problem.at("message").get<std::string>() + "; " + problem.at("remedy").get<std::string>(),
              GetParam().lines[i]);
  }
}

TEST_P(Finds, WhatARunWarnsOfAndGetsStuckWith) {
  const ToolResult result = runOn("run");
  for (const std::string& line : GetParam().lines) {
    EXPECT_THAT(result.err, HasSubstr("warning: " + m_file + ":" + line + "\n"));
  }
  // A short signal is found here, for its waiter waits already; everybody else waits for ever as was foretold.
  EXPECT_EQ(result.exitCode, GetParam().name == "ShortSignal" ? 0 : 1) << show(result);
}

INSTANTIATE_TEST_SUITE_P(All, Finds, testing::ValuesIn(findings()), [](const auto& tested) { return tested.param.name; });

class FindsNothing : public testing::Test {
 protected:
  void expectFine(const std::string& rest) {
    const ScratchDir scratch;
    const ToolResult result = runTool({"check", scratch.write("scenario.yaml", OBJECTS + rest), "--bundle", KAVO_BUNDLE});
    EXPECT_EQ(result.exitCode, 0) << show(result);
    EXPECT_THAT(result.out, EndsWith("nothing wrong found\n"));
    EXPECT_EQ(result.err, "");
  }
};

TEST_F(FindsNothing, InProgramsThatComeThrough) {
  expectFine(
      "program:\n"
      "  A: [Join: {group: [B, C], syncStartNextCmd: true}, SetSignal: {signalId: 1}, WaitForSignalReset: {signalId: 1}]\n"
      "  B: [Join: {group: [A, C]}, WaitForSignal: {signalId: 1, autoReset: true}, Join: {group: [C]}]\n"
      "  C: [Dwell: {time: 1}, Join: {group: [B, A]}, Join: {group: [B]}]\n");
}

TEST_F(FindsNothing, InAWaitForSomebodyOutside) {
  expectFine("program: {A: [WaitForSignal: {signalId: 7}]}\noutside: [{at: 1 s, signal: 7, value: true}]\n");
}

TEST_F(FindsNothing, InAnObjectThatIsAbortedFromOutside) {
  expectFine("program: {A: [WaitForSignal: {signalId: 7}]}\noutside: [{at: 1 s, abort: A}]\n");
}

TEST_F(FindsNothing, InAnObjectWithoutAProgram) {
  expectFine("program: {A: []}\n");
}

}  // namespace
}  // namespace motion::test
