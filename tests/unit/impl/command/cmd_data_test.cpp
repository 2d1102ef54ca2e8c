// How commands offer their records to their jobs, for each command, and how jobs come into job lists, for each job.
#include "impl/command/cmd_data.h"

#include "command_cases.h"
#include "impl/send_signal/job_obj_send_signal.h"
#include "impl/wait_for_signal/job_obj_wait_for_signal.h"
#include "impl/wait_for_signal_reset/job_obj_wait_for_signal_reset.h"
#include "impl_fixture.h"

namespace motion::kavo {
namespace {

using core::cmd::CmdResult;
using core::job::JobListTypes;
using core::job::JobResult;
using testing::ElementsAre;
using testing::IsEmpty;

class PublishTest : public CommandTest, public testing::WithParamInterface<cmd::CommandCase> {
 protected:
  PublishTest() {
    std::string errText;
    EXPECT_EQ(GetParam().onCreate(m_host.objFactory, true, m_sut, errText), CmdResult::Okay);
  }
  [[nodiscard]] core::DataID jobDataID() const {
    if (GetParam().jobData == "SendSignalJobPars") {
      return job::SendSignalJobPars::getMyID();
    }
    return GetParam().jobData == "WaitForSignalJobPars" ? job::WaitForSignalJobPars::getMyID()
                                                        : job::WaitForSignalResetJobPars::getMyID();
  }

