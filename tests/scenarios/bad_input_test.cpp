// Scenarios that are wrong: each gets a message that names the place, the offending word and the remedy; nothing runs.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tool_run.h"

namespace motion::test {
namespace {

using testing::HasSubstr;

struct BadInput {
  std::string name;
  std::string scenario;
  std::string place;              ///< "line:column"
  std::vector<std::string> says;  ///< all of these
};

std::vector<BadInput> badInputs() {
  const std::string axis = "objects: [{name: Feeder, type: axis}]\n";
  return {
      {"UnknownObject", axis + "program: {Feder: [Dwell: {time: 1}]}\n", "2:11", {"'Feder'", "did you mean 'Feeder'?"}},
      {"UnknownObjectToAbort", axis + "outside: [{at: 1 s, abort: Robot}]\n", "2:28", {"'Robot'", "Feeder"}},
      {"UnknownCommand",
       axis + "program: {Feeder: [MoveAbd: {to: 1}]}\n",
       "2:20",
       {"'MoveAbd' is not a command of axis 'Feeder'", "did you mean 'MoveAbs'?", "WaitForSignal"}},
      {"CommandOfTheOtherType",
       "objects: [{name: R, type: kinematics}]\nprogram: {R: [MoveAbs: {to: 1}]}\n",
       "2:15",
       {"'MoveAbs' is not a command of kinematics 'R'", "Dwell"}},
      {"UnknownField",
       axis + "program: {Feeder: [MoveAbs: {to: 1, velocty: 5}]}\n",
       "2:37",
       {"'velocty'", "did you mean 'velocity'?"}},
      {"WrongKindOfField",
       axis + "program: {Feeder: [WaitForSignal: {signalId: 5, autoReset: perhaps}]}\n",
       "2:60",
       {"'perhaps'", "true", "false"}},
      {"NotANumber", axis + "program: {Feeder: [MoveAbs: {to: far}]}\n", "2:34", {"'far'"}},
      {"UnknownType", "objects: [{name: Feeder, type: spindle}]\n", "1:32", {"'spindle'", "axis", "kinematics"}},
      {"UnknownUnit", "cycle: 1 fortnight\n" + axis, "1:8", {"fortnight", "ms"}},
      {"MissingUnit", "cycle: 1\n" + axis, "1:8", {"'1'", "unit"}},
      {"SignalOutOfRangeInACommand",
       axis + "program: {Feeder: [SetSignal: {signalId: 100}]}\n",
       "2:20",
       {"'SetSignal' of 'Feeder' was refused", "Invalid signal ID", "100 is not a valid signal ID"}},
      {"SignalOutOfRangeInAWait",
       axis + "program: {Feeder: [WaitForSignal: {signalId: 100}]}\n",
       "2:20",
       {"'WaitForSignal' of 'Feeder' was refused", "m_cmdValues.signalId (=100) is not valid"}},
      {"NegativeSignal", axis + "program: {Feeder: [SetSignal: {signalId: -1}]}\n", "2:42", {"'-1'"}},
      {"SignalOutOfRangeOutside", axis + "outside: [{at: 1 s, signal: 100, value: true}]\n", "2:29", {"'100'", "99"}},
      {"SignalOutOfRangeInItsName", "signals: {100: x}\n" + axis, "1:11", {"'100'", "99"}},
      {"DuplicateObject", "objects: [{name: A, type: axis}, {name: A, type: axis}]\n", "1:41", {"'A'"}},
      {"NegativeVelocity",
       axis + "program: {Feeder: [MoveAbs: {to: 1, velocity: -1}]}\n",
       "2:20",
       {"'velocity' must be above 0"}},
      {"NegativeTime", axis + "program: {Feeder: [Dwell: {time: -1}]}\n", "2:20", {"'time' must be a number of seconds"}},
      {"OptionThatNobodyHas",
       axis + "program: {Feeder: [Dwell: {time: 1, options: [Sparkle: {}]}]}\n",
       "2:47",
       {"'Sparkle' is not an option of axis 'Feeder'; known here: SetSignal"}},
      {"ReferenceBeyondTheProgram",
       axis + "program: {Feeder: [Dwell: {time: 1}]}\nexpect: [{command: Feeder#2, state: done}]\n",
       "3:20",
       {"Feeder#2"}},
      {"NoYaml", "objects: [{name: A\n", "", {"2:1"}},
      {"Empty", "", "", {"the file holds nothing"}},
      {"Binary", std::string("obj\0ects: 1\n", 12), "", {"text"}},
      {"Huge", std::string(2U << 20U, '#'), "", {"too long; at most 1048576 bytes"}},
  };
}

class Bad : public testing::TestWithParam<BadInput> {};

TEST_P(Bad, IsRefusedWithPlaceAndRemedy) {
  const ScratchDir scratch;
  const std::string file = scratch.write("scenario.yaml", GetParam().scenario);
  for (const char* command : {"run", "check"}) {
    const ToolResult result = runTool({command, file, "--bundle", KAVO_BUNDLE});
    EXPECT_EQ(result.exitCode, 2) << show(result);
    EXPECT_EQ(result.out, "");
    EXPECT_THAT(result.err, HasSubstr(file + ":" + GetParam().place));
    for (const std::string& text : GetParam().says) {
      EXPECT_THAT(result.err, HasSubstr(text));
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Input, Bad, testing::ValuesIn(badInputs()), [](const auto& tested) { return tested.param.name; });

TEST(BadInput, AllProblemsAreReportedAtOnce) {
  const ScratchDir scratch;
  const std::string file = scratch.write("scenario.yaml",
                                         "objects: [{name: A, type: axis}]\n"
                                         "program:\n"
                                         "  A:\n"
                                         "    - Fly: {}\n"
                                         "    - SetSignal: {signalId: 200}\n"
                                         "    - Dwell: {tim: 1}\n");
  const ToolResult result = runTool({"run", file, "--json", "--bundle", KAVO_BUNDLE});
  ASSERT_EQ(result.exitCode, 2) << show(result);
  const auto json = nlohmann::json::parse(result.out);
  EXPECT_EQ(json.at("ok"), false);
  ASSERT_EQ(json.at("problems").size(), 3U) << json;
  EXPECT_EQ(json.at("problems").at(0).at("line"), 4);
  EXPECT_EQ(json.at("problems").at(1).at("line"), 5);
  EXPECT_EQ(json.at("problems").at(2).at("line"), 6);
}

TEST(BadInput, AMissingFileIsNamed) {
  const ToolResult result = runTool({"run", "/no/such/scenario.yaml", "--bundle", KAVO_BUNDLE});
  EXPECT_EQ(result.exitCode, 2);
  EXPECT_THAT(result.err, HasSubstr("/no/such/scenario.yaml"));
}

TEST(BadInput, ADirectoryIsNoScenario) {
  const ScratchDir scratch;
  const ToolResult result = runTool({"run", scratch.path(), "--bundle", KAVO_BUNDLE});
  EXPECT_EQ(result.exitCode, 2);
  EXPECT_THAT(result.err, HasSubstr("directory"));
}

}  // namespace
}  // namespace motion::test
