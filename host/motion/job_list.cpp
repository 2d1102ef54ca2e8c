#include "host/motion/job_list.h"

#include <algorithm>

#include "host/motion/section_mgr.h"
#include "host/support/guarded.h"

namespace motion::host {

using core::job::JobResult;

JobResult JobList::addJob(const core::job::Job& job, const char* name, core::SectionValue section) noexcept {
  return guarded(JobResult::OutOfMemory, JobResult::InvalidObject, [&] {
    if (!SectionMgr::isKnown(section)) {
      return JobResult::UnknownSection;
    }
    if (!job) {
      return JobResult::InvalidObject;
    }
    const auto place = std::ranges::upper_bound(m_jobs, section, {}, &Entry::section);
    m_jobs.insert(place, Entry{job, name, section});
    return JobResult::NoEffect;
  });
}

JobListResult JobList::run() const noexcept {
  JobListResult total;
  for (const Entry& entry : m_jobs) {
    JobResult result = JobResult::ExecutionFailed;
    try {
      result = entry.job();
    } catch (...) {
      // A job has no right to throw across the contract; it counts as failed.
    }
    if (core::isFailure(result)) {
      return {result, entry.name};
    }
    if (result == JobResult::CmdFinished || total.result == JobResult::NoEffect) {
      total.result = result;
    }
  }
  return total;
}

}  // namespace motion::host
