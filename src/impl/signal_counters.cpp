// The one rule of the counters that both sides share.
#include "impl/signal_counters.h"

#include "impl/debug_trace.h"

namespace motion::kavo {

std::uint8_t settingCounter(const CallSite& site, std::uint32_t id, std::uint8_t own, std::uint8_t other) noexcept {
  const auto next = static_cast<std::uint8_t>(own + 1);
  if (next != other) {
    return next;
  }
  KAVO_TRACE_AT(site, Warning,
                "Signal(%d) might be set by both the system function SetSignal as well as the command SetSignal", id);
  return static_cast<std::uint8_t>(own + 2);
}

}  // namespace motion::kavo
