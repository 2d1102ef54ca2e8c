// The job of WaitForSignal: what it answers in each cycle.
#include "impl/wait_for_signal/job_obj_wait_for_signal.h"

#include "impl/send_signal/send_signal_pars.h"
#include "impl_fixture.h"

namespace motion::kavo::job {
namespace {

using core::job::JobListTypes;
using core::job::JobResult;
using testing::ElementsAre;
using testing::IsEmpty;

class JobObjWaitForSignalTest : public CommandTest {
 protected:
  /// Offers parameters as a command does, and lets a job object read them.
  void offer(std::uint32_t id, bool autoReset) {
    m_offered.set({id, autoReset});
    m_handler.m_published[{WaitForSignalJobPars::getMyID(), cmdDataSection()}] = &m_offered;
  }
  [[nodiscard]] core::job::Job addedJob(JobObjWaitForSignal& object) {
    EXPECT_EQ(object.addJobsToJoblist(&m_jobList, JobListTypes::CYCLIC_EXECUTION), JobResult::NoEffect);
    return m_jobList.m_jobs.back().job;
  }
  [[nodiscard]] core::job::Job runnableJob() {
    EXPECT_EQ(m_sut.registerInputs(&m_handler), JobResult::NoEffect);
    auto job = addedJob(m_sut);
    forget();
    return job;
  }

