// Bounded lock-free queue between two threads.
#pragma once

#include <atomic>
#include <bit>
#include <cstddef>
#include <memory>

namespace motion::host {

/// | promise | |
/// |---|---|
/// | writers, readers | one thread each |
/// | push, pop | wait-free, never allocate |
/// | when full | push refuses and changes nothing |
template <typename T>
class SpscQueue {
 public:
  /// Room for at least `capacity` elements.
  explicit SpscQueue(std::size_t capacity)
      : m_mask(std::bit_ceil(capacity < 1 ? std::size_t{1} : capacity) - 1), m_items(std::make_unique<T[]>(m_mask + 1)) {}

  [[nodiscard]] bool push(const T& item) noexcept {
    const std::size_t tail = m_tail.load(std::memory_order_relaxed);
    if (tail - m_head.load(std::memory_order_acquire) > m_mask) {
      return false;
    }
    m_items[tail & m_mask] = item;
    m_tail.store(tail + 1, std::memory_order_release);
    return true;
  }

  [[nodiscard]] bool pop(T& item) noexcept {
    const std::size_t head = m_head.load(std::memory_order_relaxed);
    if (head == m_tail.load(std::memory_order_acquire)) {
      return false;
    }
    item = m_items[head & m_mask];
    m_head.store(head + 1, std::memory_order_release);
    return true;
  }

  [[nodiscard]] bool empty() const noexcept {
    return m_head.load(std::memory_order_acquire) == m_tail.load(std::memory_order_acquire);
  }

 private:
  std::size_t m_mask;
  std::unique_ptr<T[]> m_items;
  std::atomic<std::size_t> m_head{0};
  std::atomic<std::size_t> m_tail{0};
};

}  // namespace motion::host
