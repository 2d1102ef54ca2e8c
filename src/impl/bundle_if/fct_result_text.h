// Texts of the host's function results, for traces.
#pragma once

#include "motion/core/results.h"

namespace motion::kavo {

/// "unknown error" for a result without a text of its own. [any & real-time]
[[nodiscard]] const char* getResultText(core::FctResult result) noexcept;

}  // namespace motion::kavo
