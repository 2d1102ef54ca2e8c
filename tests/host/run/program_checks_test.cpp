#include "host/run/program_checks.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>

#include "tests/host/observe/record_builder.h"

namespace motion::host::run {
namespace {

using core::ObjectType;
using observe::consumes;
using observe::joins;
using observe::joinsTwice;
using observe::resets;
using observe::sets;
using observe::SyncStep;
using observe::waitsReset;
using observe::waitsSet;
using observe::with;
using observe::works;
using scenario::OutsideEvent;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// Programs by hand. Objects are A, B, C and so on; the second command of A is in line 12, that of B in line 22.
class ProgramChecks : public testing::Test {
 protected:
  std::vector<std::string> check(const std::vector<std::vector<SyncStep>>& programs) {
    m_scenario.file = "test.yaml";
    std::vector<ObjectCalls> calls;
    for (std::size_t object = 0; object < programs.size(); ++object) {
      const std::string name(1, static_cast<char>('A' + object));
      m_scenario.objects.push_back({name, ObjectType::AXIS, {}, {}});
      MotionObject* const known = m_runtime.objMgr().find(name.c_str());
      calls.push_back({known != nullptr ? known : m_runtime.addObject(name, ObjectType::AXIS, {}), {}});
      for (const SyncStep& step : programs[object]) {
        ProgramCall call;
        call.name = NAMES[static_cast<std::size_t>(step.kind)];
        call.description.sync = step;
        call.description.waitsFor = "signal " + std::to_string(step.signal);
        call.mark = {(object + 1) * 10 + calls.back().calls.size() + 1, 7};
        call.velocity = m_velocity;
        call.conditions = m_conditions;
        calls.back().calls.push_back(std::move(call));
      }
    }
    m_found = checkPrograms(m_scenario, calls);
    std::vector<std::string> texts;
    for (const scenario::Problem& problem : m_found) {
      EXPECT_TRUE(problem.warning);
      EXPECT_EQ(problem.file, "test.yaml");
      EXPECT_EQ(problem.mark.column, 7U);
      EXPECT_FALSE(problem.remedy.empty());
      texts.push_back(std::to_string(problem.mark.line) + ": " + problem.message);
    }
    return texts;
  }

  void signalFromOutside(std::uint32_t signal, bool value) {
    OutsideEvent event;
    event.signal = signal;
    event.value = value;
    m_scenario.outside.push_back(event);
  }
  void abortFromOutside(const std::string& object) {
    OutsideEvent event;
    event.kind = OutsideEvent::Kind::ABORT;
    event.object = object;
    m_scenario.outside.push_back(event);
  }
  std::string remedy() const { return m_found.at(0).remedy; }

