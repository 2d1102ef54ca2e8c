// The data layer as clients with different scopes see it, and writes from outside under access control.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tool_run.h"

namespace motion::test {
namespace {

using testing::HasSubstr;
using testing::Not;

constexpr const char* EXAMPLE = KAVO_SOURCE_DIR "/examples/04_from_outside.yaml";

ToolResult nodes(std::vector<std::string> more) {
  std::vector<std::string> arguments{"nodes", EXAMPLE, "--bundle", KAVO_BUNDLE};
  arguments.insert(arguments.end(), more.begin(), more.end());
  return runTool(arguments);
}

int countOf(const std::string& text, const std::string& part) {
  int count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
    ++count;
  }
  return count;
}

TEST(Nodes, AreShownToWhoMayLook) {
  const ToolResult result = nodes({"--scope", "motion.view"});
  EXPECT_EQ(result.exitCode, 0) << show(result);
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.out, readFile(KAVO_SOURCE_DIR "/tests/scenarios/golden/04_from_outside.nodes"));
}

TEST(Nodes, CanBeWrittenByOperatorsOnly) {
  const std::string view = nodes({"--scope", "motion.view"}).out;
  const std::string operate = nodes({"--scope", "motion.operate"}).out;
  const std::string manage = nodes({"--scope", "motion.manage"}).out;
  EXPECT_EQ(countOf(view, "read (write) browse"), 100);
  EXPECT_EQ(countOf(operate, "read write browse"), 100);
  EXPECT_EQ(countOf(manage, "read write browse"), 100);
  EXPECT_THAT(operate, HasSubstr("what a client sees that holds motion.operate:\nmotion/state "));
  EXPECT_THAT(manage, HasSubstr("what a client sees that holds motion.manage:\nmotion "));
  EXPECT_THAT(manage, HasSubstr("\n        signals "));
}

TEST(Nodes, TakeOneScopeAtATime) {
  const ToolResult result = runTool({"nodes", "--scope", "motion.view", EXAMPLE, "--json", "--bundle", KAVO_BUNDLE});
  EXPECT_EQ(result.exitCode, 0) << "the file may stand behind a scope: " << show(result);
}

TEST(Nodes, AreHiddenFromNobody) {
  const ToolResult result = nodes({});
  EXPECT_EQ(result.exitCode, 0) << show(result);
  EXPECT_EQ(
      result.out,
      "a client without scopes sees nothing; scopes that can be granted: motion.manage, motion.operate, motion.view\n");
}

TEST(Nodes, AreShownWholeToTheHost) {
  const ToolResult result = nodes({"--unrestricted"});
  EXPECT_EQ(result.exitCode, 0) << show(result);
  EXPECT_THAT(result.out, HasSubstr("- motion/state/functions/kavo/signals/*\n"));
  EXPECT_THAT(result.out, HasSubstr("- motion.operate\n"));
  EXPECT_EQ(nodes({"--unrestricted", "--scope", "motion.view"}).exitCode, 2);
}

TEST(Nodes, AreShownToProgramsToo) {
  const ToolResult result = nodes({"--scope", "motion.view", "--json"});
  EXPECT_EQ(result.exitCode, 0) << show(result);
  const auto json = nlohmann::json::parse(result.out);
  const auto* node = &json.at("nodes").at(0);
  for (const char* address :
       {"motion/state/functions", "motion/state/functions/kavo", "motion/state/functions/kavo/signals"}) {
    node = &node->at("children").at(0);
    EXPECT_EQ(node->at("address"), address);
  }
  ASSERT_EQ(node->at("children").size(), 100U);
  const auto& signal = node->at("children").at(7);
  EXPECT_EQ(signal.at("name"), "release");
  EXPECT_EQ(signal.at("value"), false);
  EXPECT_EQ(signal.at("metadata").at("description"), "Kavo signal");
  EXPECT_EQ(signal.at("metadata").at("offered").at("write"), true);
  EXPECT_EQ(signal.at("metadata").at("allowed").at("write"), false);
}

