// The component's door for traces: levels, names, switches and the change between the two sinks.
#include "impl/debug_trace.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <functional>
#include <stdexcept>
#include <string>

#include "support/fake_allocation.h"
#include "support/fake_journal.h"
#include "support/fake_trace.h"

namespace motion::kavo {
namespace {

using common::log::trace::EnablingState;
using common::log::trace::ILogRealTime3;
using common::log::trace::LogParameters;
using common::log::trace::TraceResult;
using sut = DebugTrace;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

constexpr std::uint32_t REFUSAL = 0x80000005;

class DebugTraceTest : public testing::Test {
 protected:
  ~DebugTraceTest() override {
    sut::setTraceEnablingState({});
    sut::removeTraceBundle(&m_service);
  }

  void registerUnit() {
    sut::addTraceBundle(&m_service);
    m_sink.clear();
    m_calls.clear();
  }

  test::FakeCalls m_calls;
  test::FakeTraceSink m_sink;
  test::FakeTraceService m_service{m_calls, m_sink};
  test::FakeJournal m_journal;
};

struct LevelCase {
  TraceType type;
  std::uint32_t mainCode;
};

class DebugTraceLevelTest : public DebugTraceTest, public testing::WithParamInterface<LevelCase> {};

TEST_P(DebugTraceLevelTest, HandsTheSinkACompleteRecord) {
  registerUnit();
  sut::doTrace(GetParam().type, "src/impl/a_unit", "aFunction", 77, "%s has %d", "a text", 5);
  ASSERT_EQ(m_sink.entries().size(), 1U);
  const auto entry = m_sink.entries()[0];
  EXPECT_EQ(entry.mainCode, GetParam().mainCode);
  EXPECT_EQ(entry.classType, 1U);
  EXPECT_EQ(entry.entity, std::nullopt);
  EXPECT_EQ(entry.origin, "motion.kavo");
  EXPECT_EQ(entry.file, "a_unit");
  EXPECT_EQ(entry.function, "aFunction");
  EXPECT_EQ(entry.line, 77U);
  EXPECT_EQ(entry.format, "%s has %d");
  EXPECT_EQ(entry.text, "a text has 5");
}

TEST(TraceTypeTest, HasItsNumbers) {
  EXPECT_EQ(static_cast<std::uint32_t>(TraceType::Info), 0U);
  EXPECT_EQ(static_cast<std::uint32_t>(TraceType::Warning), 1U);
  EXPECT_EQ(static_cast<std::uint32_t>(TraceType::Error), 2U);
}

INSTANTIATE_TEST_SUITE_P(All, DebugTraceLevelTest,
                         testing::Values(LevelCase{TraceType::Info, 0x090A0FFC}, LevelCase{TraceType::Warning, 0x090E0FFC},
                                         LevelCase{TraceType::Error, 0x090F0FFC},
                                         LevelCase{static_cast<TraceType>(0), 0x090A0FFC},
                                         LevelCase{static_cast<TraceType>(1), 0x090E0FFC},
                                         LevelCase{static_cast<TraceType>(2), 0x090F0FFC},
                                         LevelCase{static_cast<TraceType>(5), 0x090F0FFC},
                                         LevelCase{static_cast<TraceType>(0xFFFFFFFF), 0x090F0FFC}));

struct FileCase {
  const char* path;
  const char* name;
};

class DebugTraceFileTest : public DebugTraceTest, public testing::WithParamInterface<FileCase> {};

TEST_P(DebugTraceFileTest, ShortensThePathToItsBaseName) {
  registerUnit();
  sut::doTrace(TraceType::Info, GetParam().path, "aFunction", 1, "%s", "text");
  ASSERT_EQ(m_sink.entries().size(), 1U);
  EXPECT_EQ(m_sink.entries()[0].file, GetParam().name);
}

INSTANTIATE_TEST_SUITE_P(All, DebugTraceFileTest,
                         testing::Values(FileCase{"src/impl/a_unit", "a_unit"}, FileCase{"a/b\\c.x", "c.x"},
                                         FileCase{"a\\b/c.x", "c.x"}, FileCase{"/c.x", "/c.x"}, FileCase{"\\c.x", "\\c.x"},
                                         FileCase{"//c.x", "c.x"}, FileCase{"/a/c.x", "c.x"}, FileCase{"c.x", "c.x"},
                                         FileCase{"a/", ""}, FileCase{"/", "/"}, FileCase{"", ""}));

TEST_F(DebugTraceTest, LeavesANullFileNull) {
  registerUnit();
  sut::doTrace(TraceType::Info, nullptr, "aFunction", 1, "%s", "text");
  ASSERT_EQ(m_sink.entries().size(), 1U);
  EXPECT_EQ(m_sink.entries()[0].file, std::nullopt);
}

struct SwitchCase {
  EnablingState state;
  std::vector<std::string> levels;
};

class DebugTraceSwitchTest : public DebugTraceTest, public testing::WithParamInterface<SwitchCase> {};

TEST_P(DebugTraceSwitchTest, WritesOnlyTheLevelsThatAreOn) {
  registerUnit();
  sut::setTraceEnablingState(GetParam().state);
  EXPECT_EQ(sut::getTraceEnablingState().info, GetParam().state.info);
  EXPECT_EQ(sut::getTraceEnablingState().warning, GetParam().state.warning);
  EXPECT_EQ(sut::getTraceEnablingState().error, GetParam().state.error);
  sut::doTrace(TraceType::Info, "a", "f", 1, "%s", "text");
  sut::doTrace(TraceType::Warning, "a", "f", 1, "%s", "text");
  sut::doTrace(TraceType::Error, "a", "f", 1, "%s", "text");
  std::vector<std::string> levels;
  for (const auto& entry : m_sink.entries()) {
    levels.push_back(entry.level());
  }
  EXPECT_EQ(levels, GetParam().levels);
}

INSTANTIATE_TEST_SUITE_P(All, DebugTraceSwitchTest,
                         testing::Values(SwitchCase{{true, true, true}, {"Info", "Warning", "Error"}},
                                         SwitchCase{{false, true, true}, {"Warning", "Error"}},
                                         SwitchCase{{true, false, true}, {"Info", "Error"}},
                                         SwitchCase{{true, true, false}, {"Info", "Warning"}},
                                         SwitchCase{{false, false, false}, {}}));

TEST_F(DebugTraceTest, TreatsAnUnknownLevelAsErrorAtTheSwitchesToo) {
  registerUnit();
  sut::setTraceEnablingState({true, true, false});
  sut::doTrace(static_cast<TraceType>(5), "a", "f", 1, "%s", "text");
  EXPECT_THAT(m_sink.entries(), IsEmpty());
}

TEST_F(DebugTraceTest, AllocatesNothing) {
  registerUnit();
  const test::AllocationCount count;
  sut::doTrace(TraceType::Error, "src/impl/a_unit", "aFunction", 77, "%s has %d", "a text", 5);
  sut::setTraceEnablingState({true, true, false});
  sut::doTrace(TraceType::Error, "src/impl/a_unit", "aFunction", 77, "%s has %d", "a text", 5);
  EXPECT_EQ(count.get(), 0);
  EXPECT_EQ(m_sink.entries().size(), 1U);
}

TEST_F(DebugTraceTest, WritesToTheBufferedSinkUntilAUnitIsRegistered) {
  EXPECT_EQ(sut::getTrace(), sut::getBufferedTrace());
  sut::doTrace(TraceType::Warning, "src/impl/a_unit", "aFunction", 77, "%s has %d", "a text", 5);
  EXPECT_THAT(m_journal.summaries(), ElementsAre("090E0FFC a_unit aFunction: a text has 5"));
  EXPECT_EQ(m_journal.entries()[0].at("R_ORIGIN"), "motion.kavo");
  EXPECT_EQ(m_journal.entries()[0].at("CODE_LINE"), "77");
  EXPECT_THAT(m_journal.entries()[0].at("MESSAGE"), testing::HasSubstr("|motion.kavo|motion.kavo|a_unit|"));
}

TEST_F(DebugTraceTest, UsesTheSinkOfTheTraceServiceOnceItIsRegistered) {
  sut::addTraceBundle(&m_service);
  EXPECT_THAT(m_calls.all(), ElementsAre("trace.registerUnit(motion.kavo)"));
  EXPECT_EQ(sut::getTrace(), &m_sink);
  ILogRealTime3* const sink = &m_sink;
  const auto address = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(sink));
  EXPECT_THAT(m_sink.summaries(),
              ElementsAre(fmt::format("Info debug_trace addTraceBundle: Registered trace from bundle with pointer 0x{:08X}.",
                                      address)));
  EXPECT_EQ(m_sink.entries()[0].format, "Registered trace from bundle with pointer 0x%08X.");
  EXPECT_THAT(m_journal.entries(), IsEmpty());
}

TEST_F(DebugTraceTest, TakesItsSwitchesFromTheTraceService) {
  registerUnit();
  m_service.m_callback(EnablingState{false, true, false});
  EXPECT_FALSE(sut::getTraceEnablingState().info);
  EXPECT_TRUE(sut::getTraceEnablingState().warning);
  EXPECT_FALSE(sut::getTraceEnablingState().error);
  m_service.m_callback(EnablingState{true, false, true});
  EXPECT_TRUE(sut::getTraceEnablingState().info);
  EXPECT_FALSE(sut::getTraceEnablingState().warning);
  EXPECT_TRUE(sut::getTraceEnablingState().error);
}

TEST_F(DebugTraceTest, KeepsItsSwitchesWhenTheTraceServiceLeaves) {
  registerUnit();
  m_service.m_callback(EnablingState{false, true, false});
  sut::removeTraceBundle(&m_service);
  EXPECT_FALSE(sut::getTraceEnablingState().info);
  EXPECT_TRUE(sut::getTraceEnablingState().warning);
  EXPECT_FALSE(sut::getTraceEnablingState().error);
  EXPECT_THAT(m_journal.entries(), IsEmpty()) << "the farewell is an info";
  sut::addTraceBundle(&m_service);
  EXPECT_FALSE(sut::getTraceEnablingState().info);
  EXPECT_THAT(m_sink.entries(), IsEmpty());
}

TEST_F(DebugTraceTest, StaysWithTheBufferedSinkWhenRegisteringFails) {
  m_calls.fail("trace.registerUnit", REFUSAL);
  sut::addTraceBundle(&m_service);
  EXPECT_EQ(sut::getTrace(), sut::getBufferedTrace());
  EXPECT_THAT(m_sink.entries(), IsEmpty());
  EXPECT_THAT(m_journal.summaries(),
              ElementsAre("090F0FFC debug_trace addTraceBundle: Calling 'registerUnit' failed with error code 0x80000005, "
                          "so continue using buffered trace."));
}

/// Counts its calls and looks at nothing that it is given.
class CountingSink : public ILogRealTime3 {
 public:
  TraceResult logRealTime(unsigned int /*mainDiagnosisCode*/, const LogParameters* /*parameters*/, ...) override {
    ++m_calls;
    return TraceResult::Ok;
  }
  TraceResult logRealTimeVaList(unsigned int /*mainDiagnosisCode*/, const LogParameters* /*parameters*/,
                                std::va_list /*arguments*/) override {
    ++m_calls;
    return TraceResult::Ok;
  }

