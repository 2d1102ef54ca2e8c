// Calls into the code of a bundle, which may throw anything or never return.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace motion::host::framework {

/// A call into a bundle; the number is the bundle's answer.
using ForeignCall = std::function<std::int32_t()>;

/// What became of a call that ended.
struct CallEnd {
  std::optional<std::int32_t> code;  ///< the answer; none when the call threw
  std::string exception;             ///< what was thrown; empty when nothing was
};

/// Says in words which exception is being handled, whatever its type. Only within a handler. [any]
[[nodiscard]] std::string currentExceptionText();

/// Calls on the caller's thread and catches every exception. [framework]
[[nodiscard]] CallEnd callGuarded(const ForeignCall& call);

/// Calls on a thread of its own, catches every exception and waits for the end at most for `limit`. None means that the call
/// still runs: its thread was detached, and everything that the call uses must then stay alive until the process ends.
/// Throws std::system_error when no thread can be had; then nothing was called. [framework]
[[nodiscard]] std::optional<CallEnd> callWithin(std::chrono::milliseconds limit, ForeignCall call);

}  // namespace motion::host::framework
