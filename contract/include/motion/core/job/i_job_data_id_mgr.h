// Names of the data that jobs exchange.
#pragma once

#include "motion/core/id_manager.h"
#include "motion/core/named_type.h"

namespace motion::core::job {

/// Names for the identifiers of named types, so that diagnoses can say which record is meant.
class IJobDataIDMgr : public IDManager<DataID> {};

}  // namespace motion::core::job
