// Lists of jobs that the host calls for one command.
#pragma once

#include <cstdint>
#include <functional>

#include "motion/core/i_section_mgr.h"
#include "motion/core/results.h"

namespace motion::core::job {

/// When the jobs of a list are called.
enum class JobListTypes : std::uint32_t {
  CYCLIC_EXECUTION = 0,  ///< every cycle while the command is current [cyclic & real-time]
  BEFORE_EXECUTION = 1,  ///< once, in the cycle in which the command becomes current [cyclic & real-time]
  COMMAND_PREPARED = 2,  ///< once, when the command is prepared [prepare]
};

/// One function of a job object. An exception counts as ExecutionFailed. Thread and moment are those of its list.
using Job = std::function<JobResult()>;

/// Takes jobs for one command and one moment. They run by stage; within a stage in the order in which they were added.
class IJobList {
 public:
  virtual ~IJobList() = default;

  /// Adds a job to the stage of that section. `name` has static storage. UnknownSection for a value that no section has.
  /// [prepare]
  virtual JobResult addJob(const Job& job, const char* name, SectionValue section) = 0;

 protected:
  IJobList() = default;
  IJobList(const IJobList&) = default;
  IJobList& operator=(const IJobList&) = default;
};

}  // namespace motion::core::job
