// Name of the record of conditions.
#include "impl/switch_on_path/job_data_switch_on_path.h"

#include "impl/command/registration.h"

namespace motion::kavo {

void registerOptionSwitchOnPathDataTypes(core::job::IJobDataIDMgr& idMgr) {
  cmd::registerDataType(KAVO_HERE, idMgr, SwitchOnPathParsList::getMyID(), "::motion::kavo::SwitchOnPathParsList",
                        "CmdOptionSwitchOnPathPars");
}

}  // namespace motion::kavo
