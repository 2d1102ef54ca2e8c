// Name of the parameter record.
#include "impl/send_signal/option_set_signal_pars.h"

#include "impl/command/registration.h"

namespace motion::kavo::cmd {

void registerOptionSetSignalDataTypes(core::job::IJobDataIDMgr& idMgr) {
  registerDataType(KAVO_HERE, idMgr, CmdOptionSetSignalPars::getMyID(), "CmdOptionSetSignalPars");
}

}  // namespace motion::kavo::cmd
