// How fast a wait is released, in virtual time: a signal set before cycle k ends the wait in cycle k, and the next move
// begins in cycle k+1.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "realtime/busy_host.h"

namespace motion::test {
namespace {

using host::EventKind;

constexpr unsigned int SIGNAL = 7;
constexpr int RELEASES = 200;
constexpr int LONGEST_MOVE = 1'000;  // [cycles]

class ReleaseLatency : public testing::TestWithParam<double> {
 protected:
  ReleaseLatency() { m_axis->setEvents(&m_events); }

  void issue(const Call& call) { ASSERT_TRUE(call(m_open.runtime(), m_axis->name().c_str())); }

  /// Cycle of the only event of that kind since the last call for any kind; 0 for none or several.
  std::uint64_t onlyCycleOf(EventKind kind) {
    std::uint64_t cycle = 0;
    int count = 0;
    for (host::Event event; m_events.read(event);) {
      if (event.kind == kind) {
        cycle = event.cycle;
        ++count;
      }
    }
    return count == 1 ? cycle : 0;
  }

  host::EventRing m_events{1024};  // before the session, which uses it until it is closed
  OpenSession m_open{GetParam()};
  host::MotionObject* m_axis = m_open.runtime().addObject("Axis", core::ObjectType::AXIS, {});
};

TEST_P(ReleaseLatency, WaitEndsInTheNextCycleAndTheMoveBeginsInTheOneAfter) {
  host::Runtime& sut = m_open.runtime();
  for (int release = 0; release < RELEASES; ++release) {
    SCOPED_TRACE(release);
    issue(waitForSignalCall(SIGNAL, release % 2 == 0));
    issue(moveCall("MoveRel", release % 2 == 0 ? 0.05 : -0.05));
    for (int idle = 0; idle < 1 + release % 5; ++idle) {
      sut.step();
    }
    ASSERT_EQ(onlyCycleOf(EventKind::CMD_DONE), 0U);
    ASSERT_EQ(m_axis->velocity(), 0.0);

    const std::uint64_t before = sut.cycle().begun();
    ASSERT_EQ(sut.cycle().ended(), before);
    ASSERT_TRUE(m_open.setSignal(SIGNAL));
    ASSERT_EQ(sut.cycle().begun(), before);
    ASSERT_EQ(sut.cycle().ended(), before);

    sut.step();
    ASSERT_EQ(onlyCycleOf(EventKind::CMD_DONE), before + 1);
    EXPECT_EQ(m_axis->velocity(), 0.0);
    sut.step();
    EXPECT_EQ(onlyCycleOf(EventKind::MOTION_BEGAN), before + 2);
    EXPECT_NE(m_axis->velocity(), 0.0);

    for (int cycle = 0; cycle < LONGEST_MOVE && sut.preparation().alive() > 0; ++cycle) {
      sut.step();
    }
    EXPECT_NE(onlyCycleOf(EventKind::CMD_DONE), 0U);
    ASSERT_TRUE(m_open.resetSignal(SIGNAL));
  }
}

INSTANTIATE_TEST_SUITE_P(CycleTimes, ReleaseLatency, testing::Values(0.001, 0.00025),
                         [](const auto& test) { return std::to_string(static_cast<int>(test.param * 1e6)) + "_us"; });

}  // namespace
}  // namespace motion::test
