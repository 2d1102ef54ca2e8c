#include "host/run/program.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/run/session.h"
#include "host/scenario/scenario_reader.h"

namespace motion::host::run {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

class ProgramTest : public testing::Test {
 protected:
  void SetUp() override {
    std::string problem;
    ASSERT_TRUE(m_session.open(problem)) << problem;
  }

  ProgramResult prepare(const std::string& text) {
    auto read = scenario::readScenarioText(text, "test.yaml");
    EXPECT_TRUE(read.scenario) << (read.problems.empty() ? "" : read.problems[0].text());
    for (const auto& object : read.scenario->objects) {
      m_session.runtime().addObject(object.name, object.type, object.start);
    }
    return prepareProgram(*read.scenario, m_session.runtime(), [this] { return m_session.takeMessages(); });
  }

  Session m_session{SessionConfig{KAVO_BUNDLE, {}, std::chrono::seconds(30), false}};
};

TEST_F(ProgramTest, TurnsCommandsIntoCalls) {
  const auto sut = prepare(
      "signals: {5: part in place}\n"
      "objects: [{name: A, type: axis}, {name: K, type: kinematics}]\n"
      "program:\n"
      "  A:\n"
      "    - MoveAbs: {to: 5}\n"
      "    - WaitForSignal: {signalId: 5, autoReset: true}\n"
      "  K:\n"
      "    - SetSignal: {signalId: 5}\n");
  ASSERT_THAT(sut.problems, IsEmpty());
  ASSERT_THAT(sut.programs, SizeIs(2));
  ASSERT_THAT(sut.programs[0].calls, SizeIs(2));
  EXPECT_EQ(sut.programs[0].object->name(), "A");
  EXPECT_FALSE(sut.programs[0].calls[0].description.waits);
  const ProgramCall& wait = sut.programs[0].calls[1];
  EXPECT_EQ(wait.name, "WaitForSignal");
  EXPECT_EQ(wait.source.file, "test.yaml");
  EXPECT_EQ(wait.source.line, 6U);
  EXPECT_TRUE(wait.description.waits);
  EXPECT_EQ(wait.description.signal, 5U);
  EXPECT_EQ(wait.description.waitsFor, "signal 5 'part in place'");
  EXPECT_EQ(wait.description.parameters, "{signalId: 5, autoReset: true}");
  EXPECT_FALSE(sut.programs[1].calls[0].description.waits);
}

TEST_F(ProgramTest, LeavesNothingBehindInTheBuffers) {
  prepare("objects: [{name: A, type: axis}]\nprogram: {A: [Dwell: {time: 1}]}\n");
  EXPECT_EQ(m_session.runtime().preparation().alive(), 0U);
  EXPECT_EQ(m_session.runtime().objMgr().find("A")->bufferedCount(), 0U);
}

TEST_F(ProgramTest, AnUnknownCommandListsTheKnownOnes) {
  const auto sut = prepare("objects: [{name: A, type: axis}]\nprogram: {A: [WaitForSignl: {}]}\n");
  ASSERT_THAT(sut.problems, SizeIs(1));
  EXPECT_EQ(sut.problems[0].message, "'WaitForSignl' is not a command of axis 'A'");
  EXPECT_THAT(sut.problems[0].remedy, HasSubstr("did you mean 'WaitForSignal'?"));
  EXPECT_THAT(sut.problems[0].remedy, HasSubstr("MoveAbs"));
  EXPECT_EQ(sut.problems[0].mark.line, 2U);
}

TEST_F(ProgramTest, AnOptionIsNotKnown) {
  const auto sut = prepare("objects: [{name: A, type: axis}]\nprogram: {A: [Dwell: {time: 1, options: [X: {}]}]}\n");
  ASSERT_THAT(sut.problems, SizeIs(1));
  EXPECT_EQ(sut.problems[0].message, "'X' is not an option of axis 'A'");
  EXPECT_EQ(sut.problems[0].remedy, "known here: SetSignal");
  EXPECT_EQ(sut.problems[0].mark.column, 42U) << "where the option stands";
  EXPECT_THAT(sut.programs[0].calls, IsEmpty());
}

TEST_F(ProgramTest, TakesOptionsAlongWithTheirCommand) {
  const auto sut = prepare(
      "objects: [{name: K, type: kinematics}]\n"
      "program:\n"
      "  K:\n"
      "    - MoveLin: {to: [1, 0, 0], velocity: 250, options: [SetSignal: {permType: PermOn, signalId: 5}]}\n"
      "    - MoveLin: {to: [2, 0, 0], options: [SwitchOnPath: {permType: Once, signalId: 6, targetPosition: [2, 0, 0], "
      "radius: 1}, SetSignal: {permType: PermOff}]}\n"
      "    - Dwell: {time: 1}\n");
  ASSERT_THAT(sut.problems, IsEmpty());
  ASSERT_THAT(sut.programs[0].calls, SizeIs(3));
  const ProgramCall& first = sut.programs[0].calls[0];
  ASSERT_THAT(first.options, SizeIs(1));
  EXPECT_EQ(first.options[0].name, "SetSignal");
  EXPECT_EQ(first.options[0].source.line, 4U);
  EXPECT_EQ(first.encoded().options.data(), first.options.data());
  EXPECT_EQ(first.description.options, (std::vector<std::string>{"SetSignal {permType: PermOn, signalId: 5}"}));
  EXPECT_EQ(first.description.sync.options, (std::vector<observe::OptionEffect>{{5, true, false}}));
  EXPECT_DOUBLE_EQ(first.velocity, 0.25);
  EXPECT_THAT(first.conditions, IsEmpty());
  EXPECT_EQ(first.mark.line, 4U);
  const ProgramCall& second = sut.programs[0].calls[1];
  EXPECT_THAT(second.options, SizeIs(2));
  EXPECT_DOUBLE_EQ(second.velocity, 0.1) << "unless it is given";
  ASSERT_THAT(second.conditions, SizeIs(1));
  EXPECT_DOUBLE_EQ(second.conditions[0].radius, 0.001);
  EXPECT_EQ(second.conditions[0].mark.line, 5U);
  EXPECT_EQ(second.description.sync.options, (std::vector<observe::OptionEffect>{{6, true, true}}));
  EXPECT_EQ(sut.programs[0].calls[2].velocity, 0.0) << "it does not move";
  EXPECT_THAT(sut.programs[0].calls[2].conditions, IsEmpty());
  EXPECT_THAT(m_session.runtime().objMgr().find("K")->options().state(), IsEmpty()) << "they were only tried out";
}

TEST_F(ProgramTest, ARefusedOptionIsNamedWhereItStands) {
  const auto sut = prepare(
      "objects: [{name: A, type: axis}]\n"
      "program:\n"
      "  A:\n"
      "    - Dwell:\n"
      "        time: 1\n"
      "        options:\n"
      "          - SetSignal: {permType: Once, signalId: 100}\n"
      "    - Dwell:\n"
      "        time: 1\n"
      "        options:\n"
      "          - SetSignal: {permType: Once, signalId: 1}\n"
      "          - SetSignal: {permType: Once, signalId: 100}\n"
      "    - Dwell: {time: -1, options: [SetSignal: {permType: Once, signalId: 1}]}\n");
  ASSERT_THAT(sut.problems, SizeIs(3));
  EXPECT_THAT(sut.problems[0].message, HasSubstr("option 'SetSignal' of 'A' was refused (0xF011001D)"));
  EXPECT_THAT(sut.problems[0].message, HasSubstr("100 (0x090F"));
  EXPECT_THAT(sut.problems[0].remedy, HasSubstr("the component says: jobObj->checkParameter() failed"));
  EXPECT_EQ(sut.problems[0].mark.line, 7U);
  EXPECT_EQ(sut.problems[1].mark.line, 8U) << "it might be either; so where the command stands";
  EXPECT_EQ(sut.problems[2].mark.line, 13U);
  EXPECT_EQ(sut.problems[2].mark.column, 7U) << "the command itself was refused";
}

TEST_F(ProgramTest, ARefusalCarriesWhatTheComponentSays) {
  const auto sut = prepare("objects: [{name: A, type: axis}]\nprogram: {A: [WaitForSignalReset: {signalId: 4711}]}\n");
  ASSERT_THAT(sut.problems, SizeIs(1));
  EXPECT_THAT(sut.problems[0].message, HasSubstr("'WaitForSignalReset' of 'A' was refused (0xF011001D)"));
  EXPECT_EQ(sut.problems[0].remedy, "the component says: m_cmdValues.signalId (=4711) is not valid");
}

TEST_F(ProgramTest, AllProblemsAreCollected) {
  const auto sut = prepare(
      "objects: [{name: A, type: axis}]\n"
      "program: {A: [Fly: {}, Dwell: {tim: 1}, SetSignal: {signalId: 100}, Dwell: {time: 1}]}\n");
  EXPECT_THAT(sut.problems, SizeIs(3));
  EXPECT_THAT(sut.programs[0].calls, SizeIs(1));
}

TEST(ValueText, WritesAValueInOneLine) {
  const auto read = scenario::readScenarioText(
      "objects: [{name: A, type: axis}]\nprogram: {A: [X: {a: 1, b: [x, 2], c: {d: e}}, Y: {}]}\n", "t");
  ASSERT_TRUE(read.scenario);
  const auto& commands = read.scenario->programs.at(0).commands;
  EXPECT_EQ(valueText(commands.at(0).parameters), "{a: 1, b: [x, 2], c: {d: e}}");
  EXPECT_EQ(valueText(commands.at(1).parameters), "");
}

}  // namespace
}  // namespace motion::host::run
