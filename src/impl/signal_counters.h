// The counters of the signals: bytes of two real-time memories that threads share without a lock.
#pragma once

#include <atomic>
#include <cstdint>

#include "impl/call_site.h"

namespace motion::kavo {

/// Reads the counter of a signal. [any & real-time]
[[nodiscard]] inline std::uint8_t loadCounter(std::uint8_t* counters, std::uint32_t id) noexcept {
  return std::atomic_ref<std::uint8_t>(counters[id]).load(std::memory_order_acquire);
}

/// Writes the counter of a signal, once per change: no reader sees an intermediate step. [any & real-time]
inline void storeCounter(std::uint8_t* counters, std::uint32_t id, std::uint8_t value) noexcept {
  std::atomic_ref<std::uint8_t>(counters[id]).store(value, std::memory_order_release);
}

/// The value that sets a signal: the side's own counter moved by one, wrapping. Where that would equal the counter of the
/// other side, which would reset the signal, it is moved by two, with a warning from `site`. [any & real-time]
[[nodiscard]] std::uint8_t settingCounter(const CallSite& site, std::uint32_t id, std::uint8_t own,
                                          std::uint8_t other) noexcept;

}  // namespace motion::kavo
