// The job of the command WaitForSignalReset.
#include "impl/wait_for_signal_reset/job_obj_wait_for_signal_reset.h"

#include <array>
#include <cstdio>

#include "impl/command/cmd_data.h"
#include "impl/debug_trace.h"
#include "impl/guarded.h"
#include "motion/core/job/i_job_data_handler.h"

namespace motion::kavo::job {

using core::job::JobResult;

JobObjWaitForSignalReset::JobObjWaitForSignalReset() : m_rtSignals(&rt_data::RtSignals::getInstance()) {}

core::IAmCreatable* JobObjWaitForSignalReset::createNew() const {
  return guarded<core::IAmCreatable*>(nullptr, [] { return new JobObjWaitForSignalReset; });
}

const char* JobObjWaitForSignalReset::getID() const {
  return JOB_NAME;
}

JobResult JobObjWaitForSignalReset::addJobsToJoblist(core::job::IJobList* list, core::job::JobListTypes type) {
  return addCyclicJob(
      *list, type, [this]() __attribute__((flatten)) { return execute(); }, getID());
}

JobResult JobObjWaitForSignalReset::registerInputs(core::job::IJobDataHandler* handler) {
  const JobResult result = readCmdData(*handler, m_jobData);
  if (core::isFailure(result)) {
    KAVO_TRACE(Error, "Failed to register the read of job data (%d)", core::toCode(result));
    return result;
  }
  return JobResult::NoEffect;
}

std::string JobObjWaitForSignalReset::getJobString() const {
  std::array<char, 64> text{"No inputs registered"};
  if (m_jobData != nullptr) {
    std::snprintf(text.data(), text.size(), "waitForSignalReset(signalId=%d)", m_jobData->get().signalId);
  }
  return guarded(std::string(), [&text] { return std::string(text.data()); });
}

JobResult JobObjWaitForSignalReset::execute() const noexcept {
  if (m_jobData == nullptr) [[unlikely]] {
    KAVO_TRACE_TEXT(Error, "No job data!");
    return JobResult::ExecutionFailed;
  }
  bool isSet = true;
  // A memory that cannot be read is no reason to end the command: it goes on waiting.
  const bool isRead = m_rtSignals->get(m_jobData->get().signalId, isSet, false);
  return isRead && !isSet ? JobResult::CmdFinished : JobResult::Busy;
}

}  // namespace motion::kavo::job
