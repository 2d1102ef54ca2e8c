// Joins and waits of a run for programs.
#pragma once

#include <nlohmann/json_fwd.hpp>

#include "host/observe/run_record.h"

namespace motion::host::observe {

/// The number of a cycle, or null for 0: it has not come.
[[nodiscard]] nlohmann::ordered_json cycleOrNull(std::uint64_t cycle);
/// One element per occurrence, in the order of findJoins.
[[nodiscard]] nlohmann::ordered_json joinsJson(const RunRecord& record);
/// One element per object that still waits, with the circle and the verdict.
[[nodiscard]] nlohmann::ordered_json waitsJson(const RunRecord& record);

}  // namespace motion::host::observe
