// Which options accompany which commands, and what happens to those that are refused.
#include "host/motion/option_set.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

#include "host/motion/motion_object.h"
#include "tests/host/motion/scripted_option.h"

namespace motion::host {
namespace {

using core::ObjectType;
using core::cmd::CmdOptDuration;
using core::cmd::CmdOptPermType;
using core::cmd::CmdResult;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto ONCE = CmdOptPermType::ONCE;
constexpr auto PERM_ON = CmdOptPermType::PERM_ON;
constexpr auto PERM_OFF = CmdOptPermType::PERM_OFF;

struct OptionSetTest : testing::Test {
  /// An option of that name, for commands of that group.
  AcceptedOption::Entry entryOf(const std::string& name, const std::string& group) {
    return std::make_shared<const CmdOptionEntry>(
        test::scriptedOption(options, {ObjectType::AXIS, name}, name == "Stack", {group}));
  }
  OptionSet::Shared accept(const AcceptedOption::Entry& entry, CmdOptPermType permType, const std::string& label) {
    test::Labels values({label});
    problem = "untouched";
    return sut.accept(entry, object, {entry->id.name, permType, values, source}, factory, object.diaLog(), result, problem);
  }
  /// Accepts an option that cannot be refused.
  OptionSet::Shared give(const AcceptedOption::Entry& entry, CmdOptPermType permType, const std::string& label) {
    OptionSet::Shared accepted = accept(entry, permType, label);
    EXPECT_NE(accepted, nullptr) << problem;
    EXPECT_EQ(result, CmdResult::Okay);
    return accepted;
  }
  /// Jobs of options for a command that belongs to that group, in their order.
  std::vector<std::string> accompany(const std::string& group = "moves") {
    CmdEntry command;
    command.id = {ObjectType::AXIS, "Cmd"};
    command.groups = {"others", group};
    std::vector<OptionJob> jobs;
    EXPECT_EQ(sut.accompany(command, factory, jobs, problem), CmdResult::Okay);
    std::vector<std::string> texts;
    for (const OptionJob& job : jobs) {
      texts.push_back(job.job->getJobString());
    }
    return texts;
  }
  /// What others would be stacked upon.
  std::vector<std::string> active(const std::string& name = "Stack") {
    const core::IContainer* data = nullptr;
    const CmdResult answer = sut.getDataOfOption({ObjectType::AXIS, name}, data);
    if (core::isFailure(answer)) {
      EXPECT_EQ(answer, CmdResult::NoOptionData);
      EXPECT_EQ(data, nullptr);
      return {};
    }
    return test::Labels::safeCast(data)->get();
  }
  std::vector<std::string> journal() { return script.takeJournal(); }

