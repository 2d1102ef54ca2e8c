// Every example runs, does what it expects, and gives the same events every time.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tool_run.h"

namespace motion::test {
namespace {

using testing::HasSubstr;

std::vector<std::string> exampleNames() {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(KAVO_SOURCE_DIR "/examples")) {
    if (entry.path().extension() == ".yaml") {
      names.push_back(entry.path().stem());
    }
  }
  std::ranges::sort(names);
  return names;
}

class Example : public testing::TestWithParam<std::string> {
 protected:
  std::string file() const { return KAVO_SOURCE_DIR "/examples/" + GetParam() + ".yaml"; }
};

TEST_P(Example, GivesItsGoldenEvents) {
  const ToolResult result = runTool({"run", file(), "--events", "--bundle", KAVO_BUNDLE});
  ASSERT_EQ(result.exitCode, 0) << show(result);
  const std::string golden = readFile(KAVO_SOURCE_DIR "/tests/scenarios/golden/" + GetParam() + ".events");
  ASSERT_FALSE(golden.empty());
  EXPECT_EQ(result.out, golden);
}

TEST_P(Example, GivesTheSameReportTwice) {
  const ToolResult first = runTool({"run", file(), "--bundle", KAVO_BUNDLE});
  const ToolResult second = runTool({"run", file(), "--bundle", KAVO_BUNDLE});
  EXPECT_EQ(first.exitCode, 0) << show(first);
  EXPECT_THAT(first.out, HasSubstr("\u2713"));
  EXPECT_EQ(first.out, second.out);
  EXPECT_EQ(first.err, "");
}

TEST_P(Example, TellsProgramsTheSameAsPeople) {
  const ToolResult result = runTool({"run", file(), "--json", "--bundle", KAVO_BUNDLE});
  ASSERT_EQ(result.exitCode, 0) << show(result);
  const auto json = nlohmann::json::parse(result.out);
  EXPECT_EQ(json.at("ok"), true);
  EXPECT_EQ(json.at("time"), "virtual");
  EXPECT_EQ(json.at("lostEvents"), 0);
  ASSERT_FALSE(json.at("expectations").empty());
  for (const auto& expectation : json.at("expectations")) {
    EXPECT_EQ(expectation.at("holds"), true) << expectation;
  }
}

TEST_P(Example, HasNothingWrong) {
  const ToolResult result = runTool({"check", file(), "--bundle", KAVO_BUNDLE});
  EXPECT_EQ(result.exitCode, 0) << show(result);
  EXPECT_THAT(result.out, HasSubstr("nothing wrong found"));
}

INSTANTIATE_TEST_SUITE_P(All, Example, testing::ValuesIn(exampleNames()),
                         [](const auto& tested) { return tested.param; });

TEST(Examples, AreAtLeastFour) { EXPECT_GE(exampleNames().size(), 4U); }

TEST(Examples, EveryGoldenListBelongsToOne) {
  const auto names = exampleNames();
  for (const auto& entry : std::filesystem::directory_iterator(KAVO_SOURCE_DIR "/tests/scenarios/golden")) {
    EXPECT_NE(std::ranges::find(names, entry.path().stem().string()), names.end()) << entry.path();
  }
}

TEST(HandOver, TellsWhoWaitedForWhat) {
  const ToolResult result = runTool({"run", KAVO_SOURCE_DIR "/examples/01_hand_over.yaml", "--bundle", KAVO_BUNDLE});
  EXPECT_THAT(result.out,
              HasSubstr("waited 600.000 ms for signal 5 'part in place', set by Feeder#2 in cycle 601"));
  EXPECT_THAT(result.out, HasSubstr("signal 5 'part in place' reset by Gripper#1"));
}

TEST(HandOver, RunsInRealTime) {
  const ToolResult result =
      runTool({"run", KAVO_SOURCE_DIR "/examples/01_hand_over.yaml", "--real-time", "--json", "--bundle", KAVO_BUNDLE});
  ASSERT_EQ(result.exitCode, 0) << show(result);
  const auto json = nlohmann::json::parse(result.out);
  EXPECT_EQ(json.at("time"), "real");
  EXPECT_GE(json.at("punctuality").at("cycles").get<std::uint64_t>(), 1753U);
  const auto& gripper = json.at("objects").at(1).at("commands");
  EXPECT_EQ(gripper.at(0).at("releasedBy"), "Feeder#2");
  EXPECT_EQ(gripper.at(1).at("active").get<std::uint64_t>(), gripper.at(0).at("ended").get<std::uint64_t>() + 1);
}

TEST(FromOutside, RunsInRealTime) {
  const ToolResult result =
      runTool({"run", KAVO_SOURCE_DIR "/examples/04_from_outside.yaml", "--real-time", "--json", "--bundle", KAVO_BUNDLE});
  ASSERT_EQ(result.exitCode, 0) << show(result);
  const auto json = nlohmann::json::parse(result.out);
  const auto& conveyor = json.at("objects").at(0).at("commands");
  EXPECT_EQ(conveyor.at(0).at("releasedBy"), "outside");
  EXPECT_GE(conveyor.at(0).at("ended").get<std::uint64_t>(), 501U);
}

}  // namespace
}  // namespace motion::test
