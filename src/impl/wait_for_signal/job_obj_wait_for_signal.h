// The job of the command WaitForSignal.
#pragma once

#include <string>

#include "impl/rt_signals.h"
#include "impl/wait_for_signal/wait_for_signal_pars.h"
#include "motion/core/job/job_object_base.h"

namespace motion::kavo::job {

/// Keeps nothing from one cycle to the next, so that nothing has to be undone when the command is aborted.
class JobObjWaitForSignal : public core::job::JobObjectBase {
 public:
  static constexpr const char* JOB_NAME = "ext_job_obj_wait_for_signal";

  JobObjWaitForSignal();

  [[nodiscard]] core::IAmCreatable* createNew() const override;
  [[nodiscard]] const char* getID() const override;
  core::job::JobResult addJobsToJoblist(core::job::IJobList* list, core::job::JobListTypes type) override;
  core::job::JobResult registerInputs(core::job::IJobDataHandler* handler) override;
  [[nodiscard]] std::string getJobString() const override;

 private:
  /// The job itself. [cyclic & real-time]
  core::job::JobResult execute() const noexcept;

  /// What the command offers, null before registerInputs.
  const core::NamedType<WaitForSignalJobParsT, WaitForSignalJobPars___t>* m_jobData = nullptr;
  rt_data::RtSignals* m_rtSignals;
};

}  // namespace motion::kavo::job
