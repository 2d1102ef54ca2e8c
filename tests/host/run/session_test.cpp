#include "host/run/session.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <thread>
#include <vector>

namespace motion::host::run {
namespace {

using testing::HasSubstr;

SessionConfig config(const std::string& bundle) {
  return {bundle, {}, std::chrono::seconds(30), false};
}

/// What a component may leave behind in a host.
struct Footprint {
  std::size_t objects;
  std::size_t commands;
  std::size_t memories;
  std::size_t handles;
  std::size_t providers;
  std::size_t units;

  explicit Footprint(Session& session)
      : objects(session.runtime().objFactory().size()),
        commands(session.runtime().cmdFactory().all().size()),
        memories(session.dataLayer().memoryCount()),
        handles(session.dataLayer().openHandleCount()),
        providers(session.dataLayer().providerCount()),
        units(session.traceService().unitCount()) {}
  bool operator==(const Footprint&) const = default;
};

TEST(Session, StartsAndStopsTheRealBundle) {
  Session sut(config(KAVO_BUNDLE));
  const Footprint before(sut);
  std::string problem;
  ASSERT_TRUE(sut.open(problem)) << problem;
  EXPECT_NE(sut.runtime().records().sysSync.setSignal, nullptr);
  EXPECT_NE(sut.runtime().cmdFactory().find({core::ObjectType::KINEMATICS, "WaitForSignal"}), nullptr);
  EXPECT_FALSE(Footprint(sut) == before);
  ASSERT_TRUE(sut.close(problem)) << problem;
  EXPECT_EQ(sut.runtime().records().sysSync.setSignal, nullptr);
  EXPECT_TRUE(Footprint(sut) == before);
}

TEST(Session, CanBeOpenedAgainAndLeavesNothingBehind) {
  Session sut(config(KAVO_BUNDLE));
  const Footprint before(sut);
  std::string problem;
  for (int life = 0; life < 2; ++life) {
    ASSERT_TRUE(sut.open(problem)) << problem;
    EXPECT_EQ(sut.runtime().records().sysSync.setSignal(nullptr, 7), core::FctResult::Okay);
    bool value = false;
    EXPECT_EQ(sut.runtime().records().sysSync.getSignal(nullptr, 7, value), core::FctResult::Okay);
    EXPECT_TRUE(value);
    ASSERT_TRUE(sut.close(problem)) << problem;
    EXPECT_TRUE(Footprint(sut) == before);
  }
}

TEST(Session, RefusesClientsFromItsCloseToTheNextOpen) {
  constexpr const char* SIGNAL = "motion/state/functions/kavo/signals/05";
  Session sut(config(KAVO_BUNDLE));
  std::string problem;
  ASSERT_TRUE(sut.open(problem)) << problem;
  const auto client = sut.dataLayer().connect({"motion.view"});
  EXPECT_EQ(client->readSync(SIGNAL, nullptr), comm::datalayer::DL_OK);
  ASSERT_TRUE(sut.close(problem)) << problem;
  EXPECT_EQ(client->readSync(SIGNAL, nullptr), comm::datalayer::DL_CLIENT_NOT_CONNECTED);
  EXPECT_TRUE(sut.dataLayer().scopes().identifiers().empty());
  ASSERT_TRUE(sut.open(problem)) << problem;
  EXPECT_EQ(client->readSync(SIGNAL, nullptr), comm::datalayer::DL_OK);
  ASSERT_TRUE(sut.close(problem)) << problem;
}

TEST(Session, ClosesWhileClientsAsk) {
  for (int round = 0; round < 5; ++round) {
    Session sut(config(KAVO_BUNDLE));
    std::string problem;
    ASSERT_TRUE(sut.open(problem)) << problem;
    std::atomic<int> answers{0};
    std::vector<std::thread> threads;
    for (int number = 0; number < 2; ++number) {
      threads.emplace_back([&] {
        const auto client = sut.dataLayer().connect({"motion.operate"});
        comm::datalayer::DlResult result;
        do {
          comm::datalayer::Variant value(true);
          result = client->writeSync("motion/state/functions/kavo/signals/05", &value);
          answers += result == comm::datalayer::DL_OK ? 1 : 0;
        } while (result == comm::datalayer::DL_OK);
        EXPECT_EQ(result, comm::datalayer::DL_CLIENT_NOT_CONNECTED);
      });
    }
    while (answers < 20) {
      std::this_thread::yield();
    }
    EXPECT_TRUE(sut.close(problem)) << problem;
    for (std::thread& thread : threads) {
      thread.join();
    }
  }
}

/// Ends the process with 42 when a session closes as it should although a node never comes back.
[[noreturn]] void closeBesideANodeThatNeverComesBack() {
  SessionConfig stubborn = config(KAVO_BUNDLE);
  stubborn.closeLimit = std::chrono::milliseconds(50);
  Session sut(stubborn);
  std::string problem;
  const bool isOpen = sut.open(problem);
  static std::atomic<bool> s_hasBegun{false};
  sut.runtime().records().sys.setSignal = [](void*, unsigned int) -> core::FctResult {
    s_hasBegun = true;
    for (;;) {
      std::this_thread::sleep_for(std::chrono::seconds(1));
    }
  };
  comm::datalayer::Variant value(true);
  const auto client = sut.dataLayer().connect({"motion.operate"}, std::chrono::milliseconds(50));
  auto written = comm::datalayer::DL_TIMEOUT;
  while (!s_hasBegun && written == comm::datalayer::DL_TIMEOUT) {  // what is given up too early does not begin
    written = client->writeSync("motion/state/functions/kavo/signals/05", &value);
  }
  const bool isFine = isOpen && written == comm::datalayer::DL_TIMEOUT && !sut.close(problem) && sut.isLost() &&
                      problem.find("a node of the component has been asked and never came back") != std::string::npos;
  std::_Exit(isFine ? 42 : 1);
}

TEST(SessionDeathTest, LosesAComponentWhoseNodeNeverComesBack) {
  EXPECT_EXIT(closeBesideANodeThatNeverComesBack(), testing::ExitedWithCode(42), "");
}

TEST(Session, ClosingTakesBackCommandsThatStillRun) {
  Session sut(config(KAVO_BUNDLE));
  std::string problem;
  ASSERT_TRUE(sut.open(problem)) << problem;
  sut.runtime().addObject("A", core::ObjectType::AXIS, {});
  unsigned long id = 0;
  for (const bool autoReset : {false, true}) {
    ASSERT_EQ(sut.runtime().records().cmdGeneral.waitForSignalCmd(&sut.runtime(), {}, "A", 3, autoReset, id),
              core::FctResult::Okay);
  }
  sut.runtime().step();
  EXPECT_EQ(sut.runtime().preparation().alive(), 2U);
  ASSERT_TRUE(sut.close(problem)) << problem;
  EXPECT_EQ(sut.runtime().preparation().alive(), 0U);
}

TEST(Session, RunsInRealTimeWhileOthersWriteSignals) {
  Session sut(config(KAVO_BUNDLE));
  std::string problem;
  ASSERT_TRUE(sut.open(problem)) << problem;
  Runtime& runtime = sut.runtime();
  for (const char* name : {"A", "B"}) {
    runtime.addObject(name, core::ObjectType::AXIS, {});
  }
  const auto& commands = runtime.records().cmdGeneral;
  const auto& signals = runtime.records().sysSync;
  unsigned long id = 0;
  for (unsigned int i = 0; i < 10; ++i) {
    ASSERT_EQ(commands.setSignalCmd(&runtime, {}, "A", i, id), core::FctResult::Okay);
    ASSERT_EQ(commands.resetSignalCmd(&runtime, {}, "A", i, id), core::FctResult::Okay);
    ASSERT_EQ(commands.waitForSignalCmd(&runtime, {}, "B", i, true, id), core::FctResult::Okay);
    ASSERT_EQ(commands.waitForSignalResetCmd(&runtime, {}, "B", i, id), core::FctResult::Okay);
  }
  RealTimePacer pacer(0.001);
  runtime.startThreads(pacer, [](const std::string&) {});
  std::atomic<bool> stop{false};
  std::thread writer([&] {
    for (unsigned int i = 0; !stop; i = (i + 1) % 10) {
      EXPECT_EQ(signals.setSignal(nullptr, i), core::FctResult::Okay);
      bool value = false;
      EXPECT_EQ(signals.getSignal(nullptr, i, value), core::FctResult::Okay);
      EXPECT_EQ(signals.resetSignal(nullptr, i), core::FctResult::Okay);
      std::this_thread::yield();
    }
  });
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (runtime.preparation().alive() > 0 && std::chrono::steady_clock::now() < deadline) {
    // The waiter needs a signal that stays set for a moment.
    for (unsigned int i = 0; i < 10; ++i) {
      EXPECT_EQ(signals.setSignal(nullptr, i), core::FctResult::Okay);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  stop = true;
  writer.join();
  EXPECT_EQ(runtime.preparation().alive(), 0U);
  ASSERT_TRUE(sut.close(problem)) << problem;
}

TEST(Session, KeepsWarningsAndErrorsOfTheComponent) {
  Session sut(config(KAVO_BUNDLE));
  std::string problem;
  ASSERT_TRUE(sut.open(problem)) << problem;
  EXPECT_TRUE(sut.takeMessages().empty());
  EXPECT_EQ(sut.runtime().records().sysSync.setSignal(nullptr, 100), core::FctResult::InvalidParameter);
  EXPECT_EQ(sut.takeMessages(), std::vector<std::string>{"wrong id 100"});
  EXPECT_TRUE(sut.takeMessages().empty());
}

TEST(Session, ExplainsWhyABundleCannotBeOpened) {
  std::string problem;
  EXPECT_FALSE(Session(config("/no/such/bundle")).open(problem));
  EXPECT_THAT(problem, HasSubstr("/no/such/bundle"));
  Session refuses(config(KAVO_TEST_PLUGINS_DIR "/start_fails"));
  EXPECT_FALSE(refuses.open(problem));
  EXPECT_THAT(problem, HasSubstr("70001"));
  EXPECT_FALSE(refuses.isLost());
}

TEST(Session, TellsWhenStoppingFails) {
  Session sut(config(KAVO_TEST_PLUGINS_DIR "/stop_fails"));
  std::string problem;
  ASSERT_TRUE(sut.open(problem)) << problem;
  EXPECT_FALSE(sut.close(problem));
  EXPECT_THAT(problem, HasSubstr("stop"));
  EXPECT_FALSE(sut.isLost());
}

}  // namespace
}  // namespace motion::host::run