  std::unique_ptr<core::cmd::ICmdGeneric> m_sut;
};

TEST_P(PublishTest, OffersItsRecordInTheSectionOfCommands) {
  EXPECT_EQ(m_sut->onRegisterJobListsInputs(m_handler), CmdResult::Okay);
  EXPECT_THAT(m_host.calls.all(), ElementsAre(fmt::format("handler.registerPublish({}, {}, onRegisterJobListsInputs)",
                                                          jobDataID(), cmdDataSection())));
  ASSERT_EQ(m_handler.m_published.size(), 1U);
  EXPECT_EQ(m_handler.m_published.begin()->second->getID(), jobDataID());
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_P(PublishTest, RefusesWhenTheRecordCannotBeOffered) {
  for (const std::uint32_t code : {0xF0000021U, 0xF0000022U}) {
    forget();
    m_host.calls.failNothing();
    m_host.calls.fail("handler.registerPublish", code);
    EXPECT_EQ(core::toCode(m_sut->onRegisterJobListsInputs(m_handler)), 0xF011001DU);
    const auto& format = GetParam().failedPublish;
    const auto text = format.substr(0, format.size() - 2) + std::to_string(static_cast<std::int32_t>(code));
    EXPECT_THAT(traces(), ElementsAre("Error " + GetParam().unit + " onRegisterJobListsInputs: " + text));
    EXPECT_EQ(m_host.traceSink.entries()[0].format, format);
  }
}

TEST_P(PublishTest, AnswersAnExceptionOfTheHostWithAFailure) {
  m_host.calls.fail("handler.registerPublish", test::FakeCalls::THROW);
  EXPECT_TRUE(core::isFailure(m_sut->onRegisterJobListsInputs(m_handler)));
}

INSTANTIATE_TEST_SUITE_P(All, PublishTest, testing::ValuesIn(cmd::commandCases()), cmd::caseName);

template <typename JOB_OBJECT>
class JobListTest : public CommandTest {};

using AllJobs = testing::Types<job::JobObjSendSignal<job::JobObjSendSignalUser::COMMAND>,
                               job::JobObjSendSignal<job::JobObjSendSignalUser::COMMAND_OPTION>, job::JobObjWaitForSignal,
                               job::JobObjWaitForSignalReset>;
TYPED_TEST_SUITE(JobListTest, AllJobs);

TYPED_TEST(JobListTest, AddsOneJobForCyclicExecution) {
  TypeParam sut;
  EXPECT_EQ(sut.addJobsToJoblist(&this->m_jobList, JobListTypes::CYCLIC_EXECUTION), JobResult::NoEffect);
  ASSERT_EQ(this->m_jobList.m_jobs.size(), 1U);
  EXPECT_EQ(this->m_jobList.m_jobs[0].name, sut.getID());
  EXPECT_EQ(this->m_jobList.m_jobs[0].section, this->cmdDataSection());
  EXPECT_NE(this->m_jobList.m_jobs[0].job, nullptr);
}

TYPED_TEST(JobListTest, ServesNoOtherList) {
  TypeParam sut;
  for (const std::uint32_t type : {1U, 2U, 3U, 0xFFFFFFFFU}) {
    EXPECT_EQ(core::toCode(sut.addJobsToJoblist(&this->m_jobList, static_cast<JobListTypes>(type))), 0xF000000FU);
    EXPECT_EQ(core::toCode(sut.addJobsToJoblist(nullptr, static_cast<JobListTypes>(type))), 0xF000000FU)
        << "the list is not looked at";
  }
  EXPECT_THAT(this->m_jobList.m_jobs, IsEmpty());
  EXPECT_THAT(this->m_host.calls.all(), IsEmpty());
}

TYPED_TEST(JobListTest, PassesTheResultOfTheListOn) {
  TypeParam sut;
  this->m_host.calls.fail("jobList.addJob", 0xF0000022);
  EXPECT_EQ(core::toCode(sut.addJobsToJoblist(&this->m_jobList, JobListTypes::CYCLIC_EXECUTION)), 0xF0000022U);
}

TYPED_TEST(JobListTest, AnswersAnExceptionOfTheListWithAFailure) {
  TypeParam sut;
  this->m_host.calls.fail("jobList.addJob", test::FakeCalls::THROW);
  EXPECT_TRUE(core::isFailure(sut.addJobsToJoblist(&this->m_jobList, JobListTypes::CYCLIC_EXECUTION)));
}

TYPED_TEST(JobListTest, ClonesItself) {
  const TypeParam sut;
  const std::unique_ptr<core::IAmCreatable> clone(sut.createNew());
  EXPECT_NE(clone.get(), &sut);
  EXPECT_NE(dynamic_cast<TypeParam*>(clone.get()), nullptr);
  EXPECT_STREQ(clone->getID(), sut.getID());
}

TYPED_TEST(JobListTest, MakesNoCloneWithoutMemory) {
  const TypeParam sut;
  core::IAmCreatable* clone = nullptr;
  const int failures = withEachAllocationFailing([&] { clone = sut.createNew(); },
                                                 [&](bool hasFailed) {
                                                   EXPECT_EQ(clone == nullptr, hasFailed);
                                                   delete clone;
                                                 });
  EXPECT_EQ(failures, 1);
}

TYPED_TEST(JobListTest, AnswersWhatItsBaseAnswers) {
  TypeParam sut;
  EXPECT_EQ(sut.registerOutputs(&this->m_handler), JobResult::NoEffect);
  EXPECT_EQ(sut.getType(), static_cast<std::uint32_t>(core::CreatableType::JOB));
  EXPECT_THAT(this->m_host.calls.all(), IsEmpty());
}

TYPED_TEST(JobListTest, HasItsOperationsInOrder) {
  auto* const sut = new TypeParam();
  void* const object = sut;
  const std::unique_ptr<core::IAmCreatable> clone(callSlot<core::IAmCreatable*>(object, 2));
  EXPECT_NE(dynamic_cast<TypeParam*>(clone.get()), nullptr);
  EXPECT_STREQ(callSlot<const char*>(object, 3), sut->getID());
  EXPECT_EQ(callSlot<std::uint32_t>(object, 4), sut->getType());
  EXPECT_EQ(
      (callSlot<JobResult, core::job::IJobList*, JobListTypes>(object, 5, &this->m_jobList, JobListTypes::BEFORE_EXECUTION)),
      JobResult::ListTypeNotServed);
  EXPECT_EQ((callSlot<JobResult, core::job::IJobDataHandler*>(object, 6, &this->m_handler)), JobResult::NoEffect);
  EXPECT_EQ((callSlot<JobResult, core::job::IJobDataHandler*>(object, 7, &this->m_handler)),
            sut->registerInputs(&this->m_handler));
  EXPECT_EQ((callSlot<JobResult, const core::IContainer*>(object, 8, nullptr)), sut->setJobData(nullptr));
  EXPECT_EQ((callSlot<JobResult, const core::IContainer*, core::dia::IDia*>(object, 9, nullptr, nullptr)),
            sut->checkParameter(nullptr, nullptr));
  EXPECT_EQ(callSlot<std::string>(object, 10), sut->getJobString());
  EXPECT_EQ(callSlot<const core::IContainer*>(object, 11), sut->getJobData());
  EXPECT_EQ(callSlot<bool>(object, 12), sut->copyToInsertCmd());
  EXPECT_EQ((callSlot<JobResult, core::job::IJobObject*>(object, 13, nullptr)), JobResult::NoEffect);
  callSlot<void, core::job::OptMetaInfo>(object, 14, core::job::OptMetaInfo{77, 3});
  EXPECT_EQ(callSlot<core::job::OptMetaInfo>(object, 15).optionID, 77U);
  EXPECT_EQ(sut->getCmdOptMetaInfo().slot, 3U);
  callSlot<void>(object, 1);  // a leak check would see that the second destructor frees the memory
}

}  // namespace
}  // namespace motion::kavo
