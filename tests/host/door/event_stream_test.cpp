#include "host/door/event_stream.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/door/door_limits.h"
#include "host/door/event_reader.h"
#include "host/motion/events.h"

namespace motion::host::door {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

class EventStreamTest : public testing::Test {
 protected:
  EventStreamTest() {
    record.signalNames.resize(kavo::SIGNAL_COUNT);
    run.begin({"test.yaml", 0.002, {"", "start"}});
  }

  void change(std::uint64_t cycle, std::uint32_t signal, bool value) {
    record.signals.push_back({cycle, signal, value, OUTSIDE, 0});
    run.look(record, cycle);
  }

  EventStream watch(const std::string& signals) { return {run, SignalSet(signals), nullptr}; }

  observe::RunRecord record;
  LiveRun run;
};

TEST_F(EventStreamTest, BeginsWithThePresentValues) {
  change(4, 1, true);
  EventStream sut = watch("11");
  EXPECT_EQ(sut.next(0ms),
            "id: 1\nevent: signal\n"
            "data: {\"id\":0,\"name\":null,\"value\":false,\"cycle\":4,\"time\":0.006,\"by\":null}\n\n"
            "id: 1\nevent: signal\n"
            "data: {\"id\":1,\"name\":\"start\",\"value\":true,\"cycle\":4,\"time\":0.006,\"by\":null}\n\n");
}

TEST_F(EventStreamTest, GoesOnWithEachChangeOfAWatchedSignal) {
  EventStream sut = watch("10");
  static_cast<void>(sut.next(0ms));
  change(2, 1, true);
  change(3, 0, true);
  change(5, 1, false);
  EXPECT_EQ(sut.next(0ms),
            "id: 1\nevent: signal\n"
            "data: {\"id\":1,\"name\":\"start\",\"value\":true,\"cycle\":2,\"time\":0.002,\"by\":\"outside\"}\n\n"
            "id: 3\nevent: signal\n"
            "data: {\"id\":1,\"name\":\"start\",\"value\":false,\"cycle\":5,\"time\":0.008,\"by\":\"outside\"}\n\n");
  EXPECT_EQ(sut.next(0ms), ": cycle 5\n\n") << "nothing twice";
}

TEST_F(EventStreamTest, AChangeOfAnotherSignalIsNoReasonToSpeak) {
  EventStream sut = watch("10");
  static_cast<void>(sut.next(0ms));
  change(2, 0, true);
  EXPECT_EQ(sut.next(0ms), ": cycle 2\n\n");
}

TEST_F(EventStreamTest, WhatHappenedBetweenTheValuesAndTheFirstReadIsNotLost) {
  EventStream sut = watch("1");
  change(2, 0, true);
  EXPECT_THAT(*sut.next(0ms), testing::HasSubstr("\"value\":false"));
  EXPECT_THAT(*sut.next(0ms), testing::HasSubstr("\"value\":true,\"cycle\":2"));
}

TEST_F(EventStreamTest, SaysHowMuchASlowReaderHasLost) {
  EventStream sut = watch("1");
  static_cast<void>(sut.next(0ms));
  for (std::uint64_t i = 0; i < KEPT_CHANGES + 3; ++i) {
    change(i + 1, 5, i % 2 == 0);
  }
  EXPECT_EQ(sut.next(0ms), "event: lost\ndata: {\"count\":3}\n\n");
}

TEST_F(EventStreamTest, EndsWithTheRun) {
  EventStream sut = watch("1");
  static_cast<void>(sut.next(0ms));
  change(7, 0, true);
  run.end();
  EXPECT_EQ(sut.next(60s),
            "id: 1\nevent: signal\n"
            "data: {\"id\":0,\"name\":null,\"value\":true,\"cycle\":7,\"time\":0.012,\"by\":\"outside\"}\n\n"
            "event: end\ndata: {\"cycle\":7}\n\n");
  EXPECT_EQ(sut.next(60s), std::nullopt);
}

TEST(WatcherSeatsTest, AreAsManyAsThereAre) {
  WatcherSeats sut(2);
  auto first = sut.take();
  const auto second = sut.take();
  EXPECT_NE(first, nullptr);
  EXPECT_NE(second, nullptr);
  EXPECT_EQ(sut.take(), nullptr);
  const auto copy = first;
  first.reset();
  EXPECT_EQ(sut.take(), nullptr) << "somebody still has it";
}

TEST(WatcherSeatsTest, AreFreeAgainWhenTheirWatcherGoes) {
  WatcherSeats sut(1);
  static_cast<void>(sut.take());
  EXPECT_NE(sut.take(), nullptr);
}

std::vector<std::string> readInPieces(const std::string& text, std::size_t size) {
  std::vector<std::string> events;
  EventReader sut([&](const std::string& name, const std::string& data) { events.push_back(name + "|" + data); });
  for (std::size_t i = 0; i < text.size(); i += size) {
    sut.feed(std::string_view(text).substr(i, size));
  }
  return events;
}

TEST(EventReaderTest, FindsEventsHoweverTheyArrive) {
  const std::string text =
      "id: 1\nevent: signal\ndata: {}\n\n: comment\n\nevent:end\r\ndata:x\r\ndata: y\r\n\r\nevent: nothing\n\n";
  for (const std::size_t size : {1U, 2U, 7U, 1000U}) {
    EXPECT_THAT(readInPieces(text, size), ElementsAre("signal|{}", "end|x\ny")) << size;
  }
}

TEST(EventReaderTest, AnEventThatBreaksOffIsNone) {
  EXPECT_TRUE(readInPieces("event: signal\ndata: {}\n", 3).empty());
}

}  // namespace
}  // namespace motion::host::door
