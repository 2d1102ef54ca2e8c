#include "host/run/program_options.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/run/session.h"
#include "host/scenario/scenario_reader.h"

namespace motion::host::run {
namespace {

using observe::OptionEffect;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

/// Options of the real component, at commands of a robot and an axis.
class ProgramOptionsTest : public testing::Test {
 protected:
  void SetUp() override {
    std::string problem;
    ASSERT_TRUE(m_session.open(problem)) << problem;
    m_robot = m_session.runtime().addObject("R", core::ObjectType::KINEMATICS, {});
    m_axis = m_session.runtime().addObject("A", core::ObjectType::AXIS, {});
  }

  /// Goes through the commands of a program in its YAML; nothing is issued.
  struct Walk {
    ProgramOptions sut;
    scenario::Problems problems;
    std::vector<std::vector<ReadyOption>> given;    ///< at each command
    std::vector<std::vector<std::string>> effects;  ///< during each command
    std::vector<std::vector<double>> radii;         ///< [mm]
  };
  Walk walk(const MotionObject& object, const std::string& commands) {
    const auto read = scenario::readScenarioText(
        "objects: [{name: R, type: kinematics}, {name: A, type: axis}]\nprogram:\n  " + object.name() + ":\n" + commands,
        m_file);
    EXPECT_TRUE(read.scenario) << (read.problems.empty() ? "" : read.problems[0].text());
    Walk walk{ProgramOptions(m_session.runtime(), object, m_file), {}, {}, {}, {}};
    for (const scenario::CommandCall& call : read.scenario->programs.at(0).commands) {
      const auto entry = m_session.runtime().cmdFactory().find({object.type(), call.name});
      walk.given.push_back(walk.sut.encode(call, *entry, walk.problems));
      walk.sut.follow(walk.given.back(), *entry);
      walk.effects.emplace_back();
      for (const OptionEffect& effect : walk.sut.effects()) {
        walk.effects.back().push_back(
            fmt::format("{}{} {}", effect.sets ? "set" : "reset", effect.onPath ? " on path" : "", effect.signal));
      }
      walk.radii.emplace_back();
      for (const PathCondition& condition : walk.sut.conditions()) {
        walk.radii.back().push_back(condition.radius * 1e3);
      }
    }
    return walk;
  }
  /// Effects of a program of the robot without problems.
  std::vector<std::vector<std::string>> effects(const std::string& commands) {
    const Walk walked = walk(*m_robot, commands);
    EXPECT_THAT(walked.problems, IsEmpty());
    return walked.effects;
  }

