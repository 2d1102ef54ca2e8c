// Bounded ring of trace entries from any number of threads to one.
#include "host/trace/trace_ring.h"

#include <algorithm>
#include <bit>

namespace motion::host::trace {

namespace {
// With a single slot, "full for this turn" and "free for the next" would be the same number.
constexpr std::size_t MIN_CAPACITY = 2;
}  // namespace

TraceRing::TraceRing(std::size_t capacity)
    : m_mask(std::bit_ceil(std::max(capacity, MIN_CAPACITY)) - 1), m_slots(std::make_unique<Slot[]>(m_mask + 1)) {
  for (std::size_t i = 0; i <= m_mask; ++i) {
    m_slots[i].turn.store(i, std::memory_order_relaxed);
  }
}

TraceRing::Slot* TraceRing::claim(std::size_t& position) noexcept {
  position = m_accepted.load(std::memory_order_relaxed);
  for (;;) {
    Slot& slot = m_slots[position & m_mask];
    const auto ahead = static_cast<std::ptrdiff_t>(slot.turn.load(std::memory_order_acquire) - position);
    if (ahead < 0) {
      return nullptr;
    }
    if (ahead > 0) {
      position = m_accepted.load(std::memory_order_relaxed);
    } else if (m_accepted.compare_exchange_weak(position, position + 1, std::memory_order_relaxed)) {
      return &slot;
    }
  }
}

}  // namespace motion::host::trace
