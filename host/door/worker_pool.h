// A fixed number of threads that serve connections; whoever brings one more waits.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <list>
#include <mutex>

#include "host/door/ordinary_thread.h"

namespace motion::host::door {

class WorkerPool {
 public:
  /// Throws std::system_error.
  explicit WorkerPool(std::size_t count);
  WorkerPool(const WorkerPool&) = delete;
  WorkerPool& operator=(const WorkerPool&) = delete;
  /// Waits until all work is done.
  ~WorkerPool();

  /// Waits until a thread is free for it. The work must not throw. [any]
  void add(std::function<void()> work);
  /// From now on `add` does not wait for a free thread any more; the work is still done. [any]
  void hurry() noexcept;
  /// Returns when all work is done; after that none may be added.
  void finish() noexcept;

 private:
  void serve();

  const std::size_t m_count;
  std::mutex m_mutex;
  std::condition_variable m_changed;
  std::deque<std::function<void()>> m_waiting;
  std::size_t m_busy = 0;
  bool m_isHurrying = false;
  bool m_isFinishing = false;
  std::list<OrdinaryThread> m_threads;
};

}  // namespace motion::host::door
