// Conditions and the job that watches them, for the tests of the option SwitchOnPath.
#pragma once

#include <array>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "impl/switch_on_path/job_obj_switch_on_path.h"
#include "impl_fixture.h"
#include "motion/core/obj/kin_pose.h"

namespace motion::kavo {

using Condition = std::shared_ptr<SwitchOnPathPars>;

inline Condition condition(SwitchOnPathPars pars) {
  return std::make_shared<SwitchOnPathPars>(pars);
}

/// A condition on a sphere around a target.
inline Condition sphere(std::uint32_t signalId, std::array<double, 3> target, double radius, double preTriggerTime = 0.0,
                        SwitchOnPathAction action = SwitchOnPathAction::SET_SIGNAL) {
  return condition(
      {.signalId = signalId, .action = action, .targetPos = target, .radius = radius, .preTriggerTime = preTriggerTime});
}

inline SwitchOnPathParsList listOf(SwitchOnPathParsListT conditions) {
  return SwitchOnPathParsList(std::move(conditions));
}

namespace job {

/// A kinematics whose pose the test says, cycle by cycle.
class SwitchOnPathJobTest : public CommandTest {
 protected:
  using Point = std::array<double, 3>;

  SwitchOnPathJobTest() {
    m_obj.m_isKinematics = true;
    m_obj.m_cycleTime = 0.001;
    publish(core::KinPose::getMyID(), "GEOMETRY_TOOL_OFFSET", &m_pose);
    publish(core::IObjPtr::getMyID(), "OBJ_DATA", &m_objPtr);
    forget();
  }

  void publish(core::DataID id, const std::string& section, core::IContainer* container) {
    m_handler.m_published[{id, m_host.sectionMgr.valueOf(section)}] = container;
  }
  /// A job with these conditions, ready to run.
  [[nodiscard]] std::unique_ptr<JobObjSwitchOnPath> makeJob(SwitchOnPathParsListT conditions) {
    auto made = std::make_unique<JobObjSwitchOnPath>(m_arithmetic);
    const auto list = listOf(std::move(conditions));
    EXPECT_EQ(made->setJobData(&list), core::job::JobResult::NoEffect);
    EXPECT_EQ(made->registerInputs(&m_handler), core::job::JobResult::NoEffect);
    return made;
  }
  /// Replaces the job under test.
  void arm(SwitchOnPathParsListT conditions) {
    m_made = makeJob(std::move(conditions));
    forget();
  }
  /// One cycle with the tool at that point.
  [[nodiscard]] core::job::JobResult cycleAt(const Point& point) {
    m_pose.set({point[0], point[1], point[2], 0.1, 0.2, 0.3});
    return sut().execute();
  }
  /// Does the signal become set in a cycle with the tool at that point?
  [[nodiscard]] bool firesAt(const Point& point, std::uint32_t signalId = 0) {
    const auto before = in(signalId);
    EXPECT_EQ(cycleAt(point), core::job::JobResult::NoEffect);
    return in(signalId) != before;
  }
  [[nodiscard]] JobObjSwitchOnPath& sut() { return *m_made; }

  FusedArithmetic m_arithmetic = availableArithmetic();
  core::KinPose m_pose;
  test::FakeObj m_obj{m_host.calls};
  core::IObjPtr m_objPtr{&m_obj};

 private:
  std::unique_ptr<JobObjSwitchOnPath> m_made = std::make_unique<JobObjSwitchOnPath>();
};

/// The same with and without the processor's own fused operation.
class SwitchOnPathBothWaysTest : public SwitchOnPathJobTest, public testing::WithParamInterface<FusedArithmetic> {
 protected:
  SwitchOnPathBothWaysTest() { m_arithmetic = GetParam(); }
};

/// The ways that this processor has.
inline std::vector<FusedArithmetic> bothWays() {
  std::vector<FusedArithmetic> all{FusedArithmetic::BY_LIBRARY};
  if (availableArithmetic() == FusedArithmetic::BY_PROCESSOR) {
    all.push_back(FusedArithmetic::BY_PROCESSOR);
  }
  return all;
}

inline std::string nameOfWay(const testing::TestParamInfo<FusedArithmetic>& tested) {
  return tested.param == FusedArithmetic::BY_LIBRARY ? "ByLibrary" : "ByProcessor";
}

}  // namespace job

}  // namespace motion::kavo
