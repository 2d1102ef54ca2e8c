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

/// How a fused multiply-add is computed. Both give the same bits.
enum class FusedArithmetic { BY_LIBRARY, BY_PROCESSOR };
/// What this processor has. [any]
[[nodiscard]] FusedArithmetic availableArithmetic() noexcept;

class JobObjSwitchOnPath : public core::job::JobObjectBase {
 public:
  explicit JobObjSwitchOnPath(FusedArithmetic arithmetic = availableArithmetic());

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
  /// Three numbers rather than an array: they stay in registers.
  struct Position {
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
  };
  /// What looking ahead needs to know of this cycle.
  struct Step {
    Position pos;
    Position displacement;   ///< since the cycle before
    double cycleTime = 0.0;  ///< [s], asked for when the first condition needs it
  };

  /// One look at all conditions, compiled once for any processor and once for those that multiply and add in one operation,
  /// where a call into the library for each coordinate would cost more than all the rest.
  core::job::JobResult executeByLibrary() noexcept;
  core::job::JobResult executeByProcessor() noexcept;
  core::job::JobResult walk();
  /// Where the path is looked at for a condition: here, or linearly ahead of here.
  [[nodiscard]] Position testPoint(const SwitchOnPathPars& condition, Step& step) const;
  [[nodiscard]] bool fire(SwitchOnPathPars& condition) const noexcept;

  SwitchOnPathParsList m_jobData;
  core::KinPose* m_kinPose = nullptr;
  core::IObjPtr* m_motionObjPtr = nullptr;
  rt_data::RtSignals* m_rtSignals;
  FusedArithmetic m_arithmetic;
  bool m_firstCycle = true;
  Position m_lastPos{};  ///< of the cycle before
};

}  // namespace motion::kavo::job
