// The job that moves an axis along a velocity profile.
#pragma once

#include <new>

#include "host/motion/builtin/profile_run.h"
#include "host/motion/setpoint.h"
#include "motion/core/i_obj.h"
#include "motion/core/job/job_object_base.h"

namespace motion::host::builtin {

/// What a move command tells its job; SI units.
struct ProfileParsT {
  bool relative = false;
  double target = 0.0;        ///< [m] position, or distance of a relative move
  double velocity = 0.0;      ///< [m/s]
  double acceleration = 0.0;  ///< [m/s^2]
};
struct ProfilePars___t;
using ProfilePars = core::job::JobNamedType<ProfileParsT, ProfilePars___t>;

/// Plans a trapezoidal profile from where the axis stands when the command becomes current, and follows it.
class ProfileJob : public core::job::JobObjectBase {
 public:
  static constexpr const char* NAME = "host_axis_profile";

  [[nodiscard]] core::IAmCreatable* createNew() const noexcept override { return new (std::nothrow) ProfileJob; }
  [[nodiscard]] const char* getID() const override { return NAME; }
  core::job::JobResult registerInputs(core::job::IJobDataHandler* handler) override;
  core::job::JobResult addJobsToJoblist(core::job::IJobList* list, core::job::JobListTypes type) override;
  [[nodiscard]] std::string getJobString() const noexcept override;  ///< empty without memory [prepare]

 private:
  core::job::JobResult plan();
  core::job::JobResult follow();

  ProfilePars* m_pars = nullptr;
  AxisSetpoint* m_setpoint = nullptr;
  core::IObj* m_object = nullptr;
  ProfileRun m_run;
};

}  // namespace motion::host::builtin
