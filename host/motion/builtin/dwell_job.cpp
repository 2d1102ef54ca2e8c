#include "host/motion/builtin/dwell_job.h"

#include <fmt/format.h>

#include <algorithm>

#include "host/motion/builtin/job_data.h"
#include "host/motion/section_mgr.h"
#include "host/motion/whole_cycles.h"
#include "host/support/guarded.h"

namespace motion::host::builtin {

using core::job::JobListTypes;
using core::job::JobResult;

JobResult DwellJob::registerInputs(core::job::IJobDataHandler* handler) {
  core::IObjPtr* object = nullptr;
  for (const JobResult result :
       {readData(*handler, SectionMgr::CMD_DATA, m_pars), readData(*handler, SectionMgr::OBJ_DATA, object)}) {
    if (core::isFailure(result)) {
      return result;
    }
  }
  const double cycles = wholeCycles(m_pars->getRef().time, object->getRef()->getCycleTime());
  m_cyclesLeft = static_cast<std::uint64_t>(std::max(1.0, cycles));
  return JobResult::NoEffect;
}

JobResult DwellJob::addJobsToJoblist(core::job::IJobList* list, JobListTypes type) {
  if (type != JobListTypes::CYCLIC_EXECUTION) {
    return JobResult::ListTypeNotServed;
  }
  return list->addJob([this] { return wait(); }, NAME, SectionMgr::CMD_DATA);
}

std::string DwellJob::getJobString() const noexcept {
  return guarded(std::string(), [this] {
    return m_pars == nullptr ? "No inputs registered" : fmt::format("dwell(time={})", m_pars->getRef().time);
  });
}

JobResult DwellJob::wait() {
  return --m_cyclesLeft == 0 ? JobResult::CmdFinished : JobResult::Busy;
}

}  // namespace motion::host::builtin
