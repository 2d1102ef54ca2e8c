// Names of the parameter records.
#include "impl/send_signal/send_signal_pars.h"

#include "impl/command/registration.h"

namespace motion::kavo {

void cmd::registerSendSignalDataTypes(core::job::IJobDataIDMgr& idMgr) {
  registerDataType(KAVO_HERE, idMgr, CmdSendSignalPars::getMyID(), "CmdSendSignalPars");
}

void job::registerSendSignalDataTypes(core::job::IJobDataIDMgr& idMgr) {
  cmd::registerDataType(KAVO_HERE, idMgr, SendSignalJobPars::getMyID(), "SendSignalJobPars");
}

}  // namespace motion::kavo
