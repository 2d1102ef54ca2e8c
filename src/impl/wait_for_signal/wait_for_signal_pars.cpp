// Name of the parameter record.
#include "impl/wait_for_signal/wait_for_signal_pars.h"

#include "impl/command/registration.h"

namespace motion::kavo {

void job::registerWaitForSignalDataTypes(core::job::IJobDataIDMgr& idMgr) {
  cmd::registerDataType(KAVO_HERE, idMgr, WaitForSignalJobPars::getMyID(), "WaitForSignalJobPars");
}

}  // namespace motion::kavo