  double m_velocity = 0.0;                  ///< [m/s] of all commands
  std::vector<PathCondition> m_conditions;  ///< of all commands
  static constexpr const char* NAMES[] = {"Work", "Set", "Reset", "Wait", "WaitReset", "Join"};
  Runtime m_runtime{RuntimeConfig{}};
  scenario::Scenario m_scenario;
  scenario::Problems m_found;
};

TEST_F(ProgramChecks, FindsNothingInWhatComesThrough) {
  EXPECT_THAT(check({{works(), sets(1), joins({0, 1}), joins({0, 1, 2}, true), works()},
                     {consumes(1), joins({0, 1}), works(), joins({0, 1, 2})},
                     {joins({0, 1, 2}), waitsReset(1)}}),
              IsEmpty());
}

TEST_F(ProgramChecks, FindsNothingWithoutPrograms) {
  EXPECT_THAT(check({}), IsEmpty());
}

TEST_F(ProgramChecks, AGroupThatNamesSomebodyTwice) {
  EXPECT_THAT(check({{works(), joinsTwice({0, 1})}, {joins({0, 1}), waitsSet(1), works()}, {sets(1)}}),
              ElementsAre("12: A#2 Join waits for ever: 'group' names an object twice; such a join never completes"));
  EXPECT_EQ(remedy(), "name each object once");
}

TEST_F(ProgramChecks, AJoinThatAwaitsACommandWhichIsNotThere) {
  EXPECT_THAT(check({{joins({0, 1}, true)}, {joins({0, 1}, true), works()}}),
              ElementsAre("11: A#1 Join waits for ever: syncStartNextCmd asks for a command behind it, and there is none"));
  EXPECT_EQ(remedy(), "put a command behind it, or leave out syncStartNextCmd");
}

TEST_F(ProgramChecks, ASignalThatNobodySets) {
  EXPECT_THAT(check({{works(), waitsSet(4)}, {sets(5), resets(4)}}),
              ElementsAre("12: A#2 Wait waits for ever: nobody sets signal 4"));
  EXPECT_EQ(remedy(), "set it in the program of another object, or under 'outside'");
}

TEST_F(ProgramChecks, ASignalThatOnlyTheWaiterSetsBehindItsWait) {
  EXPECT_THAT(check({{waitsSet(4), sets(4)}}), ElementsAre("11: A#1 Wait waits for ever: nobody sets signal 4"));
}

TEST_F(ProgramChecks, ASignalIsSetByAnotherByTheWaiterBeforeOrFromOutside) {
  EXPECT_THAT(check({{waitsSet(4)}, {works(), sets(4)}}), IsEmpty());
}
TEST_F(ProgramChecks, ASignalIsSetByTheWaiterBeforeIt) {
  EXPECT_THAT(check({{sets(4), works(), waitsSet(4)}}), IsEmpty());
}
TEST_F(ProgramChecks, ASignalIsSetFromOutside) {
  signalFromOutside(4, true);
  EXPECT_THAT(check({{waitsSet(4)}}), IsEmpty());
}
TEST_F(ProgramChecks, ASignalIsNotSetByAResetFromOutsideOrAnotherSignal) {
  signalFromOutside(4, false);
  signalFromOutside(5, true);
  EXPECT_THAT(check({{waitsSet(4)}}), ElementsAre(HasSubstr("nobody sets signal 4")));
}

TEST_F(ProgramChecks, ASignalThatTheWaiterSetAndNobodyResets) {
  EXPECT_THAT(check({{sets(4), works(), waitsReset(4)}, {waitsSet(4), resets(5)}}),
              ElementsAre("13: A#3 WaitReset waits for ever: nobody resets signal 4, which A#1 Set sets"));
  EXPECT_EQ(remedy(),
            "reset it in the program of another object (ResetSignal, or a wait with autoReset), or under 'outside'");
}
TEST_F(ProgramChecks, ASignalIsResetByAnother) {
  EXPECT_THAT(check({{sets(4), waitsReset(4)}, {resets(4)}}), IsEmpty());
}
TEST_F(ProgramChecks, ASignalIsResetByAnothersWait) {
  EXPECT_THAT(check({{sets(4), waitsReset(4)}, {consumes(4)}}), IsEmpty());
}
TEST_F(ProgramChecks, ASignalIsResetByTheWaiterBeforeIt) {
  EXPECT_THAT(check({{sets(4), resets(4), waitsReset(4)}}), IsEmpty());
}
TEST_F(ProgramChecks, ASignalIsResetFromOutside) {
  signalFromOutside(4, false);
  EXPECT_THAT(check({{sets(4), waitsReset(4)}}), IsEmpty());
}
TEST_F(ProgramChecks, ASignalThatTheWaiterDoesNotSetIsResetFromTheStart) {
  EXPECT_THAT(check({{waitsReset(4)}, {sets(4)}}), IsEmpty());
}

TEST_F(ProgramChecks, ASignalThatIsSetForOneCycleOnly) {
  EXPECT_THAT(
      check({{works(), sets(4), resets(4)}, {works(), waitsSet(4)}}),
      ElementsAre("12: A#2 Set and A#3 Reset keep signal 4 set for one cycle only; B#2 Wait misses it unless it waits "
                  "already"));
  EXPECT_EQ(remedy(), "let the waiting command reset the signal (autoReset), or wait for an answer before resetting it");
}
TEST_F(ProgramChecks, ASignalThatNobodyWaitsForMayBeShort) {
  EXPECT_THAT(check({{sets(4), resets(4), sets(5)}, {works(), waitsSet(5), waitsReset(4)}}), IsEmpty());
}
TEST_F(ProgramChecks, ASignalWithSomethingBetweenIsNotShort) {
  EXPECT_THAT(check({{sets(4), works(), resets(4)}, {waitsSet(4)}}), IsEmpty());
}
TEST_F(ProgramChecks, AnotherSignalsResetDoesNotMakeItShort) {
  EXPECT_THAT(check({{sets(4), resets(5)}, {waitsSet(4)}}), IsEmpty());
}

TEST_F(ProgramChecks, MembersThatDoNotJoinEquallyOften) {
  EXPECT_THAT(
      check({{joins({0, 1, 2})}, {joins({0, 1, 2}), works(), joins({0, 1, 2})}, {joins({0, 1, 2}), joins({0, 1, 2})}}),
      ElementsAre("23: B#3 Join waits for ever: the members of [A, B, C] do not join equally often (A has 1, B has 2, C "
                  "has 2)"));
  EXPECT_EQ(remedy(), "give each member as many joins with this very group");
}

TEST_F(ProgramChecks, MembersWithDifferentGroups) {
  EXPECT_THAT(
      check({{joins({0, 1})}, {joins({0, 1, 2})}, {joins({0, 1, 2})}}),
      ElementsAre("11: A#1 Join waits for ever: the members of [A, B] do not join equally often (A has 1, B has 0)",
                  "21: B#1 Join waits for ever: the members of [A, B, C] do not join equally often (A has 0, B has 1, C "
                  "has 1)"));
}

TEST_F(ProgramChecks, JoinsInOppositeOrder) {
  EXPECT_THAT(
      check({{joins({0, 1}), joins({0, 1, 2})}, {joins({0, 1, 2}), joins({0, 1})}, {works(), joins({0, 1, 2})}}),
      ElementsAre("11: A#1 Join waits for ever: B stays in B#1 Join", "21: B#1 Join waits for ever: A stays in A#1 Join",
                  "32: C#2 Join waits for ever: A stays in A#1 Join"));
  EXPECT_EQ(remedy(), "bring the joins and signals of all programs into one order");
}

TEST_F(ProgramChecks, SignalsInACircle) {
  EXPECT_THAT(
      check({{waitsSet(1), sets(2)}, {waitsSet(2), works(), sets(1)}}),
      ElementsAre("11: A#1 Wait waits for ever: nobody comes to set signal 1; B#3 Set stands behind B#1 Wait, which waits "
                  "in turn",
                  "21: B#1 Wait waits for ever: nobody comes to set signal 2; A#2 Set stands behind A#1 Wait, which "
                  "waits in turn"));
}

TEST_F(ProgramChecks, ACircleOfAJoinAndASignal) {
  EXPECT_THAT(check({{waitsSet(1), joins({0, 1})}, {joins({0, 1}), sets(1)}}),
              ElementsAre(HasSubstr("B#2 Set stands behind B#1 Join, which waits in turn"),
                          "21: B#1 Join waits for ever: A stays in A#1 Wait"));
}

TEST_F(ProgramChecks, NamesOnlyTheNextSetterOfEachOther) {
  EXPECT_THAT(check({{waitsSet(1), sets(1), sets(2)}, {waitsSet(2), sets(1), sets(1)}}),
              testing::Contains("11: A#1 Wait waits for ever: nobody comes to set signal 1; B#2 Set stands behind B#1 Wait, "
                                "which waits in turn"));
}

TEST_F(ProgramChecks, ASignalFromOutsideOpensACircle) {
  signalFromOutside(1, true);
  EXPECT_THAT(check({{waitsSet(1), joins({0, 1})}, {joins({0, 1}), sets(1)}}), IsEmpty());
}

TEST_F(ProgramChecks, WhoWaitsForSomebodyThatWasFoundIsNotFoundAgain) {
  EXPECT_THAT(check({{waitsSet(1), sets(2), joins({0, 1})}, {waitsSet(2), joins({0, 1})}}),
              ElementsAre(HasSubstr("nobody sets signal 1")));
}

TEST_F(ProgramChecks, ACircleIsFoundBesideAnotherFault) {
  EXPECT_THAT(check({{waitsSet(1)}, {waitsSet(2), sets(3)}, {waitsSet(3), sets(2)}}),
              ElementsAre(HasSubstr("11: A#1 Wait waits for ever: nobody sets signal 1"), HasSubstr("21: B#1 Wait"),
                          HasSubstr("31: C#1 Wait")));
}

TEST_F(ProgramChecks, WhoIsAbortedFromOutsideIsMeantToWait) {
  abortFromOutside("A");
  EXPECT_THAT(check({{waitsSet(1)}, {waitsSet(2)}}), ElementsAre(HasSubstr("21: B#1 Wait")));
}

// Options

TEST_F(ProgramChecks, ASignalIsSetByAnOptionOfAnother) {
  EXPECT_THAT(check({{waitsSet(4)}, {works(), with(works(), {{4, true, false}})}}), IsEmpty());
}
TEST_F(ProgramChecks, ASignalIsSetByAnOptionOnThePathOfAnother) {
  EXPECT_THAT(check({{waitsSet(4)}, {with(works(), {{4, true, true}})}}), IsEmpty());
}
TEST_F(ProgramChecks, ASignalIsSetByTheWaitersOwnOptionBeforeIt) {
  EXPECT_THAT(check({{with(works(), {{4, true, false}}), waitsSet(4)}}), IsEmpty());
}
TEST_F(ProgramChecks, ASignalIsSetByAnOptionOfTheWaitItself) {
  EXPECT_THAT(check({{with(waitsSet(4), {{4, true, false}})}}), IsEmpty());
}
TEST_F(ProgramChecks, ASignalIsNotSetByOptionsThatDoSomethingElse) {
  EXPECT_THAT(check({{waitsSet(4)}, {with(works(), {{4, false, true}, {5, true, false}})}}),
              ElementsAre(HasSubstr("nobody sets signal 4")));
}
TEST_F(ProgramChecks, ASignalThatAnOptionOfTheWaiterSetAndNobodyResets) {
  EXPECT_THAT(check({{with(works(), {{4, true, false}}), waitsReset(4)}}),
              ElementsAre("12: A#2 WaitReset waits for ever: nobody resets signal 4, which A#1 Work sets"));
}
TEST_F(ProgramChecks, ASignalIsResetByAnOptionOfAnother) {
  EXPECT_THAT(check({{sets(4), waitsReset(4)}, {with(works(), {{4, false, true}})}}), IsEmpty());
}
TEST_F(ProgramChecks, AnOptionBehindAWaitStandsInACircleToo) {
  EXPECT_THAT(
      check({{waitsSet(1), sets(2)}, {waitsSet(2), with(works(), {{1, true, false}})}}),
      ElementsAre("11: A#1 Wait waits for ever: nobody comes to set signal 1; B#2 Work stands behind B#1 Wait, which "
                  "waits in turn",
                  HasSubstr("21: B#1 Wait")));
}

TEST_F(ProgramChecks, ASphereThatTheToolMayStepOver) {
  m_velocity = 0.4;
  m_conditions = {{0.000199, {12, 7}}, {0.0002, {13, 7}}};
  EXPECT_THAT(
      check({{works()}}),
      ElementsAre("12: the tool may step over the sphere: its radius of 0.199 mm is less than half of the 0.4 mm that "
                  "A#1 Work covers in one cycle at 400 mm/s"));
  EXPECT_EQ(remedy(), "make the radius at least 0.2 mm, or the velocity lower, or the cycle shorter");
}
TEST_F(ProgramChecks, ASphereIsFoundOnceThoughItAccompaniesManyCommands) {
  m_velocity = 0.4;
  m_conditions = {{0.0, {12, 7}}};
  EXPECT_THAT(check({{works(), works(), works()}}), testing::SizeIs(1));
}
TEST_F(ProgramChecks, EveryCycleTimeHasItsOwnLeastRadius) {
  m_scenario.cycleTime = 0.01;
  m_velocity = 0.4;
  m_conditions = {{0.0019, {12, 7}}};
  EXPECT_THAT(check({{works()}}), ElementsAre(HasSubstr("less than half of the 4 mm")));
}
TEST_F(ProgramChecks, NoSphereIsTooSmallForACommandWithoutVelocity) {
  m_conditions = {{0.0, {12, 7}}};
  EXPECT_THAT(check({{works()}}), IsEmpty());
}
TEST_F(ProgramChecks, TheLeastRadiusThatIsNamedIsEnough) {
  for (const double velocity : {0.1, 0.3, 0.7, 13 * 0.001, 1.0 / 3.0, 0.2500001, 1e-7, 12345.678}) {
    m_scenario = {};
    m_velocity = velocity;
    m_conditions = {{0.0, {12, 7}}};
    ASSERT_THAT(check({{works()}}), testing::SizeIs(1));
    double least = 0.0;
    ASSERT_EQ(std::sscanf(remedy().c_str(), "make the radius at least %lf mm", &least), 1) << remedy();
    EXPECT_NEAR(least, velocity / 2.0, velocity * 1e-5) << "and not much more";
    m_scenario = {};
    m_conditions = {{least * 1e-3, {12, 7}}};
    EXPECT_THAT(check({{works()}}), IsEmpty()) << remedy();
  }
}

TEST_F(ProgramChecks, FindingsComeInTheOrderOfTheFile) {
  EXPECT_THAT(check({{works(), waitsSet(1)}, {joins({1, 2}), waitsSet(2)}, {waitsSet(3)}}),
              ElementsAre(HasSubstr("12: "), HasSubstr("21: "), HasSubstr("22: "), HasSubstr("31: ")));
}

}  // namespace
}  // namespace motion::host::run
