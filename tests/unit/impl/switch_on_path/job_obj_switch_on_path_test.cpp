// The job of the option SwitchOnPath towards the host: its name, inputs, data and job lists.
#include "impl/switch_on_path/job_obj_switch_on_path.h"

#include "impl/send_signal/send_signal_pars.h"
#include "switch_on_path/switch_on_path_fixture.h"

namespace motion::kavo::job {
namespace {

using core::job::JobListTypes;
using core::job::JobResult;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto INVALID_OBJECT = static_cast<JobResult>(0xF0000008);
constexpr auto NOT_SERVED = static_cast<JobResult>(0xF000000F);
constexpr auto INVALID_JOB_DATA = static_cast<JobResult>(0xF0000016);
constexpr const char* CALLER = "JobObjSwitchOnPath::registerInputs()";

class JobObjSwitchOnPathTest : public SwitchOnPathJobTest {
 protected:
  [[nodiscard]] std::string readCall(core::DataID id, const std::string& section) const {
    return fmt::format("handler.registerRead({}, {}, 1, {})", id, m_host.sectionMgr.valueOf(section), CALLER);
  }
  [[nodiscard]] std::vector<std::string> bothReads() const {
    return {readCall(core::KinPose::getMyID(), "GEOMETRY_TOOL_OFFSET"), readCall(core::IObjPtr::getMyID(), "OBJ_DATA")};
  }
  [[nodiscard]] static SwitchOnPathParsListT kept(const JobObjSwitchOnPath& object) {
    const auto* const list = SwitchOnPathParsList::safeCast(object.getJobData());
    EXPECT_NE(list, nullptr);
    return list != nullptr ? list->get() : SwitchOnPathParsListT();
  }

