#include "host/motion/builtin/profile_job.h"

#include <fmt/format.h>

#include "host/motion/builtin/job_data.h"
#include "host/motion/section_mgr.h"
#include "host/support/guarded.h"

namespace motion::host::builtin {

using core::job::JobListTypes;
using core::job::JobResult;

JobResult ProfileJob::registerInputs(core::job::IJobDataHandler* handler) {
  core::IObjPtr* object = nullptr;
  for (const JobResult result :
       {readData(*handler, SectionMgr::CMD_DATA, m_pars), readData(*handler, SectionMgr::OBJ_DATA, m_setpoint),
        readData(*handler, SectionMgr::OBJ_DATA, object)}) {
    if (core::isFailure(result)) {
      return result;
    }
  }
  m_object = object->getRef();
  return JobResult::NoEffect;
}

JobResult ProfileJob::addJobsToJoblist(core::job::IJobList* list, JobListTypes type) {
  switch (type) {
    case JobListTypes::BEFORE_EXECUTION:
      return list->addJob([this] { return plan(); }, NAME, SectionMgr::EXEC_DYNAMICS);
    case JobListTypes::CYCLIC_EXECUTION:
      return list->addJob([this] { return follow(); }, NAME, SectionMgr::EXEC_DYNAMICS);
    default:
      return JobResult::ListTypeNotServed;
  }
}

std::string ProfileJob::getJobString() const noexcept {
  return guarded(std::string(), [this]() -> std::string {
    if (m_pars == nullptr) {
      return "No inputs registered";
    }
    const ProfileParsT& pars = m_pars->getRef();
    return fmt::format("move{}(target={},velocity={},acceleration={})", pars.relative ? "Rel" : "Abs", pars.target,
                       pars.velocity, pars.acceleration);
  });
}

JobResult ProfileJob::plan() {
  const ProfileParsT& pars = m_pars->getRef();
  const double start = m_setpoint->getRef().position;
  m_run.plan(start, pars.relative ? start + pars.target : pars.target, pars.velocity, pars.acceleration);
  return JobResult::NoEffect;
}

JobResult ProfileJob::follow() {
  const ProfileRun::Step step = m_run.next(m_object->getCycleTime());
  m_setpoint->getRef() = {step.position, step.velocity};
  return step.isLast ? JobResult::CmdFinished : JobResult::Busy;
}

}  // namespace motion::host::builtin
