// Which value a counter takes to set its signal.
#include "impl/signal_counters.h"

#include "impl_fixture.h"

namespace motion::kavo {
namespace {

using testing::ElementsAre;

constexpr CallSite SITE{"src/impl/a_unit", "aFunction", 3};

class SignalCountersTest : public ImplTest {};

TEST_F(SignalCountersTest, AlwaysDiffersFromTheOtherSide) {
  for (unsigned int own = 0; own < 256; ++own) {
    for (unsigned int other = 0; other < 256; ++other) {
      const auto next = static_cast<std::uint8_t>(own + 1);
      const bool isMet = next == other;
      const auto sut = settingCounter(SITE, 7, static_cast<std::uint8_t>(own), static_cast<std::uint8_t>(other));
      ASSERT_EQ(sut, isMet ? static_cast<std::uint8_t>(own + 2) : next) << own << " " << other;
      ASSERT_EQ(m_host.traceSink.entries().size(), isMet ? 1U : 0U) << own << " " << other;
      m_host.traceSink.clear();
    }
  }
}

TEST_F(SignalCountersTest, WarnsInTheNameOfItsCaller) {
  EXPECT_EQ(settingCounter(SITE, 99, 255, 0), 1);
  EXPECT_THAT(traces(),
              ElementsAre("Warning a_unit aFunction: Signal(99) might be set by both the system function SetSignal "
                          "as well as the command SetSignal"));
  EXPECT_EQ(m_host.traceSink.entries()[0].line, 3U);
}

TEST_F(SignalCountersTest, ReadsAndWritesTheByteOfItsSignal) {
  std::array<std::uint8_t, 3> counters = {1, 2, 3};
  EXPECT_EQ(loadCounter(counters.data(), 2), 3);
  storeCounter(counters.data(), 1, 200);
  EXPECT_THAT(counters, ElementsAre(1, 200, 3));
}

}  // namespace
}  // namespace motion::kavo
