#include "host/door/worker_pool.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <sched.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <future>
#include <optional>
#include <thread>

namespace motion::host::door {
namespace {

TEST(WorkerPoolTest, DoesAllWork) {
  std::atomic<int> done{0};
  {
    WorkerPool sut(3);
    for (int i = 0; i < 100; ++i) {
      sut.add([&] { ++done; });
    }
  }
  EXPECT_EQ(done, 100);
}

/// One thread that is busy until it is let go.
class BusyPool {
 public:
  BusyPool() {
    sut.emplace(1);
    sut->add([this] { letGo.get_future().wait(); });
  }

  std::promise<void> letGo;
  std::optional<WorkerPool> sut;
};

TEST(WorkerPoolTest, WhoeverBringsMoreThanItCanServeWaits) {
  BusyPool pool;
  std::atomic<bool> isFree{false};
  std::atomic<bool> wasFree{false};
  std::atomic<int> done{0};
  std::thread bringer([&] {
    pool.sut->add([&] { ++done; });
    wasFree = isFree.load();
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(30));  // time to do it wrong; whoever waits is never too early
  isFree = true;
  pool.letGo.set_value();
  bringer.join();
  pool.sut->finish();
  EXPECT_TRUE(wasFree);
  EXPECT_EQ(done, 1);
}

TEST(WorkerPoolTest, NobodyWaitsAnyMoreInAHurry) {
  BusyPool pool;
  std::atomic<int> done{0};
  pool.sut->hurry();
  for (int i = 0; i < 5; ++i) {
    pool.sut->add([&] { ++done; });
  }
  EXPECT_EQ(done, 0);
  pool.letGo.set_value();
  pool.sut->finish();
  EXPECT_EQ(done, 5);
}

TEST(WorkerPoolTest, AHurryFreesWhoAlreadyWaits) {
  BusyPool pool;
  std::atomic<int> done{0};
  std::thread bringer([&] { pool.sut->add([&] { ++done; }); });
  pool.sut->hurry();
  bringer.join();
  pool.letGo.set_value();
  pool.sut->finish();
  EXPECT_EQ(done, 1);
}

TEST(OrdinaryThreadTest, StaysOutOfTheWayOfTheCycle) {
  sched_param old{};
  int oldPolicy = 0;
  pthread_getschedparam(pthread_self(), &oldPolicy, &old);
  sched_param urgent{};
  urgent.sched_priority = 1;
  const bool mayHurry = pthread_setschedparam(pthread_self(), SCHED_FIFO, &urgent) == 0;
  int policy = -1;
  std::size_t stackSize = 0;
  bool takesSignals = true;
  {
    const OrdinaryThread sut([&] {
      sched_param parameter{};
      pthread_getschedparam(pthread_self(), &policy, &parameter);
      pthread_attr_t attributes;
      pthread_getattr_np(pthread_self(), &attributes);
      pthread_attr_getstacksize(&attributes, &stackSize);
      pthread_attr_destroy(&attributes);
      sigset_t blocked;
      pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
      takesSignals = sigismember(&blocked, SIGUSR1) == 0 || sigismember(&blocked, SIGINT) == 0;
    });
  }
  pthread_setschedparam(pthread_self(), oldPolicy, &old);
  EXPECT_EQ(policy, SCHED_OTHER) << (mayHurry ? "the creator was urgent" : "the creator was ordinary");
  EXPECT_LE(stackSize, std::size_t{1024} * 1024);
  EXPECT_FALSE(takesSignals);
}

}  // namespace
}  // namespace motion::host::door
