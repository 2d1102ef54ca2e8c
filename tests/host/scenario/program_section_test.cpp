// Programs of scenario files.
#include "host/scenario/value_reader.h"
#include "reading.h"

namespace motion::host::scenario {
namespace {

Texts problemsOfProgram(const std::string& lines) {
  return problemsOf(TWO_OBJECTS + "program:\n" + lines);
}

TEST(Program, keepsCommandsInOrderWithTheirParameters) {
  const Scenario sut =
      scenarioOf(TWO_OBJECTS +
                 "program:\n  Robot:\n    - MoveLin: {to: [1, 2, 3], velocity: 5}\n    - Halt\n    - Stop:\n"
                 "    - Dwell:\n        time: 0.2\n  Feeder: []\n");
  ASSERT_EQ(sut.programs.size(), 2U);
  EXPECT_EQ(sut.programs[0].object, "Robot");
  EXPECT_EQ(sut.programs[0].mark.line, 4U);
  EXPECT_EQ(sut.programs[1].object, "Feeder");
  EXPECT_TRUE(sut.programs[1].commands.empty());
  const auto& commands = sut.programs[0].commands;
  ASSERT_EQ(commands.size(), 4U);
  EXPECT_EQ(commands[0].name, "MoveLin");
  EXPECT_EQ(inOneLine(commands[0].parameters), "to: [1, 2, 3], velocity: 5");
  EXPECT_EQ(commands[0].mark.line, 5U);
  EXPECT_EQ(commands[0].mark.column, 7U);
  EXPECT_EQ(commands[1].name, "Halt");
  EXPECT_EQ(commands[1].parameters.kind, Value::Kind::MAP);
  EXPECT_EQ(commands[2].name, "Stop");
  EXPECT_EQ(commands[2].parameters.kind, Value::Kind::MAP);
  EXPECT_TRUE(commands[2].parameters.fields.empty());
  EXPECT_EQ(inOneLine(commands[3].parameters), "time: 0.2");
}

TEST(Program, takesOptionsOutOfTheParameters) {
  const Scenario sut =
      scenarioOf(TWO_OBJECTS +
                 "program:\n  Robot:\n    - MoveLin: {to: 1, options: [Switch: {id: 6}, Mark, Show: ], velocity: 2}\n"
                 "    - MoveLin: {options: }\n");
  const CommandCall& command = sut.programs[0].commands[0];
  EXPECT_EQ(inOneLine(command.parameters), "to: 1, velocity: 2");
  ASSERT_EQ(command.options.size(), 3U);
  EXPECT_EQ(command.options[0].name, "Switch");
  EXPECT_EQ(inOneLine(command.options[0].parameters), "id: 6");
  EXPECT_EQ(command.options[0].mark.column, 34U);
  EXPECT_EQ(command.options[1].name, "Mark");
  EXPECT_EQ(command.options[1].parameters.kind, Value::Kind::MAP);
  EXPECT_EQ(command.options[2].name, "Show");
  EXPECT_TRUE(sut.programs[0].commands[1].options.empty());
  EXPECT_TRUE(sut.programs[0].commands[1].parameters.fields.empty());
}

TEST(Program, refusesOptionsThatAreNone) {
  EXPECT_EQ(problemsOfProgram("  Robot: [M: {options: {S: {}}}, M: {options: [S: 5, [S]]}]"),
            (Texts{"f:4:24: options: expected a list, found a map",
                   "f:4:51: 'S': expected a map of parameters, found '5'; as in 'Dwell: {time: 0.2}'",
                   "f:4:54: option: expected a name and its parameters, found a list; as in 'Dwell: {time: 0.2}'"}));
}

TEST(Program, refusesParametersThatAreNoMap) {
  EXPECT_EQ(problemsOfProgram("  Feeder:\n    - WaitForSignalReset: 7\n    - Join: [Robot]\n"),
            (Texts{"f:5:27: 'WaitForSignalReset': expected a map of parameters, found '7'; as in 'Dwell: {time: 0.2}'",
                   "f:6:13: 'Join': expected a map of parameters, found a list; as in 'Dwell: {time: 0.2}'"}));
}

TEST(Program, refusesEntriesThatAreNoCommand) {
  EXPECT_EQ(
      problemsOfProgram("  Feeder:\n    - MoveAbs:\n      to: 250\n    - [Halt]\n    - {}\n    -\n"),
      (Texts{"f:6:7: command: 'to' follows 'MoveAbs' in the same entry; begin each entry with '-'; parameters stand in "
             "braces or are indented further",
             "f:7:7: command: expected a name and its parameters, found a list; as in 'Dwell: {time: 0.2}'",
             "f:8:7: command: expected a name and its parameters, found a map; as in 'Dwell: {time: 0.2}'",
             "f:9:5: command: expected a name and its parameters, found nothing; as in 'Dwell: {time: 0.2}'"}));
}

TEST(Program, refusesUnknownObjects) {
  EXPECT_EQ(problemsOfProgram("  Feedr: [Halt]\n"),
            (Texts{"f:4:3: program: unknown object 'Feedr'; did you mean 'Feeder'? known here: Feeder, Robot"}));
}

TEST(Program, refusesASecondProgramOfAnObject) {
  EXPECT_EQ(problemsOfProgram("  Feeder: [Halt]\n  Feeder: [Stop]\n"),
            (Texts{"f:5:3: 'Feeder' stands twice in one map; keep one; the first is in line 4, column 3"}));
}

TEST(Program, refusesOtherKinds) {
  EXPECT_EQ(problemsOf(TWO_OBJECTS + "program: [Halt]"), (Texts{"f:3:10: program: expected a map, found a list"}));
  EXPECT_EQ(problemsOfProgram("  Feeder: {Halt: {}}"), (Texts{"f:4:11: program of 'Feeder': expected a list, found a map"}));
  EXPECT_TRUE(problemsOfProgram("").empty());
  EXPECT_TRUE(problemsOfProgram("  Feeder:\n").empty());
}

TEST(Program, mayBeLong) {
  std::string lines = "  Feeder:\n";
  for (int i = 0; i < 20'000; ++i) {
    lines += "  - Set: {signalId: 5}\n";
  }
  EXPECT_EQ(scenarioOf(TWO_OBJECTS + "program:\n" + lines).programs[0].commands.size(), 20'000U);
}

}  // namespace
}  // namespace motion::host::scenario
