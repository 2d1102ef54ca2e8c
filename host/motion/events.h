// What happens to commands and objects, as small records that the cyclic thread can write.
#pragma once

#include <atomic>
#include <cstdint>

#include "host/motion/spsc_queue.h"

namespace motion::host {

enum class EventKind : std::uint32_t {
  CMD_BUFFERED,
  CMD_PREPARED,
  CMD_ACTIVE,
  CMD_DONE,
  CMD_ABORTED,
  CMD_FAILED,
  MOTION_BEGAN,  ///< first cycle with a commanded velocity
  SIGNAL_SET,
  SIGNAL_RESET,
};

/// Index of an object that stands for "from outside".
inline constexpr std::uint32_t OUTSIDE = 0xFFFFFFFFU;

struct Event {
  std::uint64_t cycle = 0;  ///< the cycle in which it happened; for events between cycles, the cycle that comes next
  EventKind kind = EventKind::CMD_BUFFERED;
  std::uint32_t object = OUTSIDE;  ///< index of the object in order of creation
  std::uint64_t cmdID = 0;         ///< of the command, or of the one that was current when a signal changed; 0 = none
  std::uint32_t detail = 0;        ///< signal number, or the failing job's result
};

/// Takes events from the cyclic thread on one side and is read by an observer on the other.
/// When it is full, an event is counted as lost instead of written.
class EventRing {
 public:
  explicit EventRing(std::size_t capacity) : m_queue(capacity) {}

  void write(const Event& event) noexcept {  ///< [cyclic & real-time]
    if (!m_queue.push(event)) {
      m_lost.fetch_add(1, std::memory_order_relaxed);
    }
  }
  [[nodiscard]] bool read(Event& event) noexcept { return m_queue.pop(event); }  ///< one observer
  [[nodiscard]] std::uint64_t lost() const noexcept { return m_lost.load(std::memory_order_relaxed); }

 private:
  SpscQueue<Event> m_queue;
  std::atomic<std::uint64_t> m_lost{0};
};

}  // namespace motion::host
