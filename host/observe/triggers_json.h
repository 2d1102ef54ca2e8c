// The trigger report as JSON.
#pragma once

#include <nlohmann/json.hpp>

#include "host/observe/run_record.h"

namespace motion::host::observe {

/// Lengths in [mm], speeds in [mm/s], times in [s].
[[nodiscard]] nlohmann::ordered_json triggersJson(const RunRecord& record);

}  // namespace motion::host::observe
