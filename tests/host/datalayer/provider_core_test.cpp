// The threads of a provider: what they call, what is dropped, and who waits for whom.
#include "host/datalayer/provider_core.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <latch>
#include <memory>
#include <mutex>
#include <new>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>

#include "scripted_node.h"
#include "support/fake_allocation.h"

namespace motion::host::datalayer {
namespace {

using comm::datalayer::IProviderNode;
using motion::host::test::ScriptedNode;
using motion::test::failsDuring;

const std::string ADDRESS = "a/long/enough/address/to/need/an/allocation";

class ProviderCoreTest : public testing::Test {
 protected:
  ~ProviderCoreTest() override {
    static_cast<void>(m_sut->stop());
    m_sut->waitForCallbacks();
  }

  void startWithNode() {
    ASSERT_TRUE(m_sut->add(ADDRESS, &m_node));
    ASSERT_TRUE(m_sut->start());
  }
  /// Occupies all threads until the latch is down.
  void occupyAllThreads(std::latch& isOver) {
    std::latch isOccupied(ProviderCore::THREADS);
    for (std::size_t i = 0; i < ProviderCore::THREADS; ++i) {
      ASSERT_TRUE(m_sut->post(ADDRESS, [&](IProviderNode&) {
        isOccupied.count_down();
        isOver.wait();
      }));
    }
    isOccupied.wait();
  }
  /// True when requests are still answered.
  bool answers(const std::string& address = ADDRESS) {
    std::promise<void> answered;
    auto isAnswered = answered.get_future();
    if (!m_sut->post(address, [&answered](IProviderNode&) { answered.set_value(); })) {
      return false;
    }
    isAnswered.get();
    m_sut->waitUntilIdle();
    return true;
  }

