// A command with its jobs and data, and the hand-over of commands that have ended.
#include "host/motion/cmd_frame.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>

#include "host/motion/motion_object.h"
#include "tests/host/motion/scripted_cmd.h"
#include "tests/host/motion/scripted_option.h"

namespace motion::host {
namespace {

using core::ObjectType;
using core::cmd::CmdResult;
using core::cmd::CmdState;
using core::job::JobResult;
using testing::ElementsAre;
using testing::HasSubstr;

ObjectConfig axisConfig() {
  return {"X", ObjectType::AXIS, {}, 0.001, 64, 0};
}

std::unique_ptr<CmdFrame> makeFrame(test::Script& script, ObjFactory& factory, MotionObject& object, std::uint64_t id,
                                    const std::string& label) {
  auto cmd = std::make_unique<test::ScriptedCmd<ObjectType::AXIS>>(script, factory);
  EXPECT_EQ(cmd->onSetCmdValues(std::make_unique<test::Label>(label).get(), {}, &object, false), CmdResult::Okay);
  return std::make_unique<CmdFrame>(id, object, "Test", core::dia::CmdSourceInfo{"client", "file", 3}, std::move(cmd),
                                    object.data());
}

struct CmdFrameTest : testing::Test {
  CmdFrameTest() {
    std::unique_ptr<core::IAmCreatable> job = std::make_unique<test::ScriptedJob>(script);
    factory.registerObj(job, 0);
  }

  test::Script script;
  ObjFactory factory;
  RetiredCmds retired;
  MotionObject object{axisConfig(), retired};
  std::string problem;
  std::unique_ptr<CmdFrame> owned = makeFrame(script, factory, object, 5, "A");
  CmdFrame& sut = *owned;
};

TEST_F(CmdFrameTest, knowsWhatItWasGiven) {
  EXPECT_EQ(sut.getCmdID(), 5U);
  EXPECT_EQ(sut.name(), "Test");
  EXPECT_EQ(sut.source().client, "client");
  EXPECT_EQ(sut.source().line, 3U);
  EXPECT_EQ(&sut.object(), &object);
  EXPECT_EQ(sut.command().onGetCmdType(), 99U);
  EXPECT_EQ(sut.getCmdState(), CmdState::CREATED);
}

TEST_F(CmdFrameTest, preparesCommandAndJobsInTheOrderOfTheContract) {
  std::vector<std::string> operations;
  script.at = [&operations](std::string_view operation) { operations.emplace_back(operation); };
  ASSERT_EQ(sut.build(factory, {}, problem), CmdResult::Okay) << problem;
  EXPECT_THAT(operations, ElementsAre("onRegisterJobListsInputs", "getJobNames", "createNew", "registerOutputs",
                                      "registerInputs", "addJobsToJoblist", "addJobsToJoblist", "addJobsToJoblist"));
}

TEST_F(CmdFrameTest, putsJobsIntoTheListsThatTheyServe) {
  script.prepared = [](const std::string&, unsigned) { return JobResult::NoEffect; };
  ASSERT_EQ(sut.build(factory, {}, problem), CmdResult::Okay) << problem;
  EXPECT_EQ(sut.cyclicJobs().size(), 1U);
  EXPECT_EQ(sut.beforeJobs().size(), 0U);
  EXPECT_EQ(sut.preparedJobs().size(), 1U);
  EXPECT_EQ(sut.preparedJobs().run().result, JobResult::NoEffect);
  EXPECT_EQ(sut.cyclicJobs().run().result, JobResult::CmdFinished);
  EXPECT_THAT(script.takeJournal(), ElementsAre("A prepared", "A cyclic"));
}

TEST_F(CmdFrameTest, findsItsJobObjectsByName) {
  ASSERT_EQ(sut.build(factory, {}, problem), CmdResult::Okay) << problem;
  const core::job::IJobHandler& handler = sut.getJobHandler();
  ASSERT_NE(handler.findJobObject("test_job"), nullptr);
  EXPECT_EQ(handler.findJobObject("test_job")->getJobString(), "job of A");
  EXPECT_EQ(handler.findJobObject("other"), nullptr);
  EXPECT_EQ(handler.findJobObject(nullptr), nullptr);
}

TEST_F(CmdFrameTest, joinsWhatItsJobsSay) {
  EXPECT_EQ(sut.jobString(), "");
  script.jobNames = {"test_job", "test_job"};
  ASSERT_EQ(sut.build(factory, {}, problem), CmdResult::Okay) << problem;
  EXPECT_EQ(sut.jobString(), "job of A, job of A");
}

/// Reads the records that the host publishes for every command.
class CuriousJob : public core::job::JobObjectBase {
 public:
  [[nodiscard]] core::IAmCreatable* createNew() const override { return new CuriousJob; }
  [[nodiscard]] const char* getID() const override { return "curious"; }
  core::job::JobResult registerInputs(core::job::IJobDataHandler* handler) override {
    core::IContainer* data = nullptr;
    if (!core::isFailure(handler->registerRead(core::cmd::ICmdPtr::getMyID(), SectionMgr::CMD_DATA, 1, "", data))) {
      cmd = core::cmd::ICmdPtr::safeCast(data)->get();
    }
    if (!core::isFailure(handler->registerRead(core::IObjPtr::getMyID(), SectionMgr::OBJ_DATA, 1, "", data))) {
      object = core::IObjPtr::safeCast(data)->get();
    }
    return JobResult::NoEffect;
  }
  core::job::JobResult addJobsToJoblist(core::job::IJobList* /*list*/, core::job::JobListTypes /*type*/) override {
    return JobResult::ListTypeNotServed;
  }
  [[nodiscard]] std::string getJobString() const override { return {}; }

