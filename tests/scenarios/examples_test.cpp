// Every example runs, does what it expects, and gives the same events every time.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "tool_run.h"

namespace motion::test {
namespace {

using testing::HasSubstr;

/// This one gets stuck on purpose, so that there is something to explain: it has neither expectations nor an end, and its
/// golden output is the whole report. Its own tests are below; those of all others do not fit.
constexpr const char* DEADLOCK = "06_deadlock";

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

std::vector<std::string> namesOfThoseThatEnd() {
  std::vector<std::string> names = exampleNames();
  std::erase(names, DEADLOCK);
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

INSTANTIATE_TEST_SUITE_P(All, Example, testing::ValuesIn(namesOfThoseThatEnd()),
                         [](const auto& tested) { return tested.param; });

TEST(Examples, AreAtLeastFive) {
  EXPECT_GE(namesOfThoseThatEnd().size(), 5U);
}

TEST(Examples, EveryGoldenListBelongsToOne) {
  const auto names = exampleNames();
  for (const auto& entry : std::filesystem::directory_iterator(KAVO_SOURCE_DIR "/tests/scenarios/golden")) {
    EXPECT_NE(std::ranges::find(names, entry.path().stem().string()), names.end()) << entry.path();
  }
}

class Deadlock : public testing::Test {
 protected:
  /// With the tool's own words for the file's path, as it would be for a user in the project's folder.
  static ToolResult runOn(const std::string& subcommand, const std::vector<std::string>& more = {}) {
    std::vector<std::string> arguments{subcommand, file(), "--bundle", KAVO_BUNDLE};
    arguments.insert(arguments.end(), more.begin(), more.end());
    ToolResult result = runTool(arguments);
    for (std::string* text : {&result.out, &result.err}) {
      for (std::size_t at = text->find(KAVO_SOURCE_DIR "/"); at != std::string::npos; at = text->find(KAVO_SOURCE_DIR "/")) {
        text->erase(at, std::string_view(KAVO_SOURCE_DIR "/").size());
      }
    }
    return result;
  }
  static std::string file() { return std::string(KAVO_SOURCE_DIR "/examples/") + DEADLOCK + ".yaml"; }
  static std::string golden(const std::string& extension) {
    return readFile(std::string(KAVO_SOURCE_DIR "/tests/scenarios/golden/") + DEADLOCK + extension);
  }
};

TEST_F(Deadlock, GivesItsGoldenReport) {
  const ToolResult result = runOn("run");
  EXPECT_EQ(result.exitCode, 1) << show(result);
  EXPECT_EQ(result.out, golden(".report"));
  EXPECT_EQ(result.err, golden(".findings"));
}

TEST_F(Deadlock, IsFoundBeforeItHappens) {
  const ToolResult result = runOn("check");
  EXPECT_EQ(result.exitCode, 1) << show(result);
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.err, golden(".findings"));
  EXPECT_EQ(std::ranges::count(result.err, '\n'), 3);
}

TEST_F(Deadlock, IsExplainedToPrograms) {
  const ToolResult result = runOn("run", {"--json"});
  EXPECT_EQ(result.exitCode, 1) << show(result);
  const auto json = nlohmann::json::parse(result.out);
  EXPECT_EQ(json.at("ok"), false);
  const auto& waits = json.at("waits");
  EXPECT_EQ(waits.at("circle"), (nlohmann::json{"Left", "Right"}));
  EXPECT_EQ(waits.at("circleClosedBy"), "Right");
  EXPECT_EQ(waits.at("neededSignals"), nlohmann::json::array({30}));
  EXPECT_EQ(waits.at("objects").size(), 3U);
}

TEST_F(Deadlock, IsExplainedInRealTimeAndGivenUpLater) {
  RunningTool tool({"run", file(), "--real-time", "--stuck-after", "3000", "--bundle", KAVO_BUNDLE});
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  const auto isExplained = [&tool] { return tool.errSoFar().find("circle: ") != std::string::npos; };
  while (!isExplained() && std::chrono::steady_clock::now() < deadline) {
    if (tool.catches(SIGUSR1)) {
      tool.send(SIGUSR1);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  ASSERT_TRUE(isExplained());
  const ToolResult result = tool.wait();
  EXPECT_EQ(result.exitCode, 1) << show(result);
  EXPECT_THAT(result.err, HasSubstr("circle: Left waits for Right, Right waits for Left; closed in cycle"));
  EXPECT_THAT(result.err, HasSubstr("needs a write from outside: signal 30 'right is ready'"));
  EXPECT_THAT(result.err, testing::Not(HasSubstr("STUCK"))) << "to ask does not end the run";
  EXPECT_THAT(result.out, HasSubstr("STUCK: since cycle"));
  EXPECT_THAT(result.out, HasSubstr("circle: Left waits for Right, Right waits for Left; closed in cycle"));
}

TEST(HandOver, TellsWhoWaitedForWhat) {
  const ToolResult result = runTool({"run", KAVO_SOURCE_DIR "/examples/01_hand_over.yaml", "--bundle", KAVO_BUNDLE});
  EXPECT_THAT(result.out, HasSubstr("waited 600.000 ms for signal 5 'part in place', set by Feeder#2 in cycle 601"));
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

TEST(AssemblyCell, MeetsInRealTime) {
  const ToolResult result =
      runTool({"run", KAVO_SOURCE_DIR "/examples/05_assembly_cell.yaml", "--real-time", "--json", "--bundle", KAVO_BUNDLE});
  ASSERT_EQ(result.exitCode, 0) << show(result);
  const auto joins = nlohmann::json::parse(result.out).at("joins");
  ASSERT_EQ(joins.size(), 2U);
  for (const auto& join : joins) {
    for (const auto& member : join.at("members")) {
      EXPECT_EQ(member.at("ended"), join.at("completed")) << member;
    }
  }
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
