// Name of the parameter record.
#include "impl/wait_for_signal_reset/wait_for_signal_reset_pars.h"

#include "impl/command/registration.h"

namespace motion::kavo {

void job::registerWaitForSignalResetDataTypes(core::job::IJobDataIDMgr& idMgr) {
  cmd::registerDataType(KAVO_HERE, idMgr, WaitForSignalResetJobPars::getMyID(), "WaitForSignalResetJobPars");
}

}  // namespace motion::kavo
