#include "host/door/worker_pool.h"

#include <utility>

namespace motion::host::door {

WorkerPool::WorkerPool(std::size_t count) : m_count(count) {
  try {
    for (std::size_t i = 0; i < count; ++i) {
      m_threads.emplace_back([this] { serve(); });
    }
  } catch (...) {
    finish();
    throw;
  }
}

WorkerPool::~WorkerPool() {
  finish();
}

void WorkerPool::add(std::function<void()> work) {
  std::unique_lock lock(m_mutex);
  m_changed.wait(lock, [this] { return m_busy + m_waiting.size() < m_count || m_isHurrying; });
  m_waiting.push_back(std::move(work));
  m_changed.notify_all();
}

void WorkerPool::hurry() noexcept {
  const std::lock_guard lock(m_mutex);
  m_isHurrying = true;
  m_changed.notify_all();
}

void WorkerPool::finish() noexcept {
  {
    const std::lock_guard lock(m_mutex);
    m_isFinishing = true;
    m_changed.notify_all();
  }
  m_threads.clear();
}

void WorkerPool::serve() {
  std::unique_lock lock(m_mutex);
  for (;;) {
    m_changed.wait(lock, [this] { return !m_waiting.empty() || m_isFinishing; });
    if (m_waiting.empty()) {
      return;
    }
    const std::function<void()> work = std::move(m_waiting.front());
    m_waiting.pop_front();
    ++m_busy;
    lock.unlock();
    work();
    lock.lock();
    --m_busy;
    m_changed.notify_all();
  }
}

}  // namespace motion::host::door
