// Where the signals live: two real-time memories that a host may read to show them.
#pragma once

#include <cstdint>

/// What Motion.Kavo tells a host about itself: names, addresses and records.
namespace motion::kavo {

/// Signals are numbered 0 to SIGNAL_COUNT - 1. Byte i of each memory is a wrapping counter of signal i; the signal is set
/// when the two counters differ.
inline constexpr std::uint32_t SIGNAL_COUNT = 100;
/// Moved by jobs only.
inline constexpr const char* SIGNALS_IN_ADDRESS = "motion/state/functions/kavo/rt-data/signals_in";
/// Moved by the system functions only.
inline constexpr const char* SIGNALS_OUT_ADDRESS = "motion/state/functions/kavo/rt-data/signals_out";

}  // namespace motion::kavo
