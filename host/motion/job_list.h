// The jobs of one command, in the order in which a cycle runs the stages.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "motion/core/job/i_job_list.h"

namespace motion::host {

/// What the jobs of a list said, taken together.
struct JobListResult {
  core::job::JobResult result = core::job::JobResult::NoEffect;  ///< failure, else CmdFinished, else Busy, else NoEffect
  const char* failedJob = nullptr;
};

class JobList : public core::job::IJobList {
 public:
  /// OutOfMemory, and InvalidObject for a job that is empty or cannot be copied, add nothing. [prepare]
  core::job::JobResult addJob(const core::job::Job& job, const char* name, core::SectionValue section) noexcept override;

  /// Runs the jobs in stage order, jobs of one stage in the order in which they were added; the first failure ends the run.
  /// A job that throws has failed. [cyclic & real-time | prepare]
  [[nodiscard]] JobListResult run() const noexcept;
  [[nodiscard]] std::size_t size() const noexcept { return m_jobs.size(); }
  /// Address of the first job, for prefetching; null when empty.
  [[nodiscard]] const void* data() const noexcept { return m_jobs.empty() ? nullptr : m_jobs.data(); }

 private:
  struct Entry {
    core::job::Job job;
    const char* name;
    core::SectionValue section;
  };

  std::vector<Entry> m_jobs;
};

}  // namespace motion::host
