// Parameter records of the commands SetSignal and ResetSignal and of their job.
#pragma once

#include <cstdint>

#include "motion/core/job/i_job_data_id_mgr.h"
#include "motion/core/named_type.h"

namespace motion::kavo::cmd {

/// What the issuer of a command says.
struct CmdSendSignalParsT {
  std::uint32_t signalId = 0;
};
struct CmdSendSignalPars___t;
using CmdSendSignalPars = core::job::JobNamedType<CmdSendSignalParsT, CmdSendSignalPars___t>;

/// Announces CmdSendSignalPars. [framework]
void registerSendSignalDataTypes(core::job::IJobDataIDMgr& idMgr);

}  // namespace motion::kavo::cmd

namespace motion::kavo::job {

/// What the job does.
struct SendSignalJobParsT {
  std::uint32_t signalId = 0;
  bool reset = false;  ///< false sets the signal, true resets it
};
struct SendSignalJobPars___t;
using SendSignalJobPars = core::job::JobNamedType<SendSignalJobParsT, SendSignalJobPars___t>;

/// Announces SendSignalJobPars. [framework]
void registerSendSignalDataTypes(core::job::IJobDataIDMgr& idMgr);

}  // namespace motion::kavo::job
