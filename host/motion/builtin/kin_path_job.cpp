#include "host/motion/builtin/kin_path_job.h"

#include <fmt/format.h>

#include "host/motion/builtin/job_data.h"
#include "host/motion/section_mgr.h"
#include "host/support/guarded.h"

namespace motion::host::builtin {

using core::job::JobListTypes;
using core::job::JobResult;

namespace {

/// How far from the start of its path a kinematics may stand [m].
constexpr double START_TOLERANCE = 1e-9;

}  // namespace

JobResult KinPathJob::registerInputs(core::job::IJobDataHandler* handler) {
  core::IObjPtr* object = nullptr;
  for (const JobResult result :
       {readData(*handler, SectionMgr::CMD_DATA, m_pars), readData(*handler, SectionMgr::OBJ_DATA, m_setpoint),
        readData(*handler, SectionMgr::GEOMETRY_TOOL_OFFSET, m_pose), readData(*handler, SectionMgr::OBJ_DATA, object)}) {
    if (core::isFailure(result)) {
      return result;
    }
  }
  m_object = object->getRef();
  return JobResult::NoEffect;
}

JobResult KinPathJob::addJobsToJoblist(core::job::IJobList* list, JobListTypes type) {
  switch (type) {
    case JobListTypes::BEFORE_EXECUTION:
      return list->addJob([this] { return begin(); }, NAME, SectionMgr::EXEC_DYNAMICS);
    case JobListTypes::CYCLIC_EXECUTION: {
      const JobResult result = list->addJob([this] { return follow(); }, NAME, SectionMgr::EXEC_DYNAMICS);
      return core::isFailure(result) ? result
                                     : list->addJob([this] { return pose(); }, NAME, SectionMgr::GEOMETRY_TOOL_OFFSET);
    }
    default:
      return JobResult::ListTypeNotServed;
  }
}

std::string KinPathJob::getJobString() const noexcept {
  return guarded(std::string(), [this]() -> std::string {
    if (m_pars == nullptr) {
      return "No inputs registered";
    }
    const KinPathParsT& pars = m_pars->getRef();
    return fmt::format("movePath(to=[{}],length={},velocity={},acceleration={})", fmt::join(pars.path->end(), ","),
                       pars.path->length(), pars.velocity, pars.acceleration);
  });
}

JobResult KinPathJob::begin() {
  const KinPathParsT& pars = m_pars->getRef();
  const core::KinPoseT& pose = m_pose->getRef();
  if (!(distance({pose.x, pose.y, pose.z}, pars.path->start()) <= START_TOLERANCE)) {
    return JobResult::ExecutionFailed;
  }
  m_run.plan(0.0, pars.path->length(), pars.velocity, pars.acceleration);
  return JobResult::NoEffect;
}

JobResult KinPathJob::follow() {
  const ProfileRun::Step step = m_run.next(m_object->getCycleTime());
  const KinPath& path = *m_pars->getRef().path;
  m_setpoint->getRef() = {step.isLast ? path.end() : path.at(step.position), step.velocity};
  return step.isLast ? JobResult::CmdFinished : JobResult::Busy;
}

JobResult KinPathJob::pose() {
  const Point& position = m_setpoint->getRef().position;
  core::KinPoseT& pose = m_pose->getRef();
  pose.x = position[0];
  pose.y = position[1];
  pose.z = position[2];
  return JobResult::NoEffect;
}

}  // namespace motion::host::builtin
