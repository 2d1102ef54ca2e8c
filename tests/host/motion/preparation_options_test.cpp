// Options that go with commands: in force or not, in one piece with the command.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <new>
#include <stdexcept>
#include <string_view>

#include "host/motion/preparation.h"
#include "tests/host/motion/world.h"

namespace motion::host {
namespace {

using core::FctResult;
using core::cmd::CmdOptPermType;
using core::cmd::CmdResult;
using core::cmd::CmdState;
using core::job::JobResult;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr auto ONCE = CmdOptPermType::ONCE;
constexpr auto PERM_ON = CmdOptPermType::PERM_ON;
constexpr auto PERM_OFF = CmdOptPermType::PERM_OFF;

struct PreparationOptionsTest : testing::Test {
  PreparationOptionsTest() { world.registerOptions(); }

  /// Runs cycles until nothing is left, and gives the labels of the options whose jobs ran, in each cycle once for each
  /// command.
  std::vector<std::string> runAndCollect() {
    static_cast<void>(script.takeJournal());
    world.step(8);
    std::vector<std::string> cyclic;
    for (const std::string& line : script.takeJournal()) {
      if (line.ends_with(" cyclic")) {
        cyclic.push_back(line.substr(0, line.size() - std::string_view(" cyclic").size()));
      }
    }
    return cyclic;
  }
  /// Issues what must be refused, and finds that nothing of it stays. "P" is in force all the time.
  FctResult refusal(const std::vector<test::GivenOption>& given, const char* operation = "") {
    unsigned long id = 4711;
    const FctResult result = world.tryIssue(axis, "A", given, id);
    EXPECT_TRUE(core::isFailure(result)) << operation;
    EXPECT_EQ(id, 4711U) << operation;
    EXPECT_EQ(sut.alive(), 0U) << operation;
    EXPECT_EQ(axis.bufferedCount(), 0U) << operation;
    EXPECT_EQ(script.commandsAlive, 0) << operation;
    EXPECT_EQ(script.jobsAlive, 1) << "the prototype; " << operation;
    EXPECT_EQ(options.optionsAlive, 1) << "P; " << operation;
    EXPECT_EQ(options.jobsAlive, 0) << operation;
    EXPECT_EQ(axis.options().state().size(), 1U) << operation;
    return result;
  }
  void givePermanent() { ASSERT_EQ(world.giveOption(axis, {"Plain", PERM_ON, "P"}), FctResult::Okay); }

