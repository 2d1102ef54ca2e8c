// Signals that are switched on the way, as a user writes and sees them: when they fire, and what explains that they do not.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "options_run.h"

namespace motion::test {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

/// With this acceleration a move along x at 100 mm/s is at x = k / 10 - 0.05 mm in its k-th cycle: it takes one cycle to be
/// at full speed.
constexpr const char* AT_100 = "velocity: 100, acceleration: 100000";
/// Likewise at 1 m/s and x = k - 0.5 mm.
constexpr const char* AT_1000 = "velocity: 1000, acceleration: 1000000";

class OptionsOnPath : public OptionsRun {
 protected:
  static std::string robot(const std::vector<std::string>& commands, const std::string& units = "") {
    std::string text = "objects: [{name: R, type: kinematics" + units + "}, {name: A, type: axis}]\nprogram:\n  R:\n";
    for (const std::string& command : commands) {
      text += "    - " + command + "\n";
    }
    return text;
  }
  static std::string moveTo(const std::string& point, const std::string& how, const std::vector<std::string>& options) {
    std::string text = "MoveLin: {to: " + point + ", " + how;
    for (const std::string& option : options) {
      text += (&option == &options.front() ? ", options: [" : ", ") +
              ("SwitchOnPath: {permType: Once, " + option + "}" + (&option == &options.back() ? "]" : ""));
    }
    return text + "}";
  }
};

// When conditions fire

TEST_F(OptionsOnPath, FireExactlyOnTheSurfaceOfTheSphere) {
  // In metres, so that nothing is rounded on the way in: from the end of the move the target is 5 m away.
  const std::string units = ", units: {length: m}";
  const std::string how = "velocity: 1, acceleration: 1000";
  EXPECT_THAT(outcomesOf(play(
                  robot({moveTo("[0.01, 0, 0]", how, {"signalId: 1, targetPosition: [0.01, 3, 4], radius: 5"})}, units))),
              ElementsAre("1: fired in 11 with R#1"));
  EXPECT_THAT(
      outcomesOf(play(robot(
          {moveTo("[0.01, 0, 0]", how, {"signalId: 1, targetPosition: [0.01, 3, 4], radius: 4.999999999999999"})}, units))),
      ElementsAre("1: never reached"));
}

TEST_F(OptionsOnPath, WithoutARadiusFireAtAnExactSetPointOnly) {
  EXPECT_THAT(outcomesOf(play(robot(
                  {moveTo("[10, 0, 0]", AT_1000,
                          {"signalId: 1, targetPosition: [10, 0, 0]", "signalId: 2, targetPosition: [9.999999, 0, 0]"})}))),
              ElementsAre("1: fired in 11 with R#1", "2: never reached"));
}

TEST_F(OptionsOnPath, FireAheadByAsManyCyclesAsThePreTriggerTimeHas) {
  const Json run = play(robot({moveTo("[20, 0, 0]", AT_100,
                                      {"signalId: 1, targetPosition: [10, 0, 0], radius: 0.06",
                                       "signalId: 2, targetPosition: [10, 0, 0], radius: 0.06, preTriggerTime: 0.005",
                                       "signalId: 3, targetPosition: [10, 0, 0], radius: 0.06, preTriggerTime: 0.0505"})}));
  // x = 9.95 in cycle 100 is the first within 10 - 0.06; half a step further ahead comes one cycle earlier still.
  EXPECT_THAT(outcomesOf(run),
              ElementsAre("1: fired in 100 with R#1", "2: fired in 95 with R#1", "3: fired in 50 with R#1"));
  const Json& ahead = run.at("triggers").at(1);
  EXPECT_EQ(ahead.at("entered").at("cycle"), 100);
  EXPECT_NEAR(ahead.at("fired").at("position").at(0).get<double>(), 9.45, 1e-9);
  EXPECT_NEAR(ahead.at("fired").at("toolDistance").get<double>(), 0.55, 1e-9);
  EXPECT_NEAR(ahead.at("fired").at("distance").get<double>(), 0.05, 1e-9);
}

TEST_F(OptionsOnPath, LookAheadIsToldInTimeAndDistance) {
  const ToolResult result =
      kavo("run", robot({moveTo("[20, 0, 0]", AT_100,
                                {"signalId: 1, targetPosition: [10, 0, 0], radius: 0.06, preTriggerTime: 0.005"})}));
  EXPECT_THAT(result.out,
              HasSubstr("\nTriggers\n"
                        "  R (line 4): set signal 1 within 0.060 mm of [10.000, 0.000, 0.000] mm, 5.000 ms ahead\n"
                        "    armed with R#1 in cycle 1\n"
                        "    fired in cycle 95 (0.0940 s) with R#1 at [9.450, 0.000, 0.000] mm, 0.550 mm from the target\n"
                        "    ahead: 5.000 ms and 0.500 mm before the tool itself was in the sphere, in cycle 100\n"));
}

TEST_F(OptionsOnPath, DoNotLookAheadInTheFirstCycleOfACommand) {
  // Cycle 201 ends the first move; in cycle 202 the second is at x = 20.05, and would see x = 20.55 ahead.
  const std::string first = moveTo("[20, 0, 0]", AT_100, {});
  EXPECT_THAT(
      outcomesOf(play(robot({first, moveTo("[40, 0, 0]", AT_100,
                                           {"signalId: 1, targetPosition: [20.05, 0, 0], radius: 0.01, preTriggerTime: "
                                            "0.005"})}))),
      ElementsAre("1: fired in 202 with R#2"));
  const Json run =
      play(robot({first, moveTo("[40, 0, 0]", AT_100,
                                {"signalId: 1, targetPosition: [20.3, 0, 0], radius: 0.06, preTriggerTime: 0.005"})}));
  const Json& leap = run.at("triggers").at(0);
  EXPECT_EQ(leap.at("outcome"), "never reached") << "the look ahead begins beyond the sphere";
  EXPECT_EQ(leap.at("nearestBetweenCycles").at("cycle"), 203);
  EXPECT_EQ(leap.at("nearestBetweenCycles").at("leapsAhead"), true);
  EXPECT_NEAR(leap.at("nearestBetweenCycles").at("speed").get<double>(), 100.0, 1e-6);
}

TEST_F(OptionsOnPath, LookAheadFromWhereTheyStandStill) {
  const std::string stay = moveTo("[0, 0, 0]", AT_100,
                                  {"signalId: 1, targetPosition: [0.5, 0, 0], radius: 0.5, preTriggerTime: 1",
                                   "signalId: 2, targetPosition: [0.5, 0, 0], radius: 0.4, preTriggerTime: 1"});
  EXPECT_THAT(outcomesOf(play(robot({stay}))), ElementsAre("1: fired in 1 with R#1", "2: never reached"));
}

TEST_F(OptionsOnPath, WithOppositeActionsOnOneSignalActInTheOrderOfTheList) {
  // The newest condition stands first in the list.
  const std::string set = "signalId: 1, targetPosition: [10, 0, 0], radius: 0.06";
  const std::string reset = set + ", action: RESET_SIGNAL";
  const Json on =
      play(robot({moveTo("[20, 0, 0]", AT_100, {set, reset})}) + "expect: [{at: end, signal: 1, value: true}]\n");
  EXPECT_THAT(outcomesOf(on), ElementsAre("1: fired in 100 with R#1", "1: fired in 100 with R#1"));
  EXPECT_THAT(signalsOf(on), ElementsAre("100: 1 set by R#1")) << "reset first, then set";
  const Json off =
      play(robot({moveTo("[20, 0, 0]", AT_100, {reset, set})}) + "expect: [{at: end, signal: 1, value: false}]\n");
  EXPECT_THAT(outcomesOf(off), ElementsAre("1: fired in 100 with R#1", "1: fired in 100 with R#1"));
  EXPECT_THAT(signalsOf(off), IsEmpty()) << "set first, then reset";
}

TEST_F(OptionsOnPath, ResetSignalsToo) {
  const Json run = play(robot(
      {"SetSignal: {signalId: 1}",
       moveTo("[20, 0, 0]", AT_100, {"signalId: 1, targetPosition: [10, 0, 0], radius: 0.06, action: RESET_SIGNAL"})}));
  EXPECT_THAT(signalsOf(run), ElementsAre("1: 1 set by R#1", "101: 1 reset by R#2"));
  EXPECT_EQ(run.at("triggers").at(0).at("action"), "reset");
}

TEST_F(OptionsOnPath, DoNotFireAgainWhenTheToolComesBack) {
  const std::string there =
      "MoveLin: {to: [20, 0, 0], velocity: 100, acceleration: 100000, options: [SwitchOnPath: {permType: PermOn, "
      "signalId: 1, targetPosition: [10, 0, 0], radius: 0.06}]}";
  const std::string back = std::string("MoveLin: {to: [0, 0, 0], ") + AT_100 + "}";
  EXPECT_THAT(signals(robot({there, back}) + "  A: [WaitForSignal: {signalId: 1, autoReset: true}]\n"),
              ElementsAre("100: 1 set by R#1", "100: 1 reset by A#1"));
}

TEST_F(OptionsOnPath, SpeakTheUnitsOfTheirObject) {
  const std::string scenario = robot({"MoveLin: {to: [1, 0, 0], velocity: 1, options: [SwitchOnPath: {permType: Once, "
                                      "signalId: 1, targetPosition: [0.5, 0, 0], "
                                      "radius: 0.01, preTriggerTime: 20}]}"},
                                     ", units: {length: in, time: ms}");
  const Json trigger = play(scenario).at("triggers").at(0);
  EXPECT_NEAR(trigger.at("target").at(0).get<double>(), 12.7, 1e-9);
  EXPECT_NEAR(trigger.at("radius").get<double>(), 0.254, 1e-9);
  EXPECT_NEAR(trigger.at("preTriggerTime").get<double>(), 0.020, 1e-12);
  EXPECT_EQ(trigger.at("entered").at("cycle").get<int>() - trigger.at("fired").at("cycle").get<int>(), 20);
}

// A sphere that is stepped over

TEST_F(OptionsOnPath, ThatAreSteppedOverAreExplained) {
  const auto at = [](const std::string& radius) {
    return robot({moveTo("[10, 0, 0]", AT_1000, {"signalId: 5, targetPosition: [5.25, 0.3, 0], radius: " + radius})});
  };
  // Points of the path lie at x = 4.5 in cycle 5 and at x = 5.5 in cycle 6.
  const double nearest = std::hypot(0.25, 0.3);
  const double least = std::ceil(nearest * 1e3) / 1e3;
  const ToolResult result = kavo("run", at("0.35"));
  EXPECT_EQ(result.exitCode, 0) << show(result);
  EXPECT_THAT(result.out,
              HasSubstr(fmt::format(
                  "    never fired: the tool was nearest in cycle 6 (0.0050 s) with R#1 at [5.500, 0.000, 0.000] mm, {:.3f} "
                  "mm from the target; a radius of that size would have fired\n"
                  "    stepped over: between cycles 5 and 6 the path passed the target at 0.300 mm, but at 1000.000 mm/s "
                  "one cycle is 1.000 mm\n",
                  least)));
  const Json trigger = play(at("0.35")).at("triggers").at(0);
  EXPECT_EQ(trigger.at("outcome"), "never reached");
  EXPECT_TRUE(trigger.at("fired").is_null());
  EXPECT_EQ(trigger.at("nearest").at("cycle"), 6);
  EXPECT_NEAR(trigger.at("nearest").at("distance").get<double>(), nearest, 1e-9);
  EXPECT_EQ(trigger.at("nearestBetweenCycles").at("cycle"), 6);
  EXPECT_NEAR(trigger.at("nearestBetweenCycles").at("distance").get<double>(), 0.3, 1e-9);
  EXPECT_NEAR(trigger.at("nearestBetweenCycles").at("speed").get<double>(), 1000.0, 1e-6);
  EXPECT_EQ(trigger.at("nearestBetweenCycles").at("leapsAhead"), false);

  EXPECT_THAT(outcomesOf(play(at(fmt::format("{:.3f}", least)))), ElementsAre("5: fired in 6 with R#1"));
  EXPECT_THAT(outcomesOf(play(at(fmt::format("{:.3f}", least - 0.001)))), ElementsAre("5: never reached"));
}

TEST_F(OptionsOnPath, ThatThePathDoesNotPassAreNotSaidToBeSteppedOver) {
  const ToolResult result =
      kavo("run", robot({moveTo("[10, 0, 0]", AT_1000, {"signalId: 5, targetPosition: [5.25, 2, 0], radius: 0.6"})}));
  EXPECT_THAT(result.out, HasSubstr("never fired: the tool was nearest in cycle 6"));
  EXPECT_THAT(result.out, HasSubstr(fmt::format("{:.3f} mm from the target", std::ceil(std::hypot(0.25, 2) * 1e3) / 1e3)));
  EXPECT_THAT(result.out, Not(HasSubstr("stepped over")));
}

TEST_F(OptionsOnPath, ThatMayBeSteppedOverAreFoundBeforeARun) {
  const auto at = [](const std::string& radius) {
    return robot({moveTo("[10, 0, 0]", AT_1000, {"signalId: 5, targetPosition: [5.25, 0.3, 0], radius: " + radius})});
  };
  const std::string warning =
      "scenario.yaml:4:82: the tool may step over the sphere: its radius of 0.499 mm is less than half of the 1 mm that R#1 "
      "MoveLin covers in one cycle at 1000 mm/s; make the radius at least 0.5 mm, or the velocity lower, or the cycle "
      "shorter\n";
  const ToolResult small = kavo("check", at("0.499"));
  EXPECT_EQ(small.exitCode, 1) << show(small);
  EXPECT_THAT(small.err, AllOf(testing::StartsWith("warning: "), EndsWith(warning)));
  EXPECT_EQ(small.out, "");
  const ToolResult run = kavo("run", at("0.499"));
  EXPECT_EQ(run.exitCode, 0) << "a warning keeps nobody from trying: " << show(run);
  EXPECT_THAT(run.err, EndsWith(warning));
  const ToolResult large = kavo("check", at("0.5"));
  EXPECT_EQ(large.exitCode, 0) << show(large);
  EXPECT_EQ(kavo("check", "cycle: 500 us\n" + at("0.25")).exitCode, 0);
  EXPECT_EQ(kavo("check", "cycle: 2 ms\n" + at("0.5")).exitCode, 1);
}

}  // namespace
}  // namespace motion::test
