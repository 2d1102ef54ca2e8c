#include "host/run/play.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace motion::host::run {
namespace {

using testing::HasSubstr;

PlayOptions optionsFor(const std::string& example) {
  PlayOptions options;
  options.file = KAVO_SOURCE_DIR "/examples/" + example;
  options.bundleDir = KAVO_BUNDLE;
  options.journal = false;
  return options;
}

TEST(Play, GivesTheRecordOfAFineRun) {
  const PlayResult sut = play(optionsFor("01_hand_over.yaml"));
  EXPECT_EQ(sut.outcome, Outcome::FINE);
  ASSERT_TRUE(sut.record);
  EXPECT_EQ(sut.objects, 2U);
  EXPECT_EQ(sut.commands, 9U);
  EXPECT_FALSE(sut.lost);
}

TEST(Play, CheckingRunsNothing) {
  PlayOptions options = optionsFor("01_hand_over.yaml");
  options.checkOnly = true;
  const PlayResult sut = play(options);
  EXPECT_EQ(sut.outcome, Outcome::FINE);
  EXPECT_FALSE(sut.record);
  EXPECT_EQ(sut.commands, 9U);
}

TEST(Play, AFileThatIsNotThereIsBadInput) {
  const PlayResult sut = play(optionsFor("no_such.yaml"));
  EXPECT_EQ(sut.outcome, Outcome::BAD_INPUT);
  ASSERT_EQ(sut.problems.size(), 1U);
  EXPECT_THAT(sut.problems[0].text(), HasSubstr("no_such.yaml"));
}

TEST(Play, ABundleThatIsNotThereIsNoBundle) {
  PlayOptions options = optionsFor("01_hand_over.yaml");
  options.bundleDir = "/no/such/bundle";
  const PlayResult sut = play(options);
  EXPECT_EQ(sut.outcome, Outcome::NO_BUNDLE);
  EXPECT_THAT(sut.failure, HasSubstr("/no/such/bundle"));
}

TEST(Play, ABundleThatFailsToStopIsReportedBesideTheRecord) {
  PlayOptions options = optionsFor("01_hand_over.yaml");
  options.bundleDir = KAVO_TEST_PLUGINS_DIR "/stop_fails";
  const PlayResult sut = play(options);
  EXPECT_NE(sut.outcome, Outcome::FINE);
  EXPECT_THAT(sut.failure, HasSubstr("stop"));
}

TEST(Play, OutcomesAreExitCodes) {
  EXPECT_EQ(static_cast<int>(Outcome::FINE), 0);
  EXPECT_EQ(static_cast<int>(Outcome::NOT_FINE), 1);
  EXPECT_EQ(static_cast<int>(Outcome::BAD_INPUT), 2);
  EXPECT_EQ(static_cast<int>(Outcome::NO_BUNDLE), 3);
}

}  // namespace
}  // namespace motion::host::run