  const std::string m_file = "test.yaml";
  Session m_session{SessionConfig{KAVO_BUNDLE, {}, std::chrono::seconds(30), false}};
  MotionObject* m_robot = nullptr;
  MotionObject* m_axis = nullptr;
};

// Encoding

TEST_F(ProgramOptionsTest, MakesOptionsReadyToBeIssued) {
  const Walk sut =
      walk(*m_robot,
           "    - MoveLin:\n"
           "        to: [1, 0, 0]\n"
           "        options:\n"
           "          - SetSignal: {permType: Once, signalId: 3}\n"
           "          - SwitchOnPath: {permType: PermOn, signalId: 4, targetPosition: [1, 0, 0], radius: 0.5}\n");
  ASSERT_THAT(sut.problems, IsEmpty());
  ASSERT_THAT(sut.given.at(0), SizeIs(2));
  const ReadyOption& set = sut.given[0][0];
  EXPECT_EQ(set.encoded.name, "SetSignal");
  EXPECT_EQ(set.encoded.parameters.getType(), comm::datalayer::VariantType::FLATBUFFERS);
  EXPECT_EQ(set.encoded.source.client, "scenario");
  EXPECT_EQ(set.encoded.source.file, "test.yaml");
  EXPECT_EQ(set.encoded.source.line, 7U);
  EXPECT_EQ(set.text, "SetSignal {permType: Once, signalId: 3}");
  EXPECT_EQ(set.mark.line, 7U);
  EXPECT_EQ(sut.given[0][1].encoded.source.line, 8U);
}

TEST_F(ProgramOptionsTest, ListsWhatCanAccompanyTheCommand) {
  const Walk sut = walk(*m_robot,
                        "    - Dwell: {time: 1, options: [SwitchOnPath: {}]}\n"
                        "    - MoveLin: {to: [1, 0, 0], options: [SwitchOnPth: {}]}\n"
                        "    - MoveLin: {to: [1, 0, 0], options: [SetSignal: {permType: Once, signal: 1}]}\n");
  ASSERT_THAT(sut.problems, SizeIs(3));
  EXPECT_EQ(sut.problems[0].message, "option 'SwitchOnPath' cannot accompany 'Dwell'");
  EXPECT_EQ(sut.problems[0].remedy, "known here: SetSignal");
  EXPECT_EQ(sut.problems[0].mark.line, 4U);
  EXPECT_EQ(sut.problems[0].mark.column, 34U);
  EXPECT_EQ(sut.problems[0].file, "test.yaml");
  EXPECT_FALSE(sut.problems[0].warning);
  EXPECT_EQ(sut.problems[1].message, "'SwitchOnPth' is not an option of kinematics 'R'");
  EXPECT_EQ(sut.problems[1].remedy, "did you mean 'SwitchOnPath'? known here: SetSignal, SwitchOnPath");
  EXPECT_THAT(sut.problems[2].message, testing::HasSubstr("'signal'"));
  const Walk ofAxis = walk(*m_axis, "    - MoveAbs: {to: 1, options: [SwitchOnPath: {}]}\n");
  ASSERT_THAT(ofAxis.problems, SizeIs(1));
  EXPECT_EQ(ofAxis.problems[0].message, "'SwitchOnPath' is not an option of axis 'A'");
}

TEST_F(ProgramOptionsTest, ReturnsNothingWhenOneOfSeveralIsWrong) {
  const Walk sut =
      walk(*m_robot,
           "    - MoveLin: {to: [1, 0, 0], options: [SetSignal: {permType: Once, signalId: 1}, Sparkle: {}, Glow: {}]}\n");
  EXPECT_THAT(sut.problems, SizeIs(2));
  EXPECT_THAT(sut.given.at(0), IsEmpty());
  EXPECT_THAT(sut.effects.at(0), IsEmpty());
}

// Following

TEST_F(ProgramOptionsTest, OnceAccompaniesTheNextCommand) {
  EXPECT_THAT(effects("    - Dwell: {time: 1}\n"
                      "    - Dwell: {time: 1, options: [SetSignal: {permType: Once, signalId: 3}]}\n"
                      "    - Dwell: {time: 1}\n"),
              ElementsAre(IsEmpty(), ElementsAre("set 3"), IsEmpty()));
}

TEST_F(ProgramOptionsTest, PermOnAccompaniesFollowingCommandsUntilPermOff) {
  EXPECT_THAT(effects("    - Dwell: {time: 1, options: [SetSignal: {permType: PermOn, signalId: 3}]}\n"
                      "    - MoveLin: {to: [1, 0, 0], options: [SetSignal: {permType: Once, signalId: 4}]}\n"
                      "    - Dwell: {time: 1, options: [SetSignal: {permType: PermOn, signalId: 5}]}\n"
                      "    - Dwell: {time: 1}\n"
                      "    - Dwell: {time: 1, options: [SetSignal: {permType: PermOff}]}\n"
                      "    - Dwell: {time: 1}\n"),
              ElementsAre(ElementsAre("set 3"), testing::UnorderedElementsAre("set 3", "set 4"), ElementsAre("set 5"),
                          ElementsAre("set 5"), IsEmpty(), IsEmpty()));
}

TEST_F(ProgramOptionsTest, ConditionsOnThePathAreCarriedOverAndLapse) {
  const Walk sut =
      walk(*m_robot,
           "    - MoveLin: {to: [1, 0, 0], options: [SwitchOnPath: {permType: Once, signalId: 1, targetPosition: [1, 0, 0], "
           "radius: "
           "1}]}\n"
           "    - Dwell: {time: 1}\n"
           "    - MoveLin: {to: [2, 0, 0], options: [SwitchOnPath: {permType: Once, signalId: 2, action: RESET_SIGNAL, "
           "targetPosition: [1, 0, 0], radius: 2}]}\n"
           "    - MoveLin: {to: [3, 0, 0]}\n"
           "    - MoveLin: {to: [4, 0, 0], options: [SwitchOnPath: {permType: Once, signalId: 3, targetPosition: [1, 0, 0], "
           "radius: "
           "3}]}\n");
  ASSERT_THAT(sut.problems, IsEmpty());
  EXPECT_THAT(sut.effects,
              ElementsAre(ElementsAre("set on path 1"), IsEmpty(), ElementsAre("reset on path 2", "set on path 1"),
                          IsEmpty(), ElementsAre("set on path 3")));
  EXPECT_THAT(sut.radii, ElementsAre(ElementsAre(1.0), IsEmpty(), ElementsAre(2.0, 1.0), IsEmpty(), ElementsAre(3.0)));
  EXPECT_EQ(sut.sut.conditions().at(0).mark.line, 8U);
}

TEST_F(ProgramOptionsTest, PermOffEndsConditionsOnThePath) {
  EXPECT_THAT(
      effects("    - MoveLin: {to: [1, 0, 0], options: [SwitchOnPath: {permType: PermOn, signalId: 1, "
              "targetPosition: [1, 0, 0], radius: 1}]}\n"
              "    - MoveLin: {to: [2, 0, 0]}\n"
              "    - MoveLin: {to: [3, 0, 0], options: [SwitchOnPath: {permType: Once, signalId: 2, "
              "targetPosition: [1, 0, 0], radius: 1}]}\n"
              "    - MoveLin: {to: [4, 0, 0]}\n"
              "    - MoveLin: {to: [5, 0, 0], options: [SwitchOnPath: {permType: PermOff}]}\n"
              "    - MoveLin: {to: [6, 0, 0], options: [SwitchOnPath: {permType: Once, signalId: 3, "
              "targetPosition: [1, 0, 0], radius: 1}]}\n"),
      ElementsAre(ElementsAre("set on path 1"), ElementsAre("set on path 1"), ElementsAre("set on path 2", "set on path 1"),
                  ElementsAre("set on path 1"), IsEmpty(), ElementsAre("set on path 3")));
}

TEST_F(ProgramOptionsTest, KnowsLengthsInTheUnitsOfTheObject) {
  const MotionObject* const inches = m_session.runtime().addObject("I", core::ObjectType::KINEMATICS, {},
                                                                   UnitHelper::settings(LengthUnit::INCH, TimeUnit::SECOND));
  const auto read = scenario::readScenarioText(
      "objects: [{name: I, type: kinematics}]\nprogram: {I: [MoveLin: {to: [1, 0, 0], options: [SwitchOnPath: {permType: "
      "Once, targetPosition: [1, 0, 0], radius: 2}]}]}\n",
      m_file);
  ASSERT_TRUE(read.scenario);
  ProgramOptions sut(m_session.runtime(), *inches, m_file);
  const auto entry = m_session.runtime().cmdFactory().find({core::ObjectType::KINEMATICS, "MoveLin"});
  scenario::Problems problems;
  sut.follow(sut.encode(read.scenario->programs.at(0).commands.at(0), *entry, problems), *entry);
  EXPECT_DOUBLE_EQ(sut.conditions().at(0).radius, 0.0508);
}

TEST_F(ProgramOptionsTest, ASignalOutOfRangeDoesNoHarm) {
  EXPECT_THAT(effects("    - Dwell: {time: 1, options: [SetSignal: {permType: Once, signalId: 4711}]}\n"),
              ElementsAre(ElementsAre("set 99")))
      << "it is refused elsewhere";
}

}  // namespace
}  // namespace motion::host::run
