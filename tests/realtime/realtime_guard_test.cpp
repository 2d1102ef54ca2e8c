// The real-time guard against deliberate violations: each is seen, exactly once, and nothing is while the guard is disarmed.
#include "support/realtime_guard.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>
#include <shared_mutex>
#include <stdexcept>
#include <string>
#include <thread>

namespace motion::test {
namespace {

using testing::HasSubstr;

/// Keeps the compiler from leaving out what nobody uses.
void* kept(void* pointer) {
  asm volatile("" : "+r"(pointer) : : "memory");
  return pointer;
}

struct Expected {
  std::uint64_t allocations = 0;
  std::uint64_t deallocations = 0;
  std::uint64_t locks = 0;
  std::uint64_t systemCalls = 0;
};

struct Case {
  const char* name;
  void (*violate)();
  Expected expected;
};

void PrintTo(const Case& value, std::ostream* out) {
  *out << value.name;
}

/// The counts of one guard, first violations included when they are wrong.
void expectCounts(const RealtimeGuard& sut, const Expected& expected) {
  EXPECT_EQ(sut.count(Violation::ALLOCATION), expected.allocations) << sut.describe();
  EXPECT_EQ(sut.count(Violation::DEALLOCATION), expected.deallocations) << sut.describe();
  EXPECT_EQ(sut.count(Violation::LOCK), expected.locks) << sut.describe();
  EXPECT_EQ(sut.count(Violation::SYSTEM_CALL), expected.systemCalls) << sut.describe();
}

template <typename MUTEX>
void lockOnce() {
  static MUTEX s_mutex;
  s_mutex.lock();
  s_mutex.unlock();
}

template <typename MUTEX>
void tryLockOnce() {
  static MUTEX s_mutex;
  if (s_mutex.try_lock()) {
    s_mutex.unlock();
  }
}

void lockShared() {
  static std::shared_mutex s_mutex;
  s_mutex.lock_shared();
  s_mutex.unlock_shared();
}

void lockTwice() {
  static std::recursive_mutex s_mutex;
  s_mutex.lock();
  s_mutex.lock();
  s_mutex.unlock();
  s_mutex.unlock();
}

void spin() {
  static pthread_spinlock_t s_lock = [] {
    pthread_spinlock_t lock{};
    pthread_spin_init(&lock, PTHREAD_PROCESS_PRIVATE);
    return lock;
  }();
  pthread_spin_lock(&s_lock);
  pthread_spin_unlock(&s_lock);
}

void allocateAligned() {
  struct alignas(256) Wide {
    char bytes[256];
  };
  auto* wide = new Wide;
  delete static_cast<Wide*>(kept(wide));
}

void allocatePosix() {
  void* block = nullptr;
  if (posix_memalign(&block, 64, 64) == 0) {
    std::free(kept(block));
  }
}

void grow() {
  void* block = kept(std::malloc(16));
  block = kept(std::realloc(block, 64));
  std::free(block);
}

class RealtimeGuardCounts : public testing::TestWithParam<Case> {};

TEST_P(RealtimeGuardCounts, OneViolationExactly) {
  GetParam().violate();  // what happens on first use only is not meant
  RealtimeGuard sut;
  sut.arm();
  GetParam().violate();
  sut.disarm();
  expectCounts(sut, GetParam().expected);
}

TEST_P(RealtimeGuardCounts, EveryViolationOfMany) {
  GetParam().violate();
  RealtimeGuard sut;
  for (int i = 0; i < 3; ++i) {
    sut.arm();
    GetParam().violate();
    GetParam().violate();
    sut.disarm();
    GetParam().violate();
  }
  const Expected& one = GetParam().expected;
  expectCounts(sut, {6 * one.allocations, 6 * one.deallocations, 6 * one.locks, 6 * one.systemCalls});
}

TEST_P(RealtimeGuardCounts, NothingWhenDisarmed) {
  RealtimeGuard sut;
  sut.arm();
  sut.disarm();
  GetParam().violate();
  expectCounts(sut, {});
  EXPECT_TRUE(sut.isClean());
}

TEST_P(RealtimeGuardCounts, NothingOfAnotherThread) {
  RealtimeGuard sut;
  sut.arm();  // fails here, before there is a thread, where it cannot work
  sut.disarm();
  std::atomic<bool> isArmed{false};
  std::atomic<bool> isDone{false};
  std::thread other([&] {
    while (!isArmed.load()) {
    }
    GetParam().violate();
    isDone = true;
  });
  sut.arm();
  isArmed = true;
  while (!isDone.load()) {
  }
  sut.disarm();
  other.join();
  expectCounts(sut, {});
}

INSTANTIATE_TEST_SUITE_P(
    Deliberate, RealtimeGuardCounts,
    testing::Values(
        Case{"malloc", [] { std::free(kept(std::malloc(32))); }, {1, 1, 0, 0}},
        Case{"calloc", [] { std::free(kept(std::calloc(4, 8))); }, {1, 1, 0, 0}}, Case{"realloc", grow, {2, 1, 0, 0}},
        Case{"aligned_alloc", [] { std::free(kept(std::aligned_alloc(64, 64))); }, {1, 1, 0, 0}},
        Case{"posix_memalign", allocatePosix, {1, 1, 0, 0}},
        Case{"new", [] { delete static_cast<int*>(kept(new int(1))); }, {1, 1, 0, 0}},
        Case{"new_array", [] { delete[] static_cast<char*>(kept(new char[100])); }, {1, 1, 0, 0}},
        Case{"new_aligned", allocateAligned, {1, 1, 0, 0}},
        Case{"in_the_standard_library", [] { std::string(100, 'x').append(1000, 'y'); }, {2, 2, 0, 0}},
        Case{"in_the_c_library", [] { std::free(kept(strdup("text"))); }, {1, 1, 0, 0}},
        Case{"free_of_null", [] { std::free(kept(nullptr)); }, {0, 0, 0, 0}},
        Case{"mutex", lockOnce<std::mutex>, {0, 0, 1, 0}}, Case{"mutex_try", tryLockOnce<std::mutex>, {0, 0, 1, 0}},
        Case{"recursive_mutex", lockTwice, {0, 0, 2, 0}}, Case{"shared_mutex", lockOnce<std::shared_mutex>, {0, 0, 1, 0}},
        Case{"shared_mutex_shared", lockShared, {0, 0, 1, 0}},
        Case{"shared_mutex_try", tryLockOnce<std::shared_mutex>, {0, 0, 1, 0}}, Case{"spin_lock", spin, {0, 0, 1, 0}},
        Case{"system_call", [] { syscall(SYS_getppid); }, {0, 0, 0, 1}},
        Case{"system_call_of_the_c_library", [] { static_cast<void>(getppid()); }, {0, 0, 0, 1}},
        Case{"system_call_six_arguments", [] { std::free(kept(std::malloc(std::size_t{1} << 26))); }, {1, 1, 0, 2}}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(RealtimeGuard, AWatchedSystemCallIsCarriedOut) {
  int ends[2] = {};
  ASSERT_EQ(pipe(ends), 0);
  char received = 0;
  RealtimeGuard sut;
  sut.arm();
  const ssize_t written = write(ends[1], "k", 1);
  const ssize_t read = ::read(ends[0], &received, 1);
  const int failed = close(-1);
  const int error = errno;
  sut.disarm();
  EXPECT_EQ(written, 1);
  EXPECT_EQ(read, 1);
  EXPECT_EQ(received, 'k');
  EXPECT_EQ(failed, -1);
  EXPECT_EQ(error, EBADF);
  expectCounts(sut, {0, 0, 0, 3});
  close(ends[0]);
  close(ends[1]);
}

TEST(RealtimeGuard, ACallThatChangesTheThreadsContextIsSeenAndTakesEffect) {
  sigset_t before;
  sigset_t blocked;
  sigset_t now;
  sigemptyset(&blocked);
  sigaddset(&blocked, SIGUSR2);
  RealtimeGuard sut;
  sut.arm();
  pthread_sigmask(SIG_BLOCK, &blocked, &before);
  sut.disarm();
  pthread_sigmask(SIG_SETMASK, &before, &now);
  expectCounts(sut, {0, 0, 0, 1});
  EXPECT_EQ(sigismember(&before, SIGUSR2), 0);
  EXPECT_EQ(sigismember(&now, SIGUSR2), 1);
  sut.arm();
  syscall(SYS_getppid);
  sut.disarm();
  expectCounts(sut, {0, 0, 0, 2});
}

TEST(RealtimeGuard, ThreadsStartedWhileArmedAreNotCounted) {
  RealtimeGuard sut;
  bool hasRun = false;
  sut.arm();
  std::thread other([&hasRun] {
    static_cast<void>(getppid());
    hasRun = true;
  });
  other.join();
  sut.disarm();
  EXPECT_TRUE(hasRun);
  EXPECT_GE(sut.count(Violation::SYSTEM_CALL), 1U);
  EXPECT_LT(sut.count(Violation::SYSTEM_CALL), 20U);
}

TEST(RealtimeGuard, SaysWhatWasDoneAndByWhom) {
  RealtimeGuard sut;
  sut.arm();
  std::free(kept(std::malloc(32)));
  lockOnce<std::mutex>();
  syscall(SYS_getppid);
  sut.disarm();
  const std::string text = sut.describe();
  EXPECT_THAT(text, HasSubstr("allocations: 1, deallocations: 1, locks: 1, system calls: 1"));
  EXPECT_THAT(text, HasSubstr("\nallocation malloc\n"));
  EXPECT_THAT(text, HasSubstr("\ndeallocation free\n"));
  EXPECT_THAT(text, HasSubstr("\nlock pthread_mutex_lock\n"));
  EXPECT_THAT(text, HasSubstr("\nsystem call number " + std::to_string(SYS_getppid) + "\n"));
  EXPECT_THAT(text, HasSubstr("realtime_guard_test"));
}

TEST(RealtimeGuard, RefusesASecondOneOnTheSameThread) {
  RealtimeGuard first;
  RealtimeGuard sut;
  first.arm();
  EXPECT_THROW(sut.arm(), std::logic_error);
  first.disarm();
  EXPECT_NO_THROW(sut.arm());
}

}  // namespace
}  // namespace motion::test
