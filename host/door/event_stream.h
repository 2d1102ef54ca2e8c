// A stream of server-sent events: the signals that a client watches, as they change.
#pragma once

#include <atomic>
#include <bitset>
#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "host/door/live_run.h"

namespace motion::host::door {

using SignalSet = std::bitset<kavo::SIGNAL_COUNT>;

/// Counts those who watch. Thread-safe.
class WatcherSeats {
 public:
  explicit WatcherSeats(std::size_t count) : m_free(count) {}
  WatcherSeats(const WatcherSeats&) = delete;
  WatcherSeats& operator=(const WatcherSeats&) = delete;

  /// A seat until the last copy of the pointer goes; null when all are taken. Must not outlive this. [any]
  [[nodiscard]] std::shared_ptr<void> take();

 private:
  std::atomic<std::size_t> m_free;
};

/// The events of one client, for one thread.
class EventStream {
 public:
  /// Takes the present values, with which the stream begins.
  EventStream(const LiveRun& run, const SignalSet& watched, std::shared_ptr<void> seat);

  /// The next piece of text: one event or more, or a comment when nothing has happened for `silence`; nothing after the end.
  /// Blocks until there is one.
  [[nodiscard]] std::optional<std::string> next(std::chrono::milliseconds silence);

 private:
  [[nodiscard]] std::string beginning() const;
  [[nodiscard]] std::string eventsOf(const Changes& changes) const;

  const LiveRun& m_run;
  SignalSet m_watched;
  std::shared_ptr<void> m_seat;
  SignalValues m_values;
  std::uint64_t m_last = 0;  ///< number of the last change that was told
  bool m_hasBegun = false;
  bool m_hasEnded = false;
};

}  // namespace motion::host::door
