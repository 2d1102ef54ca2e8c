// Reading and moving the signals from the real-time side.
#include "impl/rt_signals.h"

#include "impl_fixture.h"

namespace motion::kavo::rt_data {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::uint32_t REFUSAL = 0x80060001;
constexpr std::uint32_t ID = 5;
const std::vector<std::string> ACCESSES = {"memory.beginAccess signals_out(0)", "memory.endAccess signals_out()",
                                           "memory.beginAccess signals_in(0)", "memory.endAccess signals_in()"};

class RtSignalsTest : public SignalTest {
 protected:
  ~RtSignalsTest() override { EXPECT_EQ(openAccesses(), 0); }

  RtSignals& m_sut = RtSignals::getInstance();
};

TEST_F(RtSignalsTest, StartsWithAllSignalsReset) {
  auto& sut = m_sut;
  for (std::uint32_t id = 0; id < 100; ++id) {
    bool value = true;
    EXPECT_TRUE(sut.get(id, value, false));
    EXPECT_FALSE(value) << id;
  }
}

TEST_F(RtSignalsTest, TouchesOnlyItsOwnSignal) {
  auto& sut = m_sut;
  for (const std::uint32_t id : {0U, 42U, 99U}) {
    EXPECT_TRUE(sut.set(id));
    for (std::uint32_t other = 0; other < 100; ++other) {
      EXPECT_EQ(in(other), other == id ? 1 : 0);
      EXPECT_EQ(out(other), 0);
    }
    EXPECT_TRUE(sut.set(id)) << "a signal that is set stays set";
    EXPECT_EQ(in(id), 2);
    in(id) = 0;
  }
}

struct CounterCase {
  std::uint8_t in;
  std::uint8_t out;
  std::uint8_t inAfter;
  bool isWarned;
};

class RtSignalsSetTest : public RtSignalsTest, public testing::WithParamInterface<CounterCase> {};

TEST_P(RtSignalsSetTest, MovesTheInputCounterSoThatItDiffers) {
  auto& sut = m_sut;
  in(ID) = GetParam().in;
  out(ID) = GetParam().out;
  EXPECT_TRUE(sut.set(ID));
  EXPECT_EQ(in(ID), GetParam().inAfter);
  EXPECT_EQ(out(ID), GetParam().out);
  if (GetParam().isWarned) {
    EXPECT_THAT(traces(), ElementsAre("Warning rt_signals set: Signal(5) might be set by both the system function SetSignal "
                                      "as well as the command SetSignal"));
    EXPECT_EQ(m_host.traceSink.entries()[0].format,
              "Signal(%d) might be set by both the system function SetSignal as well as the command SetSignal");
  } else {
    EXPECT_THAT(traces(), IsEmpty());
  }
}

INSTANTIATE_TEST_SUITE_P(All, RtSignalsSetTest,
                         testing::Values(CounterCase{0, 0, 1, false}, CounterCase{0, 1, 2, true},
                                         CounterCase{0, 2, 1, false}, CounterCase{7, 8, 9, true},
                                         CounterCase{254, 0, 255, false}, CounterCase{254, 255, 0, true},
                                         CounterCase{255, 0, 1, true}, CounterCase{255, 255, 0, false},
                                         CounterCase{255, 1, 0, false}));

TEST_F(RtSignalsTest, CopiesTheOutputCounterToReset) {
  auto& sut = m_sut;
  in(ID) = 3;
  out(ID) = 250;
  EXPECT_TRUE(sut.reset(ID));
  EXPECT_EQ(in(ID), 250);
  EXPECT_EQ(out(ID), 250);
  EXPECT_TRUE(sut.reset(ID));
  EXPECT_EQ(in(ID), 250);
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(RtSignalsTest, ReadsASignalAsTheDifferenceOfItsCounters) {
  auto& sut = m_sut;
  bool value = false;
  in(ID) = 255;
  EXPECT_TRUE(sut.get(ID, value, false));
  EXPECT_TRUE(value);
  EXPECT_EQ(in(ID), 255);
  out(ID) = 255;
  EXPECT_TRUE(sut.get(ID, value, false));
  EXPECT_FALSE(value);
}

TEST_F(RtSignalsTest, ConsumesASetSignalOnce) {
  auto& sut = m_sut;
  out(ID) = 3;
  forget();
  bool value = false;
  EXPECT_TRUE(sut.get(ID, value, true));
  EXPECT_TRUE(value);
  EXPECT_EQ(in(ID), 3);
  EXPECT_EQ(out(ID), 3);
  EXPECT_EQ(m_host.calls.all(), ACCESSES) << "read and reset in the same access";
  EXPECT_TRUE(sut.get(ID, value, true));
  EXPECT_FALSE(value);
  EXPECT_TRUE(sut.set(ID));
  EXPECT_TRUE(sut.get(ID, value, true));
  EXPECT_TRUE(value);
}

TEST_F(RtSignalsTest, OpensAndEndsOneAccessToEachMemory) {
  auto& sut = m_sut;
  EXPECT_TRUE(sut.set(ID));
  EXPECT_EQ(m_host.calls.all(), ACCESSES);
  forget();
  EXPECT_TRUE(sut.reset(ID));
  EXPECT_EQ(m_host.calls.all(), ACCESSES);
  forget();
  std::uint8_t counter = 0;
  EXPECT_TRUE(sut.getOutCounter(ID, counter));
  EXPECT_THAT(m_host.calls.all(), ElementsAre(ACCESSES[0], ACCESSES[1]));
}

TEST_F(RtSignalsTest, ReadsTheOutputCounter) {
  auto& sut = m_sut;
  out(99) = 200;
  std::uint8_t counter = 0;
  EXPECT_TRUE(sut.getOutCounter(99, counter));
  EXPECT_EQ(counter, 200);
}

TEST_F(RtSignalsTest, CountsAnUnreadableOutputMemoryAsZero) {
  auto& sut = m_sut;
  out(ID) = 200;
  in(ID) = 255;
  m_host.calls.fail("memory.beginAccess signals_out", REFUSAL);
  std::uint8_t counter = 1;
  EXPECT_TRUE(sut.getOutCounter(ID, counter));
  EXPECT_EQ(counter, 0);
  EXPECT_THAT(traces(), IsEmpty());
  bool value = false;
  EXPECT_TRUE(sut.get(ID, value, false));
  EXPECT_TRUE(value);
  EXPECT_TRUE(sut.reset(ID));
  EXPECT_EQ(in(ID), 0);
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(RtSignalsTest, FailsSilentlyWhenTheInputMemoryRefuses) {
  auto& sut = m_sut;
  in(ID) = 1;
  m_host.calls.fail("memory.beginAccess signals_in", REFUSAL);
  bool value = false;
  EXPECT_FALSE(sut.set(ID));
  EXPECT_FALSE(sut.reset(ID));
  EXPECT_FALSE(sut.get(ID, value, true));
  EXPECT_EQ(in(ID), 1);
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(RtSignalsTest, IgnoresAFailureToEndAnAccess) {
  auto& sut = m_sut;
  m_host.calls.fail("memory.endAccess signals_in", REFUSAL);
  m_host.calls.fail("memory.endAccess signals_out", REFUSAL);
  bool value = false;
  EXPECT_TRUE(sut.set(ID));
  EXPECT_TRUE(sut.get(ID, value, false));
  EXPECT_TRUE(value);
  EXPECT_TRUE(sut.reset(ID));
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(RtSignalsTest, RefusesAWrongId) {
  auto& sut = m_sut;
  bool value = true;
  std::uint8_t counter = 17;
  EXPECT_FALSE(sut.set(100));
  EXPECT_FALSE(sut.reset(100));
  EXPECT_FALSE(sut.get(100, value, true));
  EXPECT_FALSE(sut.getOutCounter(100, counter));
  const std::string expected = "Error rt_signals getOutCounter: wrong id(100)";
  EXPECT_THAT(traces(), ElementsAre(expected, expected, expected, expected));
  EXPECT_EQ(m_host.traceSink.entries()[0].format, "wrong id(%d)");
  EXPECT_THAT(m_host.calls.all(), IsEmpty());
}

TEST_F(RtSignalsTest, RefusesEverythingBeforeItIsInitialised) {
  RtSignals sut;
  bool value = true;
  std::uint8_t counter = 17;
  EXPECT_FALSE(sut.set(ID));
  EXPECT_FALSE(sut.reset(ID));
  EXPECT_FALSE(sut.get(ID, value, true));
  EXPECT_FALSE(sut.getOutCounter(100, counter)) << "this is found out before the wrong id";
  const std::string expected = "Error rt_signals getOutCounter: RtSignals::initialize() not called!";
  EXPECT_THAT(traces(), ElementsAre(expected, expected, expected, expected));
  EXPECT_EQ(m_host.traceSink.entries()[0].format, "%s");
}

TEST_F(RtSignalsTest, RefusesEverythingAfterItWasTerminated) {
  test::FakeHost other;
  RtSignals sut;
  ASSERT_TRUE(sut.initialize(other.dataLayer));
  ASSERT_TRUE(sut.set(ID));
  sut.terminate();
  EXPECT_FALSE(sut.set(ID));
  EXPECT_THAT(traces(), ElementsAre("Error rt_signals getOutCounter: RtSignals::initialize() not called!"));
}

TEST_F(RtSignalsTest, AllocatesNothing) {
  auto& sut = m_sut;
  out(ID) = 1;  // a warning at the next set
  bool value = false;
  std::uint8_t counter = 0;
  const test::AllocationCount count;
  EXPECT_TRUE(sut.set(ID));
  EXPECT_TRUE(sut.get(ID, value, true));
  EXPECT_TRUE(sut.reset(ID));
  EXPECT_TRUE(sut.getOutCounter(ID, counter));
  EXPECT_EQ(count.get(), 0);
}

}  // namespace
}  // namespace motion::kavo::rt_data
