// The allocation and locking functions of the C library, defined anew so that the real-time guard sees every use of them.
#include <dlfcn.h>
#include <pthread.h>

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "support/realtime_guard.h"

using motion::test::RealtimeGuard;
using motion::test::Violation;

// The C library's own allocator, under the names that it keeps for replacements.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void* __libc_valloc(std::size_t size);
void __libc_free(void* block);
}

extern "C" {

void* malloc(std::size_t size) noexcept {
  RealtimeGuard::note(Violation::ALLOCATION, "malloc", 0);
  return __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size) noexcept {
  RealtimeGuard::note(Violation::ALLOCATION, "calloc", 0);
  return __libc_calloc(count, size);
}

void* realloc(void* block, std::size_t size) noexcept {
  RealtimeGuard::note(Violation::ALLOCATION, "realloc", 0);
  return __libc_realloc(block, size);
}

void* reallocarray(void* block, std::size_t count, std::size_t size) noexcept {
  RealtimeGuard::note(Violation::ALLOCATION, "reallocarray", 0);
  std::size_t bytes = 0;
  if (__builtin_mul_overflow(count, size, &bytes)) {
    errno = ENOMEM;
    return nullptr;
  }
  return __libc_realloc(block, bytes);
}

void* memalign(std::size_t alignment, std::size_t size) noexcept {
  RealtimeGuard::note(Violation::ALLOCATION, "memalign", 0);
  return __libc_memalign(alignment, size);
}

void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
  RealtimeGuard::note(Violation::ALLOCATION, "aligned_alloc", 0);
  return __libc_memalign(alignment, size);
}

void* valloc(std::size_t size) noexcept {
  RealtimeGuard::note(Violation::ALLOCATION, "valloc", 0);
  return __libc_valloc(size);
}

int posix_memalign(void** block, std::size_t alignment, std::size_t size) noexcept {
  RealtimeGuard::note(Violation::ALLOCATION, "posix_memalign", 0);
  if (alignment % sizeof(void*) != 0 || (alignment & (alignment - 1)) != 0 || alignment == 0) {
    return EINVAL;
  }
  void* made = __libc_memalign(alignment, size);
  if (made == nullptr) {
    return ENOMEM;
  }
  *block = made;
  return 0;
}

void free(void* block) noexcept {
  if (block != nullptr) {
    RealtimeGuard::note(Violation::DEALLOCATION, "free", 0);
    __libc_free(block);
  }
}

}  // extern "C"

namespace {

/// Calls the C library's own function of that name. Several threads may look it up at once; they find the same.
template <typename FUNCTION, typename... ARGUMENTS>
int forward(std::atomic<void*>& original, const char* name, ARGUMENTS... arguments) noexcept {
  void* found = original.load(std::memory_order_acquire);
  if (found == nullptr) {
    found = dlsym(RTLD_NEXT, name);
    if (found == nullptr) {
      std::abort();  // the C library has the function, or nothing in this process works
    }
    original.store(found, std::memory_order_release);
  }
  return reinterpret_cast<FUNCTION*>(found)(arguments...);
}

}  // namespace

// NOLINTBEGIN(bugprone-macro-parentheses): parameter lists
#define KAVO_REPLACE_LOCK(name, parameters, ...)                    \
  extern "C" int name parameters noexcept {                         \
    static std::atomic<void*> s_original{nullptr};                  \
    RealtimeGuard::note(Violation::LOCK, #name, 0);                 \
    return forward<int parameters>(s_original, #name, __VA_ARGS__); \
  }
// NOLINTEND(bugprone-macro-parentheses)

KAVO_REPLACE_LOCK(pthread_mutex_lock, (pthread_mutex_t * mutex), mutex)
KAVO_REPLACE_LOCK(pthread_mutex_trylock, (pthread_mutex_t * mutex), mutex)
KAVO_REPLACE_LOCK(pthread_mutex_timedlock, (pthread_mutex_t * mutex, const timespec* limit), mutex, limit)
KAVO_REPLACE_LOCK(pthread_mutex_clocklock, (pthread_mutex_t * mutex, clockid_t clock, const timespec* limit), mutex, clock,
                  limit)
KAVO_REPLACE_LOCK(pthread_rwlock_rdlock, (pthread_rwlock_t * lock), lock)
KAVO_REPLACE_LOCK(pthread_rwlock_tryrdlock, (pthread_rwlock_t * lock), lock)
KAVO_REPLACE_LOCK(pthread_rwlock_wrlock, (pthread_rwlock_t * lock), lock)
KAVO_REPLACE_LOCK(pthread_rwlock_trywrlock, (pthread_rwlock_t * lock), lock)
KAVO_REPLACE_LOCK(pthread_spin_lock, (pthread_spinlock_t * lock), lock)
KAVO_REPLACE_LOCK(pthread_spin_trylock, (pthread_spinlock_t * lock), lock)

#undef KAVO_REPLACE_LOCK