  std::shared_ptr<ProviderCore> m_sut = std::make_shared<ProviderCore>();
  ScriptedNode m_node;
};

TEST_F(ProviderCoreTest, StartsAndStopsInTurn) {
  auto& sut = *m_sut;
  EXPECT_FALSE(sut.isRunning());
  EXPECT_FALSE(sut.stop());
  for (int round = 0; round < 3; ++round) {
    EXPECT_TRUE(sut.start());
    EXPECT_TRUE(sut.isRunning());
    EXPECT_FALSE(sut.start());
    EXPECT_TRUE(sut.stop());
    EXPECT_FALSE(sut.isRunning());
    EXPECT_FALSE(sut.stop());
  }
}

TEST_F(ProviderCoreTest, CallsTheNodeOfTheAddressOnAThreadOfItsOwn) {
  auto& sut = *m_sut;
  startWithNode();
  ScriptedNode other;
  ASSERT_TRUE(sut.add("other", &other));
  std::promise<std::pair<IProviderNode*, std::thread::id>> called;
  ASSERT_TRUE(sut.post("other", [&](IProviderNode& node) { called.set_value({&node, std::this_thread::get_id()}); }));
  const auto [node, thread] = called.get_future().get();
  sut.waitUntilIdle();
  EXPECT_EQ(node, &other);
  EXPECT_NE(thread, std::this_thread::get_id());
}

TEST_F(ProviderCoreTest, AddressIsTakenOnce) {
  auto& sut = *m_sut;
  ScriptedNode other;
  EXPECT_TRUE(sut.add(ADDRESS, &m_node));
  EXPECT_FALSE(sut.add(ADDRESS, &other));
  EXPECT_TRUE(sut.remove(ADDRESS));
  EXPECT_FALSE(sut.remove(ADDRESS));
  EXPECT_FALSE(sut.remove("unknown"));
  EXPECT_TRUE(sut.add(ADDRESS, &other));
}

TEST_F(ProviderCoreTest, TakesRequestsOnlyWhileItRuns) {
  auto& sut = *m_sut;
  ASSERT_TRUE(sut.add(ADDRESS, &m_node));
  std::atomic<int> calls{0};
  const auto count = [&calls](IProviderNode&) { ++calls; };
  EXPECT_FALSE(sut.post(ADDRESS, count));
  ASSERT_TRUE(sut.start());
  EXPECT_TRUE(sut.post(ADDRESS, count));
  sut.waitUntilIdle();
  ASSERT_TRUE(sut.stop());
  EXPECT_FALSE(sut.post(ADDRESS, count));
  EXPECT_EQ(calls, 1);
}

TEST_F(ProviderCoreTest, RequestForNobodyIsLetGo) {
  auto& sut = *m_sut;
  ASSERT_TRUE(sut.start());
  auto held = std::make_shared<int>();
  const std::weak_ptr<int> watched = held;
  ASSERT_TRUE(sut.post("unknown", [kept = std::move(held)](IProviderNode&) { ADD_FAILURE() << "whose node?"; }));
  sut.waitUntilIdle();
  EXPECT_TRUE(watched.expired());
}

TEST_F(ProviderCoreTest, WhatACallThrowsIsItsOwnAffair) {
  auto& sut = *m_sut;
  startWithNode();
  for (int i = 0; i < 10; ++i) {
    ASSERT_TRUE(sut.post(ADDRESS, [](IProviderNode&) { throw std::runtime_error("no right to"); }));
    ASSERT_TRUE(sut.post(ADDRESS, [](IProviderNode&) { throw 5; }));
  }
  EXPECT_TRUE(answers());
  EXPECT_TRUE(sut.remove(ADDRESS)) << "and does not wait for calls that have ended";
}

TEST_F(ProviderCoreTest, NumberOfWaitingRequestsIsLimited) {
  auto& sut = *m_sut;
  startWithNode();
  std::latch isOver(1);
  occupyAllThreads(isOver);
  std::atomic<std::size_t> calls{0};
  for (std::size_t i = 0; i < ProviderCore::MAX_WAITING; ++i) {
    EXPECT_TRUE(sut.post(ADDRESS, [&calls](IProviderNode&) { ++calls; })) << i;
  }
  EXPECT_FALSE(sut.post(ADDRESS, [&calls](IProviderNode&) { ++calls; }));
  EXPECT_FALSE(sut.isIdle());
  isOver.count_down();
  sut.waitUntilIdle();
  EXPECT_TRUE(sut.isIdle());
  EXPECT_EQ(calls, ProviderCore::MAX_WAITING);
}

TEST_F(ProviderCoreTest, RemovalWaitsForTheCallbackAlsoWhenTheAddressIsTakenAgain) {
  auto& sut = *m_sut;
  startWithNode();
  ScriptedNode successor;
  std::latch isCalled(1);
  std::atomic<bool> hasEnded{false};
  ASSERT_TRUE(sut.post(ADDRESS, [&](IProviderNode&) {
    isCalled.count_down();
    while (!sut.add(ADDRESS, &successor)) {  // until the removal has begun
      std::this_thread::yield();
    }
    for (int i = 0; i < 1000; ++i) {
      std::this_thread::yield();
    }
    hasEnded = true;
  }));
  isCalled.wait();
  EXPECT_TRUE(sut.remove(ADDRESS));
  EXPECT_TRUE(hasEnded);
  EXPECT_TRUE(answers());
}

TEST_F(ProviderCoreTest, RemovalDropsWhatWaitsForTheNodeBeforeItsCallbacksEnd) {
  auto& sut = *m_sut;
  startWithNode();
  ScriptedNode other;
  ASSERT_TRUE(sut.add("other", &other));
  auto held = std::make_shared<int>();
  const std::weak_ptr<int> watched = held;
  std::latch isOccupied(ProviderCore::THREADS);
  for (std::size_t i = 0; i < ProviderCore::THREADS; ++i) {
    ASSERT_TRUE(sut.post(ADDRESS, [&](IProviderNode&) {
      isOccupied.count_down();
      while (!watched.expired()) {
        std::this_thread::yield();
      }
    }));
  }
  isOccupied.wait();
  std::atomic<int> calls{0};
  ASSERT_TRUE(sut.post("other", [&](IProviderNode&) { ++calls; }));
  ASSERT_TRUE(sut.post(ADDRESS, [kept = std::move(held)](IProviderNode&) { ADD_FAILURE() << "the node is gone"; }));
  EXPECT_TRUE(sut.remove(ADDRESS));
  sut.waitUntilIdle();
  EXPECT_EQ(calls, 1) << "requests for other nodes stay";
}

TEST_F(ProviderCoreTest, StopWaitsForCallbacksAndDropsWhatWaitsBefore) {
  auto& sut = *m_sut;
  startWithNode();
  auto held = std::make_shared<int>();
  const std::weak_ptr<int> watched = held;
  std::latch isOccupied(ProviderCore::THREADS);
  std::atomic<std::size_t> ended{0};
  for (std::size_t i = 0; i < ProviderCore::THREADS; ++i) {
    ASSERT_TRUE(sut.post(ADDRESS, [&](IProviderNode&) {
      isOccupied.count_down();
      while (!watched.expired() || sut.isRunning()) {
        std::this_thread::yield();
      }
      ++ended;
    }));
  }
  isOccupied.wait();
  ASSERT_TRUE(sut.post(ADDRESS, [kept = std::move(held)](IProviderNode&) { ADD_FAILURE() << "stopped"; }));
  EXPECT_TRUE(sut.stop());
  EXPECT_EQ(ended, ProviderCore::THREADS);
  EXPECT_TRUE(sut.isIdle());
}

TEST_F(ProviderCoreTest, CallbackRemovesItsOwnNodeAndPutsAnotherInItsPlace) {
  auto& sut = *m_sut;
  startWithNode();
  ScriptedNode successor;
  std::promise<bool> removed;
  ASSERT_TRUE(sut.post(ADDRESS, [&](IProviderNode&) {
    const bool isRemoved = sut.remove(ADDRESS) && !sut.remove(ADDRESS);
    removed.set_value(isRemoved && sut.add(ADDRESS, &successor));
  }));
  EXPECT_TRUE(removed.get_future().get());
  sut.waitUntilIdle();
  std::promise<IProviderNode*> called;
  ASSERT_TRUE(sut.post(ADDRESS, [&](IProviderNode& node) { called.set_value(&node); }));
  EXPECT_EQ(called.get_future().get(), &successor);
  sut.waitUntilIdle();
  EXPECT_TRUE(sut.remove(ADDRESS));
}

TEST_F(ProviderCoreTest, CallbackStopsItsOwnProvider) {
  auto& sut = *m_sut;
  startWithNode();
  std::promise<bool> stopped;
  std::atomic<bool> hasEnded{false};
  ASSERT_TRUE(sut.post(ADDRESS, [&](IProviderNode&) {
    stopped.set_value(sut.stop());
    hasEnded = true;
  }));
  EXPECT_TRUE(stopped.get_future().get());
  EXPECT_FALSE(sut.isRunning());
  sut.waitForCallbacks();
  EXPECT_TRUE(hasEnded);
  EXPECT_TRUE(sut.start());
  EXPECT_TRUE(answers());
}

TEST_F(ProviderCoreTest, BothThreadsStopTheirProviderAtOnce) {
  auto& sut = *m_sut;
  startWithNode();
  std::latch isCalled(ProviderCore::THREADS);
  std::atomic<int> stopped{0};
  for (std::size_t i = 0; i < ProviderCore::THREADS; ++i) {
    ASSERT_TRUE(sut.post(ADDRESS, [&](IProviderNode&) {
      isCalled.arrive_and_wait();
      stopped += sut.stop() ? 1 : 0;
    }));
  }
  sut.waitUntilIdle();
  EXPECT_EQ(stopped, 1);
  EXPECT_FALSE(sut.isRunning());
}

TEST_F(ProviderCoreTest, ThreadWhoseCallbackStartedItAnewHasNoPartInTheNextRun) {
  auto& sut = *m_sut;
  startWithNode();
  std::promise<std::thread::id> restarted;
  ASSERT_TRUE(sut.post(ADDRESS, [&](IProviderNode&) {
    const bool isRestarted = sut.stop() && sut.start();
    restarted.set_value(isRestarted ? std::this_thread::get_id() : std::thread::id());
  }));
  const std::thread::id old = restarted.get_future().get();
  ASSERT_NE(old, std::thread::id());
  std::mutex mutex;
  std::set<std::thread::id> threads;
  for (std::size_t i = 0; i < ProviderCore::MAX_WAITING; ++i) {
    ASSERT_TRUE(sut.post(ADDRESS, [&](IProviderNode&) {
      const std::lock_guard lock(mutex);
      threads.insert(std::this_thread::get_id());
    }));
  }
  sut.waitUntilIdle();
  EXPECT_FALSE(threads.contains(old));
  EXPECT_FALSE(threads.empty());
}

TEST_F(ProviderCoreTest, StopEndsTheWaitForIdleness) {
  auto& sut = *m_sut;
  ASSERT_TRUE(sut.add(ADDRESS, &m_node));
  for (int round = 0; round < 200; ++round) {
    ASSERT_TRUE(sut.start());
    ASSERT_TRUE(sut.post(ADDRESS, [](IProviderNode&) {}));
    std::latch start(2);
    std::thread waiting([&] {
      start.arrive_and_wait();
      sut.waitUntilIdle();
    });
    start.arrive_and_wait();
    EXPECT_TRUE(sut.stop());
    waiting.join();
  }
}

TEST_F(ProviderCoreTest, ThreadsThatCannotBeStartedLeaveItStopped) {
  auto& sut = *m_sut;
  ASSERT_TRUE(sut.add(ADDRESS, &m_node));
  int number = 1;
  for (bool hasFailed = true; hasFailed; ++number) {
    bool hasThrown = false;
    hasFailed = failsDuring(number, [&] {
      try {
        static_cast<void>(sut.start());
      } catch (const std::bad_alloc&) {
        hasThrown = true;
      }
    });
    ASSERT_EQ(hasThrown, hasFailed) << number;
    ASSERT_EQ(sut.isRunning(), !hasFailed) << number;
  }
  EXPECT_GT(number, 3) << "places for the threads, first thread, second thread";
  EXPECT_TRUE(answers());
}

TEST_F(ProviderCoreTest, FailedAllocationTakesNothing) {
  auto& sut = *m_sut;
  const auto throwsAt = [](int number, const auto& work) {
    bool hasThrown = false;
    const bool hasFailed = failsDuring(number, [&] {
      try {
        work();
      } catch (const std::bad_alloc&) {
        hasThrown = true;
      }
    });
    EXPECT_EQ(hasThrown, hasFailed) << number;
    return hasThrown;
  };
  int number = 1;
  while (throwsAt(number, [&] { static_cast<void>(sut.add(ADDRESS, &m_node)); })) {
    EXPECT_FALSE(sut.remove(ADDRESS)) << number;
    ++number;
  }
  EXPECT_GT(number, 2);
  ASSERT_TRUE(sut.start());
  std::atomic<int> calls{0};
  number = 1;
  while (throwsAt(number, [&] { static_cast<void>(sut.post(ADDRESS, [&calls](IProviderNode&) { ++calls; })); })) {
    ++number;
  }
  EXPECT_GT(number, 1);
  sut.waitUntilIdle();
  EXPECT_EQ(calls, 1) << "the one that was taken";
}

}  // namespace
}  // namespace motion::host::datalayer
