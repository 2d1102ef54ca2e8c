// Queue between two threads: order, capacity, and passing elements across threads.
#include "host/motion/spsc_queue.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <thread>
#include <vector>

namespace motion::host {
namespace {

TEST(SpscQueueTest, givesElementsInTheOrderInWhichTheyWerePushed) {
  SpscQueue<int> sut(4);
  for (int round = 0; round < 5; ++round) {  // beyond the end of the storage
    for (int i = 0; i < 3; ++i) {
      ASSERT_TRUE(sut.push(round * 10 + i));
    }
    for (int i = 0; i < 3; ++i) {
      int value = -1;
      ASSERT_TRUE(sut.pop(value));
      EXPECT_EQ(value, round * 10 + i);
    }
  }
}

TEST(SpscQueueTest, refusesWhenFullAndKeepsWhatItHas) {
  SpscQueue<int> sut(4);
  for (int i = 0; i < 4; ++i) {
    ASSERT_TRUE(sut.push(i));
  }
  EXPECT_FALSE(sut.push(99));
  int value = -1;
  for (int i = 0; i < 4; ++i) {
    ASSERT_TRUE(sut.pop(value));
    EXPECT_EQ(value, i);
  }
  EXPECT_FALSE(sut.pop(value));
  EXPECT_EQ(value, 3) << "a refused pop leaves the target alone";
}

TEST(SpscQueueTest, hasRoomForAtLeastItsCapacity) {
  for (const std::size_t capacity : {0U, 1U, 2U, 3U, 5U, 64U, 65U}) {
    SpscQueue<std::size_t> sut(capacity);
    for (std::size_t i = 0; i < capacity; ++i) {
      EXPECT_TRUE(sut.push(i)) << capacity;
    }
  }
}

TEST(SpscQueueTest, isEmptyWhenEverythingWasTaken) {
  SpscQueue<int> sut(1);
  EXPECT_TRUE(sut.empty());
  ASSERT_TRUE(sut.push(1));
  EXPECT_FALSE(sut.empty());
  int value = 0;
  ASSERT_TRUE(sut.pop(value));
  EXPECT_TRUE(sut.empty());
}

TEST(SpscQueueTest, losesAndDoublesNothingBetweenTwoThreads) {
  struct Pair {
    std::uint64_t value = 0;
    std::uint64_t square = 0;
  };
  constexpr std::uint64_t COUNT = 20'000;
  SpscQueue<Pair> sut(8);
  std::thread writer([&sut] {
    for (std::uint64_t i = 0; i < COUNT;) {
      if (sut.push({i, i * i})) {
        ++i;
      } else {
        std::this_thread::yield();
      }
    }
  });
  std::uint64_t wrong = 0;
  for (std::uint64_t expected = 0; expected < COUNT;) {
    Pair pair;
    if (!sut.pop(pair)) {
      std::this_thread::yield();
      continue;
    }
    wrong += pair.value != expected || pair.square != expected * expected ? 1 : 0;
    ++expected;
  }
  writer.join();
  EXPECT_EQ(wrong, 0U);
  EXPECT_TRUE(sut.empty());
}

}  // namespace
}  // namespace motion::host
