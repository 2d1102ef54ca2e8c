// Base of every job object.
#pragma once

#include <cstdint>
#include <string>

#include "motion/core/i_am_creatable.h"
#include "motion/core/job/i_job_list.h"
#include "motion/core/named_type.h"
#include "motion/core/results.h"

namespace motion::core::dia {
class IDia;
}

/// Jobs, what commands do when it is their turn, and the data that they exchange.
namespace motion::core::job {

class IJobDataHandler;

/// What the host notes about the option to which a job belongs; nothing for a command's own job.
struct OptMetaInfo {
  std::uint64_t optionID = 0;  ///< the host's number of the option, 0 for a command's own job
  std::uint32_t slot = 0;      ///< first of the run-time slots that the option was registered with, else 0
};

/// An object that adds jobs to the job lists of a command. Slot order is fixed.
/// The host calls, in this order: registerOutputs, registerInputs, addJobsToJoblist for each list it has.
class IJobObject : public IAmCreatable {
 public:
  /// Adds the jobs that belong into lists of that type; ListTypeNotServed when there are none. [prepare]
  virtual JobResult addJobsToJoblist(IJobList* list, JobListTypes type) = 0;
  /// Publishes what this job makes for others; the records stay its own. [prepare]
  virtual JobResult registerOutputs(IJobDataHandler* handler) = 0;
  /// Looks up what this job needs: of the host, of the command, of itself, of the job objects before it. [prepare]
  virtual JobResult registerInputs(IJobDataHandler* handler) = 0;
  /// Hands parameters in directly, instead of through registerInputs. [prepare]
  virtual JobResult setJobData(const IContainer* data) = 0;
  /// Checks parameters without changing the object; reports to `dia`, which may be null. [prepare]
  virtual JobResult checkParameter(const IContainer* data, dia::IDia* dia) const = 0;
  /// A text for people. [prepare]
  [[nodiscard]] virtual std::string getJobString() const = 0;
  /// The parameters that it keeps, not owned; null when it keeps none. [prepare]
  [[nodiscard]] virtual const IContainer* getJobData() const = 0;
  /// True when a command that is inserted before the current one shall get the outputs of this job. [prepare]
  [[nodiscard]] virtual bool copyToInsertCmd() const = 0;
  /// Copies the outputs into a job object of the same class. [prepare]
  virtual JobResult copyOutputs(IJobObject* target) const = 0;
  /// Called by the host for jobs that an option made, before their outputs are registered. [prepare]
  virtual void setCmdOptMetaInfo(OptMetaInfo info) = 0;
  /// What setCmdOptMetaInfo was given last; zeroes before. [any]
  [[nodiscard]] virtual OptMetaInfo getCmdOptMetaInfo() const = 0;
};

/// The operations that most job objects leave as they are.
class JobObjectBase : public IJobObject {
 public:
  [[nodiscard]] std::uint32_t getType() const override { return static_cast<std::uint32_t>(CreatableType::JOB); }
  JobResult registerOutputs(IJobDataHandler* /*handler*/) override { return JobResult::NoEffect; }
  JobResult registerInputs(IJobDataHandler* /*handler*/) override { return JobResult::NoEffect; }
  JobResult setJobData(const IContainer* /*data*/) override { return JobResult::NoEffect; }
  JobResult checkParameter(const IContainer* /*data*/, dia::IDia* /*dia*/) const override { return JobResult::NoEffect; }
  [[nodiscard]] const IContainer* getJobData() const override { return nullptr; }
  [[nodiscard]] bool copyToInsertCmd() const override { return false; }
  JobResult copyOutputs(IJobObject* /*target*/) const override { return JobResult::NoEffect; }
  void setCmdOptMetaInfo(OptMetaInfo info) override { m_optMetaInfo = info; }
  [[nodiscard]] OptMetaInfo getCmdOptMetaInfo() const override { return m_optMetaInfo; }

 private:
  OptMetaInfo m_optMetaInfo;
};

}  // namespace motion::core::job
