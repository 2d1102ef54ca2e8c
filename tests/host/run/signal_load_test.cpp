// Clients of the data layer, system functions and jobs in real time, all at the same signals.
#include "support/signal_load.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>

namespace motion::test {
namespace {

using namespace std::chrono_literals;

TEST(SignalLoad, LosesNoWriteAndTearsNoValue) {
  SignalLoadConfig config;
  config.bundleDir = KAVO_BUNDLE;
  config.duration = 1'500ms;
  config.clients = 3;
  config.cycle = 2'000us;
  const SignalLoadReport report = runSignalLoad(config);
  EXPECT_THAT(report.findings, testing::IsEmpty());
  EXPECT_EQ(report.lost, 0U);
  EXPECT_EQ(report.torn, 0U);
  EXPECT_EQ(report.refused, 0U);
  // Nothing would be found where nothing was looked at.
  EXPECT_GE(report.clients.turns, config.clients + 1);
  EXPECT_GT(report.clients.checkedWrites, 0U);
  EXPECT_GT(report.clients.checkedReads, 0U);
  EXPECT_GT(report.jobChanges, 0U);
  EXPECT_GT(report.outsideLooks, 0U);
  EXPECT_GT(report.jobLooks, 0U);
  EXPECT_GT(report.collisions, 0U);
  EXPECT_GT(report.withoutClients.cycles, 0U);
  EXPECT_GT(report.withClients.cycles, 0U);
}

}  // namespace
}  // namespace motion::test
