// The fields of a signal store, its mutex above all: there is no other way to them than their places in the object.
#pragma once

#include <pthread.h>

#include <cstddef>
#include <memory>
#include <mutex>
#include <thread>

#include "impl/signals.h"

namespace motion::kavo {

/// The places of the fields of a store: factory, output memory, input memory and, last, the mutex.
inline constexpr std::size_t SIGNALS_FACTORY = sizeof(void*);
inline constexpr std::size_t SIGNALS_OUT_MEMORY = 2 * sizeof(void*);
inline constexpr std::size_t SIGNALS_IN_MEMORY = SIGNALS_OUT_MEMORY + sizeof(std::shared_ptr<void>);
inline constexpr std::size_t SIGNALS_MUTEX = SIGNALS_IN_MEMORY + sizeof(std::shared_ptr<void>);
static_assert(sizeof(Signals) == SIGNALS_MUTEX + sizeof(std::mutex));

template <typename FIELD>
FIELD& fieldOf(Signals& store, std::size_t place) {
  return *reinterpret_cast<FIELD*>(reinterpret_cast<std::byte*>(&store) + place);
}

/// Whether another caller is kept out can only be asked without waiting.
inline bool canAnotherThreadLock(Signals& store) {
  auto& mutex = fieldOf<std::mutex>(store, SIGNALS_MUTEX);
  bool isLocked = false;
  std::thread([&] {
    isLocked = mutex.try_lock();
    if (isLocked) {
      mutex.unlock();
    }
  }).join();
  return isLocked;
}

/// While it exists, each attempt of this thread to lock the mutex fails with the system's error: it is of the kind that
/// refuses the thread that holds it already.
class UnlockableMutex {
 public:
  explicit UnlockableMutex(Signals& store) : m_mutex(fieldOf<std::mutex>(store, SIGNALS_MUTEX)) {
    become(PTHREAD_MUTEX_ERRORCHECK);
    m_mutex.lock();
  }
  UnlockableMutex(const UnlockableMutex&) = delete;
  UnlockableMutex& operator=(const UnlockableMutex&) = delete;
  ~UnlockableMutex() {
    m_mutex.unlock();
    become(PTHREAD_MUTEX_NORMAL);
  }

 private:
  void become(int kind) {
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, kind);
    pthread_mutex_destroy(m_mutex.native_handle());
    pthread_mutex_init(m_mutex.native_handle(), &attributes);
    pthread_mutexattr_destroy(&attributes);
  }

  std::mutex& m_mutex;
};

}  // namespace motion::kavo
