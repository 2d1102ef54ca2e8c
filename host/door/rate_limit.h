// Limits how often something may happen.
#pragma once

#include <chrono>
#include <functional>
#include <mutex>

namespace motion::host::door {

using Clock = std::function<std::chrono::steady_clock::time_point()>;

/// Grants `rate` things a second, and up to `burst` at once after a pause. Each costs a piece of time; what is not spent is
/// saved. Thread-safe.
class RateLimit {
 public:
  /// Starts with all that can be saved.
  RateLimit(double rate, double burst, Clock clock);

  /// Spends the time for one thing; false when too little is saved. [any]
  [[nodiscard]] bool take();

 private:
  const std::chrono::nanoseconds m_price;
  const std::chrono::nanoseconds m_most;
  const Clock m_clock;
  std::mutex m_mutex;
  std::chrono::nanoseconds m_saved;
  std::chrono::steady_clock::time_point m_last;
};

}  // namespace motion::host::door
