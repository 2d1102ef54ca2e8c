// The job that sets or resets a signal, once.
#pragma once

#include <cstdint>
#include <string>

#include "impl/call_site.h"
#include "impl/rt_signals.h"
#include "impl/send_signal/send_signal_pars.h"
#include "motion/core/job/job_object_base.h"

namespace motion::kavo::job {

/// Whose job it is: that of a command, which it finishes, or that of a command option, which leaves its command alone.
enum class JobObjSendSignalUser : std::uint32_t { COMMAND = 0, COMMAND_OPTION = 1 };

template <JobObjSendSignalUser USER>
class JobObjSendSignal : public core::job::JobObjectBase {
 public:
  static constexpr const char* JOB_NAME =
      USER == JobObjSendSignalUser::COMMAND ? "ext_job_send_signal_cmd" : "ext_job_send_signal_cmd_opt";

  JobObjSendSignal();

  [[nodiscard]] core::IAmCreatable* createNew() const override;
  [[nodiscard]] const char* getID() const override;
  /// Makes the job runnable again, too.
  core::job::JobResult addJobsToJoblist(core::job::IJobList* list, core::job::JobListTypes type) override;
  /// Copies what the command offers; an option's job is given its parameters by setJobData instead.
  core::job::JobResult registerInputs(core::job::IJobDataHandler* handler) override;
  core::job::JobResult setJobData(const core::IContainer* data) override;
  core::job::JobResult checkParameter(const core::IContainer* data, core::dia::IDia* dia) const override;
  [[nodiscard]] std::string getJobString() const override;
  [[nodiscard]] const core::IContainer* getJobData() const override;

 private:
  /// The job itself: one try, whatever comes of it. [cyclic & real-time]
  core::job::JobResult execute() noexcept;

  SendSignalJobPars m_jobData;
  bool m_isExecuted = false;
  rt_data::RtSignals* m_rtSignals;
};

extern template class JobObjSendSignal<JobObjSendSignalUser::COMMAND>;
extern template class JobObjSendSignal<JobObjSendSignalUser::COMMAND_OPTION>;

}  // namespace motion::kavo::job
