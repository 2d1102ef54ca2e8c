// Programs that move kinematics, as a user writes and sees them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>

#include "tool_run.h"

namespace motion::test {
namespace {

using testing::HasSubstr;
using testing::Not;

class Kinematics : public testing::Test {
 protected:
  ToolResult kavo(const std::string& command, const std::string& scenario, std::vector<std::string> more = {}) {
    std::vector<std::string> arguments{command, m_scratch.write("scenario.yaml", scenario), "--bundle", KAVO_BUNDLE};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return runTool(arguments);
  }

  ScratchDir m_scratch;
};

TEST_F(Kinematics, FollowLinesAndArcsOneAfterTheOther) {
  const ToolResult result = kavo("run",
                                 "objects: [{name: Robot, type: kinematics, at: [0, 0, 100]}]\n"
                                 "program:\n"
                                 "  Robot:\n"
                                 "    - MoveLin: {to: [100, 0, 100], velocity: 100, acceleration: 1000}\n"
                                 "    - Dwell: {time: 0.1}\n"
                                 "    - MoveCirc: {via: [150, 50, 100], to: [100, 100, 100], velocity: 200}\n"
                                 "    - SetSignal: {signalId: 3}\n"
                                 "    - MoveLin: {via: [0, 100, 100], to: [0, 0, 100], blending: 20, velocity: 200}\n"
                                 "expect:\n"
                                 "  - {at: 0.55 s, object: Robot, position: [50.1, 0, 100], within: 0.001}\n"
                                 "  - {at: 1.15 s, object: Robot, position: [100, 0, 100]}\n"
                                 "  - {at: end, object: Robot, position: [0, 0, 100]}\n"
                                 "  - {at: end, signal: 3, value: true}\n"
                                 "  - {command: Robot#5, state: done}\n");
  EXPECT_EQ(result.exitCode, 0) << show(result);
  EXPECT_THAT(result.out, HasSubstr("Robot (kinematics), from [0.000, 0.000, 100.000] mm to [0.000, 0.000, 100.000] mm"));
  EXPECT_THAT(result.out, HasSubstr("cycles 1 to 1100 (0.0000 s), took 1100.000 ms"));
}

TEST_F(Kinematics, EndUpInTheReports) {
  const std::string scenario =
      "objects: [{name: Robot, type: kinematics, at: [1, 2, 3]}]\n"
      "program: {Robot: [MoveLin: {to: [4, 6, 3]}]}\n"
      "expect: [{at: end, object: Robot, position: [4, 6, 4], within: 0.5}]\n";
  const ToolResult text = kavo("run", scenario);
  EXPECT_EQ(text.exitCode, 1) << show(text);
  EXPECT_THAT(text.out, HasSubstr("from [1.000, 2.000, 3.000] mm to [4.000, 6.000, 3.000] mm"));
  EXPECT_THAT(text.out, HasSubstr("-- line 3: Robot was at [4, 6, 3] mm"));
  const ToolResult json = kavo("run", scenario, {"--json"});
  const auto object = nlohmann::json::parse(json.out).at("objects").at(0);
  EXPECT_EQ(object.at("start"), (nlohmann::json{1.0, 2.0, 3.0}));
  EXPECT_EQ(object.at("end"), (nlohmann::json{4.0, 6.0, 3.0}));
  EXPECT_EQ(object.at("commands").at(0).at("moves"), 1);
}

TEST_F(Kinematics, SpeakTheUnitsOfTheirObject) {
  const ToolResult result = kavo("run",
                                 "objects:\n"
                                 "  - {name: Inch, type: kinematics, units: {length: in}}\n"
                                 "  - {name: Metre, type: axis, units: {length: m, time: ms}, at: 500}\n"
                                 "program:\n"
                                 "  Inch: [MoveLin: {to: [10, 0, 0], velocity: 10, acceleration: 1000}]\n"
                                 "  Metre:\n"
                                 "    - MoveAbs: {to: 1, velocity: 0.5, acceleration: 100}\n"
                                 "    - Dwell: {time: 20}\n"
                                 "    - SetSignal: {signalId: 1}\n"
                                 "expect:\n"
                                 "  - {at: 0.505 s, object: Inch, position: [127.127, 0, 0], within: 0.2}\n"
                                 "  - {at: end, object: Inch, position: [254, 0, 0]}\n"
                                 "  - {at: end, object: Metre, position: 1000}\n");
  EXPECT_EQ(result.exitCode, 0) << show(result);
  EXPECT_THAT(result.out, HasSubstr("cycles 1 to 1010 (0.0000 s)"));
  EXPECT_THAT(result.out, HasSubstr("cycles 1 to 1005 (0.0000 s)"));
  EXPECT_THAT(result.out, HasSubstr("took 20.000 ms"));
}

TEST_F(Kinematics, AreRefusedPathsThatCannotBeBeforeAnythingRuns) {
  const ToolResult result = kavo("check",
                                 "objects: [{name: R, type: kinematics}]\n"
                                 "program:\n"
                                 "  R:\n"
                                 "    - MoveLin: {to: [100, 0, 0]}\n"
                                 "    - MoveLin: {to: [100, 0]}\n"
                                 "    - MoveCirc: {via: [200, 0, 0], to: [300, 0, 0]}\n"
                                 "    - MoveCirc: {via: [0, 50, 0], to: [0, 0, 0]}\n"
                                 "    - MoveLin: {via: [0, 10, 0], to: [50, 10, 0], blending: 15}\n");
  EXPECT_EQ(result.exitCode, 2) << show(result);
  const std::string all = result.out + result.err;
  EXPECT_THAT(all, HasSubstr("'to' must have 3 numbers, but has 2"));
  EXPECT_THAT(all, HasSubstr("'via' and 'to' must not lie on one line with the start of the arc"));
  EXPECT_THAT(all, HasSubstr("between the start and point 1 of 'via' there are 10 mm, but the corners take 15 mm"));
  EXPECT_THAT(all, Not(HasSubstr("yaml:4:"))) << "the first line is fine";
  EXPECT_THAT(all, Not(HasSubstr("yaml:7:"))) << "so is the arc, from where the first line ends";
}

TEST_F(Kinematics, StandStillWhenTheyAreAborted) {
  const ToolResult result = kavo("run",
                                 "objects: [{name: R, type: kinematics}, {name: A, type: axis}]\n"
                                 "program:\n"
                                 "  R: [MoveLin: {to: [100, 0, 0]}, MoveLin: {to: [100, 100, 0]}]\n"
                                 "  A: [Dwell: {time: 2}]\n"
                                 "outside: [{at: 0.55 s, abort: R}]\n"
                                 "expect:\n"
                                 "  - {at: 0.549 s, object: R, position: [50, 0, 0], within: 0.001}\n"
                                 "  - {at: end, object: R, position: [50, 0, 0], within: 0.001}\n"
                                 "  - {command: R#1, state: aborted}\n");
  EXPECT_EQ(result.exitCode, 0) << show(result);
}

TEST_F(Kinematics, MoveInRealTimeToo) {
  const ToolResult result = kavo("run",
                                 "objects: [{name: R, type: kinematics}]\n"
                                 "program:\n"
                                 "  R:\n"
                                 "    - MoveLin: {to: [10, 0, 0]}\n"
                                 "    - MoveCirc: {via: [15, 5, 0], to: [10, 10, 0]}\n"
                                 "    - MoveLin: {to: [0, 0, 0]}\n"
                                 "expect: [{at: end, object: R, position: [0, 0, 0], within: 0}]\n",
                                 {"--real-time"});
  EXPECT_EQ(result.exitCode, 0) << show(result);
}

}  // namespace
}  // namespace motion::test
