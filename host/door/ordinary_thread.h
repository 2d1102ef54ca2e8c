// A thread that stays out of the way of the cycle.
#pragma once

#include <pthread.h>

#include <functional>

namespace motion::host::door {

/// Runs with ordinary scheduling, whatever that of its creator is, with a small stack, because a real-time process keeps all
/// its memory in place, and takes no signals: those belong to the program.
class OrdinaryThread {
 public:
  /// `work` must not throw. Throws std::system_error when there is no thread to be had.
  explicit OrdinaryThread(std::function<void()> work);
  OrdinaryThread(const OrdinaryThread&) = delete;
  OrdinaryThread& operator=(const OrdinaryThread&) = delete;
  /// Waits for its end.
  ~OrdinaryThread();

 private:
  static void* run(void* self) noexcept;

  std::function<void()> m_work;
  pthread_t m_thread{};
};

}  // namespace motion::host::door
