// The clock that stamps trace entries, and the text form of its time.
#pragma once

#include <ctime>

namespace common::log {

/// Clocks by their number in `clock_gettime`.
enum class ClockId : int { Realtime = 0, Monotonic = 1, ProcessCpuTime = 2, ThreadCpuTime = 3 };

/// Reads one of the system's clocks.
class Clock {
 public:
  /// A value that is no `ClockId` selects `Monotonic`. [any & real-time]
  explicit Clock(ClockId id) noexcept;

  /// The time now. A failure is reported through `outputFunction` and gives time 0. [any]
  [[nodiscard]] timespec getTimestamp() const noexcept;

  /// Gives a time since the epoch as microseconds and as text in UTC, as in "2001-09-09T01:46:40.000123Z".
  /// The text is at most 27 characters and its terminator; it is empty for time 0, for a time that has no such text and
  /// when it does not fit into `size`. Both targets may be null. [any & real-time]
  static void convertTimestamp(const timespec& timestamp, long* microseconds, char* text, unsigned short size) noexcept;

 private:
  ClockId m_id;
};

}  // namespace common::log
