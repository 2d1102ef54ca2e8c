// How many cycles a time takes.
#pragma once

#include <cmath>

namespace motion::host {

/// Share of a cycle that counts as rounding of the user's decimal numbers: what takes a whole number of cycles but for that
/// takes this number, not one more.
inline constexpr double CYCLE_ROUNDING = 1e-6;

/// The cycles, of `cycleTime` [s] each, that `time` [s] fills or begins.
[[nodiscard]] inline double wholeCycles(double time, double cycleTime) noexcept {
  return std::ceil(time / cycleTime - CYCLE_ROUNDING);
}

}  // namespace motion::host
