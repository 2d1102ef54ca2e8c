// Bounded ring of trace entries from any number of threads to one.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "host/trace/trace_entry.h"

namespace motion::host::trace {

/// | promise | |
/// |---|---|
/// | writers | any number; lock-free: a writer retries only when another one was faster, and never waits for one |
/// | reader | one thread; wait-free; sees entries in the order in which their places were taken |
/// | memory | all of it from construction on |
/// | when full | the new entry is dropped and counted; nothing that was accepted is lost |
/// | a writer stops half-way | other writers go on; the reader waits at that entry, so the ring may fill up |
class TraceRing {
 public:
  /// Room for `capacity` entries, rounded up to a power of two and at least 2. Throws std::bad_alloc. [framework]
  explicit TraceRing(std::size_t capacity);
  TraceRing(const TraceRing&) = delete;
  TraceRing& operator=(const TraceRing&) = delete;

  /// Takes the next place and lets `fill(TraceEntry&)`, which must not throw, overwrite what is there. False and one more
  /// entry dropped when the ring is full. [any & real-time]
  template <typename Fill>
  bool push(const Fill& fill) noexcept {
    std::size_t position = 0;
    Slot* const slot = claim(position);
    if (slot == nullptr) {
      m_dropped.fetch_add(1, std::memory_order_relaxed);
      return false;
    }
    fill(slot->entry);
    slot->turn.store(position + 1, std::memory_order_release);
    return true;
  }

  /// Shows the oldest entry to `use(const TraceEntry&)`, which must not throw, and gives its place back afterwards. False
  /// when there is none. Reader only.
  template <typename Use>
  bool consume(const Use& use) {
    const std::size_t position = m_consumed.load(std::memory_order_relaxed);
    Slot& slot = m_slots[position & m_mask];
    if (slot.turn.load(std::memory_order_acquire) != position + 1) {
      return false;
    }
    use(static_cast<const TraceEntry&>(slot.entry));
    slot.turn.store(position + capacity(), std::memory_order_release);
    m_consumed.store(position + 1, std::memory_order_release);
    return true;
  }

  [[nodiscard]] std::size_t capacity() const noexcept { return m_mask + 1; }  ///< [any & real-time]
  /// Entries that ever got a place. [any & real-time]
  [[nodiscard]] std::size_t acceptedCount() const noexcept { return m_accepted.load(std::memory_order_relaxed); }
  /// Entries that the reader has finished. [any & real-time]
  [[nodiscard]] std::size_t consumedCount() const noexcept { return m_consumed.load(std::memory_order_acquire); }
  /// Entries dropped since the last call. [any & real-time]
  [[nodiscard]] std::uint64_t takeDroppedCount() noexcept { return m_dropped.exchange(0, std::memory_order_relaxed); }

 private:
  /// `turn` is the place's number when it is free for that writer, one more when it is full for the reader.
  struct Slot {
    std::atomic<std::size_t> turn{0};
    TraceEntry entry;
  };

  /// The slot of the next free place and its number, null when there is none.
  [[nodiscard]] Slot* claim(std::size_t& position) noexcept;

  const std::size_t m_mask;
  const std::unique_ptr<Slot[]> m_slots;
  std::atomic<std::size_t> m_accepted{0};
  std::atomic<std::size_t> m_consumed{0};
  std::atomic<std::uint64_t> m_dropped{0};
};

}  // namespace motion::host::trace
