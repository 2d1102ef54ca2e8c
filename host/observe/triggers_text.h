// The trigger report in words.
#pragma once

#include <string>

#include "host/observe/run_record.h"

namespace motion::host::observe {

/// For each switching condition of the run: who armed it and carried it over, when and where it fired, how much ahead, or
/// why it never did. Empty when there was none.
[[nodiscard]] std::string triggersText(const RunRecord& record);

}  // namespace motion::host::observe