  core::cmd::ICmd* cmd = nullptr;
  core::IObj* object = nullptr;
};

TEST_F(CmdFrameTest, publishesCommandAndObjectToItsJobs) {
  std::unique_ptr<core::IAmCreatable> prototype = std::make_unique<CuriousJob>();
  factory.registerObj(prototype, 0);
  script.jobNames = {"curious"};
  ASSERT_EQ(sut.build(factory, {}, problem), CmdResult::Okay) << problem;
  const auto* job = dynamic_cast<CuriousJob*>(sut.getJobHandler().findJobObject("curious"));
  ASSERT_NE(job, nullptr);
  EXPECT_EQ(job->cmd, &sut);
  EXPECT_EQ(job->object, &object);
}

TEST_F(CmdFrameTest, saysWhichJobObjectIsMissing) {
  script.jobNames = {"test_job", "absent"};
  EXPECT_EQ(sut.build(factory, {}, problem), CmdResult::JobCreationFailed);
  EXPECT_EQ(problem, "job object 'absent' could not be created: 0xF0150001");
}

TEST_F(CmdFrameTest, saysWhichJobObjectMissesItsData) {
  script.publishes = false;
  EXPECT_EQ(sut.build(factory, {}, problem), CmdResult::JobRegistrationFailed);
  EXPECT_EQ(problem, "job object 'test_job' could not register its data: 0xF0000020");
}

TEST_F(CmdFrameTest, asksNoFurtherWhenAJobObjectCouldNotRegisterItsOutputs) {
  std::vector<std::string> operations;
  script.at = [&operations](std::string_view operation) { operations.emplace_back(operation); };
  script.outputsResult = JobResult::DataAlreadyPublished;
  EXPECT_EQ(sut.build(factory, {}, problem), CmdResult::JobRegistrationFailed);
  EXPECT_EQ(problem, "job object 'test_job' could not register its data: 0xF0000021");
  EXPECT_EQ(operations.back(), "registerOutputs");
}

TEST_F(CmdFrameTest, saysThatTheCommandRefusedItsData) {
  script.inputsResult = CmdResult::JobRegistrationFailed;
  EXPECT_EQ(sut.build(factory, {}, problem), CmdResult::JobRegistrationFailed);
  EXPECT_EQ(problem, "the command refused to register its job data: 0xF0110007");
}

/// Adds its job to a section that does not exist.
class LostJob : public core::job::JobObjectBase {
 public:
  [[nodiscard]] core::IAmCreatable* createNew() const override { return new LostJob; }
  [[nodiscard]] const char* getID() const override { return "lost"; }
  core::job::JobResult addJobsToJoblist(core::job::IJobList* list, core::job::JobListTypes /*type*/) override {
    return list->addJob([] { return JobResult::NoEffect; }, "lost", core::section::INVALID);
  }
  [[nodiscard]] std::string getJobString() const override { return {}; }
};

TEST_F(CmdFrameTest, saysWhichJobObjectCouldNotAddItsJobs) {
  std::unique_ptr<core::IAmCreatable> prototype = std::make_unique<LostJob>();
  factory.registerObj(prototype, 0);
  script.jobNames = {"lost"};
  EXPECT_EQ(sut.build(factory, {}, problem), CmdResult::JobRegistrationFailed);
  EXPECT_EQ(problem, "job object 'lost' could not add its jobs: 0xF0000022");
}

TEST_F(CmdFrameTest, tellsObjectAndCommandOfANewState) {
  sut.setState(CmdState::BUFFERED);
  EXPECT_EQ(object.getCmdState(5), CmdState::BUFFERED);
  sut.setState(CmdState::ACTIVE);
  EXPECT_EQ(sut.getCmdState(), CmdState::ACTIVE);
  EXPECT_EQ(object.getCmdState(5), CmdState::ACTIVE);
  EXPECT_THAT(script.takeJournal(), ElementsAre("A BUFFERED", "A ACTIVE"));
}

TEST_F(CmdFrameTest, keepsTheNewStateWhenTheCommandThrows) {
  script.at = [](std::string_view) { throw std::runtime_error("no"); };
  sut.setState(CmdState::BUFFERED);
  EXPECT_EQ(sut.getCmdState(), CmdState::BUFFERED);
  EXPECT_EQ(object.getCmdState(5), CmdState::BUFFERED);
}

TEST_F(CmdFrameTest, destroysCommandAndJobObjects) {
  ASSERT_EQ(sut.build(factory, {}, problem), CmdResult::Okay) << problem;
  EXPECT_EQ(script.commandsAlive, 1);
  EXPECT_EQ(script.jobsAlive, 2) << "the prototype and one clone";
  owned.reset();
  EXPECT_EQ(script.commandsAlive, 0);
  EXPECT_EQ(script.jobsAlive, 1);
}

// Options

struct CmdFrameOptionsTest : CmdFrameTest {
  /// A job that an option would have made.
  OptionJob jobOf(const std::string& label) {
    auto entry =
        std::make_shared<const CmdOptionEntry>(test::scriptedOption(options, {ObjectType::AXIS, "Plain"}, false, {}));
    auto option = std::make_unique<test::ScriptedOption>(options, std::nullopt);
    return {std::make_shared<const AcceptedOption>(entry, std::move(option), core::cmd::CmdOptDuration::ONE_COMMAND,
                                                   core::dia::CmdSourceInfo{}, 1),
            std::make_unique<test::ScriptedOptionJob>(options, label)};
  }
  std::vector<OptionJob> jobsOf(const std::vector<std::string>& labels) {
    std::vector<OptionJob> jobs;
    for (const std::string& label : labels) {
      jobs.push_back(jobOf(label));
    }
    return jobs;
  }