TEST(Nodes, RefuseScopesThatAreNone) {
  const ToolResult result = nodes({"--scope", "motion.veiw"});
  EXPECT_EQ(result.exitCode, 2) << show(result);
  EXPECT_EQ(result.err, "there is no scope 'motion.veiw'; known here: motion.manage, motion.operate, motion.view\n");
}

class OutsideClient : public testing::Test {
 protected:
  ToolResult kavo(const std::string& command, const std::string& outside, const std::string& expected = "true") {
    const std::string scenario =
        "signals: {7: release}\n"
        "objects: [{name: A, type: axis}]\n"
        "program: {A: [Dwell: {time: 0.05}]}\n"
        "outside:\n" +
        outside + "expect:\n  - {at: end, signal: release, value: " + expected + "}\n";
    return runTool({command, m_scratch.write("scenario.yaml", scenario), "--bundle", KAVO_BUNDLE});
  }

  ScratchDir m_scratch;
};

TEST_F(OutsideClient, MayWriteWithTheRightScope) {
  const std::string outside =
      "  - {at: 10 ms, signal: release, value: true}\n"
      "  - {at: 20 ms, signal: release, value: false, scopes: [motion.view], refused: true}\n"
      "  - {at: 30 ms, signal: release, value: false, scopes: [], refused: true}\n"
      "  - {at: 40 ms, signal: 8, value: true, scopes: [motion.view, motion.manage]}\n";
  const ToolResult result = kavo("run", outside);
  EXPECT_EQ(result.exitCode, 0) << show(result);
  EXPECT_THAT(result.out, HasSubstr("signal 8 set from outside"));
  EXPECT_EQ(kavo("check", outside).exitCode, 0);
}

TEST_F(OutsideClient, IsRefusedWithoutTheRightScope) {
  const std::string outside = "  - {at: 10 ms, signal: release, value: true, scopes: [motion.view]}\n";
  const ToolResult run = kavo("run", outside, "false");
  EXPECT_EQ(run.exitCode, 1) << show(run);
  EXPECT_THAT(run.out, HasSubstr("line 5: signal 7 'release' could not be set by a client with the scope motion.view: "
                                 "DL_SEC_UNAUTHORIZED"));
  EXPECT_THAT(run.err, HasSubstr("scenario.yaml:5:5: signal 7 cannot be set by a client with the scope motion.view; name a "
                                 "scope that grants writing, as in 'scopes: [motion.operate]'"));
  EXPECT_EQ(kavo("check", outside).exitCode, 1);
}

TEST_F(OutsideClient, MustBeRefusedWhereARefusalIsExpected) {
  const std::string outside = "  - {at: 10 ms, signal: release, value: true, refused: true}\n";
  const ToolResult run = kavo("run", outside);
  EXPECT_EQ(run.exitCode, 1) << show(run);
  EXPECT_THAT(run.out, HasSubstr("line 5: signal 7 'release' was set by a client with the scope motion.operate, though a "
                                 "refusal was expected"));
  EXPECT_EQ(kavo("check", outside).exitCode, 1);
}

TEST_F(OutsideClient, NeedsScopesThatExist) {
  const ToolResult run = kavo("run", "  - {at: 10 ms, signal: release, value: true, scopes: [motion.veiw]}\n");
  EXPECT_EQ(run.exitCode, 2) << show(run);
  EXPECT_THAT(run.err, HasSubstr("scenario.yaml:5:56: scopes: unknown scope 'motion.veiw'; did you mean 'motion.view'?"));
  EXPECT_EQ(run.out, "");
}

TEST_F(OutsideClient, WhoIsRefusedSetsNothingForAnybody) {
  const std::string scenario =
      "objects: [{name: A, type: axis}]\n"
      "program: {A: [WaitForSignal: {signalId: 7}]}\n"
      "outside: [{at: 10 ms, signal: 7, value: true, scopes: [motion.view], refused: true}]\n";
  const ToolResult check = runTool({"check", m_scratch.write("waits.yaml", scenario), "--bundle", KAVO_BUNDLE});
  EXPECT_EQ(check.exitCode, 1) << show(check);
  EXPECT_THAT(check.err, HasSubstr("waits for ever: nobody sets signal 7"));
}

}  // namespace
}  // namespace motion::test
