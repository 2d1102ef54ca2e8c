// The trace service: units, level switches, and several threads that trace at once.
#include "host/trace/trace_service.h"

#include <gmock/gmock.h>

#include <atomic>
#include <barrier>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "recording_writer.h"
#include "support/fake_allocation.h"

namespace motion::host::trace {
namespace {

using common::log::trace::EnablingState;
using common::log::trace::ILogRealTime3;
using common::log::trace::LogParametersExtended;
using common::log::trace::TraceResult;
using test::Recording;
using test::RecordingWriter;
using testing::ElementsAre;

constexpr unsigned int CODE = 0x090A0FFC;
constexpr std::int32_t OK = static_cast<std::int32_t>(RegistrationResult::OK);

std::int32_t number(RegistrationResult result) {
  return static_cast<std::int32_t>(result);
}

/// The switches as text: a letter for each level that is on.
std::string lettersOf(const EnablingState& state) {
  return std::string(state.info ? "I" : "") + (state.warning ? "W" : "") + (state.error ? "E" : "");
}

class TraceServiceTest : public testing::Test {
 protected:
  std::int32_t registerUnit(const char* name = "unit") {
    return m_sut->registerUnit(&m_sink, name, [this](const EnablingState& state) { m_told.push_back(lettersOf(state)); });
  }
  static TraceResult trace(ILogRealTime3& sink, const std::string& text) {
    LogParametersExtended record;
    record.format = "%s";
    return sink.logRealTime(CODE, &record, text.c_str());
  }

