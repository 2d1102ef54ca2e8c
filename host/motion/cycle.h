// The cycle: all objects, one after the other in order of creation.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "host/motion/motion_object.h"

namespace motion::host {

/// Looks at the objects while a cycle runs. Nothing that it does may allocate, lock or block.
class ICycleObserver {
 public:
  virtual ~ICycleObserver() = default;
  virtual void beforeObjects(std::uint64_t cycle) noexcept = 0;                            ///< [cyclic & real-time]
  virtual void afterObject(std::uint64_t cycle, const MotionObject& object) noexcept = 0;  ///< [cyclic & real-time]
  virtual void afterObjects(std::uint64_t cycle) noexcept = 0;                             ///< [cyclic & real-time]
};

class Cycle {
 public:
  explicit Cycle(std::span<const std::unique_ptr<MotionObject>> objects);

  /// Runs the next cycle; the first has number 1. [cyclic & real-time]
  void run() noexcept;

  /// Number of the last cycle that has begun, 0 before the first. [any]
  [[nodiscard]] std::uint64_t begun() const noexcept { return m_begun.load(std::memory_order_acquire); }
  /// Number of the last cycle that has ended. [any]
  [[nodiscard]] std::uint64_t ended() const noexcept { return m_ended.load(std::memory_order_acquire); }
  [[nodiscard]] const std::atomic<std::uint64_t>& begunCounter() const noexcept { return m_begun; }

  /// Set before the first cycle; null for none.
  void setObserver(ICycleObserver* observer) noexcept { m_observer = observer; }
  /// Takes the objects anew. Throws std::bad_alloc and then keeps those that it has. Before the first cycle.
  void setObjects(std::span<const std::unique_ptr<MotionObject>> objects);

 private:
  std::vector<MotionObject*> m_objects;
  ICycleObserver* m_observer = nullptr;
  std::atomic<std::uint64_t> m_begun{0};
  std::atomic<std::uint64_t> m_ended{0};
};

}  // namespace motion::host
