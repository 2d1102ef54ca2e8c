// Parameter record of the command WaitForSignal and of its job.
#pragma once

#include <cstdint>

#include "motion/core/job/i_job_data_id_mgr.h"
#include "motion/core/named_type.h"

namespace motion::kavo::job {

/// What the issuer of a command says, and what the job reads.
struct WaitForSignalJobParsT {
  std::uint32_t signalId = 0;
  bool autoReset = false;  ///< reset the signal in the access that finds it set
};
struct WaitForSignalJobPars___t;
using WaitForSignalJobPars = core::job::JobNamedType<WaitForSignalJobParsT, WaitForSignalJobPars___t>;

/// Announces WaitForSignalJobPars. [framework]
void registerWaitForSignalDataTypes(core::job::IJobDataIDMgr& idMgr);

}  // namespace motion::kavo::job
