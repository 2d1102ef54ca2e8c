// Names of the parameter records.
#include "impl/join/join_pars.h"

#include "impl/command/registration.h"

namespace motion::kavo {

void cmd::registerJoinDataTypes(core::job::IJobDataIDMgr& idMgr) {
  registerDataType(KAVO_HERE, idMgr, CmdJoinPars::getMyID(), "CmdJoinPars");
  registerDataType(KAVO_HERE, idMgr, job::JoinJobPars::getMyID(), "JoinJobPars");
}

}  // namespace motion::kavo