  // Destroyed before the frame of the base would be, which the tests therefore destroy.
  test::OptionScript options{script};
};

TEST_F(CmdFrameOptionsTest, runsJobsOfOptionsBehindItsOwnAndTheHostsBehindAll) {
  ASSERT_EQ(sut.build(factory, jobsOf({"O", "P"}), problem), CmdResult::Okay) << problem;
  const auto hosts = [this] {
    script.note("host", "looks");
    return JobResult::NoEffect;
  };
  EXPECT_EQ(sut.addCyclicJob(hosts, "host_job", SectionMgr::EXEC_FINAL), JobResult::NoEffect);
  EXPECT_EQ(sut.cyclicJobs().run().result, JobResult::CmdFinished);
  EXPECT_THAT(script.takeJournal(), ElementsAre("A cyclic", "O cyclic", "P cyclic", "host looks"));
  EXPECT_EQ(sut.addCyclicJob(hosts, "host_job", core::section::INVALID), JobResult::UnknownSection);
  owned.reset();
}

TEST_F(CmdFrameOptionsTest, knowsItsOptionsAndTheirJobs) {
  ASSERT_EQ(sut.build(factory, jobsOf({"O", "P"}), problem), CmdResult::Okay) << problem;
  ASSERT_EQ(sut.options().size(), 2U);
  EXPECT_EQ(sut.options()[0].option->name(), "Plain");
  EXPECT_EQ(sut.options()[1].job->getJobString(), "option P");
  EXPECT_EQ(sut.getJobHandler().findJobObject("option_job"), sut.options()[0].job);
  EXPECT_EQ(sut.jobString(), "job of A, option O, option P");
  owned.reset();
}

TEST_F(CmdFrameOptionsTest, ownsItsOptionsAndTheirJobs) {
  ASSERT_EQ(sut.build(factory, jobsOf({"O", "P"}), problem), CmdResult::Okay) << problem;
  EXPECT_EQ(options.optionsAlive, 2);
  EXPECT_EQ(options.jobsAlive, 2);
  owned.reset();
  EXPECT_EQ(options.optionsAlive, 0);
  EXPECT_EQ(options.jobsAlive, 0);
}

TEST_F(CmdFrameOptionsTest, saysWhichOptionsJobCouldNotBeAdded) {
  options.inputsResult = JobResult::DataNotPublished;
  EXPECT_EQ(sut.build(factory, jobsOf({"O", "P"}), problem), CmdResult::JobRegistrationFailed);
  EXPECT_EQ(problem, "option 'Plain': job object 'option_job' could not register its data: 0xF0000020");
  EXPECT_EQ(options.jobsAlive, 0);
  owned.reset();
  EXPECT_EQ(options.optionsAlive, 0);
}

struct RetiredCmdsTest : testing::Test {
  test::Script script;
  ObjFactory factory;
  RetiredCmds sut;
  MotionObject object{axisConfig(), sut};
};

TEST_F(RetiredCmdsTest, givesEverythingOnce) {
  const auto first = makeFrame(script, factory, object, 1, "A");
  const auto second = makeFrame(script, factory, object, 2, "B");
  EXPECT_EQ(sut.takeAll(), nullptr);
  sut.push(first.get());
  sut.push(second.get());
  std::vector<CmdFrame*> taken;
  for (CmdFrame* frame = sut.takeAll(); frame != nullptr; frame = frame->next) {
    taken.push_back(frame);
  }
  EXPECT_THAT(taken, testing::UnorderedElementsAre(first.get(), second.get()));
  EXPECT_EQ(sut.takeAll(), nullptr);
}

TEST_F(RetiredCmdsTest, losesNothingOfTwoWritersWhileOneReads) {
  constexpr std::uint64_t COUNT = 200;
  std::vector<std::unique_ptr<CmdFrame>> frames;
  for (std::uint64_t i = 0; i < 2 * COUNT; ++i) {
    frames.push_back(makeFrame(script, factory, object, i + 1, "A"));
  }
  const auto write = [&](std::uint64_t from) {
    for (std::uint64_t i = from; i < from + COUNT; ++i) {
      frames[i]->failure.failedJob = "written";
      sut.push(frames[i].get());
    }
  };
  std::thread one(write, 0);
  std::thread two(write, COUNT);
  std::vector<int> seen(2 * COUNT);
  for (std::uint64_t count = 0; count < 2 * COUNT;) {
    CmdFrame* frame = sut.takeAll();
    if (frame == nullptr) {
      std::this_thread::yield();
    }
    for (; frame != nullptr; frame = frame->next, ++count) {
      seen[frame->getCmdID() - 1] += frame->failure.failedJob != nullptr ? 1 : 100;
    }
  }
  one.join();
  two.join();
  EXPECT_THAT(seen, testing::Each(1));
}

}  // namespace
}  // namespace motion::host