  JobObjSwitchOnPath m_sut;
};

TEST_F(JobObjSwitchOnPathTest, HasItsNameAndShowsNothingElse) {
  EXPECT_STREQ(m_sut.getID(), "JobObjSwitchOnPath");
  EXPECT_EQ(m_sut.getJobString(), "JobObjSwitchOnPath");
  const auto list = listOf({sphere(7, {1, 2, 3}, 1)});
  ASSERT_EQ(m_sut.setJobData(&list), JobResult::NoEffect);
  EXPECT_EQ(m_sut.getJobString(), "JobObjSwitchOnPath");
  EXPECT_STREQ(JobObjSwitchOnPath::getStaticInfo().name, "JobObjSwitchOnPath");
  EXPECT_STREQ(JobObjSwitchOnPath::getStaticInfo().caller, CALLER);
}

TEST_F(JobObjSwitchOnPathTest, HasNoConditionsAtFirst) {
  EXPECT_THAT(kept(m_sut), IsEmpty());
}

TEST_F(JobObjSwitchOnPathTest, ReadsThePoseAndTheObject) {
  EXPECT_EQ(m_sut.registerInputs(&m_handler), JobResult::NoEffect);
  EXPECT_EQ(m_host.calls.all(), bothReads());
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(JobObjSwitchOnPathTest, NeedsAHandlerForItsInputs) {
  EXPECT_EQ(m_sut.registerInputs(nullptr), INVALID_OBJECT);
  EXPECT_THAT(m_host.calls.all(), IsEmpty());
}

TEST_F(JobObjSwitchOnPathTest, TriesBothInputsAndReturnsTheFirstFailure) {
  const auto results = [this](std::uint32_t pose, std::uint32_t obj) {
    forget();
    m_host.calls.failNothing();
    m_host.calls.fail("handler.registerRead", pose, 1);
    m_host.calls.fail("handler.registerRead", obj, 2);
    const auto result = m_sut.registerInputs(&m_handler);
    EXPECT_EQ(m_host.calls.all(), bothReads());
    return core::toCode(result);
  };
  EXPECT_EQ(results(0xF0000020, 0xF0000022), 0xF0000020U);
  EXPECT_EQ(results(0xF0000020, 0), 0xF0000020U);
  m_host.calls.failNothing();
  m_host.calls.fail("handler.registerRead", 0xF0000022, 2);
  EXPECT_EQ(core::toCode(m_sut.registerInputs(&m_handler)), 0xF0000022U);
  EXPECT_TRUE(core::isFailure(m_sut.execute())) << "without its inputs it cannot run";
}

TEST_F(JobObjSwitchOnPathTest, RefusesInputsOfAnotherTypeAndNone) {
  cmd::CmdSendSignalPars other(cmd::CmdSendSignalParsT{1});
  for (core::IContainer* offered : {static_cast<core::IContainer*>(&other), static_cast<core::IContainer*>(nullptr)}) {
    publish(core::KinPose::getMyID(), "GEOMETRY_TOOL_OFFSET", offered);
    publish(core::IObjPtr::getMyID(), "OBJ_DATA", &m_objPtr);
    EXPECT_TRUE(core::isFailure(m_sut.registerInputs(&m_handler)));
    publish(core::KinPose::getMyID(), "GEOMETRY_TOOL_OFFSET", &m_pose);
    publish(core::IObjPtr::getMyID(), "OBJ_DATA", offered);
    EXPECT_TRUE(core::isFailure(m_sut.registerInputs(&m_handler)));
  }
}

TEST_F(JobObjSwitchOnPathTest, AnswersExceptionsOfTheHostWithFailures) {
  m_host.calls.fail("handler.registerRead", test::FakeCalls::THROW, 1);
  EXPECT_TRUE(core::isFailure(m_sut.registerInputs(&m_handler)));
  EXPECT_EQ(m_host.calls.count("handler.registerRead"), 2) << "the other input is tried nonetheless";
  m_host.calls.fail("jobList.addJob", test::FakeCalls::THROW);
  EXPECT_TRUE(core::isFailure(m_sut.addJobsToJoblist(&m_jobList, JobListTypes::CYCLIC_EXECUTION)));
}

TEST_F(JobObjSwitchOnPathTest, AddsItselfToTheLastStageOfTheCycle) {
  ASSERT_EQ(m_sut.registerInputs(&m_handler), JobResult::NoEffect);
  const auto list = listOf({sphere(7, {0, 0, 0}, 1)});
  ASSERT_EQ(m_sut.setJobData(&list), JobResult::NoEffect);
  EXPECT_EQ(m_sut.addJobsToJoblist(&m_jobList, JobListTypes::CYCLIC_EXECUTION), JobResult::NoEffect);
  ASSERT_EQ(m_jobList.m_jobs.size(), 1U);
  EXPECT_EQ(m_jobList.m_jobs[0].name, "JobObjSwitchOnPath");
  EXPECT_EQ(m_jobList.m_jobs[0].section, m_host.sectionMgr.valueOf("EXEC_FINAL"));
  EXPECT_EQ(m_jobList.m_jobs[0].job(), JobResult::NoEffect);
  EXPECT_EQ(in(7), 1) << "the job is this object's";
}

TEST_F(JobObjSwitchOnPathTest, ServesNoOtherListAndNone) {
  for (const std::uint32_t type : {1U, 2U, 3U, 77U}) {
    EXPECT_EQ(m_sut.addJobsToJoblist(&m_jobList, static_cast<JobListTypes>(type)), NOT_SERVED);
    EXPECT_EQ(m_sut.addJobsToJoblist(nullptr, static_cast<JobListTypes>(type)), INVALID_OBJECT) << "the list comes first";
  }
  EXPECT_EQ(m_sut.addJobsToJoblist(nullptr, JobListTypes::CYCLIC_EXECUTION), INVALID_OBJECT);
  EXPECT_THAT(m_jobList.m_jobs, IsEmpty());
}

TEST_F(JobObjSwitchOnPathTest, PassesTheResultOfTheListOn) {
  for (const std::uint32_t code : {0xF0000022U, 0x0103U}) {
    m_host.calls.failNothing();
    m_host.calls.fail("jobList.addJob", code);
    EXPECT_EQ(core::toCode(m_sut.addJobsToJoblist(&m_jobList, JobListTypes::CYCLIC_EXECUTION)), code);
  }
}

TEST_F(JobObjSwitchOnPathTest, CopiesTheListAndSharesTheConditions) {
  const auto first = sphere(7, {1, 2, 3}, 1);
  const auto second = sphere(8, {1, 2, 3}, 1);
  auto list = listOf({first, second});
  EXPECT_EQ(m_sut.setJobData(&list), JobResult::NoEffect);
  EXPECT_THAT(kept(m_sut), ElementsAre(first, second));
  list.getRef().clear();
  EXPECT_THAT(kept(m_sut), ElementsAre(first, second)) << "the vector is its own";
  const auto other = listOf({second});
  EXPECT_EQ(m_sut.setJobData(&other), JobResult::NoEffect);
  EXPECT_THAT(kept(m_sut), ElementsAre(second));
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(JobObjSwitchOnPathTest, RefusesNoDataAndDataOfAnotherType) {
  const auto first = sphere(7, {1, 2, 3}, 1);
  const auto list = listOf({first});
  ASSERT_EQ(m_sut.setJobData(&list), JobResult::NoEffect);
  const cmd::CmdSendSignalPars other(cmd::CmdSendSignalParsT{1});
  EXPECT_EQ(m_sut.setJobData(nullptr), INVALID_JOB_DATA);
  EXPECT_EQ(m_sut.setJobData(&other), INVALID_JOB_DATA);
  const std::string expected = "Error job_obj_switch_on_path setJobData: Invalid jobData";
  EXPECT_THAT(traces(), ElementsAre(expected, expected));
  EXPECT_EQ(m_host.traceSink.entries()[0].format, "%s");
  EXPECT_THAT(kept(m_sut), ElementsAre(first));
}

TEST_F(JobObjSwitchOnPathTest, AnswersEachFailureToAllocateWithAFailure) {
  const auto first = sphere(7, {1, 2, 3}, 1);
  const auto list = listOf({first});
  JobResult result{};
  int failures = withEachAllocationFailing([&] { result = m_sut.setJobData(&list); },
                                           [&](bool hasFailed) {
                                             EXPECT_EQ(core::isFailure(result), hasFailed);
                                             EXPECT_EQ(kept(m_sut).empty(), hasFailed);
                                           });
  EXPECT_GT(failures, 0);
  failures = withEachAllocationFailing([&] { result = m_sut.addJobsToJoblist(&m_jobList, JobListTypes::CYCLIC_EXECUTION); },
                                       [&](bool hasFailed) { EXPECT_EQ(core::isFailure(result), hasFailed); });
  std::string text;
  failures = withEachAllocationFailing([&] { text = m_sut.getJobString(); },
                                       [&](bool hasFailed) { EXPECT_EQ(text.empty(), hasFailed); });
  EXPECT_GT(failures, 0);
  core::IAmCreatable* made = nullptr;
  failures = withEachAllocationFailing([&] { made = m_sut.createNew(); },
                                       [&](bool hasFailed) { EXPECT_EQ(made == nullptr, hasFailed); });
  EXPECT_EQ(failures, 1);
  delete made;
}

TEST_F(JobObjSwitchOnPathTest, MakesClonesThatAreAsNew) {
  const auto list = listOf({sphere(7, {0, 0, 0}, 1)});
  arm(list.get());
  ASSERT_EQ(cycleAt({5, 5, 5}), JobResult::NoEffect);
  const std::unique_ptr<core::IAmCreatable> made(sut().createNew());
  auto& clone = dynamic_cast<JobObjSwitchOnPath&>(*made);
  EXPECT_THAT(kept(clone), IsEmpty());
  EXPECT_TRUE(core::isFailure(clone.execute())) << "it has no inputs yet";

  // Its first cycle knows no displacement, though that of the original is over.
  const auto ahead = listOf({sphere(8, {4, 0, 0}, 0.5, 0.001)});
  ASSERT_EQ(clone.setJobData(&ahead), JobResult::NoEffect);
  ASSERT_EQ(clone.registerInputs(&m_handler), JobResult::NoEffect);
  m_pose.set({2, 0, 0, 0, 0, 0});
  ASSERT_EQ(clone.execute(), JobResult::NoEffect);
  EXPECT_EQ(in(8), 0);
  m_pose.set({3, 0, 0, 0, 0, 0});
  ASSERT_EQ(clone.execute(), JobResult::NoEffect);
  EXPECT_EQ(in(8), 1);
}

TEST_F(JobObjSwitchOnPathTest, HasTheOperationsOfAJobObjectInOrder) {
  auto* const object = new JobObjSwitchOnPath;
  delete callSlot<core::IAmCreatable*>(object, 2);
  EXPECT_STREQ(callSlot<const char*>(object, 3), "JobObjSwitchOnPath");
  EXPECT_EQ(callSlot<std::uint32_t>(object, 4), object->getType());
  EXPECT_EQ((callSlot<JobResult, core::job::IJobList*, JobListTypes>(object, 5, &m_jobList, JobListTypes::COMMAND_PREPARED)),
            NOT_SERVED);
  EXPECT_EQ((callSlot<JobResult, core::job::IJobDataHandler*>(object, 6, nullptr)), JobResult::NoEffect);
  EXPECT_EQ((callSlot<JobResult, core::job::IJobDataHandler*>(object, 7, nullptr)), INVALID_OBJECT);
  const auto list = listOf({sphere(7, {1, 2, 3}, 1)});
  EXPECT_EQ((callSlot<JobResult, const core::IContainer*>(object, 8, &list)), JobResult::NoEffect);
  EXPECT_EQ((callSlot<JobResult, const core::IContainer*, core::dia::IDia*>(object, 9, nullptr, nullptr)),
            JobResult::ExecutionFailed);
  EXPECT_EQ(callSlot<std::string>(object, 10), "JobObjSwitchOnPath");
  EXPECT_EQ(callSlot<const core::IContainer*>(object, 11), object->getJobData());
  EXPECT_FALSE(callSlot<bool>(object, 12));
  EXPECT_EQ((callSlot<JobResult, core::job::IJobObject*>(object, 13, nullptr)), JobResult::NoEffect);
  object->setCmdOptMetaInfo({4711, 0});
  EXPECT_EQ(callSlot<core::job::OptMetaInfo>(object, 15).optionID, 4711U);
  callSlot<void>(object, 1);  // a leak check would see that the second destructor frees the memory
}

}  // namespace
}  // namespace motion::kavo::job
