// Parameter record of the command option SetSignal.
#pragma once

#include <cstdint>

#include "motion/core/job/i_job_data_id_mgr.h"
#include "motion/core/named_type.h"

namespace motion::kavo::cmd {

/// What the issuer of an option says.
struct CmdOptionSetSignalParsT {
  std::uint32_t signalId = 0;
};
struct CmdOptionSetSignalPars___t;
using CmdOptionSetSignalPars = core::job::JobNamedType<CmdOptionSetSignalParsT, CmdOptionSetSignalPars___t>;

/// Announces CmdOptionSetSignalPars. [framework]
void registerOptionSetSignalDataTypes(core::job::IJobDataIDMgr& idMgr);

}  // namespace motion::kavo::cmd
