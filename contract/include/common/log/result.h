// Result codes of the trace services.
#pragma once

#include <cstdint>

/// What the logging parts share.
namespace common::log {

/// Results of the trace library and of trace sinks. The high bit marks a failure.
enum class CommonResult : std::uint32_t {
  Ok = 1,                           ///< written, or taken over to be written
  Disabled = 2,                     ///< the sink is switched off; nothing was written
  FormatFailed = 0xF0000001,        ///< the text could not be formatted
  Failure2 = 0xF0000002,            ///< reserved, passed through by the mapping
  InvalidParameter = 0xF0000003,    ///< wrong class type of the record or invalid main diagnosis code
  Failure4 = 0xF0000004,            ///< reserved, passed through by the mapping
  Truncated = 0xF0000005,           ///< at least one text was cut; the entry was written all the same
  JournalWriteFailed = 0xF0000006,  ///< the journal did not take the entry
  InvalidArgument = 0xF0000009,     ///< the result mapping was given a code that it does not know
};

/// True for every failure; Disabled is none. [any & real-time]
[[nodiscard]] constexpr bool isFailure(CommonResult result) noexcept {
  return (static_cast<std::uint32_t>(result) & 0x80000000U) != 0;
}

}  // namespace common::log

/// Trace services: units register themselves and write entries through a sink.
namespace common::log::trace {
/// Trace results share the codes of the library.
using TraceResult = common::log::CommonResult;
}  // namespace common::log::trace
