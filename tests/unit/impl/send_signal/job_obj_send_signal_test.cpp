// The job that sets or resets a signal, of a command and of a command option.
#include "impl/send_signal/job_obj_send_signal.h"

#include "command/job_inputs_fixture.h"

namespace motion::kavo::job {
namespace {

using core::job::JobListTypes;
using core::job::JobResult;
using testing::ElementsAre;
using testing::IsEmpty;

using CmdJob = JobObjSendSignal<JobObjSendSignalUser::COMMAND>;
using OptionJob = JobObjSendSignal<JobObjSendSignalUser::COMMAND_OPTION>;

constexpr auto INVALID_JOB_DATA = static_cast<JobResult>(0xF0000016);

template <typename JOB_OBJECT>
class JobObjSendSignalTest : public CommandTest {
 protected:
  [[nodiscard]] static SendSignalJobPars record(std::uint32_t signalId, bool reset = false) {
    return SendSignalJobPars(SendSignalJobParsT{signalId, reset});
  }
  [[nodiscard]] JobResult setData(std::uint32_t signalId, bool reset = false) {
    const auto data = record(signalId, reset);
    return m_sut.setJobData(&data);
  }
  /// Adds the job to a list and returns it.
  [[nodiscard]] core::job::Job addedJob() {
    EXPECT_EQ(m_sut.addJobsToJoblist(&m_jobList, JobListTypes::CYCLIC_EXECUTION), JobResult::NoEffect);
    return m_jobList.m_jobs.back().job;
  }
  [[nodiscard]] const SendSignalJobParsT kept() const {
    const auto* const data = SendSignalJobPars::safeCast(m_sut.getJobData());
    EXPECT_NE(data, nullptr);
    return data != nullptr ? data->get() : SendSignalJobParsT{0xFFFFFFFF, false};
  }

  /// The flag that stands behind the job's record.
  [[nodiscard]] static bool isExecuted(const JOB_OBJECT& object) {
    return *(reinterpret_cast<const std::uint8_t*>(object.getJobData()) + sizeof(SendSignalJobPars)) != 0;
  }

