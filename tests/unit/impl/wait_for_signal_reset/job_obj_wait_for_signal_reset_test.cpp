// The job of WaitForSignalReset: what it answers in each cycle.
#include "impl/wait_for_signal_reset/job_obj_wait_for_signal_reset.h"

#include "command/wait_job_tests.h"

namespace motion::kavo::job {
namespace {

using core::job::JobResult;
using testing::IsEmpty;

struct WaitForSignalResetCase {
  using JobObject = JobObjWaitForSignalReset;
  using Record = WaitForSignalResetJobPars;
  static constexpr const char* JOB_NAME = "ext_job_obj_wait_for_signal_reset";
  static constexpr const char* UNIT = "job_obj_wait_for_signal_reset";
  static constexpr const char* TEXT_42 = "waitForSignalReset(signalId=42)";
  static constexpr bool AWAITED = false;
  static constexpr WaitForSignalResetJobParsT with(std::uint32_t id) { return {id}; }
};

INSTANTIATE_TYPED_TEST_SUITE_P(WaitForSignalReset, WaitJobTest, WaitForSignalResetCase);

class JobObjWaitForSignalResetTest : public WaitJobTest<WaitForSignalResetCase> {};

TEST_F(JobObjWaitForSignalResetTest, DescribesItselfAsItIsNow) {
  offer({42});
  ASSERT_EQ(m_sut.registerInputs(&m_handler), JobResult::NoEffect);
  EXPECT_EQ(m_sut.getJobString(), "waitForSignalReset(signalId=42)");
  m_offered.set({7});
  EXPECT_EQ(m_sut.getJobString(), "waitForSignalReset(signalId=7)") << "it keeps no copy";
}

TEST_F(JobObjWaitForSignalResetTest, WaitsUntilTheSignalIsReset) {
  in(5) = 1;
  offer({5});
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
  offer({5});
  const auto sut = runnableJob();
  EXPECT_EQ(sut(), JobResult::CmdFinished);
}

}  // namespace
}  // namespace motion::kavo::job
