// The job of WaitForSignalReset: what it answers in each cycle.
#include "impl/wait_for_signal_reset/job_obj_wait_for_signal_reset.h"

#include "impl/send_signal/send_signal_pars.h"
#include "impl_fixture.h"

namespace motion::kavo::job {
namespace {

using core::job::JobListTypes;
using core::job::JobResult;
using testing::ElementsAre;
using testing::IsEmpty;

class JobObjWaitForSignalResetTest : public CommandTest {
 protected:
  /// Offers parameters as a command does, and lets a job object read them.
  void offer(std::uint32_t id) {
    m_offered.set({id});
    m_handler.m_published[{WaitForSignalResetJobPars::getMyID(), cmdDataSection()}] = &m_offered;
  }
  [[nodiscard]] core::job::Job addedJob(JobObjWaitForSignalReset& object) {
    EXPECT_EQ(object.addJobsToJoblist(&m_jobList, JobListTypes::CYCLIC_EXECUTION), JobResult::NoEffect);
    return m_jobList.m_jobs.back().job;
  }
  [[nodiscard]] core::job::Job runnableJob() {
    EXPECT_EQ(m_sut.registerInputs(&m_handler), JobResult::NoEffect);
    auto job = addedJob(m_sut);
    forget();
    return job;
  }

