// What a benchmark offers a component in place of the host's own objects.
#pragma once

#include <cstdint>

#include "motion/core/cmd/i_cmd.h"
#include "motion/core/job/i_job_list.h"

namespace motion::bench {

/// A command of which only the host's ID is known.
class NumberedCmd : public core::cmd::ICmd {
 public:
  [[nodiscard]] std::uint64_t getCmdID() const override { return id; }

  std::uint64_t id = 0;
};

/// Takes the one job that a job object adds.
class JobCatcher : public core::job::IJobList {
 public:
  core::job::JobResult addJob(const core::job::Job& job, const char* /*name*/, core::SectionValue /*section*/) override {
    m_job = job;
    return core::job::JobResult::NoEffect;
  }
  [[nodiscard]] const core::job::Job& job() const noexcept { return m_job; }

 private:
  core::job::Job m_job;
};

}  // namespace motion::bench
