// Says when the next cycle begins.
#pragma once

#include <time.h>

#include <atomic>
#include <cstdint>
#include <string>

namespace motion::host {

/// The clock of a run.
class IPacer {
 public:
  virtual ~IPacer() = default;
  /// Returns when the next cycle is due. [cyclic]
  virtual void waitForCycle() noexcept = 0;
};

/// Virtual time: every cycle is due at once.
class VirtualPacer : public IPacer {
 public:
  void waitForCycle() noexcept override {}
};

/// How punctual a real-time run was.
struct Punctuality {
  std::uint64_t cycles = 0;
  std::uint64_t overruns = 0;     ///< cycles that were due before the one before them had ended
  std::int64_t latestWakeUp = 0;  ///< [ns] after the due time
};

/// Real time: absolute wake-ups on the monotonic clock, so that lateness does not add up.
class RealTimePacer : public IPacer {
 public:
  explicit RealTimePacer(double cycleTime);

  void waitForCycle() noexcept override;
  [[nodiscard]] Punctuality punctuality() const noexcept;  ///< [any]

 private:
  std::int64_t m_period;   ///< [ns]
  std::int64_t m_due = 0;  ///< [ns] of the monotonic clock
  std::atomic<std::uint64_t> m_cycles{0};
  std::atomic<std::uint64_t> m_overruns{0};
  std::atomic<std::int64_t> m_latestWakeUp{0};
};

/// Asks the system for what a real-time thread needs: SCHED_FIFO for the calling thread and locked memory for the process.
/// Returns a warning for people when something was not permitted; empty when all is well.
[[nodiscard]] std::string requestRealTime();

}  // namespace motion::host