  std::vector<std::string> operations;
  test::World world;
  test::Script& script = world.script;
  test::OptionScript& options = world.options;
  Preparation& sut = world.runtime.preparation();
  MotionObject& axis = world.addAxis("X");
};

TEST_F(PreparationOptionsTest, callsOptionsAndCommandInTheOrderOfTheContract) {
  script.at = [this](std::string_view operation) { operations.emplace_back(operation); };
  world.issue(axis, "A", {{"Plain", ONCE, "O"}});
  EXPECT_THAT(operations,
              ElementsAre("option.create", "option.prepareStackable", "option.setParameter", "option.getDuration", "create",
                          "onSetCmdValues", "onValidate", "option.createJobs", "onRegisterJobListsInputs", "getJobNames",
                          "createNew", "registerOutputs", "registerInputs", "addJobsToJoblist", "addJobsToJoblist",
                          "addJobsToJoblist", "option.registerInputs", "option.addJobsToJoblist", "option.addJobsToJoblist",
                          "option.addJobsToJoblist", "onCmdStateChanged"));
}

TEST_F(PreparationOptionsTest, makesJobsOnceForEachAccompaniedCommand) {
  givePermanent();
  static_cast<void>(script.takeJournal());
  for (const char* label : {"A", "B", "C"}) {
    world.issue(axis, label);
    EXPECT_THAT(script.takeJournal(), ElementsAre("P createJobs", fmt::format("{} BUFFERED", label)));
  }
  EXPECT_EQ(options.jobsAlive, 3);
  world.step(5);
  EXPECT_EQ(options.jobsAlive, 0);
  EXPECT_EQ(options.optionsAlive, 1);
}

TEST_F(PreparationOptionsTest, runsJobsOfOptionsBehindTheCommandsOwnInEachList) {
  const auto nothing = [](const std::string&, unsigned) { return JobResult::NoEffect; };
  script.prepared = script.before = nothing;
  options.prepared = options.before = nothing;
  world.issue(axis, "A", {{"Plain", ONCE, "O"}, {"Stack", ONCE, "S"}});
  static_cast<void>(script.takeJournal());
  world.step(2);
  EXPECT_THAT(script.takeJournal(),
              ElementsAre("A prepared", "O prepared", "S prepared", "A PREPARED", "A ACTIVE", "A activate", "A before",
                          "O before", "S before", "A cyclic", "O cyclic", "S cyclic", "A exit", "A DONE", "A destroyed"));
}

TEST_F(PreparationOptionsTest, ofAKinematicsToo) {
  MotionObject& robot = world.addKinematics("Robot");
  world.issue(robot, "A", {{"Plain", PERM_ON, "O"}});
  world.issue(robot, "B");
  world.issue(axis, "C");
  EXPECT_THAT(runAndCollect(), ElementsAre("C", "A", "O", "B", "O")) << "an object's options are its own";
}

TEST_F(PreparationOptionsTest, severalAtOneCommandStackAndStandSideBySide) {
  world.issue(axis, "A", {{"Plain", ONCE, "O"}, {"Stack", ONCE, "S"}, {"Plain", ONCE, "Q"}, {"Stack", ONCE, "T"}});
  world.issue(axis, "B");
  EXPECT_THAT(runAndCollect(), ElementsAre("A", "O", "Q", "T+S", "B"));
}

TEST_F(PreparationOptionsTest, whatWaitsInTheBufferKeepsWhatItWasIssuedWith) {
  givePermanent();
  world.issue(axis, "A");
  ASSERT_EQ(world.giveOption(axis, {"Plain", PERM_ON, "Q"}), FctResult::Okay);
  world.issue(axis, "B");
  ASSERT_EQ(world.giveOption(axis, {"Plain", PERM_OFF, "-"}), FctResult::Okay);
  world.issue(axis, "C");
  EXPECT_EQ(options.optionsAlive, 2) << "those of the commands that wait";
  EXPECT_THAT(runAndCollect(), ElementsAre("A", "P", "B", "Q", "C"));
  EXPECT_EQ(options.optionsAlive, 0);
}

TEST_F(PreparationOptionsTest, anAbortKeepsPermanentOptions) {
  givePermanent();
  world.issue(axis, "A", {{"Plain", ONCE, "O"}});
  axis.abortAll();
  world.step(2);
  EXPECT_EQ(sut.alive(), 0U);
  world.issue(axis, "B");
  EXPECT_THAT(runAndCollect(), ElementsAre("B", "P")) << "what was for one command went with it";
}

TEST_F(PreparationOptionsTest, aJobOfAnOptionThatFailsEndsTheCommandInError) {
  options.cyclic = [](const std::string&, unsigned) { return JobResult::ExecutionFailed; };
  script.cyclic = [](const std::string&, unsigned) { return JobResult::Busy; };
  const auto id = world.issue(axis, "A", {{"Plain", ONCE, "O"}});
  world.step();
  EXPECT_EQ(axis.getCmdState(id), CmdState::FAILED);
}

// Refusals

TEST_F(PreparationOptionsTest, anUnknownOptionRefusesTheCommand) {
  givePermanent();
  EXPECT_EQ(refusal({{"Plain", PERM_OFF, "-"}, {"Flat", ONCE, "O"}}), FctResult::OptionNotSupported);
  EXPECT_EQ(world.problem, "'Flat' is not an option of axis 'X'");
  EXPECT_EQ(world.giveOption(world.addKinematics("Robot"), {"Flat", ONCE, "O"}), FctResult::OptionNotSupported);
  EXPECT_EQ(world.problem, "'Flat' is not an option of kinematics 'Robot'");
  world.issue(axis, "A");
  EXPECT_THAT(runAndCollect(), ElementsAre("A", "P"));
}

TEST_F(PreparationOptionsTest, anOptionThatIsRefusedRefusesTheCommandAndTakesTheOthersBack) {
  givePermanent();
  options.diagnosis = "too round";
  options.setResult = CmdResult::Refused;
  EXPECT_EQ(refusal({{"Plain", PERM_OFF, "-"}}), FctResult::InvalidParameter);
  EXPECT_EQ(world.problem,
            "option 'Plain' of 'X' was refused (0xF011001D): its parameters are not valid: too round (0x00000001, "
            "0x00000002)");
  options.diagnosis = "";
  EXPECT_EQ(refusal({{"Plain", ONCE, "O"}}), FctResult::InvalidParameter);
  EXPECT_EQ(world.problem, "option 'Plain' of 'X' was refused (0xF011001D): its parameters are not valid");
  options.setResult = CmdResult::Okay;
  options.durationResult = CmdResult::UnknownPermType;
  EXPECT_EQ(refusal({{"Stack", ONCE, "O"}}), FctResult::PreparationError);
  EXPECT_EQ(world.problem, "option 'Stack' of 'X' was refused (0xF011001A): its permanence is not known");
  options.durationResult = CmdResult::Okay;
  world.issue(axis, "A");
  EXPECT_THAT(runAndCollect(), ElementsAre("A", "P"));
}

TEST_F(PreparationOptionsTest, anOptionWhoseJobsCannotBeMadeRefusesTheCommandAndSaysSo) {
  for (const auto& [count, null] : {std::pair{0, -1}, {2, 1}}) {
    ASSERT_EQ(world.giveOption(axis, {"Plain", PERM_ON, "P"}), FctResult::Okay);
    options.jobCount = count;
    options.nullJob = null;
    EXPECT_EQ(refusal({{"Plain", ONCE, "O"}}), FctResult::PreparationError);
    EXPECT_EQ(world.problem, "'Test' of 'X' was refused (0xF0110004): option 'Plain' could not make its jobs");
    options.jobCount = 1;
    options.nullJob = -1;
  }
  options.inputsResult = JobResult::DataNotPublished;
  EXPECT_EQ(refusal({{"Plain", ONCE, "O"}}), FctResult::PreparationError);
  EXPECT_EQ(world.problem,
            "'Test' of 'X' was refused (0xF0110007): option 'Plain': job object 'option_job' could not register its data: "
            "0xF0000020");
  options.inputsResult = JobResult::NoEffect;
  world.issue(axis, "A");
  EXPECT_THAT(runAndCollect(), ElementsAre("A", "P"));
}

TEST_F(PreparationOptionsTest, aCommandThatIsRefusedTakesItsOptionsBack) {
  givePermanent();
  script.validateResult = CmdResult::Refused;
  EXPECT_EQ(refusal({{"Plain", PERM_OFF, "-"}, {"Stack", ONCE, "O"}}), FctResult::InvalidParameter);
  script.validateResult = CmdResult::Okay;
  world.issue(axis, "A");
  EXPECT_THAT(runAndCollect(), ElementsAre("A", "P"));
}

TEST_F(PreparationOptionsTest, aFullBufferLeavesOptionsAsTheyWere) {
  test::World full(RuntimeConfig{0.001, 1});
  full.registerOptions();
  MotionObject& object = full.addAxis("X");
  full.issue(object, "A", {{"Plain", PERM_ON, "P"}});
  static_cast<void>(full.script.takeJournal());
  unsigned long id = 4711;
  EXPECT_EQ(full.tryIssue(object, "B", {{"Plain", PERM_OFF, "-"}}, id), FctResult::TooManyCommands);
  EXPECT_THAT(full.script.takeJournal(), IsEmpty()) << "nobody was asked";
  EXPECT_EQ(full.problem, "the command buffer of 'X' is full (1 commands)");
  full.step(2);
  full.issue(object, "B");
  EXPECT_THAT(full.script.takeJournal(), testing::Contains("P createJobs"));
}

TEST_F(PreparationOptionsTest, exceptionsOfAnOptionDoNotEscapeAndLoseNothing) {
  givePermanent();
  for (const char* operation : {"option.create", "option.prepareStackable", "option.setParameter", "option.getDuration",
                                "option.createJobs", "option.registerInputs", "option.addJobsToJoblist"}) {
    for (int kind = 0; kind < 3; ++kind) {
      script.at = [operation, kind](std::string_view now) {
        if (now == operation) {
          if (kind == 0) {
            throw std::runtime_error("out of luck");
          }
          if (kind == 1) {
            throw std::bad_alloc();
          }
          throw 42;
        }
      };
      EXPECT_EQ(refusal({{"Plain", PERM_OFF, "-"}, {"Stack", ONCE, "O"}}, operation),
                kind == 1 ? FctResult::OutOfMemory : FctResult::PreparationError);
      EXPECT_THAT(world.problem, HasSubstr(kind == 0 ? "out of luck" : kind == 1 ? "no memory" : "unknown exception"));
    }
  }
  script.at = [](std::string_view) {};
  world.issue(axis, "A");
  EXPECT_THAT(runAndCollect(), ElementsAre("A", "P"));
}

TEST_F(PreparationOptionsTest, anOptionAloneIsRefusedInOnePieceToo) {
  script.at = [](std::string_view operation) {
    if (operation == "option.getDuration") {
      throw std::runtime_error("out of luck");
    }
  };
  EXPECT_EQ(world.giveOption(axis, {"Stack", PERM_ON, "O"}), FctResult::PreparationError);
  EXPECT_EQ(world.problem, "'Stack' of 'X' could not be made: out of luck");
  EXPECT_THAT(axis.options().state(), IsEmpty());
  EXPECT_EQ(options.optionsAlive, 0);
}

// Trying out

TEST_F(PreparationOptionsTest, tryOutAnswersAsAddWouldAndLeavesNothing) {
  givePermanent();
  EXPECT_EQ(world.tryOut(axis, "A", {{"Plain", PERM_OFF, "-"}, {"Stack", PERM_ON, "O"}}), FctResult::Okay);
  EXPECT_EQ(options.optionsAlive, 1);
  EXPECT_EQ(options.jobsAlive, 0);
  options.setResult = CmdResult::Refused;
  options.diagnosis = "too round";
  EXPECT_EQ(world.tryOut(axis, "A", {{"Stack", ONCE, "O"}}), FctResult::InvalidParameter);
  EXPECT_THAT(world.problem, HasSubstr("option 'Stack' of 'X' was refused (0xF011001D)"));
  EXPECT_THAT(world.problem, HasSubstr("too round"));
  EXPECT_EQ(axis.diaLog().count(), 0U) << "a diagnosis of nothing that the object does";
  world.issue(axis, "A");
  EXPECT_THAT(runAndCollect(), ElementsAre("A", "P"));
}

// Watch

/// Notes what it is shown, and may refuse.
class NotingWatch : public ICmdWatch {
 public:
  void onAccepted(const AcceptedOption& option, const MotionObject& object) noexcept override {
    notes.push_back(fmt::format("{} of {}", option.name(), object.name()));
  }
  JobResult onBuilt(CmdFrame& frame) noexcept override {
    std::string uses;
    for (const CmdFrame::OptionUse& use : frame.options()) {
      uses += fmt::format(" {}={}", use.option->name(), use.job->getJobString());
    }
    notes.push_back(fmt::format("{}:{}", frame.jobString(), uses));
    return result;
  }

