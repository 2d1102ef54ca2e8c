// A job object in place of one of the component's: counts its instances and answers as it is told.
#pragma once

#include <string>
#include <vector>

#include "conformance/subject.h"
#include "motion/core/results.h"

namespace motion::conformance {

struct JobCounts {
  int made = 0;                      ///< clones
  int alive = 0;                     ///< clones that were not destroyed
  std::vector<std::string> checked;  ///< what checkParameter was given, in words
  std::vector<std::string> data;     ///< what setJobData was given, in words
  core::job::JobResult resultOfCheck{};
  core::job::JobResult resultOfSetJobData{};
};

/// From now on the object factory makes such job objects under that name; `counts` outlives them.
void replaceJob(Subject& subject, const std::string& name, JobCounts& counts);

}  // namespace motion::conformance
