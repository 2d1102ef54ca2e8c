#include "host/door/live_run.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <thread>

#include "host/door/door_limits.h"
#include "host/motion/events.h"

namespace motion::host::door {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;

constexpr std::chrono::milliseconds LONG = 60s;

class LiveRunTest : public testing::Test {
 protected:
  LiveRunTest() {
    record.signalNames.resize(kavo::SIGNAL_COUNT);
    record.objects.resize(1);
    record.objects[0].name = "Feeder";
  }

  void change(std::uint64_t cycle, std::uint32_t signal, bool value, std::uint32_t object = OUTSIDE,
              std::size_t number = 0) {
    record.signals.push_back({cycle, signal, value, object, number});
  }

  /// Lets object 0 wait for a signal.
  void letWait() {
    observe::CmdRecord command;
    command.number = 1;
    command.name = "WaitForSignal";
    command.waits = true;
    command.waitsFor = "signal 7";
    command.signal = 7;
    command.sync.kind = observe::SyncKind::WAITS_SET;
    command.sync.signal = 7;
    command.state = core::cmd::CmdState::ACTIVE;
    command.active = 3;
    record.objects[0].commands.push_back(command);
  }

  observe::RunRecord record;
  LiveRun sut;
};

TEST_F(LiveRunTest, TellsTheCycleThatThePlayerToldIt) {
  EXPECT_EQ(sut.cycle(), 0U);
  sut.look(record, 17);
  EXPECT_EQ(sut.cycle(), 17U);
}

TEST_F(LiveRunTest, NumbersTheChangesAndSaysWhoMadeThem) {
  change(3, 5, true, 0, 2);
  sut.look(record, 3);
  change(4, 5, false);
  sut.look(record, 4);
  const Changes changes = sut.changesAfter(0, 0ms);
  ASSERT_EQ(changes.changes.size(), 2U);
  EXPECT_EQ(changes.changes[0].number, 1U);
  EXPECT_EQ(changes.changes[0].cycle, 3U);
  EXPECT_EQ(changes.changes[0].signal, 5U);
  EXPECT_TRUE(changes.changes[0].value);
  EXPECT_EQ(changes.changes[0].by, "Feeder#2");
  EXPECT_EQ(changes.changes[1].number, 2U);
  EXPECT_FALSE(changes.changes[1].value);
  EXPECT_EQ(changes.changes[1].by, "outside");
  EXPECT_EQ(changes.lost, 0U);
  EXPECT_FALSE(changes.isOver);
}

TEST_F(LiveRunTest, GivesOnlyWhatIsNew) {
  for (std::uint32_t i = 0; i < 5; ++i) {
    change(i + 1, i, true);
  }
  sut.look(record, 5);
  const Changes changes = sut.changesAfter(3, 0ms);
  ASSERT_EQ(changes.changes.size(), 2U);
  EXPECT_EQ(changes.changes[0].number, 4U);
  EXPECT_TRUE(sut.changesAfter(5, 0ms).changes.empty());
}

TEST_F(LiveRunTest, KnowsThePresentValues) {
  change(3, 5, true);
  change(3, 6, true);
  change(4, 5, false);
  sut.look(record, 9);
  const SignalValues values = sut.values();
  EXPECT_EQ(values.number, 3U);
  EXPECT_EQ(values.cycle, 4U);
  EXPECT_FALSE(values.values[5]);
  EXPECT_TRUE(values.values[6]);
}

TEST_F(LiveRunTest, CountsWhatASlowReaderHasLost) {
  constexpr std::uint64_t TOO_MANY = 10;
  for (std::uint64_t i = 0; i < KEPT_CHANGES + TOO_MANY; ++i) {
    change(i + 1, 1, i % 2 == 0);
  }
  sut.look(record, 1);
  const Changes late = sut.changesAfter(0, 0ms);
  EXPECT_EQ(late.lost, TOO_MANY);
  ASSERT_EQ(late.changes.size(), KEPT_CHANGES);
  EXPECT_EQ(late.changes.front().number, TOO_MANY + 1);
  EXPECT_EQ(sut.changesAfter(TOO_MANY - 1, 0ms).lost, 1U);
  EXPECT_EQ(sut.changesAfter(TOO_MANY, 0ms).lost, 0U);
  EXPECT_EQ(sut.changesAfter(TOO_MANY + 1, 0ms).changes.size(), KEPT_CHANGES - 1);
}

TEST_F(LiveRunTest, WakesWhoWaitsForAChange) {
  Changes changes;
  std::thread reader([&] { changes = sut.changesAfter(0, LONG); });
  change(1, 8, true);
  sut.look(record, 1);
  reader.join();
  ASSERT_EQ(changes.changes.size(), 1U);
  EXPECT_EQ(changes.changes[0].signal, 8U);
}

TEST_F(LiveRunTest, TheEndWakesEverybodyAndComesAfterTheLastChange) {
  change(1, 8, true);
  sut.look(record, 1);
  Changes changes;
  std::optional<Explanation> explanation = Explanation();
  std::thread reader([&] { changes = sut.changesAfter(1, LONG); });
  std::thread asker([&] { explanation = sut.explain(LONG); });
  sut.end();
  reader.join();
  asker.join();
  EXPECT_TRUE(changes.isOver);
  EXPECT_TRUE(changes.changes.empty());
  EXPECT_FALSE(explanation);
  EXPECT_TRUE(sut.changesAfter(0, LONG).isOver);
  EXPECT_EQ(sut.changesAfter(0, LONG).changes.size(), 1U);
}

TEST_F(LiveRunTest, ThePlayerExplainsAtItsNextLook) {
  letWait();
  std::optional<Explanation> explanation;
  std::atomic<bool> isAnswered{false};
  std::thread asker([&] {
    explanation = sut.explain(LONG);
    isAnswered = true;
  });
  while (!isAnswered) {
    sut.look(record, 21);
  }
  asker.join();
  ASSERT_TRUE(explanation);
  EXPECT_EQ(explanation->cycle, 21U);
  EXPECT_THAT(explanation->text, HasSubstr("Feeder waits in Feeder#1 WaitForSignal"));
  EXPECT_EQ(nlohmann::json::parse(explanation->waits).at("objects").at(0).at("object"), "Feeder");
}

TEST_F(LiveRunTest, AnAnswerIsNotOlderThanTheQuestion) {
  letWait();
  EXPECT_FALSE(sut.explain(0ms)) << "nobody looks";
  sut.look(record, 1);  // answers the question that nobody waits for any more
  EXPECT_FALSE(sut.explain(0ms));
}

}  // namespace
}  // namespace motion::host::door
