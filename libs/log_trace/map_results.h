// Turns results of the library's inner steps into results of trace sinks.
#pragma once

#include "common/log/result.h"

namespace common::log::trace {

/// Passes `Ok` and the failures 0xF0000001 to 0xF0000006 through; anything else is reported through `outputFunction` and
/// becomes `InvalidArgument`. [any]
[[nodiscard]] TraceResult mapCommonResultToTraceResult(CommonResult result) noexcept;

}  // namespace common::log::trace