  Recording m_recording;
  std::unique_ptr<TraceService> m_sut =
      std::make_unique<TraceService>(std::make_unique<RecordingWriter>(m_recording), TraceServiceConfig{64});
  ILogRealTime3* m_sink = nullptr;
  std::vector<std::string> m_told;
};

TEST_F(TraceServiceTest, RegisteredUnitTraces) {
  auto& sut = *m_sut;
  ASSERT_EQ(registerUnit(), OK);
  ASSERT_NE(m_sink, nullptr);
  EXPECT_EQ(sut.unitCount(), 1U);
  EXPECT_EQ(trace(*m_sink, "text"), TraceResult::Ok);
  sut.flush();
  ASSERT_THAT(m_recording.texts(), ElementsAre("text"));
  EXPECT_STREQ(m_recording.entries()[0].unitName.data(), "unit");
}

TEST_F(TraceServiceTest, RefusedRegistrationLeavesTheSinkAsItWas) {
  auto& sut = *m_sut;
  UnitSink* const before = reinterpret_cast<UnitSink*>(this);
  m_sink = before;
  EXPECT_EQ(registerUnit(nullptr), number(RegistrationResult::INVALID_ARGUMENT));
  EXPECT_EQ(registerUnit(""), number(RegistrationResult::INVALID_ARGUMENT));
  EXPECT_EQ(sut.registerUnit(nullptr, "unit", {}), number(RegistrationResult::INVALID_ARGUMENT));
  ILogRealTime3* first = nullptr;
  ASSERT_EQ(sut.registerUnit(&first, "unit", {}), OK);
  EXPECT_EQ(registerUnit("unit"), number(RegistrationResult::ALREADY_REGISTERED));
  EXPECT_EQ(sut.registerUnit(&m_sink, "other", [](const EnablingState&) { throw std::runtime_error("broken"); }),
            number(RegistrationResult::CALLBACK_FAILED));
  EXPECT_EQ(m_sink, before);
  EXPECT_TRUE(m_told.empty());
  EXPECT_EQ(sut.unitCount(), 1U);
}

TEST_F(TraceServiceTest, FailuresAreNegative) {
  for (const auto result :
       {RegistrationResult::INVALID_ARGUMENT, RegistrationResult::ALREADY_REGISTERED, RegistrationResult::UNKNOWN_SINK,
        RegistrationResult::OUT_OF_MEMORY, RegistrationResult::CALLBACK_FAILED}) {
    EXPECT_LT(number(result), 0);
  }
  EXPECT_EQ(OK, 0);
}

TEST_F(TraceServiceTest, FailedAllocationRegistersNothing) {
  auto& sut = *m_sut;
  const char* const name = "a unit whose name needs an allocation of its own";
  int count = 1;
  for (bool hasFailed = true; hasFailed; ++count) {
    std::int32_t result = OK;
    hasFailed = motion::test::failsDuring(count, [&] { result = sut.registerUnit(&m_sink, name, {}); });
    ASSERT_EQ(result, hasFailed ? number(RegistrationResult::OUT_OF_MEMORY) : OK) << count;
    ASSERT_EQ(m_sink == nullptr, hasFailed) << count;
    ASSERT_EQ(sut.unitCount(), hasFailed ? 0U : 1U) << count;
  }
  EXPECT_GT(count, 4) << "name, place in the map, sink";
  std::int32_t result = OK;
  ASSERT_TRUE(
      motion::test::failsDuring(1, [&] { result = sut.setLevels("another unit whose name needs an allocation", {}); }));
  EXPECT_EQ(result, number(RegistrationResult::OUT_OF_MEMORY));
}

TEST_F(TraceServiceTest, UnregisteringGivesTheSinkBack) {
  auto& sut = *m_sut;
  ASSERT_EQ(registerUnit(), OK);
  ILogRealTime3* const late = m_sink;
  EXPECT_EQ(trace(*m_sink, "before"), TraceResult::Ok);
  EXPECT_EQ(sut.unregisterUnit(&m_sink), OK);
  EXPECT_EQ(m_sink, nullptr);
  EXPECT_EQ(sut.unitCount(), 0U);
  EXPECT_EQ(trace(*late, "late"), TraceResult::Disabled);
  sut.flush();
  EXPECT_THAT(m_recording.texts(), ElementsAre("before"));
}

TEST_F(TraceServiceTest, OnlySinksOfRegisteredUnitsAreKnown) {
  auto& sut = *m_sut;
  EnablingState state;
  ILogRealTime3* none = nullptr;
  EXPECT_EQ(sut.unregisterUnit(nullptr), number(RegistrationResult::INVALID_ARGUMENT));
  EXPECT_EQ(sut.unregisterUnit(&none), number(RegistrationResult::UNKNOWN_SINK));
  EXPECT_EQ(sut.getEnablingState(nullptr, state), number(RegistrationResult::UNKNOWN_SINK));
  ASSERT_EQ(registerUnit(), OK);
  TraceService other(nullptr);
  ILogRealTime3* sink = m_sink;
  EXPECT_EQ(other.unregisterUnit(&sink), number(RegistrationResult::UNKNOWN_SINK));
  EXPECT_EQ(sink, m_sink) << "left as it was";
  EXPECT_EQ(other.getEnablingState(m_sink, state), number(RegistrationResult::UNKNOWN_SINK));
  ASSERT_EQ(sut.unregisterUnit(&m_sink), OK);
  EXPECT_EQ(sut.unregisterUnit(&sink), number(RegistrationResult::UNKNOWN_SINK));
  EXPECT_EQ(sut.getEnablingState(sink, state), number(RegistrationResult::UNKNOWN_SINK));
}

TEST_F(TraceServiceTest, UnitMayComeBack) {
  auto& sut = *m_sut;
  ASSERT_EQ(registerUnit(), OK);
  ILogRealTime3* const first = m_sink;
  ASSERT_EQ(sut.unregisterUnit(&m_sink), OK);
  ASSERT_EQ(registerUnit(), OK);
  EXPECT_EQ(m_sink, first) << "sinks do not pile up";
  EXPECT_EQ(trace(*m_sink, "again"), TraceResult::Ok);
}

TEST_F(TraceServiceTest, UnitIsToldItsSwitches) {
  auto& sut = *m_sut;
  ASSERT_EQ(registerUnit(), OK);
  EXPECT_THAT(m_told, ElementsAre("IWE"));
  EXPECT_EQ(sut.setLevels("unit", {false, true, true}), OK);
  EXPECT_EQ(sut.setLevels("unit", {true, false, false}), OK);
  EXPECT_EQ(sut.setLevels("other", {false, false, false}), OK);
  EXPECT_THAT(m_told, ElementsAre("IWE", "WE", "I"));
  ASSERT_EQ(sut.unregisterUnit(&m_sink), OK);
  EXPECT_EQ(sut.setLevels("unit", {false, false, true}), OK);
  EXPECT_EQ(m_told.size(), 3U) << "told after it was gone";
}

TEST_F(TraceServiceTest, SwitchesAreRememberedForLaterUnits) {
  auto& sut = *m_sut;
  EXPECT_EQ(sut.setLevels("unit", {false, true, false}), OK);
  EXPECT_EQ(sut.setLevels("", {false, true, false}), number(RegistrationResult::INVALID_ARGUMENT));
  EXPECT_EQ(sut.unitCount(), 0U);
  ASSERT_EQ(registerUnit(), OK);
  EXPECT_THAT(m_told, ElementsAre("W"));
  EnablingState state;
  EXPECT_EQ(sut.getEnablingState(m_sink, state), OK);
  EXPECT_EQ(lettersOf(state), "W");
  ASSERT_EQ(sut.unregisterUnit(&m_sink), OK);
  ASSERT_EQ(registerUnit(), OK);
  EXPECT_THAT(m_told, ElementsAre("W", "W")) << "also when it comes back";
}

TEST_F(TraceServiceTest, CallbackThatThrowsLeavesTheSwitchesSet) {
  auto& sut = *m_sut;
  const auto throwWithoutInfo = [](const EnablingState& state) {
    if (!state.info) {
      throw std::runtime_error("broken");
    }
  };
  ASSERT_EQ(sut.registerUnit(&m_sink, "unit", throwWithoutInfo), OK);
  EXPECT_EQ(sut.setLevels("unit", {false, true, true}), number(RegistrationResult::CALLBACK_FAILED));
  EnablingState state;
  EXPECT_EQ(sut.getEnablingState(m_sink, state), OK);
  EXPECT_EQ(lettersOf(state), "WE");
}

TEST_F(TraceServiceTest, CallbackMayAskForTheSwitchesAndTrace) {
  auto& sut = *m_sut;
  std::optional<std::string> asked;
  ASSERT_EQ(sut.registerUnit(&m_sink, "unit",
                             [&](const EnablingState&) {
                               EnablingState state;
                               if (m_sink != nullptr && sut.getEnablingState(m_sink, state) == OK) {
                                 asked = lettersOf(state);
                                 trace(*m_sink, "told");
                               }
                             }),
            OK);
  EXPECT_EQ(sut.setLevels("unit", {true, false, true}), OK);
  EXPECT_EQ(asked, "IE");
  sut.flush();
  EXPECT_THAT(m_recording.texts(), ElementsAre("told"));
}

TEST_F(TraceServiceTest, EndWritesWhatWasTaken) {
  ASSERT_EQ(registerUnit(), OK);
  trace(*m_sink, "a");
  trace(*m_sink, "b");
  m_sut.reset();
  EXPECT_THAT(m_recording.texts(), ElementsAre("a", "b"));
}

TEST_F(TraceServiceTest, SeveralThreadsTraceThroughOneRing) {
  constexpr int THREADS = 4;
  constexpr int PER_THREAD = 1000;
  auto& sut = *m_sut;
  std::map<std::string, int> heard;
  sut.addListener([&](const TraceEntry& entry) {
    if (std::string(entry.unitName.data()) != EntryPump::DROP_REPORT_UNIT) {
      ++heard[entry.unitName.data()];
    }
  });
  std::barrier start(THREADS);
  std::map<std::string, int> accepted;
  std::mutex acceptedMutex;
  std::vector<std::thread> threads;
  for (int i = 0; i < THREADS; ++i) {
    threads.emplace_back([&, name = "unit" + std::to_string(i)] {
      ILogRealTime3* sink = nullptr;
      EXPECT_EQ(sut.registerUnit(&sink, name.c_str(), {}), OK);
      start.arrive_and_wait();
      int count = 0;
      for (int k = 0; k < PER_THREAD; ++k) {
        count += trace(*sink, std::to_string(k)) == TraceResult::Ok ? 1 : 0;
        if (k % 50 == 0) {
          sut.flush();
        }
      }
      EXPECT_EQ(sut.unregisterUnit(&sink), OK);
      const std::lock_guard lock(acceptedMutex);
      accepted[name] = count;
    });
  }
  for (auto& thread : threads) {
    thread.join();
  }
  sut.flush();
  EXPECT_EQ(heard, accepted);
}

TEST_F(TraceServiceTest, UnitLeavesWhileAnotherThreadTraces) {
  auto& sut = *m_sut;
  for (int round = 0; round < 50; ++round) {
    ASSERT_EQ(registerUnit(), OK);
    std::atomic<bool> hasTraced{false};
    std::thread tracer([&hasTraced, sink = m_sink] {
      while (trace(*sink, "text") != TraceResult::Disabled) {
        hasTraced = true;
      }
    });
    while (!hasTraced) {
      std::this_thread::yield();
    }
    ASSERT_EQ(sut.unregisterUnit(&m_sink), OK);
    tracer.join();
  }
  sut.flush();
  EXPECT_GE(m_recording.texts().size(), 50U);
}

TEST_F(TraceServiceTest, SwitchesChangeFromSeveralThreads) {
  auto& sut = *m_sut;
  ASSERT_EQ(registerUnit(), OK);
  std::vector<std::thread> threads;
  for (const bool info : {true, false}) {
    threads.emplace_back([&sut, info, sink = m_sink] {
      for (int i = 0; i < 200; ++i) {
        EXPECT_EQ(sut.setLevels("unit", {info, true, true}), OK);
        EnablingState state;
        EXPECT_EQ(sut.getEnablingState(sink, state), OK);
      }
    });
  }
  for (auto& thread : threads) {
    thread.join();
  }
  EnablingState state;
  ASSERT_EQ(sut.getEnablingState(m_sink, state), OK);
  EXPECT_EQ(m_told.size(), 401U);
  EXPECT_EQ(m_told.back(), lettersOf(state)) << "the unit was told another state last";
}

}  // namespace
}  // namespace motion::host::trace