  WaitForSignalResetJobPars m_offered;
  JobObjWaitForSignalReset m_sut;
};

TEST_F(JobObjWaitForSignalResetTest, HasItsName) {
  EXPECT_STREQ(m_sut.getID(), "ext_job_obj_wait_for_signal_reset");
}

TEST_F(JobObjWaitForSignalResetTest, HasTheResultCodesOfTheHost) {
  EXPECT_EQ(core::toCode(JobResult::CmdFinished), 0x0A06U);
  EXPECT_EQ(core::toCode(JobResult::Busy), 0x0103U);
  EXPECT_EQ(core::toCode(JobResult::ExecutionFailed), 0xF0000004U);
}

TEST_F(JobObjWaitForSignalResetTest, ReadsWhatTheCommandOffers) {
  offer(42);
  EXPECT_EQ(m_sut.registerInputs(&m_handler), JobResult::NoEffect);
  EXPECT_THAT(m_host.calls.all(), ElementsAre(fmt::format("handler.registerRead({}, {}, 1, registerInputs)",
                                                          WaitForSignalResetJobPars::getMyID(), cmdDataSection())));
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(JobObjWaitForSignalResetTest, PassesTheFailureToReadOn) {
  for (const std::uint32_t code : {0xF0000020U, 0xF0000022U}) {
    forget();
    m_host.calls.failNothing();
    m_host.calls.fail("handler.registerRead", code);
    EXPECT_EQ(core::toCode(m_sut.registerInputs(&m_handler)), code);
    EXPECT_THAT(traces(),
                ElementsAre(fmt::format("Error job_obj_wait_for_signal_reset registerInputs: Failed to register the read "
                                        "of job data ({})",
                                        static_cast<std::int32_t>(code))));
    EXPECT_EQ(m_host.traceSink.entries()[0].format, "Failed to register the read of job data (%d)");
  }
  EXPECT_EQ(m_sut.getJobString(), "No inputs registered");
}

TEST_F(JobObjWaitForSignalResetTest, RefusesARecordOfAnotherTypeAndNone) {
  cmd::CmdSendSignalPars other;
  for (core::IContainer* offered : {static_cast<core::IContainer*>(&other), static_cast<core::IContainer*>(nullptr)}) {
    m_handler.m_published[{WaitForSignalResetJobPars::getMyID(), cmdDataSection()}] = offered;
    EXPECT_TRUE(core::isFailure(m_sut.registerInputs(&m_handler)));
    EXPECT_EQ(m_sut.getJobString(), "No inputs registered");
  }
}

TEST_F(JobObjWaitForSignalResetTest, AnswersAnExceptionOfTheHostWithAFailure) {
  m_host.calls.fail("handler.registerRead", test::FakeCalls::THROW);
  EXPECT_TRUE(core::isFailure(m_sut.registerInputs(&m_handler)));
  EXPECT_EQ(m_sut.getJobString(), "No inputs registered");
}

TEST_F(JobObjWaitForSignalResetTest, DescribesItself) {
  EXPECT_EQ(m_sut.getJobString(), "No inputs registered");
  offer(42);
  ASSERT_EQ(m_sut.registerInputs(&m_handler), JobResult::NoEffect);
  EXPECT_EQ(m_sut.getJobString(), "waitForSignalReset(signalId=42)");
  m_offered.set({7});
  EXPECT_EQ(m_sut.getJobString(), "waitForSignalReset(signalId=7)") << "it keeps no copy";
}

TEST_F(JobObjWaitForSignalResetTest, FailsWithoutInputs) {
  const auto sut = addedJob(m_sut);
  EXPECT_EQ(sut(), JobResult::ExecutionFailed);
  EXPECT_THAT(tracesWithoutFunction(), ElementsAre("Error job_obj_wait_for_signal_reset: No job data!"));
  EXPECT_EQ(m_host.traceSink.entries()[0].format, "%s");
}

TEST_F(JobObjWaitForSignalResetTest, MakesClonesWithoutInputs) {
  offer(42);
  ASSERT_EQ(m_sut.registerInputs(&m_handler), JobResult::NoEffect);
  const std::unique_ptr<core::IAmCreatable> clone(m_sut.createNew());
  EXPECT_EQ(dynamic_cast<JobObjWaitForSignalReset&>(*clone).getJobString(), "No inputs registered");
}

TEST_F(JobObjWaitForSignalResetTest, LeavesTheOtherOperationsToItsBase) {
  EXPECT_EQ(m_sut.setJobData(&m_offered), JobResult::NoEffect);
  EXPECT_EQ(m_sut.checkParameter(&m_offered, &m_dia), JobResult::NoEffect);
  EXPECT_EQ(m_sut.getJobData(), nullptr);
  EXPECT_EQ(m_sut.getJobString(), "No inputs registered");
}

TEST_F(JobObjWaitForSignalResetTest, WaitsUntilTheSignalIsReset) {
  in(5) = 1;
  offer(5);
  const auto sut = runnableJob();
  EXPECT_EQ(sut(), JobResult::Busy);
  EXPECT_EQ(sut(), JobResult::Busy);
  EXPECT_EQ(in(5), 1) << "it resets nothing";
  out(5) = 1;
  EXPECT_EQ(sut(), JobResult::CmdFinished);
  EXPECT_EQ(sut(), JobResult::CmdFinished);
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(JobObjWaitForSignalResetTest, FinishesInItsFirstCycleWhenTheSignalIsReset) {
  offer(5);
  const auto sut = runnableJob();
  EXPECT_EQ(sut(), JobResult::CmdFinished);
}

TEST_F(JobObjWaitForSignalResetTest, ReadsItsParametersInEachCycle) {
  in(5) = 1;
  offer(5);
  const auto sut = runnableJob();
  EXPECT_EQ(sut(), JobResult::Busy);
  m_offered.set({6});
  EXPECT_EQ(sut(), JobResult::CmdFinished);
}

TEST_F(JobObjWaitForSignalResetTest, KeepsWaitingSilentlyWhenTheSignalCannotBeRead) {
  offer(5);
  const auto sut = runnableJob();
  m_host.calls.fail("memory.beginAccess signals_in", 0x80060001, 1);
  EXPECT_EQ(sut(), JobResult::Busy);
  EXPECT_THAT(traces(), IsEmpty());
  EXPECT_EQ(sut(), JobResult::CmdFinished);
}

TEST_F(JobObjWaitForSignalResetTest, KeepsWaitingWhenTheSignalsAreGone) {
  offer(5);
  const auto sut = runnableJob();
  rt_data::RtSignals::getInstance().terminate();
  EXPECT_EQ(sut(), JobResult::Busy);
}

TEST_F(JobObjWaitForSignalResetTest, AllocatesNothing) {
  offer(5);
  const auto sut = runnableJob();
  auto& inCounter = in(5);
  const auto& outCounter = out(5);
  const test::AllocationCount count;
  EXPECT_EQ(sut(), JobResult::CmdFinished);
  inCounter = static_cast<std::uint8_t>(outCounter + 1);
  EXPECT_EQ(sut(), JobResult::Busy);
  EXPECT_EQ(count.get(), 0);
}

}  // namespace
}  // namespace motion::kavo::job
