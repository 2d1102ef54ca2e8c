// The job of the option SwitchOnPath: fires each condition, once, when the path enters its sphere.
#pragma once

#include <array>
#include <string>

#include "impl/rt_signals.h"
#include "impl/switch_on_path/job_data_switch_on_path.h"
#include "motion/core/i_obj.h"
#include "motion/core/job/job_object_base.h"
#include "motion/core/obj/kin_pose.h"

namespace motion::kavo::job {

class JobObjSwitchOnPath : public core::job::JobObjectBase {
 public:
  JobObjSwitchOnPath();

  [[nodiscard]] core::IAmCreatable* createNew() const override;
  [[nodiscard]] const char* getID() const override;
  core::job::JobResult addJobsToJoblist(core::job::IJobList* list, core::job::JobListTypes type) override;
  core::job::JobResult registerInputs(core::job::IJobDataHandler* handler) override;
  /// Shares the conditions of the list.
  core::job::JobResult setJobData(const core::IContainer* data) override;
  core::job::JobResult checkParameter(const core::IContainer* data, core::dia::IDia* dia) const override;
  [[nodiscard]] std::string getJobString() const override;
  [[nodiscard]] const core::IContainer* getJobData() const override;

  /// The job itself. ExecutionFailed, with a trace, when a signal cannot be switched; InvalidObject without its inputs.
  /// [cyclic & real-time]
  core::job::JobResult execute() noexcept;

  struct StaticInfo {
    const char* name;
    const char* caller;  ///< as which it registers its inputs
  };
  [[nodiscard]] static const StaticInfo& getStaticInfo() noexcept;  ///< [any]

 private:
  using Position = std::array<double, 3>;

  /// Where the path is looked at for a condition: here, or linearly ahead of here.
  [[nodiscard]] Position testPoint(const SwitchOnPathPars& condition, const Position& pos) const;
  [[nodiscard]] bool fire(SwitchOnPathPars& condition) const noexcept;

  SwitchOnPathParsList m_jobData;
  core::KinPose* m_kinPose = nullptr;
  core::IObjPtr* m_motionObjPtr = nullptr;
  rt_data::RtSignals* m_rtSignals;
  bool m_firstCycle = true;
  Position m_lastPos{};  ///< of the cycle before
};

}  // namespace motion::kavo::job