  JobResult result = JobResult::NoEffect;
  std::vector<std::string> notes;
};

TEST_F(PreparationOptionsTest, showsItsWatchOptionsAndCommandsThatAreReady) {
  NotingWatch watch;
  sut.setWatch(&watch);
  ASSERT_EQ(world.giveOption(axis, {"Plain", PERM_ON, "P"}), FctResult::Okay);
  world.issue(axis, "A", {{"Stack", ONCE, "O"}});
  EXPECT_THAT(watch.notes,
              ElementsAre("Plain of X", "Stack of X", "job of A, option P, option O: Plain=option P Stack=option O"));
  watch.notes.clear();
  EXPECT_EQ(world.tryOut(axis, "A", {{"Stack", ONCE, "O"}}), FctResult::Okay);
  options.setResult = CmdResult::Refused;
  unsigned long id = 0;
  EXPECT_EQ(world.tryIssue(axis, "A", {{"Stack", ONCE, "O"}}, id), FctResult::InvalidParameter);
  EXPECT_EQ(world.giveOption(axis, {"Stack", ONCE, "O"}), FctResult::InvalidParameter);
  EXPECT_THAT(watch.notes, IsEmpty()) << "neither what is tried out nor what is refused";
  options.setResult = CmdResult::Okay;
  EXPECT_EQ(world.giveOption(axis, {"Plain", PERM_OFF, "-"}), FctResult::Okay);
  EXPECT_THAT(watch.notes, IsEmpty()) << "nor what only ends others";
  sut.setWatch(nullptr);
}

TEST_F(PreparationOptionsTest, aWatchWithoutMemoryRefusesTheCommand) {
  givePermanent();
  NotingWatch watch;
  watch.result = JobResult::OutOfMemory;
  sut.setWatch(&watch);
  EXPECT_EQ(refusal({{"Plain", PERM_OFF, "-"}}), FctResult::OutOfMemory);
  sut.setWatch(nullptr);
  world.issue(axis, "A");
  EXPECT_THAT(runAndCollect(), ElementsAre("A", "P"));
}

// The end

TEST_F(PreparationOptionsTest, stoppingTakesAllOptionsBack) {
  givePermanent();
  world.issue(axis, "A", {{"Stack", ONCE, "O"}});
  ASSERT_EQ(world.giveOption(axis, {"Plain", ONCE, "Q"}), FctResult::Okay);
  EXPECT_EQ(options.optionsAlive, 3);
  world.runtime.stopCommands();
  EXPECT_EQ(options.optionsAlive, 0);
  EXPECT_EQ(options.jobsAlive, 0);
  EXPECT_EQ(world.runtime.cmdOptionFactory().unregisterCmdOption({core::ObjectType::AXIS, "Plain"}), CmdResult::Okay);
  world.issue(axis, "B");
  EXPECT_THAT(runAndCollect(), ElementsAre("B"));
}

}  // namespace
}  // namespace motion::host