  WaitForSignalJobPars m_offered;
  JobObjWaitForSignal m_sut;
};

TEST_F(JobObjWaitForSignalTest, HasItsName) {
  EXPECT_STREQ(m_sut.getID(), "ext_job_obj_wait_for_signal");
}

TEST_F(JobObjWaitForSignalTest, HasTheResultCodesOfTheHost) {
  EXPECT_EQ(core::toCode(JobResult::CmdFinished), 0x0A06U);
  EXPECT_EQ(core::toCode(JobResult::Busy), 0x0103U);
  EXPECT_EQ(core::toCode(JobResult::ExecutionFailed), 0xF0000004U);
}

TEST_F(JobObjWaitForSignalTest, ReadsWhatTheCommandOffers) {
  offer(42, true);
  EXPECT_EQ(m_sut.registerInputs(&m_handler), JobResult::NoEffect);
  EXPECT_THAT(m_host.calls.all(), ElementsAre(fmt::format("handler.registerRead({}, {}, 1, registerInputs)",
                                                          WaitForSignalJobPars::getMyID(), cmdDataSection())));
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(JobObjWaitForSignalTest, PassesTheFailureToReadOn) {
  for (const std::uint32_t code : {0xF0000020U, 0xF0000022U}) {
    forget();
    m_host.calls.failNothing();
    m_host.calls.fail("handler.registerRead", code);
    EXPECT_EQ(core::toCode(m_sut.registerInputs(&m_handler)), code);
    EXPECT_THAT(traces(),
                ElementsAre(fmt::format("Error job_obj_wait_for_signal registerInputs: Failed to register the read "
                                        "of job data ({})",
                                        static_cast<std::int32_t>(code))));
    EXPECT_EQ(m_host.traceSink.entries()[0].format, "Failed to register the read of job data (%d)");
  }
  EXPECT_EQ(m_sut.getJobString(), "No inputs registered");
}

TEST_F(JobObjWaitForSignalTest, RefusesARecordOfAnotherTypeAndNone) {
  cmd::CmdSendSignalPars other;
  for (core::IContainer* offered : {static_cast<core::IContainer*>(&other), static_cast<core::IContainer*>(nullptr)}) {
    m_handler.m_published[{WaitForSignalJobPars::getMyID(), cmdDataSection()}] = offered;
    EXPECT_TRUE(core::isFailure(m_sut.registerInputs(&m_handler)));
    EXPECT_EQ(m_sut.getJobString(), "No inputs registered");
  }
}

TEST_F(JobObjWaitForSignalTest, AnswersAnExceptionOfTheHostWithAFailure) {
  m_host.calls.fail("handler.registerRead", test::FakeCalls::THROW);
  EXPECT_TRUE(core::isFailure(m_sut.registerInputs(&m_handler)));
  EXPECT_EQ(m_sut.getJobString(), "No inputs registered");
}

TEST_F(JobObjWaitForSignalTest, DescribesItself) {
  EXPECT_EQ(m_sut.getJobString(), "No inputs registered");
  offer(42, true);
  ASSERT_EQ(m_sut.registerInputs(&m_handler), JobResult::NoEffect);
  EXPECT_EQ(m_sut.getJobString(), "waitForSignal(signalId=42,autoReset=1)");
  m_offered.set({7, false});
  EXPECT_EQ(m_sut.getJobString(), "waitForSignal(signalId=7,autoReset=0)") << "it keeps no copy";
}

TEST_F(JobObjWaitForSignalTest, FailsWithoutInputs) {
  const auto sut = addedJob(m_sut);
  EXPECT_EQ(sut(), JobResult::ExecutionFailed);
  EXPECT_THAT(tracesWithoutFunction(), ElementsAre("Error job_obj_wait_for_signal: No job data!"));
  EXPECT_EQ(m_host.traceSink.entries()[0].format, "%s");
}

TEST_F(JobObjWaitForSignalTest, MakesClonesWithoutInputs) {
  offer(42, true);
  ASSERT_EQ(m_sut.registerInputs(&m_handler), JobResult::NoEffect);
  const std::unique_ptr<core::IAmCreatable> clone(m_sut.createNew());
  EXPECT_EQ(dynamic_cast<JobObjWaitForSignal&>(*clone).getJobString(), "No inputs registered");
}

TEST_F(JobObjWaitForSignalTest, LeavesTheOtherOperationsToItsBase) {
  EXPECT_EQ(m_sut.setJobData(&m_offered), JobResult::NoEffect);
  EXPECT_EQ(m_sut.checkParameter(&m_offered, &m_dia), JobResult::NoEffect);
  EXPECT_EQ(m_sut.getJobData(), nullptr);
  EXPECT_EQ(m_sut.getJobString(), "No inputs registered");
}

TEST_F(JobObjWaitForSignalTest, WaitsUntilTheSignalIsSet) {
  offer(5, false);
  const auto sut = runnableJob();
  EXPECT_EQ(sut(), JobResult::Busy);
  EXPECT_EQ(sut(), JobResult::Busy);
  out(5) = 1;
  EXPECT_EQ(sut(), JobResult::CmdFinished);
  EXPECT_EQ(sut(), JobResult::CmdFinished) << "the signal stays set for whoever waits next";
  EXPECT_EQ(in(5), 0);
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(JobObjWaitForSignalTest, FinishesInItsFirstCycleWhenTheSignalIsSet) {
  in(5) = 1;
  offer(5, true);
  const auto sut = runnableJob();
  EXPECT_EQ(sut(), JobResult::CmdFinished);
  EXPECT_EQ(in(5), out(5)) << "and consumes the signal";
  EXPECT_EQ(m_host.calls.count("memory.beginAccess signals_in"), 1) << "in one access";
}

TEST_F(JobObjWaitForSignalTest, ReleasesOnlyOneOfTwoThatConsume) {
  offer(5, true);
  JobObjWaitForSignal other;
  ASSERT_EQ(other.registerInputs(&m_handler), JobResult::NoEffect);
  const auto first = runnableJob();
  const auto second = addedJob(other);
  EXPECT_EQ(first(), JobResult::Busy);
  EXPECT_EQ(second(), JobResult::Busy);
  out(5) = 1;
  EXPECT_EQ(first(), JobResult::CmdFinished);
  EXPECT_EQ(second(), JobResult::Busy);
  out(5) = 2;
  EXPECT_EQ(second(), JobResult::CmdFinished);
}

TEST_F(JobObjWaitForSignalTest, ReadsItsParametersInEachCycle) {
  in(6) = 1;
  offer(5, false);
  const auto sut = runnableJob();
  EXPECT_EQ(sut(), JobResult::Busy);
  m_offered.set({6, true});
  EXPECT_EQ(sut(), JobResult::CmdFinished);
  EXPECT_EQ(in(6), 0);
}

TEST_F(JobObjWaitForSignalTest, KeepsWaitingSilentlyWhenTheSignalCannotBeRead) {
  out(5) = 1;
  offer(5, true);
  const auto sut = runnableJob();
  m_host.calls.fail("memory.beginAccess signals_in", 0x80060001, 1);
  EXPECT_EQ(sut(), JobResult::Busy);
  EXPECT_THAT(traces(), IsEmpty());
  EXPECT_EQ(sut(), JobResult::CmdFinished);
}

TEST_F(JobObjWaitForSignalTest, KeepsWaitingWhenTheSignalsAreGone) {
  offer(5, true);
  const auto sut = runnableJob();
  rt_data::RtSignals::getInstance().terminate();
  EXPECT_EQ(sut(), JobResult::Busy);
}

TEST_F(JobObjWaitForSignalTest, AllocatesNothing) {
  out(5) = 1;
  offer(5, true);
  const auto sut = runnableJob();
  auto& inCounter = in(5);
  const auto& outCounter = out(5);
  const test::AllocationCount count;
  EXPECT_EQ(sut(), JobResult::CmdFinished);
  inCounter = outCounter;
  EXPECT_EQ(sut(), JobResult::Busy);
  EXPECT_EQ(count.get(), 0);
}

}  // namespace
}  // namespace motion::kavo::job
