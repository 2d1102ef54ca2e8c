// Parameter record of the command WaitForSignalReset and of its job.
#pragma once

#include <cstdint>

#include "motion/core/job/i_job_data_id_mgr.h"
#include "motion/core/named_type.h"

namespace motion::kavo::job {

/// What the issuer of a command says, and what the job reads.
struct WaitForSignalResetJobParsT {
  std::uint32_t signalId = 0;
};
struct WaitForSignalResetJobPars___t;
using WaitForSignalResetJobPars = core::job::JobNamedType<WaitForSignalResetJobParsT, WaitForSignalResetJobPars___t>;

/// Announces WaitForSignalResetJobPars. [framework]
void registerWaitForSignalResetDataTypes(core::job::IJobDataIDMgr& idMgr);

}  // namespace motion::kavo::job
