#include "host/motion/cycle.h"

namespace motion::host {

namespace {

/// How many objects ahead memory is fetched, in three steps, each of which needs what the one before has fetched; far enough
/// to hide a cache miss behind other objects' turns.
constexpr std::size_t PREFETCH_DISTANCE = 4;

}  // namespace

Cycle::Cycle(std::span<const std::unique_ptr<MotionObject>> objects) {
  setObjects(objects);
}

void Cycle::setObjects(std::span<const std::unique_ptr<MotionObject>> objects) {
  m_objects.reserve(objects.size());
  m_objects.clear();
  for (const auto& object : objects) {
    m_objects.push_back(object.get());
  }
}

void Cycle::run() noexcept {
  const std::uint64_t cycle = m_begun.load(std::memory_order_relaxed) + 1;
  m_begun.store(cycle, std::memory_order_release);
  if (m_observer != nullptr) {
    m_observer->beforeObjects(cycle);
  }
  const std::size_t count = m_objects.size();
  for (std::size_t i = 0; i < count; ++i) {
    if (i + 3 * PREFETCH_DISTANCE < count) {
      __builtin_prefetch(m_objects[i + 3 * PREFETCH_DISTANCE]);
      m_objects[i + 2 * PREFETCH_DISTANCE]->prefetchCommand();
      m_objects[i + PREFETCH_DISTANCE]->prefetchJobs();
    }
    m_objects[i]->runCycle(cycle);
    if (m_observer != nullptr) {
      m_observer->afterObject(cycle, *m_objects[i]);
    }
  }
  if (m_observer != nullptr) {
    m_observer->afterObjects(cycle);
  }
  m_ended.store(cycle, std::memory_order_release);
}

}  // namespace motion::host