  test::Script script;
  test::OptionScript options{script};
  ObjFactory factory;
  RetiredCmds retired;
  MotionObject object{{"X", ObjectType::AXIS, {}, 0.001, 64, 0}, retired};
  core::dia::CmdSourceInfo source{"client", "file", 12};
  CmdResult result = CmdResult::Okay;
  std::string problem;
  const AcceptedOption::Entry plain = entryOf("Plain", "moves");
  const AcceptedOption::Entry stack = entryOf("Stack", "moves");
  OptionSet sut;
};

// Accepting

TEST_F(OptionSetTest, callsAnOptionInTheOrderOfTheContract) {
  give(plain, ONCE, "A");
  EXPECT_THAT(journal(), ElementsAre("A prepareStackable Once of line 12", "A setParameter", "A getDuration Once"));
  accompany();
  EXPECT_THAT(journal(), ElementsAre("A createJobs"));
}

TEST_F(OptionSetTest, handsTheKindOfPermanenceOn) {
  for (const auto& [type, name] : {std::pair{PERM_ON, "PermOn"}, {PERM_OFF, "PermOff"}}) {
    give(plain, type, "A");
    EXPECT_THAT(journal(), ElementsAre(fmt::format("A prepareStackable {} of line 12", name), "A setParameter",
                                       fmt::format("A getDuration {}", name)));
  }
}

TEST_F(OptionSetTest, takesThePermanenceThatStackingLeaves) {
  options.newPermType = PERM_ON;
  give(plain, ONCE, "A");
  EXPECT_THAT(journal(), testing::Contains("A getDuration PermOn"));
  EXPECT_THAT(accompany(), ElementsAre("option A"));
  EXPECT_THAT(accompany(), ElementsAre("option A"));
}

TEST_F(OptionSetTest, knowsWhatItAccepted) {
  const auto first = give(plain, ONCE, "A");
  const auto second = give(stack, PERM_ON, "B");
  EXPECT_EQ(first->name(), "Plain");
  EXPECT_EQ(&second->entry(), stack.get());
  EXPECT_EQ(first->source().client, "client");
  EXPECT_EQ(first->source().line, 12U);
  EXPECT_EQ(first->id(), 1U);
  EXPECT_EQ(second->id(), 2U);
  EXPECT_EQ(first->duration(), CmdOptDuration::ONE_COMMAND);
  EXPECT_EQ(second->duration(), CmdOptDuration::PERMANENT);
  EXPECT_EQ(give(plain, PERM_OFF, "C")->duration(), CmdOptDuration::NONE);
}

TEST_F(OptionSetTest, tellsJobsToWhichOptionTheyBelong) {
  options.jobCount = 2;
  give(plain, PERM_ON, "A");
  const auto second = give(plain, ONCE, "B");
  CmdEntry command;
  command.id = {ObjectType::AXIS, "Cmd"};
  command.groups = {"moves"};
  std::vector<OptionJob> jobs;
  ASSERT_EQ(sut.accompany(command, factory, jobs, problem), CmdResult::Okay);
  ASSERT_EQ(jobs.size(), 4U);
  for (std::size_t i = 0; i < jobs.size(); ++i) {
    EXPECT_EQ(jobs[i].job->getCmdOptMetaInfo().optionID, i < 2 ? 1U : 2U);
    EXPECT_EQ(jobs[i].job->getCmdOptMetaInfo().slot, 7U);
    EXPECT_EQ(jobs[i].option->id(), i < 2 ? 1U : 2U);
  }
  EXPECT_EQ(jobs[3].option, second);
}

// Refusing

TEST_F(OptionSetTest, saysWhyAnOptionIsRefusedAndChangesNothing) {
  const struct {
    CmdResult test::OptionScript::*which;
    CmdResult result;
    const char* problem;
    const char* lastCall;
  } cases[] = {
      {&test::OptionScript::createResult, CmdResult::OptionCreationFailed, "it could not be made", ""},
      {&test::OptionScript::stackResult, CmdResult::Refused, "it could not be stacked upon what is in force",
       "B prepareStackable Once of line 12"},
      {&test::OptionScript::setResult, CmdResult::WrongContainer, "its parameters are not valid", "B setParameter"},
      {&test::OptionScript::durationResult, CmdResult::UnknownPermType, "its permanence is not known", "B getDuration Once"},
  };
  give(plain, PERM_ON, "A");
  for (const auto& refusal : cases) {
    static_cast<void>(journal());
    options.*refusal.which = refusal.result;
    EXPECT_EQ(accept(plain, ONCE, "B"), nullptr);
    EXPECT_EQ(result, refusal.result);
    EXPECT_EQ(problem, refusal.problem);
    const auto calls = journal();
    EXPECT_EQ(calls.empty() ? "" : calls.back(), refusal.lastCall) << "nothing is asked after a refusal";
    EXPECT_EQ(options.optionsAlive, 1);
    options.*refusal.which = CmdResult::Okay;
    EXPECT_THAT(accompany(), ElementsAre("option A"));
  }
  EXPECT_EQ(give(plain, ONCE, "C")->id(), 2U) << "no number was used up";
}

TEST_F(OptionSetTest, refusesWhatTheFactoryDidNotMake) {
  options.makesOption = false;
  options.createText = "not today";
  EXPECT_EQ(accept(plain, ONCE, "A"), nullptr);
  EXPECT_EQ(result, CmdResult::OptionCreationFailed);
  EXPECT_EQ(problem, "not today");
  EXPECT_THAT(sut.state(), IsEmpty());
}

TEST_F(OptionSetTest, anOptionThatThrowsIsNotInForce) {
  for (const char* operation : {"option.create", "option.prepareStackable", "option.setParameter", "option.getDuration"}) {
    script.at = [operation](std::string_view now) {
      if (now == operation) {
        throw std::runtime_error("no");
      }
    };
    EXPECT_THROW(accept(plain, PERM_ON, "A"), std::runtime_error) << operation;
    EXPECT_EQ(options.optionsAlive, 0) << operation;
    EXPECT_THAT(sut.state(), IsEmpty());
  }
}

// Jobs

TEST_F(OptionSetTest, namesTheOptionThatCouldNotMakeItsJobs) {
  CmdEntry command;
  command.id = {ObjectType::AXIS, "Cmd"};
  command.groups = {"moves"};
  give(plain, PERM_ON, "A");
  for (const auto& [count, null] : {std::pair{0, -1}, {1, 0}, {3, 1}}) {
    options.jobCount = count;
    options.nullJob = null;
    std::vector<OptionJob> jobs;
    EXPECT_EQ(sut.accompany(command, factory, jobs, problem), CmdResult::JobCreationFailed);
    EXPECT_EQ(problem, "option 'Plain' could not make its jobs");
    EXPECT_THAT(jobs, IsEmpty());
    EXPECT_EQ(options.jobsAlive, 0) << "those beside the missing one";
  }
}

// What is in force

TEST_F(OptionSetTest, onceAccompaniesTheNextCommandOnly) {
  EXPECT_THAT(accompany(), IsEmpty());
  give(plain, ONCE, "A");
  EXPECT_THAT(accompany(), ElementsAre("option A"));
  EXPECT_EQ(options.optionsAlive, 1) << "it can be stacked upon until then";
  EXPECT_THAT(accompany(), IsEmpty());
  EXPECT_EQ(options.optionsAlive, 0);
}

TEST_F(OptionSetTest, onceWaitsForACommandOfItsGroups) {
  give(plain, ONCE, "A");
  EXPECT_THAT(accompany("dwells"), IsEmpty());
  EXPECT_THAT(accompany("moves"), ElementsAre("option A"));
}

TEST_F(OptionSetTest, permOnAccompaniesEveryCommandOfItsGroupsUntilPermOff) {
  give(plain, PERM_ON, "A");
  for (int i = 0; i < 3; ++i) {
    EXPECT_THAT(accompany("moves"), ElementsAre("option A"));
    EXPECT_THAT(accompany("dwells"), IsEmpty());
  }
  give(plain, PERM_OFF, "B");
  EXPECT_THAT(accompany(), IsEmpty());
  EXPECT_EQ(options.optionsAlive, 0);
}

TEST_F(OptionSetTest, permOnTakesThePlaceOfAnother) {
  give(plain, PERM_ON, "A");
  give(plain, PERM_ON, "B");
  EXPECT_THAT(accompany(), ElementsAre("option B"));
  EXPECT_THAT(accompany(), ElementsAre("option B"));
}

TEST_F(OptionSetTest, permOffWithoutAnythingToEndIsFine) {
  give(plain, PERM_OFF, "A");
  EXPECT_THAT(accompany(), IsEmpty());
}

TEST_F(OptionSetTest, permOffLeavesWhatIsForTheNextCommand) {
  give(plain, PERM_ON, "A");
  give(plain, ONCE, "B");
  give(plain, PERM_OFF, "C");
  EXPECT_THAT(accompany(), ElementsAre("option B"));
  give(stack, ONCE, "D");
  give(stack, PERM_OFF, "E");
  EXPECT_THAT(active(), ElementsAre("D"));
  EXPECT_THAT(accompany(), ElementsAre("option D"));
}

TEST_F(OptionSetTest, optionsThatDoNotStackAccompanySideBySideInTheirOrder) {
  give(plain, ONCE, "A");
  give(plain, PERM_ON, "B");
  give(plain, ONCE, "C");
  EXPECT_THAT(accompany(), ElementsAre("option A", "option B", "option C"));
  EXPECT_THAT(accompany(), ElementsAre("option B"));
}

TEST_F(OptionSetTest, optionsOfSeveralNamesComeInTheOrderInWhichTheyWereGiven) {
  give(stack, ONCE, "A");
  give(plain, ONCE, "B");
  EXPECT_THAT(accompany(), ElementsAre("option A", "option B"));
  give(plain, ONCE, "C");
  give(stack, ONCE, "D");
  EXPECT_THAT(accompany(), ElementsAre("option C", "option D+A"));
}

TEST_F(OptionSetTest, permOffEndsOptionsOfItsNameOnly) {
  const auto other = entryOf("Other", "moves");
  give(plain, PERM_ON, "A");
  give(other, PERM_ON, "B");
  give(plain, PERM_OFF, "C");
  EXPECT_THAT(accompany(), ElementsAre("option B"));
}

// Stacking

TEST_F(OptionSetTest, offersTheDataOfTheNewestOption) {
  EXPECT_THAT(active(), IsEmpty());
  give(stack, ONCE, "A");
  EXPECT_THAT(active(), ElementsAre("A"));
  give(stack, ONCE, "B");
  EXPECT_THAT(active(), ElementsAre("B", "A"));
  const core::IContainer* data = nullptr;
  EXPECT_EQ(sut.getDataOfOption({ObjectType::KINEMATICS, "Stack"}, data), CmdResult::NoOptionData);
  EXPECT_EQ(sut.getDataOfOption({ObjectType::AXIS, "Plain"}, data), CmdResult::NoOptionData);
  give(plain, ONCE, "C");
  EXPECT_EQ(sut.getDataOfOption({ObjectType::AXIS, "Plain"}, data), CmdResult::UnknownPermType) << "it keeps none";
}

TEST_F(OptionSetTest, theNewestOfSeveralThatStackStandsForAll) {
  give(stack, ONCE, "A");
  give(stack, ONCE, "B");
  give(stack, ONCE, "C");
  EXPECT_THAT(accompany(), ElementsAre("option C+B+A"));
}

TEST_F(OptionSetTest, whatAccompaniedTheLastCommandIsStackedUpon) {
  give(stack, ONCE, "A");
  accompany();
  give(stack, ONCE, "B");
  EXPECT_THAT(accompany(), ElementsAre("option B+A"));
  options.spent = {"A"};
  give(stack, ONCE, "C");
  EXPECT_THAT(accompany(), ElementsAre("option C+B"));
}

TEST_F(OptionSetTest, anOptionLapsesWhenACommandOfItsGroupsIsIssuedWithoutIt) {
  give(stack, ONCE, "A");
  accompany();
  accompany("dwells");
  EXPECT_THAT(active(), ElementsAre("A")) << "a command of other groups does not count";
  accompany();
  EXPECT_THAT(active(), IsEmpty());
  give(stack, ONCE, "B");
  EXPECT_THAT(accompany(), ElementsAre("option B"));
}

TEST_F(OptionSetTest, permOffEndsWhatCouldBeStackedUpon) {
  give(stack, ONCE, "A");
  accompany();
  give(stack, PERM_OFF, "B");
  EXPECT_THAT(active(), IsEmpty());
  EXPECT_THAT(accompany(), IsEmpty());
}

TEST_F(OptionSetTest, aPermanentOptionThatStacksTakesOverWhatIsForTheNextCommand) {
  give(stack, ONCE, "A");
  give(stack, PERM_ON, "B");
  EXPECT_THAT(accompany(), ElementsAre("option B+A"));
  EXPECT_THAT(accompany(), ElementsAre("option B+A"));
}

TEST_F(OptionSetTest, anOptionForOneCommandStandsForThePermanentOneThatItTookOver) {
  give(stack, PERM_ON, "A");
  give(stack, ONCE, "B");
  EXPECT_THAT(accompany(), ElementsAre("option B+A"));
  EXPECT_THAT(accompany(), ElementsAre("option A"));
  EXPECT_THAT(active(), ElementsAre("A"));
}

// State

TEST_F(OptionSetTest, anEarlierStateCanBeRestored) {
  give(plain, PERM_ON, "A");
  give(stack, ONCE, "B");
  OptionSet::State before = sut.state();
  give(plain, PERM_OFF, "C");
  give(stack, ONCE, "D");
  accompany();
  sut.restore(std::move(before));
  EXPECT_THAT(active(), ElementsAre("B"));
  EXPECT_THAT(accompany(), ElementsAre("option A", "option B"));
}

TEST_F(OptionSetTest, forgetsEverything) {
  give(plain, PERM_ON, "A");
  give(stack, ONCE, "B");
  sut.clear();
  EXPECT_EQ(options.optionsAlive, 0);
  EXPECT_THAT(accompany(), IsEmpty());
  EXPECT_THAT(active(), IsEmpty());
}

// What can accompany what

TEST(CanAccompany, CommandsOfItsGroups) {
  CmdOptionEntry option;
  option.id = {ObjectType::AXIS, "Option"};
  CmdEntry command;
  command.id = {ObjectType::AXIS, "Cmd"};
  command.groups = {"one", "two"};
  EXPECT_FALSE(canAccompany(option, command));
  option.groups = {"three", "two"};
  EXPECT_TRUE(canAccompany(option, command));
  option.groups = {"three"};
  EXPECT_FALSE(canAccompany(option, command));
}

TEST(CanAccompany, AllCommandsOfATypeOfObject) {
  for (const auto& [type, other] :
       {std::pair{ObjectType::AXIS, ObjectType::KINEMATICS}, {ObjectType::KINEMATICS, ObjectType::AXIS}}) {
    CmdOptionEntry option;
    option.id = {type, "Option"};
    option.groups = {test::allCommandsOf(type)};
    CmdEntry command;
    command.id = {type, "Cmd"};
    EXPECT_TRUE(canAccompany(option, command));
    command.id.objectType = other;
    command.groups = option.groups;
    EXPECT_FALSE(canAccompany(option, command)) << "groups of the other type of object";
    option.id.objectType = other;
    command.groups.clear();
    EXPECT_FALSE(canAccompany(option, command)) << "a group that means nothing for this type";
  }
}

}  // namespace
}  // namespace motion::host
