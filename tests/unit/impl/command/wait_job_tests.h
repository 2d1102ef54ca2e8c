// What holds for each job that waits for a signal. Each job's own test says its texts and instantiates these.
#pragma once

#include "command/job_inputs_fixture.h"

namespace motion::kavo::job {

/// CASE says of a job: its `JobObject` and `Record`, the `JOB_NAME`, the `UNIT` that its traces name, and
/// - `with(id)`: a record with which it waits for that signal, and `TEXT_42`: how it describes itself with that of signal
/// 42,
/// - `AWAITED`: the state that it waits for.
template <typename CASE>
class WaitJobTest : public JobInputsTest<typename CASE::JobObject, typename CASE::Record> {
 protected:
  [[nodiscard]] core::job::Job runnableJob() {
    EXPECT_EQ(this->m_sut.registerInputs(&this->m_handler), core::job::JobResult::NoEffect);
    auto job = this->addedJob(this->m_sut);
    this->forget();
    return job;
  }
  /// Makes it so that the signal has the state that the job waits for, or the other one.
  void fulfil(std::uint32_t id, bool isFulfilled = true) {
    this->in(id) = static_cast<std::uint8_t>(this->out(id) + (isFulfilled == CASE::AWAITED ? 1 : 0));
  }
};
TYPED_TEST_SUITE_P(WaitJobTest);

TYPED_TEST_P(WaitJobTest, HasItsName) {
  EXPECT_STREQ(this->m_sut.getID(), TypeParam::JOB_NAME);
}

TYPED_TEST_P(WaitJobTest, HasTheResultCodesOfTheHost) {
  EXPECT_EQ(core::toCode(core::job::JobResult::CmdFinished), 0x0A06U);
  EXPECT_EQ(core::toCode(core::job::JobResult::Busy), 0x0103U);
  EXPECT_EQ(core::toCode(core::job::JobResult::ExecutionFailed), 0xF0000004U);
}

TYPED_TEST_P(WaitJobTest, ReadsWhatTheCommandOffers) {
  this->offer(TypeParam::with(42));
  this->expectOneRead();
}

TYPED_TEST_P(WaitJobTest, PassesTheFailureToReadOn) {
  this->expectFailuresPassedOn(TypeParam::UNIT, "Failed to register the read of job data (%d)");
  EXPECT_EQ(this->m_sut.getJobString(), "No inputs registered");
}

TYPED_TEST_P(WaitJobTest, RefusesARecordOfAnotherTypeAndNone) {
  this->expectOtherRecordsAndNoneRefused("No inputs registered");
}

TYPED_TEST_P(WaitJobTest, AnswersAnExceptionOfTheHostWithAFailure) {
  this->expectFailureOnException();
  EXPECT_EQ(this->m_sut.getJobString(), "No inputs registered");
}

TYPED_TEST_P(WaitJobTest, DescribesItself) {
  EXPECT_EQ(this->m_sut.getJobString(), "No inputs registered");
  this->offer(TypeParam::with(42));
  ASSERT_EQ(this->m_sut.registerInputs(&this->m_handler), core::job::JobResult::NoEffect);
  EXPECT_EQ(this->m_sut.getJobString(), TypeParam::TEXT_42);
}

TYPED_TEST_P(WaitJobTest, FailsWithoutInputs) {
  const auto sut = this->addedJob(this->m_sut);
  EXPECT_EQ(sut(), core::job::JobResult::ExecutionFailed);
  EXPECT_THAT(this->traces(), testing::ElementsAre(std::string("Error ") + TypeParam::UNIT + " execute: No job data!"));
  EXPECT_EQ(this->m_host.traceSink.entries()[0].format, "%s");
}

TYPED_TEST_P(WaitJobTest, MakesClonesWithoutInputs) {
  this->offer(TypeParam::with(42));
  ASSERT_EQ(this->m_sut.registerInputs(&this->m_handler), core::job::JobResult::NoEffect);
  const std::unique_ptr<core::IAmCreatable> clone(this->m_sut.createNew());
  EXPECT_EQ(dynamic_cast<typename TypeParam::JobObject&>(*clone).getJobString(), "No inputs registered");
}

TYPED_TEST_P(WaitJobTest, LeavesTheOtherOperationsToItsBase) {
  EXPECT_EQ(this->m_sut.setJobData(&this->m_offered), core::job::JobResult::NoEffect);
  EXPECT_EQ(this->m_sut.checkParameter(&this->m_offered, &this->m_dia), core::job::JobResult::NoEffect);
  EXPECT_EQ(this->m_sut.getJobData(), nullptr);
  EXPECT_EQ(this->m_sut.getJobString(), "No inputs registered");
}

TYPED_TEST_P(WaitJobTest, ReadsItsParametersInEachCycle) {
  this->fulfil(5, false);
  this->fulfil(6);
  this->offer(TypeParam::with(5));
  const auto sut = this->runnableJob();
  EXPECT_EQ(sut(), core::job::JobResult::Busy);
  this->m_offered.set(TypeParam::with(6));
  EXPECT_EQ(sut(), core::job::JobResult::CmdFinished);
}

TYPED_TEST_P(WaitJobTest, KeepsWaitingSilentlyWhenTheSignalCannotBeRead) {
  this->fulfil(5);
  this->offer(TypeParam::with(5));
  const auto sut = this->runnableJob();
  this->m_host.calls.fail("memory.beginAccess signals_in", 0x80060001, 1);
  EXPECT_EQ(sut(), core::job::JobResult::Busy);
  EXPECT_THAT(this->traces(), testing::IsEmpty());
  EXPECT_EQ(sut(), core::job::JobResult::CmdFinished);
}

TYPED_TEST_P(WaitJobTest, KeepsWaitingWhenTheSignalsAreGone) {
  this->offer(TypeParam::with(5));
  const auto sut = this->runnableJob();
  rt_data::RtSignals::getInstance().terminate();
  EXPECT_EQ(sut(), core::job::JobResult::Busy);
}

TYPED_TEST_P(WaitJobTest, AllocatesNothing) {
  this->fulfil(5);
  this->fulfil(6, false);
  this->offer(TypeParam::with(5));
  const auto sut = this->runnableJob();
  const auto other = TypeParam::with(6);
  const test::AllocationCount count;
  EXPECT_EQ(sut(), core::job::JobResult::CmdFinished);
  this->m_offered.set(other);
  EXPECT_EQ(sut(), core::job::JobResult::Busy);
  EXPECT_EQ(count.get(), 0);
}

REGISTER_TYPED_TEST_SUITE_P(WaitJobTest, HasItsName, HasTheResultCodesOfTheHost, ReadsWhatTheCommandOffers,
                            PassesTheFailureToReadOn, RefusesARecordOfAnotherTypeAndNone,
                            AnswersAnExceptionOfTheHostWithAFailure, DescribesItself, FailsWithoutInputs,
                            MakesClonesWithoutInputs, LeavesTheOtherOperationsToItsBase, ReadsItsParametersInEachCycle,
                            KeepsWaitingSilentlyWhenTheSignalCannotBeRead, KeepsWaitingWhenTheSignalsAreGone,
                            AllocatesNothing);

}  // namespace motion::kavo::job
