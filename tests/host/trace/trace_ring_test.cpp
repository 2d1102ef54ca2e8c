// The ring: order, limits, and many producers at once.
#include "host/trace/trace_ring.h"

#include <gmock/gmock.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace motion::host::trace {
namespace {

using testing::ElementsAre;

bool push(TraceRing& ring, std::uint32_t line) {
  return ring.push([line](TraceEntry& entry) { entry.line = line; });
}

std::vector<std::uint32_t> consumeAll(TraceRing& ring) {
  std::vector<std::uint32_t> lines;
  while (ring.consume([&](const TraceEntry& entry) { lines.push_back(entry.line); })) {
  }
  return lines;
}

TEST(TraceRingTest, CapacityIsAPowerOfTwo) {
  for (const auto& [asked, given] : {std::pair{0, 2}, {1, 2}, {2, 2}, {3, 4}, {64, 64}, {65, 128}}) {
    EXPECT_EQ(TraceRing(static_cast<std::size_t>(asked)).capacity(), static_cast<std::size_t>(given)) << asked;
  }
}

TEST(TraceRingTest, GivesBackInOrder) {
  TraceRing sut(4);
  EXPECT_TRUE(consumeAll(sut).empty());
  EXPECT_TRUE(push(sut, 1));
  EXPECT_TRUE(push(sut, 2));
  EXPECT_EQ(sut.acceptedCount(), 2U);
  EXPECT_THAT(consumeAll(sut), ElementsAre(1, 2));
  EXPECT_EQ(sut.consumedCount(), 2U);
}

TEST(TraceRingTest, FullRingDropsTheNewEntriesAndCountsThem) {
  TraceRing sut(2);
  for (std::uint32_t lap = 0; lap < 3; ++lap) {
    EXPECT_TRUE(push(sut, 1));
    EXPECT_TRUE(push(sut, 2));
    EXPECT_FALSE(push(sut, 3));
    EXPECT_FALSE(push(sut, 4));
    EXPECT_EQ(sut.takeDroppedCount(), 2U);
    EXPECT_EQ(sut.takeDroppedCount(), 0U);
    EXPECT_THAT(consumeAll(sut), ElementsAre(1, 2));
  }
}

TEST(TraceRingTest, PlaceIsTakenUntilTheReaderIsDone) {
  TraceRing sut(2);
  ASSERT_TRUE(push(sut, 1));
  ASSERT_TRUE(push(sut, 2));
  EXPECT_TRUE(sut.consume([&](const TraceEntry&) { EXPECT_FALSE(push(sut, 3)); }));
  EXPECT_TRUE(push(sut, 4));
  EXPECT_THAT(consumeAll(sut), ElementsAre(2, 4));
}

TEST(TraceRingTest, ReaderWaitsAtAnUnfinishedEntry) {
  TraceRing sut(4);
  ASSERT_TRUE(sut.push([&](TraceEntry& entry) {
    entry.line = 1;
    EXPECT_TRUE(push(sut, 2)) << "other writers go on";
    EXPECT_TRUE(consumeAll(sut).empty());
  }));
  EXPECT_THAT(consumeAll(sut), ElementsAre(1, 2));
}

TEST(TraceRingTest, CopiesWhatFits) {
  std::array<char, 4> target{'#', '#', '#', '#'};
  EXPECT_FALSE(copyText(target, "abc"));
  EXPECT_STREQ(target.data(), "abc");
  EXPECT_TRUE(copyText(target, "wxyz"));
  EXPECT_STREQ(target.data(), "wxy");
  EXPECT_FALSE(copyText(target, nullptr));
  EXPECT_STREQ(target.data(), "");
}

TEST(TraceRingTest, SeveralProducersLoseNothingThatWasAccepted) {
  constexpr std::uint32_t PRODUCERS = 4;
  constexpr std::uint32_t PER_PRODUCER = 2000;
  TraceRing sut(16);
  std::atomic<std::uint32_t> running{PRODUCERS};
  std::vector<std::uint32_t> accepted(PRODUCERS, 0);
  std::vector<std::thread> producers;
  for (std::uint32_t producer = 0; producer < PRODUCERS; ++producer) {
    producers.emplace_back([&, producer] {
      for (std::uint32_t i = 0; i < PER_PRODUCER; ++i) {
        const bool isAccepted = sut.push([&](TraceEntry& entry) {
          entry.mainDiagnosisCode = producer;
          entry.line = i;
          copyText(entry.text, (std::to_string(producer) + "/" + std::to_string(i)).c_str());
        });
        accepted[producer] += isAccepted ? 1 : 0;
      }
      --running;
    });
  }
  std::vector<std::uint32_t> seen(PRODUCERS, 0);
  std::vector<std::int64_t> last(PRODUCERS, -1);
  const auto check = [&](const TraceEntry& entry) {
    EXPECT_EQ(entry.text.data(), std::to_string(entry.mainDiagnosisCode) + "/" + std::to_string(entry.line));
    EXPECT_GT(std::int64_t{entry.line}, last[entry.mainDiagnosisCode]) << "order of one producer";
    last[entry.mainDiagnosisCode] = entry.line;
    ++seen[entry.mainDiagnosisCode];
  };
  while (running > 0) {
    if (!sut.consume(check)) {
      std::this_thread::yield();
    }
  }
  while (sut.consume(check)) {
  }
  for (auto& producer : producers) {
    producer.join();
  }
  EXPECT_EQ(seen, accepted);
  EXPECT_EQ(sut.acceptedCount() + sut.takeDroppedCount(), std::size_t{PRODUCERS} * PER_PRODUCER);
}

}  // namespace
}  // namespace motion::host::trace
