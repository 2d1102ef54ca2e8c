// Options that go with commands, as a user writes and sees them: which are refused, what they accompany, and what is known
// of them before a run.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>

#include "options_run.h"

namespace motion::test {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

/// A robot and an axis; programs begin in line 2.
const std::string OBJECTS = "objects: [{name: R, type: kinematics}, {name: A, type: axis}]\n";

// What is refused

struct Refused {
  std::string name;
  std::string command;  ///< with the option, which is what is wrong
  std::string message;
  std::string remedy;
};

std::vector<Refused> refusals() {
  const auto onPath = [](const std::string& parameters) {
    return "MoveLin: {to: [20, 0, 0], options: [SwitchOnPath: {" + parameters + "}]}";
  };
  const std::string undecoded = "the parameters of option 'SwitchOnPath' of 'R' could not be decoded ";
  const std::string refused = "option 'SwitchOnPath' of 'R' was refused (0xF011001D): its parameters are not valid: ";
  const std::string says = "; the component says: ";
  const std::string check = says + "jobObj->checkParameter() failed: -268435434";
  const std::string size =
      says + "cmdDataIn->targetPosition()->size() != sizeof(::motion::kavo::SwitchOnPathPars::targetPos) / sizeof(double)";
  const std::string three = "(0xF011000F): require 3 double values for the \"targetPosition\" field, but found ";
  return {
      {"Unknown", "Dwell: {time: 1, options: [SetSignl: {permType: Once}]}", "'SetSignl' is not an option of kinematics 'R'",
       "; did you mean 'SetSignal'? known here: SetSignal"},
      {"NotForThisCommand", "Dwell: {time: 1, options: [SwitchOnPath: {permType: Once}]}",
       "option 'SwitchOnPath' cannot accompany 'Dwell'", "; known here: SetSignal"},
      {"NoPermType", onPath("targetPosition: [1, 2, 3]"), undecoded + "(0xF011000F)", says + "cmdDataIn->permType==nullptr"},
      {"PermTypeInAnotherCase", onPath("permType: once, targetPosition: [1, 2, 3]"), undecoded + "(0xF011000F)",
       says + "Invalid permType(once)"},
      {"EmptyPermType", onPath("permType: '', targetPosition: [1, 2, 3]"), undecoded + "(0xF011000F)",
       says + "Invalid permType()"},
      {"NoTarget", onPath("permType: Once"), undecoded + "(0xF0110011)", says + "cmdDataIn->targetPosition==nullptr"},
      {"NoTargetForGood", onPath("permType: PermOn"), undecoded + "(0xF0110011)",
       says + "cmdDataIn->targetPosition==nullptr"},
      {"TwoCoordinates", onPath("permType: Once, targetPosition: [1, 2]"), undecoded + three + "2 (0x090F2001, 0x0C570101)",
       size},
      {"FourCoordinates", onPath("permType: PermOn, targetPosition: [1, 2, 3, 4]"),
       undecoded + three + "4 (0x090F2001, 0x0C570101)", size},
      {"NegativeRadius", onPath("permType: Once, targetPosition: [1, 2, 3], radius: -5"),
       refused + "invalid 'radius': should be >= 0 (0x090F2030, 0x0C5701B1)", check},
      {"NegativeTime", onPath("permType: Once, targetPosition: [1, 2, 3], radius: 5, preTriggerTime: -1"),
       refused + "invalid 'preTriggerTime': should be >= 0 (0x090F2030, 0x0C5701B1)", check},
      {"NegativeRadiusToEndWith", onPath("permType: PermOff, radius: -5"),
       refused + "invalid 'radius': should be >= 0 (0x090F2030, 0x0C5701B1)", check},
      {"SignalOutOfRange", onPath("permType: Once, targetPosition: [1, 2, 3], radius: 5, signalId: 100"),
       refused + "invalid 'signalId': should be in range [0..99] (0x090F2030, 0x0C5701B1)", check},
  };
}

class RefusedOption : public OptionsRun, public testing::WithParamInterface<Refused> {};

TEST_P(RefusedOption, WithPlaceReasonAndWhatTheComponentSays) {
  const std::string scenario = OBJECTS + "program:\n  R:\n    - " + GetParam().command + "\n";
  for (const char* command : {"check", "run"}) {
    const ToolResult result = kavo(command, scenario);
    EXPECT_EQ(result.exitCode, 2) << show(result);
    EXPECT_EQ(result.out, "");
    const auto column = GetParam().command.find("[S") + 8;
    EXPECT_THAT(result.err,
                EndsWith(fmt::format("scenario.yaml:4:{}: {}{}\n", column, GetParam().message, GetParam().remedy)));
  }
}

INSTANTIATE_TEST_SUITE_P(All, RefusedOption, testing::ValuesIn(refusals()),
                         [](const auto& tested) { return tested.param.name; });

class Options : public OptionsRun {};

TEST_F(Options, OfSetSignalAreRefusedLikewise) {
  const ToolResult result =
      kavo("check", OBJECTS +
                        "program:\n"
                        "  A:\n"
                        "    - Dwell: {time: 1, options: [SetSignal: {permType: permon, signalId: 1}]}\n"
                        "    - Dwell: {time: 1, options: [SetSignal: {signalId: 1}]}\n"
                        "    - Dwell: {time: 1, options: [SetSignal: {permType: Once, signalId: 100}]}\n"
                        "    - MoveAbs: {to: 1, options: [SwitchOnPath: {permType: PermOff}]}\n");
  EXPECT_EQ(result.exitCode, 2) << show(result);
  EXPECT_THAT(result.err,
              HasSubstr(":4:34: the parameters of option 'SetSignal' of 'A' could not be decoded (0xF011000F); the "
                        "component says: Invalid permType(permon)\n"));
  EXPECT_THAT(result.err,
              HasSubstr(":5:34: the parameters of option 'SetSignal' of 'A' could not be decoded (0xF011000F); the "
                        "component says: cmdDataIn->permType==nullptr\n"));
  EXPECT_THAT(result.err,
              HasSubstr(":6:34: option 'SetSignal' of 'A' was refused (0xF011001D): its parameters are not valid: "
                        "jobData->signalId: 100 (0x090F"));
  EXPECT_THAT(result.err, HasSubstr(":7:34: 'SwitchOnPath' is not an option of axis 'A'; known here: SetSignal\n"));
}

// What options accompany

TEST_F(Options, OnceAccompaniesOneCommandOfAxesAndKinematics) {
  for (const char* object : {"R", "A"}) {
    EXPECT_THAT(signals(OBJECTS + "program:\n  " + object +
                        ":\n"
                        "    - Dwell: {time: 0.01}\n"
                        "    - Dwell: {time: 0.01, options: [SetSignal: {permType: Once, signalId: 5}]}\n"
                        "    - ResetSignal: {signalId: 5}\n"
                        "    - Dwell: {time: 0.01}\n"),
                ElementsAre(fmt::format("11: 5 set by {}#2", object), fmt::format("21: 5 reset by {}#3", object)));
  }
}

TEST_F(Options, PermOnAccompaniesAllCommandsOfAxesAndKinematicsUntilPermOff) {
  for (const auto& [object, other] : {std::pair{"R", "A"}, {"A", "R"}}) {
    std::vector<std::string> expected;
    for (const int number : {1, 2, 3}) {
      // The robot comes first in every cycle, so the axis's signal is found one cycle later.
      const int cycle = 10 * number - 9;
      expected.push_back(fmt::format("{}: 5 set by {}#{}", cycle, object, number));
      expected.push_back(fmt::format("{}: 5 reset by {}#{}", *object == 'R' ? cycle : cycle + 1, other, number));
    }
    EXPECT_THAT(signals(OBJECTS + "program:\n  " + object +
                        ":\n"
                        "    - Dwell: {time: 0.01, options: [SetSignal: {permType: PermOn, signalId: 5}]}\n"
                        "    - Dwell: {time: 0.01}\n"
                        "    - Dwell: {time: 0.01}\n"
                        "    - Dwell: {time: 0.01, options: [SetSignal: {permType: PermOff}]}\n"
                        "    - Dwell: {time: 0.01}\n"
                        "  " +
                        other +
                        ":\n"
                        "    - WaitForSignal: {signalId: 5, autoReset: true}\n"
                        "    - WaitForSignal: {signalId: 5, autoReset: true}\n"
                        "    - WaitForSignal: {signalId: 5, autoReset: true}\n"),
                testing::ElementsAreArray(expected));
  }
}

TEST_F(Options, SeveralAccompanyOneCommandInTheOrderInWhichTheyAreWritten) {
  const Json run = play(OBJECTS +
                        "program:\n"
                        "  A:\n"
                        "    - Dwell: {time: 0.01}\n"
                        "    - Dwell:\n"
                        "        time: 0.01\n"
                        "        options:\n"
                        "          - SetSignal: {permType: Once, signalId: 9}\n"
                        "          - SetSignal: {permType: PermOn, signalId: 8}\n"
                        "          - SetSignal: {permType: Once, signalId: 7}\n");
  EXPECT_THAT(signalsOf(run), testing::UnorderedElementsAre("11: 9 set by A#2", "11: 8 set by A#2", "11: 7 set by A#2"));
  EXPECT_EQ(run.at("objects").at(1).at("commands").at(1).at("options"),
            (Json{"SetSignal {permType: Once, signalId: 9}", "SetSignal {permType: PermOn, signalId: 8}",
                  "SetSignal {permType: Once, signalId: 7}"}));
}

TEST_F(Options, OfAPermanentKindAreReplacedByOthers) {
  EXPECT_THAT(signals(OBJECTS + "program:\n"
                                "  A:\n"
                                "    - Dwell: {time: 0.01, options: [SetSignal: {permType: PermOn, signalId: 1}]}\n"
                                "    - Dwell: {time: 0.01, options: [SetSignal: {permType: PermOn, signalId: 2}]}\n"
                                "    - ResetSignal: {signalId: 1}\n"
                                "    - Dwell: {time: 0.01}\n"),
              ElementsAre("1: 1 set by A#1", "11: 2 set by A#2", "21: 1 reset by A#3"));
}

// Stacking

/// A robot that drives out, waits, and drives on past x = 30 mm, in a buffer of that size.
std::string outAndOn(const std::string& buffer, const std::string& first, const std::string& second) {
  const auto onPath = [](const std::string& parameters) {
    return parameters.empty() ? "" : ", options: [SwitchOnPath: {" + parameters + "}]";
  };
  return "buffer: " + buffer + "\n" + OBJECTS + "program:\n  R:\n    - MoveLin: {to: [20, 0, 0]" + onPath(first) +
         "}\n    - Dwell: {time: 0.01}\n    - MoveLin: {to: [40, 0, 0]" + onPath(second) + "}\n";
}
const std::string AT_10 = "permType: Once, signalId: 1, targetPosition: [10, 0, 0], radius: 1";
const std::string AT_30 = "permType: Once, signalId: 1, targetPosition: [30, 0, 0], radius: 1";
const std::string AT_35 = "permType: Once, signalId: 2, targetPosition: [35, 0, 0], radius: 1";

TEST_F(Options, OnThePathAreCarriedOverUntilTheyFireOnce) {
  const Json run = play(outAndOn("8", AT_30, AT_35));
  EXPECT_EQ(carriersOf(run.at("triggers").at(0)), "R#1 R#3");
  EXPECT_EQ(carriersOf(run.at("triggers").at(1)), "R#3");
  EXPECT_THAT(outcomesOf(run), ElementsAre(HasSubstr("1: fired in "), HasSubstr("2: fired in ")));
  EXPECT_THAT(signalsOf(run), ElementsAre(EndsWith("1 set by R#3"), EndsWith("2 set by R#3")));
}

TEST_F(Options, OnThePathThatHaveFiredAreNotCarriedOver) {
  EXPECT_EQ(carriersOf(play(outAndOn("1", AT_10, AT_35)).at("triggers").at(0)), "R#1")
      << "the third command was issued when the condition of the first had fired";
  const Json early = play(outAndOn("8", AT_10, AT_35));
  EXPECT_EQ(carriersOf(early.at("triggers").at(0)), "R#1 R#3") << "nobody could know when the third command was issued";
  EXPECT_THAT(outcomesOf(early), ElementsAre(EndsWith("with R#1"), EndsWith("with R#3")));
}

TEST_F(Options, OnThePathEndWithACommandThatHasNone) {
  const Json run =
      play(outAndOn("8", AT_30, "") + "    - MoveLin: {to: [0, 0, 0], options: [SwitchOnPath: {" + AT_35 + "}]}\n");
  EXPECT_EQ(carriersOf(run.at("triggers").at(0)), "R#1");
  EXPECT_THAT(outcomesOf(run), ElementsAre("1: never reached", EndsWith("with R#4")));
}

TEST_F(Options, OnThePathEndWithPermOff) {
  const Json run = play(outAndOn("8", AT_30, "permType: PermOff"));
  EXPECT_THAT(outcomesOf(run), ElementsAre("1: never reached")) << "what only ends others is no condition";
  const Json last = play(outAndOn("8", AT_30, "permType: PermOff") +
                         "    - MoveLin: {to: [0, 0, 0], options: [SwitchOnPath: {" + AT_35 + "}]}\n");
  EXPECT_THAT(outcomesOf(last), ElementsAre("1: never reached", EndsWith("with R#4")));
}

TEST_F(Options, OnThePathStayForGoodAndFireOnce) {
  std::string permanent = AT_30;
  permanent.replace(permanent.find("Once"), 4, "PermOn");
  const Json run = play(outAndOn("8", permanent, "") + "    - MoveLin: {to: [0, 0, 0]}\n" +
                        "    - MoveLin: {to: [40, 0, 0]}\n  A: [WaitForSignal: {signalId: 1, autoReset: true}]\n");
  EXPECT_EQ(carriersOf(run.at("triggers").at(0)), "R#1 R#3 R#4 R#5");
  EXPECT_THAT(signalsOf(run), ElementsAre(EndsWith("1 set by R#3"), EndsWith("1 reset by A#1")))
      << "leaving the sphere and coming back does nothing";
}

TEST_F(Options, OnThePathThatAreEndedAtTheSameCommandAreNeverArmed) {
  std::string permanent = AT_30;
  permanent.replace(permanent.find("Once"), 4, "PermOn");
  const std::string scenario = OBJECTS + "program: {R: [MoveLin: {to: [40, 0, 0], options: [SwitchOnPath: {" + permanent +
                               "}, SwitchOnPath: {permType: PermOff}]}]}\n";
  EXPECT_THAT(outcomesOf(play(scenario)), ElementsAre("1: never armed"));
  EXPECT_THAT(kavo("run", scenario).out,
              HasSubstr("mm\n    never armed: no command followed that it could accompany\n\nOK\n"));
}

TEST_F(Options, OnThePathOfACommandThatIsAbortedNeverComeToRun) {
  const std::string scenario = OBJECTS +
                               "program: {R: [Dwell: {time: 1}, MoveLin: {to: [40, 0, 0], options: [SwitchOnPath: {" +
                               AT_30 + "}]}]}\noutside: [{at: 0.1 s, abort: R}]\n";
  EXPECT_THAT(outcomesOf(play(scenario)), ElementsAre("1: never reached"));
  EXPECT_THAT(kavo("run", scenario).out,
              HasSubstr("    armed with R#2, which never came to run\n    never fired: no cycle looked at it\n"));
}

// What is known before and while somebody waits

TEST_F(Options, ThatSetASignalAreWaitedForWithReason) {
  for (const char* option : {"SetSignal: {permType: Once, signalId: 7}",
                             "SwitchOnPath: {permType: Once, signalId: 7, targetPosition: [5, 0, 0], radius: 1}"}) {
    const std::string scenario = OBJECTS + "program:\n  R: [MoveLin: {to: [10, 0, 0], options: [" + option +
                                 "]}]\n  A: [WaitForSignal: {signalId: 7}]\n";
    const ToolResult checked = kavo("check", scenario);
    EXPECT_EQ(checked.exitCode, 0) << show(checked);
    EXPECT_EQ(checked.err, "");
    EXPECT_THAT(signals(scenario), ElementsAre(HasSubstr(": 7 set by R#1")));
  }
}

TEST_F(Options, ThatResetASignalAreWaitedForWithReason) {
  const std::string scenario =
      OBJECTS +
      "program:\n"
      "  R: [MoveLin: {to: [10, 0, 0], options: [SwitchOnPath: {permType: Once, signalId: 7, action: RESET_SIGNAL, "
      "targetPosition: [5, 0, 0], radius: 1}]}]\n"
      "  A: [SetSignal: {signalId: 7}, WaitForSignalReset: {signalId: 7}]\n";
  EXPECT_EQ(kavo("check", scenario).exitCode, 0);
  EXPECT_THAT(signals(scenario), ElementsAre("1: 7 set by A#1", EndsWith("7 reset by R#1")));
}

TEST_F(Options, AccompanyAWaitToAskForWhatItWaitsFor) {
  const std::string scenario = OBJECTS +
                               "program:\n"
                               "  R: [WaitForSignal: {signalId: 2, options: [SetSignal: {permType: Once, signalId: 1}]}]\n"
                               "  A: [WaitForSignal: {signalId: 1}, SetSignal: {signalId: 2}]\n";
  EXPECT_EQ(kavo("check", scenario).exitCode, 0);
  EXPECT_THAT(signals(scenario), ElementsAre("1: 1 set by R#1", "2: 2 set by A#2"));
}

TEST_F(Options, ThatNobodyComesToAreExplained) {
  const std::string scenario =
      OBJECTS +
      "program:\n"
      "  R: [WaitForSignal: {signalId: 2}, MoveLin: {to: [10, 0, 0], options: [SetSignal: {permType: "
      "Once, signalId: 1}]}]\n"
      "  A: [WaitForSignal: {signalId: 1}, SetSignal: {signalId: 2}]\n";
  const ToolResult checked = kavo("check", scenario);
  EXPECT_EQ(checked.exitCode, 1) << show(checked);
  EXPECT_THAT(checked.err,
              HasSubstr("A#1 WaitForSignal waits for ever: nobody comes to set signal 1; R#2 MoveLin stands behind "
                        "R#1 WaitForSignal, which waits in turn"));
  EXPECT_THAT(checked.err, Not(HasSubstr("nobody sets")));
  const ToolResult run = kavo("run", scenario);
  EXPECT_EQ(run.exitCode, 1) << show(run);
  EXPECT_THAT(run.out, HasSubstr("R#2 MoveLin"));
}

}  // namespace
}  // namespace motion::test
