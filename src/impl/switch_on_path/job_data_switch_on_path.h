// The record of switching conditions that the option SwitchOnPath hands to its job.
#pragma once

#include "motion/core/job/i_job_data_id_mgr.h"
#include "motion/kavo/switch_on_path_pars.h"

namespace motion::kavo {

/// Announces SwitchOnPathParsList. [framework]
void registerOptionSwitchOnPathDataTypes(core::job::IJobDataIDMgr& idMgr);

}  // namespace motion::kavo
