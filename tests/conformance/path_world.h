// A kinematics on its path, with a job that switches signals on it.
#pragma once

#include <array>
#include <memory>
#include <vector>

#include "conformance/subject.h"
#include "motion/core/job/job_object_base.h"
#include "motion/core/obj/kin_pose.h"
#include "motion/kavo/switch_on_path_pars.h"
#include "support/fake_jobs.h"

namespace motion::conformance {

using Point = std::array<double, 3>;
using Condition = std::shared_ptr<kavo::SwitchOnPathPars>;

/// Switches a signal in a sphere, in internal units.
[[nodiscard]] Condition sphere(std::uint32_t signalId, const Point& target, double radius, double preTriggerTime = 0,
                               kavo::SwitchOnPathAction action = kavo::SwitchOnPathAction::SET_SIGNAL);

class PathWorld {
 public:
  static constexpr const char* JOB = "JobObjSwitchOnPath";

  explicit PathWorld(const Bundle& bundle);

  /// A new job object that was given nothing.
  [[nodiscard]] std::unique_ptr<core::job::IJobObject> makeLooseJob();
  /// Replaces the job by a new one with these conditions.
  void arm(const std::vector<Condition>& conditions);
  /// One cycle with the tool at that point.
  [[nodiscard]] core::job::JobResult cycleAt(const Point& point);
  /// Does the counter of the signal change in a cycle with the tool at that point? A Mismatch when the job fails.
  [[nodiscard]] bool firesAt(const Point& point, std::uint32_t signalId = 0);

  Subject subject;
  test::FakeObj& kin;
  test::FakeJobDataHandler handler;
  core::KinPose pose;

 private:
  core::IObjPtr m_objPtr;
  std::unique_ptr<core::job::IJobObject> m_job;
  std::unique_ptr<test::FakeJobList> m_list;
};

}  // namespace motion::conformance
