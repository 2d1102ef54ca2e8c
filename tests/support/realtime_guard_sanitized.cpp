// What the real-time guard sees under a sanitizer, which has the allocator and the system calls for itself: allocations as
// the sanitizer reports them, and locks where the linker sends them (option --wrap).
#include <pthread.h>

#include <cstddef>

#include "support/realtime_guard.h"
#include "support/system_call_watch.h"

using motion::test::RealtimeGuard;
using motion::test::Violation;

// Declared here, because the compiler does not bring the header.
extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*mallocHook)(const volatile void*, std::size_t),
                                                         void (*freeHook)(const volatile void*));

extern "C" int __real_pthread_mutex_lock(pthread_mutex_t* mutex);
extern "C" int __wrap_pthread_mutex_lock(pthread_mutex_t* mutex) {
  RealtimeGuard::note(Violation::LOCK, "pthread_mutex_lock", 0);
  return __real_pthread_mutex_lock(mutex);
}

namespace motion::test {

bool SystemCallWatch::isPossible() noexcept {
  return false;
}

void SystemCallWatch::prepareThread() {
  static const int s_hooks = __sanitizer_install_malloc_and_free_hooks(
      [](const volatile void*, std::size_t) { RealtimeGuard::note(Violation::ALLOCATION, "allocation", 0); },
      [](const volatile void*) { RealtimeGuard::note(Violation::DEALLOCATION, "deallocation", 0); });
  static_cast<void>(s_hooks);
}

void SystemCallWatch::start() noexcept {}

void SystemCallWatch::stop() noexcept {}

}  // namespace motion::test
