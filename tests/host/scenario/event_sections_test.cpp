// Outside events and expectations of scenario files.
#include "reading.h"

namespace motion::host::scenario {
namespace {

const std::string SETUP =
    "objects: [{name: Feeder, type: axis}, {name: Robot, type: kinematics}, {name: Idle, type: axis}]\n"
    "signals: {5: part in place, 6: glue, 7: glue}\n"
    "program: {Feeder: [A, B, C], Robot: [A, B]}\n";  // what follows begins in line 4

Texts problemsOfOutside(const std::string& event) {
  return problemsOf(SETUP + "outside:\n- " + event + "\n");
}
Texts problemsOfExpect(const std::string& expectation) {
  return problemsOf(SETUP + "expect:\n- " + expectation + "\n");
}

template <typename T>
T expectationOf(const std::string& text) {
  const Scenario scenario = scenarioOf(SETUP + "expect:\n- " + text + "\n");
  EXPECT_EQ(scenario.expectations.size(), 1U);
  const T* what = scenario.expectations.empty() ? nullptr : std::get_if<T>(&scenario.expectations[0].what);
  EXPECT_NE(what, nullptr) << text;
  return what != nullptr ? *what : T();
}

TEST(Outside, isRead) {
  const Scenario sut = scenarioOf(SETUP +
                                  "outside:\n- {at: 0.5 s, signal: 99, value: true}\n- {at: 700 ms, abort: Feeder}\n"
                                  "- {at: 0 s, signal: part in place, value: false}\n");
  ASSERT_EQ(sut.outside.size(), 3U);
  EXPECT_EQ(sut.outside[0].kind, OutsideEvent::Kind::SIGNAL);
  EXPECT_EQ(sut.outside[0].at, 0.5);
  EXPECT_EQ(sut.outside[0].signal, 99U);
  EXPECT_TRUE(sut.outside[0].value);
  EXPECT_EQ(sut.outside[0].mark.line, 5U);
  EXPECT_EQ(sut.outside[1].kind, OutsideEvent::Kind::ABORT);
  EXPECT_EQ(sut.outside[1].at, 0.7);
  EXPECT_EQ(sut.outside[1].object, "Feeder");
  EXPECT_EQ(sut.outside[2].signal, 5U);
  EXPECT_FALSE(sut.outside[2].value);
}

TEST(Outside, writesAsAnOperatorUnlessScopesAreNamed) {
  const Scenario sut =
      scenarioOf(SETUP +
                 "outside:\n- {at: 0 s, signal: 1, value: true}\n"
                 "- {at: 0 s, signal: 1, value: true, scopes: [motion.view, motion.manage], refused: true}\n"
                 "- {at: 0 s, signal: 1, value: true, scopes: [], refused: false}\n");
  ASSERT_EQ(sut.outside.size(), 3U);
  ASSERT_EQ(sut.outside[0].scopes.size(), 1U);
  EXPECT_EQ(sut.outside[0].scopes[0].name, "motion.operate");
  EXPECT_FALSE(sut.outside[0].refused);
  ASSERT_EQ(sut.outside[1].scopes.size(), 2U);
  EXPECT_EQ(sut.outside[1].scopes[0].name, "motion.view");
  EXPECT_EQ(sut.outside[1].scopes[1].name, "motion.manage");
  EXPECT_EQ(sut.outside[1].scopes[1].mark.line, 6U);
  EXPECT_EQ(sut.outside[1].scopes[1].mark.column, 59U);
  EXPECT_TRUE(sut.outside[1].refused);
  EXPECT_TRUE(sut.outside[2].scopes.empty());
  EXPECT_FALSE(sut.outside[2].refused);
}

TEST(Outside, refusesWrongScopesAndRefusals) {
  EXPECT_EQ(problemsOfOutside("{at: 1 s, signal: 1, value: true, scopes: motion.view}"),
            (Texts{"f:5:45: scopes: expected a list, found 'motion.view'"}));
  EXPECT_EQ(problemsOfOutside("{at: 1 s, signal: 1, value: true, scopes: [[a]]}"),
            (Texts{"f:5:46: scopes: expected a word, found a list"}));
  EXPECT_EQ(problemsOfOutside("{at: 1 s, signal: 1, value: true, refused: maybe}"),
            (Texts{"f:5:46: refused: expected true or false, found 'maybe'"}));
  EXPECT_EQ(problemsOfOutside("{at: 1 s, abort: Feeder, scopes: [a], refused: true}"),
            (Texts{"f:5:28: outside event: 'scopes' does not go with 'abort'",
                   "f:5:41: outside event: 'refused' does not go with 'abort'"}));
}

TEST(Outside, refusesMomentsThatAreNone) {
  const std::string remedy = "; write a number and one of the units s, ms, us, as in '5 ms'";
  EXPECT_EQ(problemsOfOutside("{signal: 1, value: true}"), (Texts{"f:5:3: outside event: 'at' is missing"}));
  EXPECT_EQ(problemsOfOutside("{at: 5, signal: 1, value: true}"), (Texts{"f:5:8: at: '5' has no unit" + remedy}));
  EXPECT_EQ(problemsOfOutside("{at: end, signal: 1, value: true}"), (Texts{"f:5:8: at: 'end' is not a time" + remedy}));
  EXPECT_EQ(problemsOfOutside("{at: -1 s, signal: 1, value: true}"), (Texts{"f:5:8: at: '-1 s' is negative" + remedy}));
}

TEST(Outside, warnsOfMomentsAfterTheLimit) {
  EXPECT_EQ(problemsOfOutside("{at: 61 s, abort: Feeder}"),
            (Texts{"warning f:5:8: at: '61 s' is after the limit of 60 s; raise 'limit'"}));
  EXPECT_TRUE(problemsOfOutside("{at: 60 s, abort: Feeder}").empty());
}

TEST(Outside, needsOneThingThatHappens) {
  const std::string problem =
      "f:5:3: outside event: expected either 'signal' or 'abort'; as in '{at: 0.5 s, signal: 7, value: true}' or '{at: 0.7 "
      "s, "
      "abort: Feeder}'";
  EXPECT_EQ(problemsOfOutside("{at: 1 s}"), (Texts{problem}));
  EXPECT_EQ(problemsOfOutside("{at: 1 s, signal: 1, value: true, abort: Feeder}"), (Texts{problem}));
  EXPECT_EQ(problemsOfOutside("{at: 1 s, abort: Feeder, value: true}"),
            (Texts{"f:5:28: outside event: 'value' does not go with 'abort'"}));
}

TEST(Outside, refusesWrongSignals) {
  const auto problem = [](const std::string& signal) {
    return problemsOfOutside("{at: 1 s, value: true, signal: " + signal + "}");
  };
  const std::string expected = "f:5:34: signal: expected a whole number from 0 to 99, found ";
  EXPECT_EQ(problem("100"), (Texts{expected + "'100'"}));
  EXPECT_EQ(problem("-1"), (Texts{expected + "'-1'"}));
  EXPECT_EQ(problem("99999999999999999999"), (Texts{expected + "'99999999999999999999'"}));
  EXPECT_EQ(problem("[1]"), (Texts{expected + "a list"}));
  EXPECT_EQ(problem("part in plaec"), (Texts{"f:5:34: signal: unknown signal 'part in plaec'; did you mean 'part in place'? "
                                             "known here: part in place, glue, glue"}));
  EXPECT_EQ(problem("'5'"), (Texts{"f:5:34: signal: unknown signal '5'; known here: part in place, glue, glue"}));
  EXPECT_EQ(problem("glue"),
            (Texts{"f:5:34: signal: the name 'glue' belongs to several signals; write the number of the signal"}));
  EXPECT_EQ(problemsOf("objects: [{name: A, type: axis}]\noutside: [{at: 1 s, signal: a, value: true}]"),
            (Texts{"f:2:29: signal: unknown signal 'a'; nothing is known here"}));
}

TEST(Outside, refusesWrongValuesAndObjects) {
  EXPECT_EQ(problemsOfOutside("{at: 1 s, signal: 1, value: on}"),
            (Texts{"f:5:31: value: expected true or false, found 'on'"}));
  EXPECT_EQ(problemsOfOutside("{at: 1 s, signal: 1}"), (Texts{"f:5:3: outside event: 'value' is missing"}));
  EXPECT_EQ(problemsOfOutside("{at: 1 s, abort: Feedr}"),
            (Texts{"f:5:20: abort: unknown object 'Feedr'; did you mean 'Feeder'? known here: Feeder, Robot, Idle"}));
  EXPECT_EQ(problemsOfOutside("{at: 1 s, abort: [Feeder]}"), (Texts{"f:5:20: abort: expected a word, found a list"}));
}

TEST(Outside, refusesOtherKindsAndKeys) {
  EXPECT_EQ(problemsOfOutside("abort"), (Texts{"f:5:3: outside event: expected a map, found 'abort'"}));
  EXPECT_EQ(problemsOf(SETUP + "outside: {at: 1 s}"), (Texts{"f:4:10: outside: expected a list, found a map"}));
  EXPECT_EQ(problemsOfOutside("{at: 1 s, abort: Feeder, valu: 1}"),
            (Texts{"f:5:28: outside event: unknown key 'valu'; did you mean 'value'? known here: at, signal, value, "
                   "scopes, refused, abort"}));
}

TEST(Expect, readsSignals) {
  const auto atEnd = expectationOf<ExpectSignal>("{at: end, signal: part in place, value: true}");
  EXPECT_TRUE(atEnd.at.end);
  EXPECT_EQ(atEnd.signal, 5U);
  EXPECT_TRUE(atEnd.value);
  const auto later = expectationOf<ExpectSignal>("{at: 300 ms, signal: 99, value: false}");
  EXPECT_FALSE(later.at.end);
  EXPECT_EQ(later.at.time, 0.3);
  EXPECT_FALSE(later.value);
  EXPECT_TRUE(expectationOf<ExpectSignal>("{signal: 9, value: false}").at.end);
}

TEST(Expect, readsPositions) {
  const auto sut = expectationOf<ExpectPosition>("{at: 0.3 s, object: Feeder, position: 250, within: 0.01}");
  EXPECT_EQ(sut.at.time, 0.3);
  EXPECT_EQ(sut.object, "Feeder");
  EXPECT_EQ(sut.position, (std::array<double, 3>{0.25, 0, 0}));
  EXPECT_EQ(sut.tolerance, 0.00001);
  EXPECT_EQ(expectationOf<ExpectPosition>("{object: Feeder, position: -1}").tolerance, 1e-6);
  EXPECT_EQ(expectationOf<ExpectPosition>("{object: Feeder, position: -1, within: 0}").tolerance, 0.0);
  const auto ofKinematics = expectationOf<ExpectPosition>("{at: end, object: Robot, position: [1, -2.5, 100], within: 2}");
  EXPECT_TRUE(ofKinematics.at.end);
  EXPECT_EQ(ofKinematics.position, (std::array<double, 3>{0.001, -0.0025, 0.1}));
  EXPECT_EQ(ofKinematics.tolerance, 0.002);
}

TEST(Expect, readsCommands) {
  const auto same = expectationOf<ExpectSameCycle>("{same cycle: [Feeder#3, Robot#2]}");
  ASSERT_EQ(same.commands.size(), 2U);
  EXPECT_EQ(same.commands[0].object, "Feeder");
  EXPECT_EQ(same.commands[0].number, 3U);
  EXPECT_EQ(same.commands[0].mark.column, 17U);
  EXPECT_EQ(same.commands[1].object, "Robot");
  EXPECT_EQ(same.commands[1].number, 2U);
  EXPECT_EQ(expectationOf<ExpectOrder>("{order: [Feeder#1, Robot#1, Feeder#2]}").commands.size(), 3U);
  for (const std::string state : {"done", "aborted", "failed", "active"}) {
    const auto sut = expectationOf<ExpectState>("{command: Robot#1, state: " + state + "}");
    EXPECT_EQ(sut.command.object, "Robot");
    EXPECT_EQ(sut.command.number, 1U);
    EXPECT_EQ(sut.state, state);
  }
}

TEST(Expect, keepsItsOwnText) {
  const Scenario sut =
      scenarioOf(SETUP + "expect:\n- same cycle:\n    - Feeder#1\n    - Robot#1\n- {at: end, signal: 5, value: true}\n");
  ASSERT_EQ(sut.expectations.size(), 2U);
  EXPECT_EQ(sut.expectations[0].text, "same cycle: [Feeder#1, Robot#1]");
  EXPECT_EQ(sut.expectations[0].mark.line, 5U);
  EXPECT_EQ(sut.expectations[1].text, "at: end, signal: 5, value: true");
}

TEST(Expect, refusesWrongReferences) {
  const auto problem = [](const std::string& reference) {
    return problemsOfExpect("{command: " + reference + ", state: done}");
  };
  const std::string remedy = "; write object#number, as in 'Feeder#4'";
  for (const std::string reference : {"Feeder", "Feeder#", "#1", "Feeder#1a", "Feeder#-1", "Feeder#+1", "Feeder#1.0", "1"}) {
    const std::string written = reference == "#1" ? "'#1'" : reference;
    EXPECT_EQ(problem(written), (Texts{"f:5:13: command: '" + reference + "' names no command" + remedy}));
  }
  EXPECT_EQ(problem("Feedr#1"),
            (Texts{"f:5:13: command: unknown object 'Feedr'; did you mean 'Feeder'? known here: Feeder, Robot, Idle"}));
  const std::string range = "; the program of 'Feeder' has the commands 1 to 3";
  for (const std::string number : {"0", "4", "99999999999999999999999"}) {
    EXPECT_EQ(problem("Feeder#" + number), (Texts{"f:5:13: command: there is no command 'Feeder#" + number + "'" + range}));
  }
  EXPECT_EQ(problem("Idle#1"),
            (Texts{"f:5:13: command: there is no command 'Idle#1'; the program of 'Idle' has no commands"}));
  EXPECT_EQ(problem("[Feeder#1]"), (Texts{"f:5:13: command: expected a word, found a list"}));
}

TEST(Expect, doesNotBlameReferencesForFaultyPrograms) {
  EXPECT_EQ(problemsOf(TWO_OBJECTS + "program: {Feeder: [A: 5, B]}\nexpect: [{command: Feeder#2, state: done}]"),
            (Texts{"f:3:23: 'A': expected a map of parameters, found '5'; as in 'Dwell: {time: 0.2}'"}));
}

TEST(Expect, needsDifferentCommandsToCompare) {
  EXPECT_EQ(problemsOfExpect("{same cycle: [Feeder#1]}"),
            (Texts{"f:5:16: same cycle: expected at least two commands; as in '[Feeder#4, Robot#4]'"}));
  EXPECT_EQ(problemsOfExpect("{order: Feeder#1}"), (Texts{"f:5:11: order: expected a list, found 'Feeder#1'"}));
  EXPECT_EQ(problemsOfExpect("{order: [Feeder#1, Robot#1, Feeder#01]}"), (Texts{"f:5:31: order: 'Feeder#01' stands twice"}));
}

TEST(Expect, refusesWrongStates) {
  EXPECT_EQ(problemsOfExpect("{command: Feeder#1, state: abort}"),
            (Texts{"f:5:30: state: unknown state 'abort'; known here: done, aborted, failed, active"}));
  EXPECT_EQ(problemsOfExpect("{command: Feeder#1, state: dne}"),
            (Texts{"f:5:30: state: unknown state 'dne'; did you mean 'done'? known here: done, aborted, failed, active"}));
  EXPECT_EQ(problemsOfExpect("{command: Feeder#1}"), (Texts{"f:5:3: expectation of a state: 'state' is missing"}));
}

TEST(Expect, refusesWrongPositions) {
  const std::string remedy = "; as in '[0, 0, 100]'";
  EXPECT_EQ(problemsOfExpect("{object: Robot, position: 1}"),
            (Texts{"f:5:29: position: expected a list of three numbers [mm], found '1'" + remedy}));
  EXPECT_EQ(problemsOfExpect("{object: Robot, position: [1, 2]}"),
            (Texts{"f:5:29: position: expected a list of three numbers [mm], found a list" + remedy}));
  EXPECT_EQ(problemsOfExpect("{object: Robot, position: [1, two, 3]}"),
            (Texts{"f:5:33: position: expected a number [mm], found 'two'; write the number alone, as in '250' or '0.5'"}));
  EXPECT_EQ(problemsOfExpect("{object: Feeder, position: [1, 2, 3]}"),
            (Texts{"f:5:30: position: expected a number [mm], found a list"}));
  EXPECT_EQ(problemsOfExpect("{object: Feeder}"), (Texts{"f:5:3: expectation of a position: 'position' is missing"}));
  EXPECT_EQ(problemsOfExpect("{object: Feeder, position: 1, within: -1}"), (Texts{"f:5:41: within: '-1' is negative"}));
  EXPECT_EQ(problemsOfExpect("{object: Feeder, position: .inf}"),
            (Texts{"f:5:30: position: expected a finite number [mm], found '.inf'"}));
  EXPECT_EQ(problemsOfExpect("{at: 1, object: Feeder, position: 1}"),
            (Texts{"f:5:8: at: '1' has no unit; write a number and one of the units s, ms, us, as in '5 ms'"}));
  EXPECT_EQ(problemsOfExpect("{at: 61 s, object: Feeder, position: 1}"),
            (Texts{"warning f:5:8: at: '61 s' is after the limit of 60 s; raise 'limit'"}));
}

TEST(Expect, refusesUnknownKeys) {
  EXPECT_EQ(problemsOfExpect("{at: end, signl: 5, value: true}"),
            (Texts{"f:5:13: expectation: unknown key 'signl'; did you mean 'signal'? known here: at, signal, value, object, "
                   "position, within, order, same cycle, command, state"}));
  EXPECT_EQ(problemsOfExpect("{signal: 5, value: true, withn: 1}"),
            (Texts{"f:5:28: expectation of a signal: unknown key 'withn'; known here: at, signal, value"}));
  EXPECT_EQ(
      problemsOfExpect("{at: end, value: true}"),
      (Texts{
          "f:5:3: expectation: it does not say what is expected; write one of the keys signal, object, same cycle, order, "
          "command"}));
  EXPECT_EQ(problemsOfExpect("{same cycle: [Feeder#1, Robot#1], at: end}"),
            (Texts{"f:5:37: expectation 'same cycle': unknown key 'at'; known here: same cycle"}));
}

TEST(Expect, refusesOtherKinds) {
  EXPECT_EQ(problemsOfExpect("done"), (Texts{"f:5:3: expectation: expected a map, found 'done'"}));
  EXPECT_EQ(problemsOf(SETUP + "expect: done"), (Texts{"f:4:9: expect: expected a list, found 'done'"}));
}

}  // namespace
}  // namespace motion::host::scenario
