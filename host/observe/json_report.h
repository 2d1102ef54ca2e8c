// A run as programs read it.
#pragma once

#include <string>

#include "host/observe/run_record.h"

namespace motion::host::observe {

/// The whole record as one JSON object, indented by two. Times are in seconds, positions in millimetres; a cycle that never
/// came is null.
[[nodiscard]] std::string jsonReport(const RunRecord& record);

}  // namespace motion::host::observe
