// Creating, checking, preparing and taking back commands.
#include "host/motion/preparation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <new>
#include <stdexcept>
#include <string_view>

#include "tests/host/motion/world.h"

namespace motion::host {
namespace {

using core::FctResult;
using core::cmd::CmdResult;
using core::cmd::CmdState;
using core::job::JobResult;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

struct PreparationTest : testing::Test {
  /// Issues a command that must be refused.
  FctResult refusal(const std::string& cmdName = "Test") {
    unsigned long id = 4711;
    world.problem.clear();
    const FctResult result = sut.add(axis, {cmdName, test::Label("A"), world.source}, id, world.problem);
    EXPECT_TRUE(core::isFailure(result));
    EXPECT_EQ(id, 4711U);
    EXPECT_EQ(sut.alive(), 0U);
    EXPECT_EQ(axis.bufferedCount(), 0U);
    EXPECT_EQ(script.commandsAlive, 0);
    EXPECT_EQ(script.jobsAlive, 1) << "the prototype";
    return result;
  }

  std::vector<std::string> operations;
  test::World world;
  test::Script& script = world.script;
  Preparation& sut = world.runtime.preparation();
  MotionObject& axis = world.addAxis("X");
};

TEST_F(PreparationTest, callsACommandsOperationsInTheOrderOfTheContract) {
  script.at = [this](std::string_view operation) { operations.emplace_back(operation); };
  world.issue(axis, "A");
  EXPECT_THAT(operations, ElementsAre("create", "onSetCmdValues", "onValidate", "onRegisterJobListsInputs", "getJobNames",
                                      "createNew", "registerOutputs", "registerInputs", "addJobsToJoblist",
                                      "addJobsToJoblist", "addJobsToJoblist", "onCmdStateChanged"));
}

TEST_F(PreparationTest, numbersCommandsFromOneAcrossAllObjects) {
  MotionObject& other = world.addKinematics("Robot");
  EXPECT_EQ(world.issue(axis, "A"), 1U);
  EXPECT_EQ(world.issue(other, "B"), 2U);
  EXPECT_EQ(world.issue(axis, "C"), 3U);
  EXPECT_EQ(sut.alive(), 3U);
}

TEST_F(PreparationTest, preparesInTheOrderOfIssue) {
  MotionObject& other = world.addAxis("Y");
  script.prepared = [](const std::string&, unsigned) { return JobResult::NoEffect; };
  world.issue(axis, "A");
  world.issue(other, "B");
  world.issue(axis, "C");
  static_cast<void>(script.takeJournal());
  sut.prepareAll();
  EXPECT_THAT(script.takeJournal(),
              ElementsAre("A prepared", "A PREPARED", "B prepared", "B PREPARED", "C prepared", "C PREPARED"));
}

TEST_F(PreparationTest, aCommandWhosePreparedJobFailsNeverReachesTheCycle) {
  for (const bool throws : {false, true}) {
    script.prepared = [throws](const std::string&, unsigned) -> JobResult {
      if (throws) {
        throw std::runtime_error("no");
      }
      return JobResult::InvalidObject;
    };
    const auto id = world.issue(axis, "A");
    world.step(3);
    EXPECT_EQ(axis.getCmdState(id), CmdState::FAILED);
    EXPECT_THAT(script.takeJournal(), ElementsAre("A BUFFERED", "A prepared", "A FAILED", "A destroyed"));
    EXPECT_EQ(axis.getLatestPreparedCmdID(), 0U);
    EXPECT_EQ(axis.bufferedCount(), 0U);
    EXPECT_EQ(sut.alive(), 0U);
  }
  EXPECT_THAT(world.takeEvents(), IsEmpty());
}

TEST_F(PreparationTest, aFailureInPreparationAbortsWhatIsBehindItAndNothingElse) {
  MotionObject& other = world.addAxis("Y");
  script.prepared = [](const std::string& label, unsigned) {
    return label == "bad" ? JobResult::InvalidObject : JobResult::NoEffect;
  };
  script.cyclic = [](const std::string& label, unsigned call) {
    return label == "current" && call < 3 ? JobResult::Busy : JobResult::CmdFinished;
  };
  const auto current = world.issue(axis, "current");
  world.step();
  const auto ahead = world.issue(axis, "ahead");
  const auto bad = world.issue(axis, "bad");
  const auto elsewhere = world.issue(other, "elsewhere");
  const auto behind = world.issue(axis, "behind");
  world.step();
  EXPECT_EQ(axis.getCmdState(bad), CmdState::FAILED);
  EXPECT_EQ(axis.getCmdState(behind), CmdState::ABORTED);
  EXPECT_EQ(axis.getCmdState(current), CmdState::ACTIVE);
  const auto later = world.issue(axis, "later");
  world.step(4);
  EXPECT_EQ(axis.getCmdState(current), CmdState::DONE);
  EXPECT_EQ(axis.getCmdState(ahead), CmdState::DONE);
  EXPECT_EQ(axis.getCmdState(later), CmdState::DONE);
  EXPECT_EQ(other.getCmdState(elsewhere), CmdState::DONE);
  EXPECT_EQ(sut.alive(), 0U);
  EXPECT_EQ(axis.bufferedCount(), 0U);
}

// Refusals

TEST_F(PreparationTest, refusesAnUnknownCommand) {
  EXPECT_EQ(refusal("Fly"), FctResult::NotSupportedByObject);
  EXPECT_EQ(world.problem, "'Fly' is not a command of axis 'X'");
  unsigned long id = 0;
  MotionObject& robot = world.addKinematics("Robot");
  EXPECT_EQ(sut.add(robot, {"MoveAbs", test::Label("A"), world.source}, id, world.problem), FctResult::NotSupportedByObject);
  EXPECT_EQ(world.problem, "'MoveAbs' is not a command of kinematics 'Robot'");
}

TEST_F(PreparationTest, refusesInvalidParametersWithTheTextOfTheDiagnosis) {
  axis.diaLog().report(1, 1, {}, {}, "an older diagnosis");
  script.validateResult = CmdResult::Refused;
  script.diagnosis = "too fast";
  EXPECT_EQ(refusal(), FctResult::InvalidParameter);
  EXPECT_EQ(world.problem,
            "'Test' of 'X' was refused (0xF011001D): its parameters are not valid: too fast (0x00000001, "
            "0x00000002)");
}

TEST_F(PreparationTest, refusesInvalidParametersWithoutADiagnosis) {
  axis.diaLog().report(1, 1, {}, {}, "an older diagnosis");
  script.validateResult = CmdResult::Refused;
  EXPECT_EQ(refusal(), FctResult::InvalidParameter);
  EXPECT_EQ(world.problem, "'Test' of 'X' was refused (0xF011001D): its parameters are not valid");
}

TEST_F(PreparationTest, refusesParametersOfAnotherType) {
  unsigned long id = 0;
  EXPECT_EQ(sut.add(axis, {"Test", AxisSetpoint(), world.source}, id, world.problem), FctResult::InvalidParameter);
  EXPECT_EQ(world.problem, "'Test' of 'X' was refused (0xF011000E): its parameters were not accepted");
}

TEST_F(PreparationTest, refusesACommandThatCouldNotBeMade) {
  script.createResult = CmdResult::OutOfMemory;
  EXPECT_EQ(refusal(), FctResult::OutOfMemory);
  EXPECT_EQ(world.problem, "'Test' of 'X' was refused (0xF0110023)");
  script.createResult = CmdResult::Refused;
  script.createText = "not today";
  EXPECT_EQ(refusal(), FctResult::InvalidParameter);
  EXPECT_EQ(world.problem, "'Test' of 'X' was refused (0xF011001D): not today");
}

TEST_F(PreparationTest, refusesWhenTheFactoryMakesNothing) {
  CmdEntry entry;
  entry.id = {core::ObjectType::AXIS, "Empty"};
  entry.create = [](core::IObjFactory&, bool, std::unique_ptr<core::cmd::ICmdGeneric>&, std::string&) {
    return CmdResult::Okay;
  };
  world.runtime.cmdFactory().addBuiltIn(entry);
  EXPECT_EQ(refusal("Empty"), FctResult::PreparationError);
  EXPECT_THAT(world.problem, HasSubstr("0xF0110011"));
}

TEST_F(PreparationTest, refusesWhenAJobObjectIsMissing) {
  script.jobNames = {"test_job", "absent"};
  EXPECT_EQ(refusal(), FctResult::PreparationError);
  EXPECT_EQ(world.problem, "'Test' of 'X' was refused (0xF0110004): job object 'absent' could not be created: 0xF0150001");
}

TEST_F(PreparationTest, refusesWhenNobodyPublishesWhatAJobReads) {
  script.publishes = false;
  EXPECT_EQ(refusal(), FctResult::PreparationError) << "the parameters are not to blame";
  EXPECT_THAT(world.problem, HasSubstr("job object 'test_job' could not register its data: 0xF0000020"));
}

TEST_F(PreparationTest, refusesWhenTheCommandCannotRegisterItsData) {
  script.inputsResult = CmdResult::JobRegistrationFailed;
  EXPECT_EQ(refusal(), FctResult::PreparationError);
  EXPECT_THAT(world.problem, HasSubstr("the command refused to register its job data"));
}

TEST_F(PreparationTest, exceptionsOfACommandDoNotEscapeAndLoseNothing) {
  const auto earlier = world.issue(axis, "earlier");
  unsigned long id = 4711;
  for (const char* operation : {"create", "onSetCmdValues", "onValidate", "onRegisterJobListsInputs", "getJobNames",
                                "createNew", "registerOutputs", "registerInputs", "addJobsToJoblist"}) {
    for (int kind = 0; kind < 3; ++kind) {
      script.at = [operation, kind](std::string_view now) {
        if (now != operation) {
          return;
        }
        if (kind == 0) {
          throw std::runtime_error("out of luck");
        }
        if (kind == 1) {
          throw std::bad_alloc();
        }
        throw 42;
      };
      const FctResult result = world.tryIssue(axis, "A", id);
      EXPECT_THAT(world.problem, AllOf(HasSubstr("'Test'"), HasSubstr("'X'"))) << operation;
      if (std::string_view(operation) != "createNew") {  // the object factory has a result of its own for that
        EXPECT_EQ(result, kind == 1 ? FctResult::OutOfMemory : FctResult::PreparationError) << operation << kind;
        EXPECT_THAT(world.problem, HasSubstr(kind == 0 ? "out of luck" : (kind == 1 ? "no memory" : "unknown exception")));
      }
      EXPECT_EQ(sut.tryOut(axis, {"Test", test::Label("A"), world.source}, world.problem), result) << operation << kind;
    }
  }
  script.at = [](std::string_view) {};
  EXPECT_EQ(id, 4711U);
  EXPECT_EQ(sut.alive(), 1U);
  EXPECT_EQ(axis.bufferedCount(), 1U);
  EXPECT_EQ(script.commandsAlive, 1);
  const auto later = world.issue(axis, "later");
  EXPECT_EQ(later, earlier + 1);
  world.step(2);
  EXPECT_EQ(axis.getCmdState(earlier), CmdState::DONE);
  EXPECT_EQ(axis.getCmdState(later), CmdState::DONE);
}

// Trying out

TEST_F(PreparationTest, tryOutAnswersAsAddWouldAndLeavesNothing) {
  EXPECT_EQ(sut.tryOut(axis, {"Test", test::Label("A"), world.source}, world.problem), FctResult::Okay);
  EXPECT_EQ(sut.alive(), 0U);
  EXPECT_EQ(axis.bufferedCount(), 0U);
  EXPECT_EQ(script.commandsAlive, 0);
  EXPECT_EQ(script.jobsAlive, 1);
  EXPECT_THAT(script.takeJournal(), ElementsAre("A destroyed")) << "no change of state";
  world.step(2);
  EXPECT_THAT(world.takeEvents(), IsEmpty());
  EXPECT_EQ(world.issue(axis, "B"), 1U) << "no number was used up";

  script.validateResult = CmdResult::Refused;
  script.diagnosis = "too fast";
  EXPECT_EQ(sut.tryOut(axis, {"Test", test::Label("A"), world.source}, world.problem), FctResult::InvalidParameter);
  EXPECT_THAT(world.problem, HasSubstr("too fast"));
  EXPECT_EQ(axis.diaLog().count(), 0U) << "a diagnosis of nothing that the object does";
  EXPECT_EQ(sut.tryOut(axis, {"Fly", test::Label("A"), world.source}, world.problem), FctResult::NotSupportedByObject);
}

// Listener

/// Notes what it is told.
class NotingListener : public ICmdListener {
 public:
  void onBuffered(const CmdFrame& frame, std::uint64_t cycle) noexcept override { note("buffered", frame, cycle); }
  void onPrepared(const CmdFrame& frame, std::uint64_t cycle) noexcept override { note("prepared", frame, cycle); }
  void onDropped(const CmdFrame& frame, std::uint64_t cycle) noexcept override { note("dropped", frame, cycle); }
  void onRetired(const CmdFrame& frame) noexcept override { note("retired", frame, 0); }

