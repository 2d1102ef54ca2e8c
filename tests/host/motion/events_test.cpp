// Ring of events: order, and counting of what did not fit.
#include "host/motion/events.h"

#include <gtest/gtest.h>

namespace motion::host {
namespace {

TEST(EventRingTest, givesEventsWithAllTheirFields) {
  EventRing sut(4);
  sut.write({17, EventKind::CMD_FAILED, 3, 42, 0xF0000004U});
  Event event;
  ASSERT_TRUE(sut.read(event));
  EXPECT_EQ(event.cycle, 17U);
  EXPECT_EQ(event.kind, EventKind::CMD_FAILED);
  EXPECT_EQ(event.object, 3U);
  EXPECT_EQ(event.cmdID, 42U);
  EXPECT_EQ(event.detail, 0xF0000004U);
  EXPECT_FALSE(sut.read(event));
}

TEST(EventRingTest, countsWhatDoesNotFitAndKeepsTheOlderEvents) {
  EventRing sut(4);
  for (std::uint64_t i = 1; i <= 7; ++i) {
    sut.write({i, EventKind::CMD_DONE, 0, i, 0});
  }
  EXPECT_EQ(sut.lost(), 3U);
  Event event;
  for (std::uint64_t i = 1; i <= 4; ++i) {
    ASSERT_TRUE(sut.read(event));
    EXPECT_EQ(event.cycle, i);
  }
  EXPECT_FALSE(sut.read(event));

  sut.write({8, EventKind::CMD_DONE, 0, 8, 0});
  ASSERT_TRUE(sut.read(event)) << "there is room again";
  EXPECT_EQ(event.cycle, 8U);
  EXPECT_EQ(sut.lost(), 3U);
}

}  // namespace
}  // namespace motion::host
