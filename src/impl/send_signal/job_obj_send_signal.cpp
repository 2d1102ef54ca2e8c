// The job that sets or resets a signal.
#include "impl/send_signal/job_obj_send_signal.h"

#include <array>
#include <cstdio>

#include "impl/command/cmd_data.h"
#include "impl/command/diagnosis.h"
#include "impl/debug_trace.h"
#include "impl/guarded.h"
#include "motion/core/job/i_job_data_handler.h"

namespace motion::kavo::job {

using core::job::JobResult;

namespace {

constexpr bool isCommand(JobObjSendSignalUser user) noexcept {
  return user == JobObjSendSignalUser::COMMAND;
}

/// Reports refused job data to whoever listens, or traces it.
JobResult refuse(const CallSite& site, core::dia::IDia* dia, const char* text) noexcept {
  if (dia != nullptr) {
    cmd::reportInvalidParameter(site, *dia, {}, text);
  } else {
    KAVO_TRACE_AT(site, Error, "%s", text);
  }
  return JobResult::InvalidJobData;
}

}  // namespace

template <JobObjSendSignalUser USER>
JobObjSendSignal<USER>::JobObjSendSignal() : m_rtSignals(&rt_data::RtSignals::getInstance()) {}

template <JobObjSendSignalUser USER>
core::IAmCreatable* JobObjSendSignal<USER>::createNew() const {
  return guarded<core::IAmCreatable*>(nullptr, [] { return new JobObjSendSignal; });
}

template <JobObjSendSignalUser USER>
const char* JobObjSendSignal<USER>::getID() const {
  return JOB_NAME;
}

template <JobObjSendSignalUser USER>
JobResult JobObjSendSignal<USER>::addJobsToJoblist(core::job::IJobList* list, core::job::JobListTypes type) {
  m_isExecuted = false;
  return addCyclicJob(
      list, type, [this] { return execute(); }, getID());
}

template <JobObjSendSignalUser USER>
JobResult JobObjSendSignal<USER>::registerInputs(core::job::IJobDataHandler* handler) {
  if constexpr (isCommand(USER)) {
    const core::NamedType<SendSignalJobParsT, SendSignalJobPars___t>* published = nullptr;
    if (const JobResult result = readCmdData(*handler, published); core::isFailure(result)) {
      KAVO_TRACE(Error, "SendSignalJobPars::registerRead failed with %d", core::toCode(result));
      return result;
    }
    m_jobData.set(published->get());
  }
  return JobResult::NoEffect;
}

template <JobObjSendSignalUser USER>
JobResult JobObjSendSignal<USER>::setJobData(const core::IContainer* data) {
  const auto* jobData = SendSignalJobPars::safeCast(data);
  if (jobData == nullptr) {
    KAVO_TRACE_TEXT(Error, "Invalid jobData");
    return JobResult::InvalidJobData;
  }
  if (const std::uint32_t signalId = jobData->get().signalId; !rt_data::RtSignals::isValidId(signalId)) {
    KAVO_TRACE(Error, "jobData.signalId '%d' is not valid", signalId);
    return JobResult::InvalidJobData;
  }
  m_jobData.set(jobData->get());
  return JobResult::NoEffect;
}

template <JobObjSendSignalUser USER>
JobResult JobObjSendSignal<USER>::checkParameter(const core::IContainer* data, core::dia::IDia* dia) const {
  const auto* jobData = SendSignalJobPars::safeCast(data);
  if (jobData == nullptr) {
    return refuse(KAVO_HERE, dia, "jobData=nullptr");
  }
  if (const std::uint32_t signalId = jobData->get().signalId; !rt_data::RtSignals::isValidId(signalId)) {
    std::array<char, sizeof("jobData->signalId: -2147483648")> text{};
    std::snprintf(text.data(), text.size(), "jobData->signalId: %d", signalId);
    return refuse(KAVO_HERE, dia, text.data());
  }
  return JobResult::NoEffect;
}

template <JobObjSendSignalUser USER>
std::string JobObjSendSignal<USER>::getJobString() const {
  const SendSignalJobParsT jobData = m_jobData.get();
  std::array<char, sizeof("resetSignal(-2147483648)")> text{};
  std::snprintf(text.data(), text.size(), "%sSignal(%d)", jobData.reset ? "reset" : "set", jobData.signalId);
  return guarded(std::string(), [&text] { return std::string(text.data()); });
}

template <JobObjSendSignalUser USER>
const core::IContainer* JobObjSendSignal<USER>::getJobData() const {
  return &m_jobData;
}

template <JobObjSendSignalUser USER>
JobResult JobObjSendSignal<USER>::execute() noexcept {
  if (m_isExecuted) {
    return JobResult::NoEffect;
  }
  m_isExecuted = true;
  const auto& [signalId, reset] = m_jobData.getRef();
  if (!(reset ? m_rtSignals->reset(signalId) : m_rtSignals->set(signalId))) {
    KAVO_TRACE_TEXT(Error, reset ? "m_signals.reset() failed" : "m_signals.set() failed");
    return JobResult::ExecutionFailed;
  }
  return isCommand(USER) ? JobResult::CmdFinished : JobResult::NoEffect;
}

template class JobObjSendSignal<JobObjSendSignalUser::COMMAND>;
template class JobObjSendSignal<JobObjSendSignalUser::COMMAND_OPTION>;

}  // namespace motion::kavo::job
