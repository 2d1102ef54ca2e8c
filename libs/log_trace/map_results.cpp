// Turns results of the library's inner steps into results of trace sinks.
#include "log_trace/map_results.h"

#include "log_trace/outputs_lib.h"

namespace common::log::trace {

TraceResult mapCommonResultToTraceResult(CommonResult result) noexcept {
  switch (result) {
    case CommonResult::Ok:
    case CommonResult::FormatFailed:
    case CommonResult::Failure2:
    case CommonResult::InvalidParameter:
    case CommonResult::Failure4:
    case CommonResult::Truncated:
    case CommonResult::JournalWriteFailed:
      return result;
    default:
      outputFunction("ERR", __LINE__, __func__, "Invalid Argument: commonResult");
      return TraceResult::InvalidArgument;
  }
}

}  // namespace common::log::trace
