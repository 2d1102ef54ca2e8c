// The signals as the system functions see them.
#include "impl/signals.h"

#include <optional>
#include <thread>

#include "impl_fixture.h"
#include "signals_mutex.h"

namespace motion::kavo {
namespace {

using core::FctResult;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::uint32_t REFUSAL = 0x80060005;
constexpr std::uint32_t ID = 5;
const std::string OPEN_OUT = "dataLayer.openMemory(motion/state/functions/kavo/rt-data/signals_out)";
const std::string OPEN_IN = "dataLayer.openMemory(motion/state/functions/kavo/rt-data/signals_in)";
const std::string BEGIN_OUT = "memory.beginAccess signals_out(0)";
const std::string BEGIN_IN = "memory.beginAccess signals_in(0)";
const std::string END_OUT = "memory.endAccess signals_out()";
const std::string END_IN = "memory.endAccess signals_in()";
const std::string NOT_OPENED = "Error signals Signals: Failed to open memory to real-time signals";
const std::string NOT_OPEN = "Error signals beginAccess: Failed to open rt-dataLayer memory during construction";

class SignalsTest : public SignalTest {
 protected:
  ~SignalsTest() override {
    EXPECT_EQ(openAccesses(), 0);
    EXPECT_EQ(m_host.dataLayer.m_openUsers, 0);
  }
};

TEST_F(SignalsTest, OpensBothMemories) {
  const Signals sut(m_host.dataLayer);
  EXPECT_THAT(m_host.calls.all(), ElementsAre(OPEN_OUT, OPEN_IN));
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(SignalsTest, ClosesBothMemoriesWhenDestroyed) {
  {
    const Signals sut(m_host.dataLayer);
    forget();
  }
  EXPECT_THAT(m_host.calls.all(), ElementsAre("dataLayer.closeMemory(signals_out)", "dataLayer.closeMemory(signals_in)"));
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(SignalsTest, OpensTheInputMemoryOnlyAfterTheOutputMemory) {
  m_host.calls.fail("dataLayer.openMemory", REFUSAL, 1);
  {
    Signals sut(m_host.dataLayer);
    EXPECT_THAT(m_host.calls.all(), ElementsAre(OPEN_OUT));
    EXPECT_THAT(traces(), ElementsAre(NOT_OPENED));
    EXPECT_EQ(m_host.traceSink.entries()[0].format, "%s");
    EXPECT_EQ(sut.set(ID), FctResult::NotOkay);
    forget();
  }
  EXPECT_THAT(m_host.calls.all(), IsEmpty()) << "there is nothing to close";
}

TEST_F(SignalsTest, FailsWithTheOutputMemoryAlone) {
  m_host.calls.fail("dataLayer.openMemory", REFUSAL, 2);
  {
    Signals sut(m_host.dataLayer);
    EXPECT_THAT(m_host.calls.all(), ElementsAre(OPEN_OUT, OPEN_IN));
    EXPECT_THAT(traces(), ElementsAre(NOT_OPENED));
    bool value = true;
    EXPECT_EQ(sut.get(ID, value), FctResult::NotOkay);
    EXPECT_TRUE(value);
    forget();
  }
  EXPECT_THAT(m_host.calls.all(), ElementsAre("dataLayer.closeMemory(signals_out)"));
}

TEST_F(SignalsTest, FailsForeverWithoutTheMemories) {
  m_host.calls.fail("dataLayer.openMemory", REFUSAL);
  Signals sut(m_host.dataLayer);
  m_host.calls.failNothing();
  forget();
  bool value = true;
  EXPECT_EQ(sut.get(ID, value), FctResult::NotOkay);
  EXPECT_TRUE(value);
  EXPECT_EQ(sut.set(ID), FctResult::NotOkay);
  EXPECT_EQ(sut.reset(100), FctResult::NotOkay) << "this is found out before the wrong id";
  EXPECT_THAT(traces(), ElementsAre(NOT_OPEN, NOT_OPEN, NOT_OPEN));
  EXPECT_EQ(m_host.traceSink.entries()[0].format, "%s");
  EXPECT_THAT(m_host.calls.all(), IsEmpty()) << "it does not open them again";
}

TEST_F(SignalsTest, RefusesAWrongId) {
  Signals sut(m_host.dataLayer);
  forget();
  bool value = true;
  EXPECT_EQ(sut.set(100), FctResult::InvalidParameter);
  EXPECT_EQ(sut.reset(100), FctResult::InvalidParameter);
  EXPECT_EQ(sut.get(100, value), FctResult::InvalidParameter);
  EXPECT_TRUE(value);
  const std::string expected = "Error signals beginAccess: wrong id 100";
  EXPECT_THAT(traces(), ElementsAre(expected, expected, expected));
  EXPECT_EQ(m_host.traceSink.entries()[0].format, "wrong id %d");
  EXPECT_THAT(m_host.calls.all(), IsEmpty());
  EXPECT_EQ(sut.set(99), FctResult::Okay) << "nothing is locked";
}

TEST_F(SignalsTest, HasTheResultCodesOfTheHost) {
  EXPECT_EQ(core::toCode(FctResult::Okay), 0x00100000U);
  EXPECT_EQ(core::toCode(FctResult::NotOkay), 0xF0100001U);
  EXPECT_EQ(core::toCode(FctResult::InvalidParameter), 0xF010000CU);
}

TEST_F(SignalsTest, OpensAnAccessToBothMemories) {
  Signals sut(m_host.dataLayer);
  forget();
  std::uint8_t* inBytes = nullptr;
  std::uint8_t* outBytes = nullptr;
  ASSERT_EQ(sut.beginAccess(inBytes, outBytes, ID), FctResult::Okay);
  EXPECT_EQ(inBytes, &in(0));
  EXPECT_EQ(outBytes, &out(0));
  EXPECT_EQ(sut.endAccess(), FctResult::Okay);
  EXPECT_THAT(m_host.calls.all(), ElementsAre(BEGIN_OUT, BEGIN_IN, END_IN, END_OUT));
}

TEST_F(SignalsTest, TracesAnOutputMemoryThatRefuses) {
  Signals sut(m_host.dataLayer);
  forget();
  m_host.calls.fail("memory.beginAccess signals_out", REFUSAL, 1);
  bool value = true;
  EXPECT_EQ(sut.get(ID, value), FctResult::NotOkay);
  EXPECT_TRUE(value);
  EXPECT_THAT(traces(), ElementsAre("Error signals beginAccess: Failed to access "
                                    "motion/state/functions/kavo/rt-data/signals_out: Error(DL_RT_MEMORYLOCKED)"));
  EXPECT_EQ(m_host.traceSink.entries()[0].format, "Failed to access %s%s: Error(%s)");
  EXPECT_THAT(m_host.calls.all(), ElementsAre(BEGIN_OUT));
  EXPECT_EQ(sut.set(ID), FctResult::Okay) << "the lock is free again";
}

TEST_F(SignalsTest, EndsTheOutputAccessWhenTheInputMemoryRefuses) {
  Signals sut(m_host.dataLayer);
  forget();
  m_host.calls.fail("memory.beginAccess signals_in", REFUSAL, 1);
  EXPECT_EQ(sut.set(ID), FctResult::NotOkay);
  EXPECT_EQ(out(ID), 0);
  EXPECT_THAT(traces(), ElementsAre("Error signals beginAccess: Failed to access "
                                    "motion/state/functions/kavo/rt-data/signals_in: Error(DL_RT_MEMORYLOCKED)"));
  EXPECT_THAT(m_host.calls.all(), ElementsAre(BEGIN_OUT, BEGIN_IN, END_OUT));
  EXPECT_EQ(sut.set(ID), FctResult::Okay) << "the lock is free again";
}

TEST_F(SignalsTest, SkipsTheOutputMemoryWhenTheInputAccessCannotBeEnded) {
  Signals sut(m_host.dataLayer);
  std::uint8_t* inBytes = nullptr;
  std::uint8_t* outBytes = nullptr;
  ASSERT_EQ(sut.beginAccess(inBytes, outBytes, ID), FctResult::Okay);
  forget();
  m_host.calls.fail("memory.endAccess signals_in", REFUSAL, 1);
  EXPECT_EQ(sut.endAccess(), FctResult::NotOkay);
  EXPECT_THAT(m_host.calls.all(), ElementsAre(END_IN));
  EXPECT_EQ(sut.set(ID), FctResult::Okay) << "the lock is free again";
  m_host.dataLayer.m_memories.at(SIGNALS_OUT_ADDRESS)->openAccesses = 0;
}

TEST_F(SignalsTest, ReportsAnOutputAccessThatCannotBeEnded) {
  Signals sut(m_host.dataLayer);
  std::uint8_t* inBytes = nullptr;
  std::uint8_t* outBytes = nullptr;
  ASSERT_EQ(sut.beginAccess(inBytes, outBytes, ID), FctResult::Okay);
  forget();
  m_host.calls.fail("memory.endAccess signals_out", REFUSAL, 1);
  EXPECT_EQ(sut.endAccess(), FctResult::NotOkay);
  EXPECT_THAT(m_host.calls.all(), ElementsAre(END_IN, END_OUT));
  EXPECT_EQ(sut.set(ID), FctResult::Okay) << "the lock is free again";
}

TEST_F(SignalsTest, SucceedsEvenIfTheAccessCannotBeEnded) {
  Signals sut(m_host.dataLayer);
  m_host.calls.fail("memory.endAccess signals_out", REFUSAL);
  bool value = false;
  EXPECT_EQ(sut.set(ID), FctResult::Okay);
  EXPECT_EQ(sut.get(ID, value), FctResult::Okay);
  EXPECT_TRUE(value);
  EXPECT_EQ(sut.reset(ID), FctResult::Okay);
}

struct CounterCase {
  std::uint8_t out;
  std::uint8_t in;
  std::uint8_t outAfter;
  bool isWarned;
};

class SignalsSetTest : public SignalsTest, public testing::WithParamInterface<CounterCase> {};

TEST_P(SignalsSetTest, MovesTheOutputCounterSoThatItDiffers) {
  Signals sut(m_host.dataLayer);
  in(ID) = GetParam().in;
  out(ID) = GetParam().out;
  EXPECT_EQ(sut.set(ID), FctResult::Okay);
  EXPECT_EQ(out(ID), GetParam().outAfter);
  EXPECT_EQ(in(ID), GetParam().in);
  bool value = false;
  EXPECT_EQ(sut.get(ID, value), FctResult::Okay);
  EXPECT_TRUE(value);
  if (GetParam().isWarned) {
    EXPECT_THAT(traces(), ElementsAre("Warning signals set: Signal(5) might be set by both the system function SetSignal as "
                                      "well as the command SetSignal"));
    EXPECT_EQ(m_host.traceSink.entries()[0].format,
              "Signal(%d) might be set by both the system function SetSignal as well as the command SetSignal");
  } else {
    EXPECT_THAT(traces(), IsEmpty());
  }
}

INSTANTIATE_TEST_SUITE_P(All, SignalsSetTest,
                         testing::Values(CounterCase{0, 0, 1, false}, CounterCase{0, 1, 2, true},
                                         CounterCase{1, 0, 2, false}, CounterCase{254, 255, 0, true},
                                         CounterCase{255, 0, 1, true}, CounterCase{255, 255, 0, false}));

TEST_F(SignalsTest, TouchesOnlyItsOwnSignal) {
  Signals sut(m_host.dataLayer);
  EXPECT_EQ(sut.set(99), FctResult::Okay);
  for (std::uint32_t id = 0; id < 100; ++id) {
    EXPECT_EQ(out(id), id == 99 ? 1 : 0);
    EXPECT_EQ(in(id), 0);
  }
}

TEST_F(SignalsTest, CopiesTheInputCounterToReset) {
  Signals sut(m_host.dataLayer);
  in(ID) = 250;
  out(ID) = 3;
  EXPECT_EQ(sut.reset(ID), FctResult::Okay);
  EXPECT_EQ(out(ID), 250);
  EXPECT_EQ(in(ID), 250);
  EXPECT_EQ(sut.reset(ID), FctResult::Okay) << "a signal that is not set stays so";
  bool value = true;
  EXPECT_EQ(sut.get(ID, value), FctResult::Okay);
  EXPECT_FALSE(value);
}

TEST_F(SignalsTest, MeetsTheRealTimeSideInTheSameMemories) {
  Signals sut(m_host.dataLayer);
  auto& realTime = rt_data::RtSignals::getInstance();
  bool value = false;
  EXPECT_TRUE(realTime.set(ID));
  EXPECT_EQ(sut.get(ID, value), FctResult::Okay);
  EXPECT_TRUE(value);
  EXPECT_EQ(sut.set(ID), FctResult::Okay);
  EXPECT_EQ(out(ID), 2) << "a set from both sides stays a set, with a warning";
  EXPECT_EQ(traces().size(), 1U);
  EXPECT_EQ(sut.reset(ID), FctResult::Okay);
  EXPECT_TRUE(realTime.get(ID, value, false));
  EXPECT_FALSE(value);
  EXPECT_EQ(sut.set(ID), FctResult::Okay);
  EXPECT_TRUE(realTime.get(ID, value, true));
  EXPECT_TRUE(value);
  EXPECT_EQ(sut.get(ID, value), FctResult::Okay);
  EXPECT_FALSE(value);
}

TEST_F(SignalsTest, NamesEachFailureToCloseInItsOwnWay) {
  {
    const Signals sut(m_host.dataLayer);
    m_host.calls.fail("dataLayer.closeMemory", REFUSAL);
  }
  EXPECT_THAT(
      traces(),
      ElementsAre("Error signals ~Signals: Failed to close  motion/state/functions/kavo/rt-data/signals_out: Error(DL_OK)",
                  "Error signals ~Signals: Failed to close  motion/state/functions/kavo/rt-data/ignals_in: Error(DL_OK)"));
  EXPECT_EQ(m_host.traceSink.entries()[0].format, "Failed to close  %ssignals_out: Error(%s)");
  EXPECT_EQ(m_host.traceSink.entries()[1].format, "Failed to close  %signals_in: Error(%s)");
  EXPECT_THAT(m_host.calls.of({"dataLayer.closeMemory"}),
              ElementsAre("dataLayer.closeMemory(signals_out)", "dataLayer.closeMemory(signals_in)"));
}

TEST_F(SignalsTest, KeepsOthersOutFromBeginToEnd) {
  Signals sut(m_host.dataLayer);
  std::uint8_t* inBytes = nullptr;
  std::uint8_t* outBytes = nullptr;
  EXPECT_TRUE(canAnotherThreadLock(sut));
  ASSERT_EQ(sut.beginAccess(inBytes, outBytes, ID), FctResult::Okay);
  EXPECT_FALSE(canAnotherThreadLock(sut));
  EXPECT_EQ(sut.endAccess(), FctResult::Okay);
  EXPECT_TRUE(canAnotherThreadLock(sut));
}

TEST_F(SignalsTest, LetsOthersInAfterEachFailure) {
  Signals sut(m_host.dataLayer);
  std::uint8_t* inBytes = nullptr;
  std::uint8_t* outBytes = nullptr;
  EXPECT_EQ(sut.beginAccess(inBytes, outBytes, 100), FctResult::InvalidParameter);
  EXPECT_TRUE(canAnotherThreadLock(sut));
  for (const char* operation : {"memory.beginAccess signals_out", "memory.beginAccess signals_in"}) {
    m_host.calls.fail(operation, REFUSAL, 1);
    EXPECT_EQ(sut.beginAccess(inBytes, outBytes, ID), FctResult::NotOkay);
    EXPECT_TRUE(canAnotherThreadLock(sut)) << operation;
  }
  for (const char* operation : {"memory.endAccess signals_in", "memory.endAccess signals_out"}) {
    ASSERT_EQ(sut.beginAccess(inBytes, outBytes, ID), FctResult::Okay);
    m_host.calls.fail(operation, REFUSAL, 1);
    EXPECT_EQ(sut.endAccess(), FctResult::NotOkay);
    EXPECT_TRUE(canAnotherThreadLock(sut)) << operation;
    m_host.calls.failNothing();
  }
  m_host.dataLayer.m_memories.at(SIGNALS_OUT_ADDRESS)->openAccesses = 0;
}

TEST_F(SignalsTest, LosesNoSetOfManyThreads) {
  constexpr int SETS = 2000;
  Signals sut(m_host.dataLayer);
  const auto setOften = [&sut] {
    for (int i = 0; i < SETS; ++i) {
      EXPECT_EQ(sut.set(ID), FctResult::Okay);
    }
  };
  std::thread other(setOften);
  setOften();
  other.join();
  const auto warnings = m_host.traceSink.entries().size();
  EXPECT_EQ(out(ID), static_cast<std::uint8_t>(2 * SETS + warnings)) << "each warning is one step more";
  EXPECT_GT(warnings, 10U) << "the counter has wrapped many times";
}

TEST_F(SignalsTest, SurvivesEachFailureToAllocate) {
  std::optional<Signals> sut;
  withEachAllocationFailing([&] { sut.emplace(m_host.dataLayer); },
                            [&](bool hasFailed) {
                              EXPECT_EQ(sut->set(ID), hasFailed ? FctResult::NotOkay : FctResult::Okay);
                              sut.reset();
                            });
}

}  // namespace
}  // namespace motion::kavo
