// The job of WaitForSignal: what it answers in each cycle.
#include "impl/wait_for_signal/job_obj_wait_for_signal.h"

#include "command/wait_job_tests.h"

namespace motion::kavo::job {
namespace {

using core::job::JobResult;
using testing::IsEmpty;

struct WaitForSignalCase {
  using JobObject = JobObjWaitForSignal;
  using Record = WaitForSignalJobPars;
  static constexpr const char* JOB_NAME = "ext_job_obj_wait_for_signal";
  static constexpr const char* UNIT = "job_obj_wait_for_signal";
  static constexpr const char* TEXT_42 = "waitForSignal(signalId=42,autoReset=1)";
  static constexpr bool AWAITED = true;
  static constexpr WaitForSignalJobParsT with(std::uint32_t id) { return {id, true}; }
};

INSTANTIATE_TYPED_TEST_SUITE_P(WaitForSignal, WaitJobTest, WaitForSignalCase);

class JobObjWaitForSignalTest : public WaitJobTest<WaitForSignalCase> {};

TEST_F(JobObjWaitForSignalTest, DescribesItselfAsItIsNow) {
  offer({42, true});
  ASSERT_EQ(m_sut.registerInputs(&m_handler), JobResult::NoEffect);
  EXPECT_EQ(m_sut.getJobString(), "waitForSignal(signalId=42,autoReset=1)");
  m_offered.set({7, false});
  EXPECT_EQ(m_sut.getJobString(), "waitForSignal(signalId=7,autoReset=0)") << "it keeps no copy";
}

TEST_F(JobObjWaitForSignalTest, WaitsUntilTheSignalIsSet) {
  offer({5, false});
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
  offer({5, true});
  const auto sut = runnableJob();
  EXPECT_EQ(sut(), JobResult::CmdFinished);
  EXPECT_EQ(in(5), out(5)) << "and consumes the signal";
  EXPECT_EQ(m_host.calls.count("memory.beginAccess signals_in"), 1) << "in one access";
}

TEST_F(JobObjWaitForSignalTest, ReleasesOnlyOneOfTwoThatConsume) {
  offer({5, true});
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

TEST_F(JobObjWaitForSignalTest, ReadsInEachCycleWhetherToConsume) {
  in(6) = 1;
  offer({5, false});
  const auto sut = runnableJob();
  EXPECT_EQ(sut(), JobResult::Busy);
  m_offered.set({6, true});
  EXPECT_EQ(sut(), JobResult::CmdFinished);
  EXPECT_EQ(in(6), 0);
}

}  // namespace
}  // namespace motion::kavo::job