  int m_calls = 0;
};

/// Throws whatever it is given.
class ThrowingSink : public CountingSink {
 public:
  TraceResult logRealTimeVaList(unsigned int mainDiagnosisCode, const LogParameters* parameters,
                                std::va_list arguments) override {
    (void)CountingSink::logRealTimeVaList(mainDiagnosisCode, parameters, arguments);
    throw std::runtime_error("planned failure");
  }
};

/// Writes its sink even when it then fails, or writes none when it does not.
class OddTraceService : public test::FakeTraceService {
 public:
  OddTraceService(test::FakeCalls& calls, test::FakeTraceSink& any, ILogRealTime3* sink, std::int32_t result)
      : FakeTraceService(calls, any), m_oddSink(sink), m_result(result) {}
  std::int32_t registerUnit(ILogRealTime3** sink, const char* /*unitName*/, const EnablingCallback& /*callback*/) override {
    *sink = m_oddSink;
    if (m_afterSink) {
      m_afterSink();
    }
    return m_result;
  }

  std::function<void()> m_afterSink;  ///< runs once the sink is written

 private:
  ILogRealTime3* m_oddSink;
  std::int32_t m_result;
};

TEST_F(DebugTraceTest, GoesBackToTheBufferedSinkWhenAFailingServiceWroteASink) {
  OddTraceService service(m_calls, m_sink, &m_sink, -7);
  sut::addTraceBundle(&service);
  EXPECT_EQ(sut::getTrace(), sut::getBufferedTrace());
  EXPECT_THAT(m_sink.entries(), IsEmpty());
  EXPECT_THAT(m_journal.summaries(),
              ElementsAre("090F0FFC debug_trace addTraceBundle: Calling 'registerUnit' failed with error code 0xFFFFFFF9, "
                          "so continue using buffered trace."));
}

TEST_F(DebugTraceTest, WritesNothingWithoutASink) {
  OddTraceService service(m_calls, m_sink, nullptr, 0);
  sut::addTraceBundle(&service);
  sut::doTrace(TraceType::Error, "a", "f", 1, "%s", "text");
  EXPECT_EQ(sut::getTrace(), nullptr);
  EXPECT_THAT(m_journal.entries(), IsEmpty());
}

TEST_F(DebugTraceTest, TakesANonNegativeResultForSuccess) {
  OddTraceService service(m_calls, m_sink, &m_sink, 1);
  sut::addTraceBundle(&service);
  EXPECT_EQ(sut::getTrace(), &m_sink);
}

TEST_F(DebugTraceTest, LeavesTheTextToTheSink) {
  // Whoever reads this text crashes.
  const char* const unreadable = reinterpret_cast<const char*>(1);
  CountingSink sink;
  OddTraceService service(m_calls, m_sink, &sink, 0);
  sut::addTraceBundle(&service);
  sink.m_calls = 0;
  sut::doTrace(TraceType::Info, "a", "f", 1, "%s", unreadable);
  EXPECT_EQ(sink.m_calls, 1);
  sut::setTraceEnablingState({false, false, false});
  for (const auto type : {TraceType::Info, TraceType::Warning, TraceType::Error}) {
    sut::doTrace(type, unreadable, unreadable, 1, "%s", unreadable);
  }
  EXPECT_EQ(sink.m_calls, 1) << "with the level off nobody looks at anything";
}

TEST_F(DebugTraceTest, SurvivesAnExceptionOfTheSink) {
  ThrowingSink sink;
  OddTraceService service(m_calls, m_sink, &sink, 0);
  sut::addTraceBundle(&service);
  sut::doTrace(TraceType::Error, "a", "f", 1, "%s", "text");
  EXPECT_EQ(sink.m_calls, 2);
  EXPECT_EQ(sut::getTrace(), &sink);
}

TEST_F(DebugTraceTest, HandsTheServiceItsOwnSinkToWrite) {
  OddTraceService service(m_calls, m_sink, &m_sink, 0);
  service.m_afterSink = [] { sut::doTrace(TraceType::Info, "a", "f", 1, "%s", "during registration"); };
  sut::addTraceBundle(&service);
  EXPECT_THAT(m_sink.summaries(),
              ElementsAre("Info a f: during registration", StartsWith("Info debug_trace addTraceBundle: Registered trace")));
  EXPECT_THAT(m_journal.entries(), IsEmpty());
}

TEST_F(DebugTraceTest, TakesAnExceptionForAFailureToRegister) {
  const std::string expected =
      "090F0FFC debug_trace addTraceBundle: Calling 'registerUnit' failed with error code 0xFFFFFFFF, so continue using "
      "buffered trace.";
  m_calls.fail("trace.registerUnit", test::FakeCalls::THROW);
  sut::addTraceBundle(&m_service);
  EXPECT_EQ(sut::getTrace(), sut::getBufferedTrace());
  EXPECT_THAT(m_journal.summaries(), ElementsAre(expected));

  OddTraceService service(m_calls, m_sink, &m_sink, 0);
  service.m_afterSink = [] { throw std::runtime_error("planned failure"); };
  sut::addTraceBundle(&service);
  EXPECT_EQ(sut::getTrace(), sut::getBufferedTrace()) << "though a sink was written";
  EXPECT_THAT(m_journal.summaries(), ElementsAre(expected, expected));
  EXPECT_THAT(m_sink.entries(), IsEmpty());
}

TEST_F(DebugTraceTest, LeavesTheSinkOfOneServiceWhenAnotherOneFails) {
  registerUnit();
  test::FakeTraceSink otherSink;
  OddTraceService other(m_calls, otherSink, &m_sink, -7);
  sut::addTraceBundle(&other);
  EXPECT_EQ(sut::getTrace(), sut::getBufferedTrace());
  EXPECT_THAT(m_journal.summaries(), ElementsAre(StartsWith("090F0FFC debug_trace addTraceBundle: Calling 'registerUnit' "
                                                            "failed with error code 0xFFFFFFF9")));
  EXPECT_THAT(m_sink.entries(), IsEmpty());
}

TEST_F(DebugTraceTest, RefusesNoServiceAndKeepsItsSink) {
  sut::addTraceBundle(nullptr);
  EXPECT_THAT(m_journal.summaries(), ElementsAre("090F0FFC debug_trace addTraceBundle: registration is NULL"));
  EXPECT_EQ(sut::getTrace(), sut::getBufferedTrace());
  registerUnit();
  sut::addTraceBundle(nullptr);
  EXPECT_THAT(m_sink.summaries(), ElementsAre("Error debug_trace addTraceBundle: registration is NULL"));
  EXPECT_EQ(m_sink.entries()[0].format, "%s");
  EXPECT_EQ(sut::getTrace(), &m_sink);
}

TEST_F(DebugTraceTest, LeavesTheSinkOfAServiceThatNobodyNames) {
  registerUnit();
  sut::removeTraceBundle(nullptr);
  EXPECT_EQ(sut::getTrace(), sut::getBufferedTrace());
  EXPECT_THAT(m_journal.summaries(), ElementsAre("090F0FFC debug_trace removeTraceBundle: registration is NULL"));
  EXPECT_THAT(m_sink.entries(), IsEmpty());
  EXPECT_THAT(m_calls.all(), IsEmpty());
  sut::removeTraceBundle(nullptr);
  EXPECT_EQ(m_journal.entries().size(), 1U) << "nothing happens while the buffered sink is current";
}

TEST_F(DebugTraceTest, SwitchesToTheBufferedSinkBeforeItGivesTheOldOneBack) {
  registerUnit();
  const ILogRealTime3* duringUnregister = nullptr;
  m_service.m_onUnregister = [&duringUnregister] { duringUnregister = sut::getTrace(); };
  sut::removeTraceBundle(&m_service);
  EXPECT_EQ(duringUnregister, sut::getBufferedTrace());
  EXPECT_EQ(m_service.m_returned, &m_sink);
  EXPECT_EQ(sut::getTrace(), sut::getBufferedTrace());
  EXPECT_THAT(m_calls.all(), ElementsAre("trace.unregisterUnit()"));
  EXPECT_THAT(m_sink.entries(), IsEmpty());
  EXPECT_THAT(m_journal.summaries(), ElementsAre("090A0FFC debug_trace removeTraceBundle: Removed trace from bundle."));
}

TEST_F(DebugTraceTest, TracesAFailureToUnregisterAndLeavesAllTheSame) {
  registerUnit();
  m_calls.fail("trace.unregisterUnit", REFUSAL);
  sut::removeTraceBundle(&m_service);
  EXPECT_EQ(sut::getTrace(), sut::getBufferedTrace());
  EXPECT_THAT(
      m_journal.summaries(),
      ElementsAre("090F0FFC debug_trace removeTraceBundle: Calling 'unregisterUnit' failed with error code 0x80000005.",
                  "090A0FFC debug_trace removeTraceBundle: Removed trace from bundle."));
}

TEST_F(DebugTraceTest, TakesAnExceptionForAFailureToUnregister) {
  registerUnit();
  m_calls.fail("trace.unregisterUnit", test::FakeCalls::THROW);
  sut::removeTraceBundle(&m_service);
  EXPECT_EQ(sut::getTrace(), sut::getBufferedTrace());
  EXPECT_THAT(
      m_journal.summaries(),
      ElementsAre("090F0FFC debug_trace removeTraceBundle: Calling 'unregisterUnit' failed with error code 0xFFFFFFFF.",
                  "090A0FFC debug_trace removeTraceBundle: Removed trace from bundle."));
}

TEST_F(DebugTraceTest, RemovesOnlyOnce) {
  registerUnit();
  sut::removeTraceBundle(&m_service);
  sut::removeTraceBundle(&m_service);
  EXPECT_THAT(m_calls.all(), ElementsAre("trace.unregisterUnit()"));
  EXPECT_EQ(m_journal.entries().size(), 1U);
}

TEST_F(DebugTraceTest, RemovesNothingThatWasNeverAdded) {
  sut::removeTraceBundle(&m_service);
  EXPECT_THAT(m_calls.all(), IsEmpty());
  EXPECT_THAT(m_journal.entries(), IsEmpty());
}

TEST_F(DebugTraceTest, CanBeRegisteredAgain) {
  registerUnit();
  sut::removeTraceBundle(&m_service);
  sut::addTraceBundle(&m_service);
  EXPECT_EQ(sut::getTrace(), &m_sink);
  EXPECT_THAT(m_sink.summaries(), ElementsAre(StartsWith("Info debug_trace addTraceBundle: Registered trace")));
}

}  // namespace
}  // namespace motion::kavo
