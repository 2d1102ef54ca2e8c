// Counts what a real-time operation must not do, by standing before allocator, mutexes and the kernel.
#include "real_time_guard.h"

#include <pthread.h>
#include <sys/prctl.h>
#include <ucontext.h>

#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <new>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define KAVO_UNDER_SANITIZER 1
// Declared here, because the compiler does not bring the header.
extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*mallocHook)(const volatile void*, std::size_t),
                                                         void (*freeHook)(const volatile void*));
#else
#define KAVO_UNDER_SANITIZER 0
#endif

namespace {

// Volatile: the compiler takes it for granted that an allocator looks at no variable of ours.
thread_local volatile bool t_isCounting = false;
thread_local volatile int t_allocations = 0;
thread_local volatile int t_frees = 0;
thread_local volatile int t_locks = 0;
thread_local volatile int t_systemCalls = 0;
thread_local volatile bool t_mayFail = false;
thread_local volatile int t_allocationsUntilFailure = 0;

void add(volatile int& counter) {
  if (t_isCounting) {
    counter = counter + 1;
  }
}

bool mustFail() {
  if (!t_mayFail || t_allocationsUntilFailure < 0) {
    return false;
  }
  t_allocationsUntilFailure = t_allocationsUntilFailure - 1;
  return t_allocationsUntilFailure < 0;
}

}  // namespace

#if KAVO_UNDER_SANITIZER
namespace {
const int g_hooks = __sanitizer_install_malloc_and_free_hooks([](const volatile void*, std::size_t) { add(t_allocations); },
                                                              [](const volatile void*) { add(t_frees); });
}
#else
extern "C" void* __libc_malloc(std::size_t size);
extern "C" void* __libc_calloc(std::size_t number, std::size_t size);
extern "C" void* __libc_realloc(void* block, std::size_t size);
extern "C" void __libc_free(void* block);

extern "C" void* malloc(std::size_t size) {
  add(t_allocations);
  return __libc_malloc(size);
}
extern "C" void* calloc(std::size_t number, std::size_t size) {
  add(t_allocations);
  return __libc_calloc(number, size);
}
extern "C" void* realloc(void* block, std::size_t size) {
  add(t_allocations);
  return __libc_realloc(block, size);
}
extern "C" void free(void* block) {
  add(t_frees);
  __libc_free(block);
}
#endif

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return mustFail() ? nullptr : std::malloc(size != 0 ? size : 1);
}
void* operator new(std::size_t size) {
  void* const block = operator new(size, std::nothrow);
  if (block == nullptr) {
    throw std::bad_alloc();
  }
  return block;
}
void* operator new[](std::size_t size) {
  return operator new(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return operator new(size, std::nothrow);
}
void operator delete(void* block) noexcept {
  std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
  std::free(block);
}
void operator delete[](void* block) noexcept {
  std::free(block);
}
void operator delete[](void* block, std::size_t) noexcept {
  std::free(block);
}

extern "C" int __real_pthread_mutex_lock(pthread_mutex_t* mutex);
extern "C" int __wrap_pthread_mutex_lock(pthread_mutex_t* mutex) {
  add(t_locks);
  return __real_pthread_mutex_lock(mutex);
}

#if defined(PR_SET_SYSCALL_USER_DISPATCH) && defined(__x86_64__) && !KAVO_UNDER_SANITIZER
namespace {

constexpr greg_t SYSTEM_CALL_INSTRUCTION_SIZE = 2;
/// The kernel looks here whether this thread's system calls go through or are reported.
thread_local volatile char t_selector = SYSCALL_DISPATCH_FILTER_ALLOW;

/// Counts the call, stops counting and repeats the call, which then goes through.
void onSystemCall(int, siginfo_t*, void* context) {
  t_selector = SYSCALL_DISPATCH_FILTER_ALLOW;
  t_systemCalls = t_systemCalls + 1;
  static_cast<ucontext_t*>(context)->uc_mcontext.gregs[REG_RIP] -= SYSTEM_CALL_INSTRUCTION_SIZE;
}

bool reportSystemCalls() {
  return ::prctl(PR_SET_SYSCALL_USER_DISPATCH, PR_SYS_DISPATCH_ON, 0, 0, const_cast<char*>(&t_selector)) == 0;
}

void startReporting() {
  struct sigaction action {};
  action.sa_sigaction = onSystemCall;
  action.sa_flags = SA_SIGINFO;
  if (::sigaction(SIGSYS, &action, nullptr) == 0 && reportSystemCalls()) {
    t_selector = SYSCALL_DISPATCH_FILTER_BLOCK;
  }
}

void stopReporting() {
  t_selector = SYSCALL_DISPATCH_FILTER_ALLOW;
  (void)::prctl(PR_SET_SYSCALL_USER_DISPATCH, PR_SYS_DISPATCH_OFF, 0, 0, 0);
}

}  // namespace
#else
namespace {
bool reportSystemCalls() {
  return false;
}
void startReporting() {}
void stopReporting() {}
}  // namespace
#endif

namespace motion::host::test {

bool countsSystemCalls() {
  const bool result = reportSystemCalls();
  stopReporting();
  return result;
}

void beginGuard() {
  t_allocations = 0;
  t_frees = 0;
  t_locks = 0;
  t_systemCalls = 0;
  startReporting();
  t_isCounting = true;
}

Violations endGuard() {
  t_isCounting = false;
  stopReporting();
  return {t_allocations, t_frees, t_locks, t_systemCalls};
}

void beginFailing(int number) {
  t_allocationsUntilFailure = number;
  t_mayFail = true;
}

bool endFailing() {
  t_mayFail = false;
  return t_allocationsUntilFailure < 0;
}

}  // namespace motion::host::test