  std::vector<std::string> notes;

 private:
  void note(const char* what, const CmdFrame& frame, std::uint64_t cycle) {
    notes.push_back(fmt::format("{} {} {} {}", what, frame.getCmdID(), test::stateName(frame.getCmdState()), cycle));
  }
};

TEST_F(PreparationTest, tellsItsListenerOfEveryCommandWithTheCycleThatComesNext) {
  NotingListener listener;
  sut.setListener(&listener);
  script.prepared = [](const std::string& label, unsigned) {
    return label == "bad" ? JobResult::InvalidObject : JobResult::NoEffect;
  };
  world.issue(axis, "A");
  world.step();
  world.issue(axis, "bad");
  world.issue(axis, "behind");
  world.step();
  EXPECT_THAT(listener.notes, ElementsAre("buffered 1 BUFFERED 1", "prepared 1 PREPARED 1", "buffered 2 BUFFERED 2",
                                          "buffered 3 BUFFERED 2", "dropped 2 FAILED 2", "retired 2 FAILED 0",
                                          "dropped 3 ABORTED 2", "retired 3 ABORTED 0", "retired 1 DONE 0"));
}

// Taking back

TEST_F(PreparationTest, takesBackWhatHasEnded) {
  for (int i = 0; i < 5; ++i) {
    world.issue(axis, "A");
  }
  EXPECT_EQ(sut.alive(), 5U);
  world.step(6);
  EXPECT_EQ(sut.alive(), 0U);
  EXPECT_EQ(script.commandsAlive, 0);
  EXPECT_EQ(script.jobsAlive, 1);
}

TEST_F(PreparationTest, clearAbortsWhatWaits) {
  const auto id = world.issue(axis, "A");
  sut.clear();
  EXPECT_EQ(axis.getCmdState(id), CmdState::ABORTED);
  EXPECT_EQ(sut.alive(), 0U);
  EXPECT_EQ(script.commandsAlive, 0);
  EXPECT_EQ(axis.bufferedCount(), 0U);
}

TEST_F(PreparationTest, preparesOnAThreadOfItsOwnUntilItIsStopped) {
  sut.startThread();
  const auto id = world.issue(axis, "A");
  EXPECT_TRUE(test::eventually([&] { return axis.getCmdState(id) == CmdState::PREPARED; }));
  world.runtime.cycle().run();
  EXPECT_TRUE(test::eventually([&] { return sut.alive() == 0; })) << "without anybody to wake it";
  sut.stopThread();
  const auto later = world.issue(axis, "B");
  EXPECT_EQ(axis.getCmdState(later), CmdState::BUFFERED);
  sut.stopThread();
}

}  // namespace
}  // namespace motion::host
