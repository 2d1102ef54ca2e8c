// The job that moves a kinematics along its path.
#pragma once

#include <new>

#include "host/motion/builtin/kin_path.h"
#include "host/motion/builtin/profile_run.h"
#include "host/motion/setpoint.h"
#include "motion/core/i_obj.h"
#include "motion/core/job/job_object_base.h"
#include "motion/core/obj/kin_pose.h"

namespace motion::host::builtin {

/// What a move of a kinematics tells its job; SI units.
struct KinPathParsT {
  const KinPath* path = nullptr;  ///< the command's
  double velocity = 0.0;          ///< [m/s]
  double acceleration = 0.0;      ///< [m/s^2]
};
struct KinPathPars___t;
using KinPathPars = core::job::JobNamedType<KinPathParsT, KinPathPars___t>;

/// Follows a path with a trapezoidal profile of the distance on it. The path was calculated from where the kinematics was
/// expected to stand; when it stands elsewhere as the command becomes current, the job fails.
class KinPathJob : public core::job::JobObjectBase {
 public:
  static constexpr const char* NAME = "host_kin_path";

  [[nodiscard]] core::IAmCreatable* createNew() const noexcept override { return new (std::nothrow) KinPathJob; }
  [[nodiscard]] const char* getID() const override { return NAME; }
  core::job::JobResult registerInputs(core::job::IJobDataHandler* handler) override;
  core::job::JobResult addJobsToJoblist(core::job::IJobList* list, core::job::JobListTypes type) override;
  [[nodiscard]] std::string getJobString() const noexcept override;  ///< empty without memory [prepare]

 private:
  core::job::JobResult begin();
  core::job::JobResult follow();
  core::job::JobResult pose();

  KinPathPars* m_pars = nullptr;
  KinSetpoint* m_setpoint = nullptr;
  core::KinPose* m_pose = nullptr;
  core::IObj* m_object = nullptr;
  ProfileRun m_run;
};

}  // namespace motion::host::builtin
