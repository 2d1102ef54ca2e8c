// The jobs of the command options under the guard: no allocation, lock or system call while conditions wait, fire and fail.
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <vector>

#include "host/datalayer/data_layer.h"
#include "impl/debug_trace.h"
#include "impl/rt_signals.h"
#include "impl/send_signal/job_obj_send_signal.h"
#include "impl/switch_on_path/job_obj_switch_on_path.h"
#include "motion/core/dia/i_dia.h"
#include "motion/core/job/i_job_data_handler.h"
#include "motion/core/obj/kin_pose.h"
#include "support/realtime_guard.h"

namespace motion::test {
namespace {

using core::job::JobListTypes;
using core::job::JobResult;
using kavo::SwitchOnPathAction;
using kavo::SwitchOnPathPars;
using kavo::SwitchOnPathParsList;
using kavo::SwitchOnPathParsListT;
using kavo::rt_data::RtSignals;

/// A kinematics of which only the cycle time is asked.
class ClockedObj : public core::IObj {
 public:
  bool isAxis() const override { return false; }
  bool isEncoder() const override { return false; }
  bool isKinematics() const override { return true; }
  std::uint64_t getLatestPreparedCmdID() const override { return 0; }
  std::uint64_t getCurrentCmdID() const override { return 0; }
  std::uint64_t getCycleCount() const override { return 0; }
  core::cmd::CmdState getCmdState(std::uint64_t /*cmdID*/) const override { return core::cmd::CmdState::DONE; }
  double getCycleTime() const override { return 0.001; }
  const core::UnitSettings& getUnitSettings() const override { return m_units; }
  core::dia::IDia& getDia() override { throw std::logic_error("nothing is reported in the cycle"); }

 private:
  core::UnitSettings m_units;
};

/// Offers a pose and an object.
class KinHandler : public core::job::IJobDataHandler {
 public:
  JobResult registerPublish(core::DataID, core::SectionValue, const char*, core::IContainer*) override {
    return JobResult::NoEffect;
  }
  JobResult registerRead(core::DataID id, core::SectionValue, std::uint32_t, const char*, core::IContainer*& out) override {
    out = id == core::KinPose::getMyID() ? static_cast<core::IContainer*>(&m_pose) : &m_objPtr;
    return JobResult::NoEffect;
  }

  core::KinPose m_pose;

 private:
  ClockedObj m_obj;
  core::IObjPtr m_objPtr{&m_obj};
};

class OneJobList : public core::job::IJobList {
 public:
  JobResult addJob(const core::job::Job& job, const char*, core::SectionValue) override {
    m_job = job;
    return JobResult::NoEffect;
  }
  core::job::Job m_job;
};

class OptionJobs : public testing::Test {
 protected:
  OptionJobs() {
    EXPECT_TRUE(RtSignals::getInstance().initialize(m_dataLayer));
    kavo::DebugTrace::setTraceEnablingState({false, false, false});
  }
  ~OptionJobs() override {
    kavo::DebugTrace::setTraceEnablingState({});
    RtSignals::getInstance().terminate();
  }

  host::datalayer::DataLayer m_dataLayer;
  KinHandler m_handler;
  OneJobList m_jobs;
  RealtimeGuard m_guard;
};

/// One condition per signal along a line; every third looks ahead, every tenth has an action that does not exist. After a
/// failure the displacement counts from two cycles before, which is why the spheres of those that look ahead are wide.
SwitchOnPathParsList conditionsAlongALine() {
  SwitchOnPathParsListT conditions;
  for (std::uint32_t signal = 0; signal < RtSignals::getNrOfSignals(); ++signal) {
    conditions.push_back(std::make_shared<SwitchOnPathPars>(
        SwitchOnPathPars{.signalId = signal,
                         .action = static_cast<SwitchOnPathAction>(signal % 10 == 9 ? 2 : signal % 2),
                         .targetPos = {static_cast<double>(signal), 0.0, 0.0},
                         .radius = signal % 3 == 0 ? 2.5 : 0.25,
                         .preTriggerTime = signal % 3 == 0 ? 0.002 : 0.0}));
  }
  return SwitchOnPathParsList(conditions);
}

TEST_F(OptionJobs, SwitchOnPathNeitherAllocatesNorLocksNorCallsTheSystem) {
  std::uint64_t failures = 0;
  for (int lap = 0; lap < 100; ++lap) {
    const auto conditions = conditionsAlongALine();
    kavo::job::JobObjSwitchOnPath object;
    ASSERT_EQ(object.setJobData(&conditions), JobResult::NoEffect);
    ASSERT_EQ(object.registerInputs(&m_handler), JobResult::NoEffect);
    ASSERT_EQ(object.addJobsToJoblist(&m_jobs, JobListTypes::CYCLIC_EXECUTION), JobResult::NoEffect);
    for (int cycle = 0; cycle < 120; ++cycle) {
      m_handler.m_pose.getRef().x = static_cast<double>(cycle);
      m_guard.arm();
      const JobResult result = m_jobs.m_job();
      m_guard.disarm();
      failures += core::isFailure(result) ? 1 : 0;
    }
    for (const auto& condition : conditions.get()) {
      ASSERT_TRUE(condition->isReached()) << condition->signalId;
    }
  }
  EXPECT_TRUE(m_guard.isClean()) << m_guard.describe();
  EXPECT_EQ(failures, 100U * 10U) << "each condition without an action fails once per lap";
}

TEST_F(OptionJobs, SetSignalNeitherAllocatesNorLocksNorCallsTheSystem) {
  using kavo::job::JobObjSendSignalUser;
  kavo::job::JobObjSendSignal<JobObjSendSignalUser::COMMAND_OPTION> object;
  const kavo::job::SendSignalJobPars data(kavo::job::SendSignalJobParsT{42, false});
  ASSERT_EQ(object.setJobData(&data), JobResult::NoEffect);
  bool isRight = true;
  for (int command = 0; command < 10'000; ++command) {
    ASSERT_EQ(object.addJobsToJoblist(&m_jobs, JobListTypes::CYCLIC_EXECUTION), JobResult::NoEffect);
    m_guard.arm();
    isRight &= m_jobs.m_job() == JobResult::NoEffect;  // sets the signal
    isRight &= m_jobs.m_job() == JobResult::NoEffect;  // does nothing more
    m_guard.disarm();
    bool isSet = false;
    isRight &= RtSignals::getInstance().get(42, isSet, true) && isSet;
  }
  EXPECT_TRUE(m_guard.isClean()) << m_guard.describe();
  EXPECT_TRUE(isRight);
}

}  // namespace
}  // namespace motion::test