  static constexpr JobResult DONE = std::is_same_v<JOB_OBJECT, CmdJob> ? JobResult::CmdFinished : JobResult::NoEffect;
  JOB_OBJECT m_sut;
};

using Jobs = testing::Types<CmdJob, OptionJob>;
TYPED_TEST_SUITE(JobObjSendSignalTest, Jobs);

TYPED_TEST(JobObjSendSignalTest, HasItsName) {
  constexpr bool IS_CMD = std::is_same_v<TypeParam, CmdJob>;
  EXPECT_STREQ(this->m_sut.getID(), IS_CMD ? "ext_job_send_signal_cmd" : "ext_job_send_signal_cmd_opt");
}

TYPED_TEST(JobObjSendSignalTest, SetsSignalZeroAtFirst) {
  EXPECT_EQ(this->kept().signalId, 0U);
  EXPECT_FALSE(this->kept().reset);
  EXPECT_EQ(this->m_sut.getJobString(), "setSignal(0)");
}

TYPED_TEST(JobObjSendSignalTest, SetsTheSignalOnce) {
  ASSERT_EQ(this->setData(7), JobResult::NoEffect);
  const auto sut = this->addedJob();
  EXPECT_EQ(sut(), this->DONE);
  EXPECT_EQ(this->in(7), 1);
  this->forget();
  EXPECT_EQ(sut(), JobResult::NoEffect);
  EXPECT_EQ(sut(), JobResult::NoEffect);
  EXPECT_EQ(this->in(7), 1);
  EXPECT_THAT(this->m_host.calls.all(), IsEmpty()) << "the signal is not even looked at";
  EXPECT_THAT(this->traces(), IsEmpty());
}

TYPED_TEST(JobObjSendSignalTest, ResetsTheSignalOnce) {
  this->out(7) = 9;
  ASSERT_EQ(this->setData(7, true), JobResult::NoEffect);
  const auto sut = this->addedJob();
  EXPECT_EQ(sut(), this->DONE);
  EXPECT_EQ(this->in(7), 9);
  this->out(7) = 10;
  EXPECT_EQ(sut(), JobResult::NoEffect);
  EXPECT_EQ(this->in(7), 9);
}

TYPED_TEST(JobObjSendSignalTest, HasTheResultCodesOfTheHost) {
  EXPECT_EQ(core::toCode(JobResult::CmdFinished), 0x0A06U);
  EXPECT_EQ(core::toCode(JobResult::NoEffect), 0U);
  EXPECT_EQ(core::toCode(JobResult::ExecutionFailed), 0xF0000004U);
}

TYPED_TEST(JobObjSendSignalTest, CanRunAgainOnceItIsAddedAgain) {
  ASSERT_EQ(this->setData(7), JobResult::NoEffect);
  EXPECT_EQ(this->addedJob()(), this->DONE);
  EXPECT_EQ(this->addedJob()(), this->DONE);
  EXPECT_EQ(this->in(7), 2);
}

TYPED_TEST(JobObjSendSignalTest, CanRunAgainAfterAnAttemptToAddItElsewhere) {
  ASSERT_EQ(this->setData(7), JobResult::NoEffect);
  const auto sut = this->addedJob();
  EXPECT_EQ(sut(), this->DONE);
  EXPECT_EQ(this->m_sut.addJobsToJoblist(&this->m_jobList, JobListTypes::COMMAND_PREPARED), JobResult::ListTypeNotServed);
  EXPECT_EQ(sut(), this->DONE) << "the flag is cleared first, whatever the list";
  EXPECT_EQ(this->in(7), 2);
}

TYPED_TEST(JobObjSendSignalTest, MakesClonesThatAreAsNew) {
  this->out(7) = 1;
  ASSERT_EQ(this->setData(7, true), JobResult::NoEffect);
  EXPECT_EQ(this->addedJob()(), this->DONE);
  ASSERT_TRUE(this->isExecuted(this->m_sut));
  const std::unique_ptr<core::IAmCreatable> made(this->m_sut.createNew());
  const auto& sut = dynamic_cast<TypeParam&>(*made);
  EXPECT_EQ(sut.getJobString(), "setSignal(0)");
  EXPECT_FALSE(this->isExecuted(sut));
  const auto* const data = SendSignalJobPars::safeCast(sut.getJobData());
  ASSERT_NE(data, nullptr);
  EXPECT_EQ(data->get().signalId, 0U);
  EXPECT_FALSE(data->get().reset);
}

TYPED_TEST(JobObjSendSignalTest, TriesASetOnlyOnce) {
  ASSERT_EQ(this->setData(7), JobResult::NoEffect);
  const auto sut = this->addedJob();
  this->forget();
  this->m_host.calls.fail("memory.beginAccess signals_in", 0x80060001, 1);
  EXPECT_EQ(sut(), JobResult::ExecutionFailed);
  EXPECT_THAT(this->tracesWithoutFunction(), ElementsAre("Error job_obj_send_signal: m_signals.set() failed"));
  EXPECT_EQ(this->m_host.traceSink.entries()[0].format, "%s");
  EXPECT_THAT(this->m_host.traceSink.entries()[0].function, testing::Optional(testing::Not(IsEmpty())));
  EXPECT_EQ(sut(), JobResult::NoEffect);
  EXPECT_EQ(this->in(7), 0);
  EXPECT_EQ(this->traces().size(), 1U);
}

TYPED_TEST(JobObjSendSignalTest, TriesAResetOnlyOnce) {
  this->out(7) = 1;
  ASSERT_EQ(this->setData(7, true), JobResult::NoEffect);
  const auto sut = this->addedJob();
  this->forget();
  this->m_host.calls.fail("memory.beginAccess signals_in", 0x80060001, 1);
  EXPECT_EQ(sut(), JobResult::ExecutionFailed);
  EXPECT_THAT(this->tracesWithoutFunction(), ElementsAre("Error job_obj_send_signal: m_signals.reset() failed"));
  EXPECT_THAT(this->m_host.traceSink.entries()[0].function, testing::Optional(testing::Not(IsEmpty())));
  EXPECT_EQ(sut(), JobResult::NoEffect);
  EXPECT_EQ(this->in(7), 0);
}

TYPED_TEST(JobObjSendSignalTest, FailsWhenTheSignalsAreGone) {
  ASSERT_EQ(this->setData(7), JobResult::NoEffect);
  const auto sut = this->addedJob();
  rt_data::RtSignals::getInstance().terminate();
  EXPECT_EQ(sut(), JobResult::ExecutionFailed);
}

TYPED_TEST(JobObjSendSignalTest, AllocatesNothing) {
  ASSERT_EQ(this->setData(7), JobResult::NoEffect);
  const auto sut = this->addedJob();
  const test::AllocationCount count;
  EXPECT_EQ(sut(), this->DONE);
  EXPECT_EQ(sut(), JobResult::NoEffect);
  EXPECT_EQ(count.get(), 0);
}

TYPED_TEST(JobObjSendSignalTest, KeepsTheDataThatItIsGiven) {
  EXPECT_EQ(this->setData(99, true), JobResult::NoEffect);
  EXPECT_EQ(this->kept().signalId, 99U);
  EXPECT_TRUE(this->kept().reset);
  EXPECT_EQ(this->m_sut.getJobString(), "resetSignal(99)");
  EXPECT_EQ(this->setData(7, false), JobResult::NoEffect);
  EXPECT_EQ(this->m_sut.getJobString(), "setSignal(7)");
  EXPECT_THAT(this->traces(), IsEmpty());
}

TYPED_TEST(JobObjSendSignalTest, RefusesNoDataAndDataOfAnotherType) {
  ASSERT_EQ(this->setData(7, true), JobResult::NoEffect);
  const cmd::CmdSendSignalPars other(cmd::CmdSendSignalParsT{1});
  EXPECT_EQ(this->m_sut.setJobData(nullptr), INVALID_JOB_DATA);
  EXPECT_EQ(this->m_sut.setJobData(&other), INVALID_JOB_DATA);
  const std::string expected = "Error job_obj_send_signal setJobData: Invalid jobData";
  EXPECT_THAT(this->traces(), ElementsAre(expected, expected));
  EXPECT_EQ(this->m_host.traceSink.entries()[0].format, "%s");
  EXPECT_EQ(this->m_sut.getJobString(), "resetSignal(7)");
}

TYPED_TEST(JobObjSendSignalTest, RefusesDataWithASignalThatDoesNotExist) {
  EXPECT_EQ(this->setData(100), INVALID_JOB_DATA);
  EXPECT_THAT(this->traces(), ElementsAre("Error job_obj_send_signal setJobData: jobData.signalId '100' is not valid"));
  EXPECT_EQ(this->m_host.traceSink.entries()[0].format, "jobData.signalId '%d' is not valid");
  EXPECT_EQ(this->m_sut.getJobString(), "setSignal(0)");
}

TYPED_TEST(JobObjSendSignalTest, ChecksParametersWithoutAChange) {
  const auto good = this->record(99, true);
  EXPECT_EQ(this->m_sut.checkParameter(&good, &this->m_dia), JobResult::NoEffect);
  EXPECT_EQ(this->m_sut.checkParameter(&good, nullptr), JobResult::NoEffect);
  EXPECT_EQ(this->kept().signalId, 0U);
  EXPECT_THAT(this->m_dia.m_reports, IsEmpty());
  EXPECT_THAT(this->traces(), IsEmpty());
}

TYPED_TEST(JobObjSendSignalTest, ReportsParametersThatAreNone) {
  const cmd::CmdSendSignalPars other(cmd::CmdSendSignalParsT{1});
  for (const core::IContainer* data :
       {static_cast<const core::IContainer*>(nullptr), static_cast<const core::IContainer*>(&other)}) {
    this->m_dia.m_reports.clear();
    EXPECT_EQ(this->m_sut.checkParameter(data, &this->m_dia), INVALID_JOB_DATA);
    ASSERT_EQ(this->m_dia.m_reports.size(), 1U);
    const auto& report = this->m_dia.m_reports[0];
    EXPECT_EQ(report.mainCode, 0x090F0FFFU);
    EXPECT_EQ(report.detailCode, 0x0C570101U);
    EXPECT_EQ(report.source.client, "");
    EXPECT_EQ(report.source.file, "");
    EXPECT_EQ(report.source.line, 0U);
    EXPECT_THAT(report.file, testing::HasSubstr("job_obj_send_signal"));
    EXPECT_EQ(report.function, "checkParameter");
    EXPECT_GT(report.line, 0U);
    EXPECT_EQ(report.format, "%s");
    EXPECT_EQ(report.text, "jobData=nullptr");
    EXPECT_TRUE(report.isClosed);
  }
  EXPECT_THAT(this->traces(), IsEmpty()) << "a trace is for the case without a diagnosis";
}

TYPED_TEST(JobObjSendSignalTest, ReportsParametersWithASignalThatDoesNotExist) {
  const auto bad = this->record(100);
  EXPECT_EQ(this->m_sut.checkParameter(&bad, &this->m_dia), INVALID_JOB_DATA);
  ASSERT_EQ(this->m_dia.m_reports.size(), 1U);
  EXPECT_EQ(this->m_dia.m_reports[0].mainCode, 0x090F0FFFU);
  EXPECT_EQ(this->m_dia.m_reports[0].detailCode, 0x0C570101U);
  EXPECT_EQ(this->m_dia.m_reports[0].text, "jobData->signalId: 100");
  EXPECT_TRUE(this->m_dia.m_reports[0].isClosed);
  EXPECT_THAT(this->traces(), IsEmpty());
}

TYPED_TEST(JobObjSendSignalTest, TracesBadParametersWithoutADiagnosis) {
  const auto bad = this->record(100);
  EXPECT_EQ(this->m_sut.checkParameter(nullptr, nullptr), INVALID_JOB_DATA);
  EXPECT_EQ(this->m_sut.checkParameter(&bad, nullptr), INVALID_JOB_DATA);
  EXPECT_THAT(this->traces(), ElementsAre("Error job_obj_send_signal checkParameter: jobData=nullptr",
                                          "Error job_obj_send_signal checkParameter: jobData->signalId: 100"));
}

TEST(JobObjSendSignalUserTest, HasItsNumbers) {
  EXPECT_EQ(static_cast<std::uint32_t>(JobObjSendSignalUser::COMMAND), 0U);
  EXPECT_EQ(static_cast<std::uint32_t>(JobObjSendSignalUser::COMMAND_OPTION), 1U);
}

class CmdJobInputsTest : public JobInputsTest<CmdJob, SendSignalJobPars> {};

TEST_F(CmdJobInputsTest, CopiesWhatTheCommandOffers) {
  offer({42, true});
  expectOneRead();
  EXPECT_EQ(m_sut.getJobString(), "resetSignal(42)");
  m_offered.set({1, false});
  EXPECT_EQ(m_sut.getJobString(), "resetSignal(42)") << "it is a copy";
}

TEST_F(CmdJobInputsTest, PassesTheFailureToReadOn) {
  expectFailuresPassedOn("job_obj_send_signal", "SendSignalJobPars::registerRead failed with %d");
  EXPECT_EQ(m_sut.getJobString(), "setSignal(0)");
}

TEST_F(CmdJobInputsTest, RefusesARecordOfAnotherTypeAndNone) {
  expectOtherRecordsAndNoneRefused("setSignal(0)");
}

TEST_F(CmdJobInputsTest, AnswersAnExceptionOfTheHostWithAFailure) {
  expectFailureOnException();
}

class OptionJobInputsTest : public JobObjSendSignalTest<OptionJob> {};

TEST_F(OptionJobInputsTest, ReadsNothing) {
  EXPECT_EQ(m_sut.registerInputs(&m_handler), JobResult::NoEffect);
  EXPECT_EQ(m_sut.registerInputs(nullptr), JobResult::NoEffect);
  EXPECT_THAT(m_host.calls.all(), IsEmpty());
}

}  // namespace
}  // namespace motion::kavo::job
