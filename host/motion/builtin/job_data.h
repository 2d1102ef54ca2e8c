// Typed reading of job data.
#pragma once

#include "motion/core/i_section_mgr.h"
#include "motion/core/job/i_job_data_handler.h"

namespace motion::host::builtin {

/// Finds the record of type TYPE in a section; `out` is set only on success. [prepare]
template <typename TYPE>
[[nodiscard]] core::job::JobResult readData(core::job::IJobDataHandler& handler, core::SectionValue section, TYPE*& out) {
  core::IContainer* container = nullptr;
  const auto result = handler.registerRead(TYPE::getMyID(), section, core::job::READ_ONE, "host", container);
  if (!core::isFailure(result)) {
    out = static_cast<TYPE*>(container);
  }
  return result;
}

}  // namespace motion::host::builtin
