// The job of the command WaitForSignal.
#include "impl/wait_for_signal/job_obj_wait_for_signal.h"

#include <array>
#include <cstdio>

#include "impl/command/cmd_data.h"
#include "impl/debug_trace.h"
#include "impl/guarded.h"
#include "motion/core/job/i_job_data_handler.h"

namespace motion::kavo::job {

using core::job::JobResult;

JobObjWaitForSignal::JobObjWaitForSignal() : m_rtSignals(&rt_data::RtSignals::getInstance()) {}

core::IAmCreatable* JobObjWaitForSignal::createNew() const {
  return guarded<core::IAmCreatable*>(nullptr, [] { return new JobObjWaitForSignal; });
}

const char* JobObjWaitForSignal::getID() const {
  return JOB_NAME;
}

JobResult JobObjWaitForSignal::addJobsToJoblist(core::job::IJobList* list, core::job::JobListTypes type) {
  return addCyclicJob(
      *list, type, [this]() __attribute__((flatten)) { return execute(); }, getID());
}

JobResult JobObjWaitForSignal::registerInputs(core::job::IJobDataHandler* handler) {
  const JobResult result = readCmdData(*handler, m_jobData);
  if (core::isFailure(result)) {
    KAVO_TRACE(Error, "Failed to register the read of job data (%d)", core::toCode(result));
    return result;
  }
  return JobResult::NoEffect;
}

std::string JobObjWaitForSignal::getJobString() const {
  std::array<char, 64> text{"No inputs registered"};
  if (m_jobData != nullptr) {
    const auto [signalId, autoReset] = m_jobData->get();
    std::snprintf(text.data(), text.size(), "waitForSignal(signalId=%d,autoReset=%d)", signalId, autoReset);
  }
  return guarded(std::string(), [&text] { return std::string(text.data()); });
}

JobResult JobObjWaitForSignal::execute() const noexcept {
  if (m_jobData == nullptr) [[unlikely]] {
    KAVO_TRACE_TEXT(Error, "No job data!");
    return JobResult::ExecutionFailed;
  }
  const auto [signalId, autoReset] = m_jobData->get();
  bool isSet = false;
  // A memory that cannot be read is no reason to end the command: it goes on waiting.
  const bool isRead = m_rtSignals->get(signalId, isSet, autoReset);
  return isRead && isSet ? JobResult::CmdFinished : JobResult::Busy;
}

}  // namespace motion::kavo::job
