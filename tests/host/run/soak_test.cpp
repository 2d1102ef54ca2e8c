// The long run in short: seconds instead of minutes.
#include "support/soak.h"

#include <gmock/gmock.h>

namespace motion::host::run {
namespace {

TEST(SoakTest, NothingGoesWrongAndNothingGrows) {
  motion::test::SoakConfig config;
  config.bundleDir = KAVO_BUNDLE;
  config.duration = std::chrono::seconds(4);
  config.cells = 4;
  const auto report = motion::test::runSoak(config);
  EXPECT_EQ(report.errors, 0U);
  EXPECT_THAT(report.findings, testing::IsEmpty());
  EXPECT_TRUE(report.isSteady()) << report.atStart.blocks << " blocks became " << report.atEnd.blocks;
  EXPECT_GT(report.commandsDone, 100U);
  EXPECT_GT(report.joins, 10U);
  EXPECT_GT(report.signals, 10U);
  EXPECT_GT(report.moves, 1U);
  EXPECT_GT(report.aborts, 0U);
  EXPECT_GT(report.clientWrites, 100U);
}

}  // namespace
}  // namespace motion::host::run
