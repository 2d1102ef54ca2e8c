// The door as users meet it: a run in one terminal, kavo in another.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>
#include <vector>

#include "tool_run.h"

namespace motion::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;
using Json = nlohmann::json;

constexpr const char* WAITING =
    "signals: {5: part in place, 6: glue valve, 7: go on}\n"
    "objects: [{name: Feeder, type: axis}, {name: Robot, type: kinematics}]\n"
    "program:\n"
    "  Feeder: [WaitForSignal: {signalId: 5, autoReset: true}, SetSignal: {signalId: 6}]\n"
    "  Robot: [WaitForSignal: {signalId: 7}]\n";

/// Sockets of these runs stay in a directory of the test.
class DoorScenario : public testing::Test {
 protected:
  DoorScenario() { setenv("XDG_RUNTIME_DIR", m_runtime.path().c_str(), 1); }
  ~DoorScenario() override { unsetenv("XDG_RUNTIME_DIR"); }

  std::vector<std::string> runArguments(std::vector<std::string> more) {
    std::vector<std::string> arguments{"run", m_scratch.write("scenario.yaml", WAITING), "--bundle", KAVO_BUNDLE,
                                       "--real-time"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
  }

  /// What kavo says, once it finds the run and ends with that code.
  ToolResult untilExit(int code, const std::vector<std::string>& arguments) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    ToolResult result = runTool(arguments);
    while (result.exitCode != code && std::chrono::steady_clock::now() < deadline) {
      result = runTool(arguments);
    }
    EXPECT_EQ(result.exitCode, code) << show(result);
    return result;
  }

  ScratchDir m_runtime;
  ScratchDir m_scratch;
};

TEST_F(DoorScenario, ARunIsActedOnFromAnotherTerminal) {
  RunningTool run(runArguments({"--keep-waiting"}));
  const ToolResult table = untilExit(0, {"signals"});
  EXPECT_THAT(table.out,
              AllOf(StartsWith("cycle "), HasSubstr("reset  signal 5 'part in place'\n"), HasSubstr("  90  . . .")));
  EXPECT_THAT(runTool({"why"}).out, HasSubstr("Feeder waits in Feeder#1 WaitForSignal"));
  EXPECT_EQ(runTool({"get", "glue valve"}).out, "signal 6 'glue valve' is reset\n");
  EXPECT_EQ(runTool({"set", "part in place"}).out, "signal 5 'part in place' has been set\n");
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  while (runTool({"get", "6"}).out != "signal 6 'glue valve' is set\n") {
    ASSERT_LT(std::chrono::steady_clock::now(), deadline) << "Feeder did not go on";
  }
  EXPECT_THAT(runTool({"signals"}).out, HasSubstr("set    signal 6 'glue valve'\n"));
  EXPECT_EQ(runTool({"reset", "6"}).out, "signal 6 'glue valve' has been reset\n");
  EXPECT_EQ(Json::parse(runTool({"get", "6", "--json"}).out), Json::parse(R"({"id":6,"name":"glue valve","value":false})"));
  EXPECT_EQ(runTool({"set", "7"}).exitCode, 0);
  const ToolResult result = run.wait();
  EXPECT_EQ(result.exitCode, 0) << show(result);
  EXPECT_THAT(result.out, AllOf(HasSubstr("signal 5 'part in place' set from outside"),
                                HasSubstr("signal 6 'glue valve' reset from outside")));
  EXPECT_TRUE(std::filesystem::is_empty(m_runtime.path() / "kavo")) << "the socket is gone";
}

TEST_F(DoorScenario, WatchersPrintEachChangeUntilTheEnd) {
  RunningTool run(runArguments({"--keep-waiting"}));
  untilExit(0, {"get", "5"});
  RunningTool watcher({"watch", "5", "glue valve"});
  RunningTool impatient({"watch", "--json"});
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  while (watcher.outSoFar().find("signal 6 'glue valve' is reset\n") == std::string::npos ||
         impatient.outSoFar().find("\"id\":99") == std::string::npos) {
    ASSERT_LT(std::chrono::steady_clock::now(), deadline) << watcher.outSoFar();
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  impatient.send(SIGINT);
  EXPECT_EQ(impatient.wait().exitCode, 0) << "who has seen enough may go";
  EXPECT_EQ(runTool({"set", "5"}).exitCode, 0);
  while (watcher.outSoFar().find("signal 6 'glue valve' set by Feeder#2\n") == std::string::npos) {
    ASSERT_LT(std::chrono::steady_clock::now(), deadline) << watcher.outSoFar();
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  EXPECT_EQ(runTool({"set", "7"}).exitCode, 0);
  EXPECT_EQ(run.wait().exitCode, 0);
  const ToolResult watched = watcher.wait();
  EXPECT_EQ(watched.exitCode, 0) << show(watched);
  EXPECT_THAT(watched.out, testing::MatchesRegex("cycle 0  0.000 s  signal 5 'part in place' is reset\n"
                                                 "cycle 0  0.000 s  signal 6 'glue valve' is reset\n"
                                                 "cycle [0-9]+  [0-9.]+ s  signal 5 'part in place' set from outside\n"
                                                 "cycle [0-9]+  [0-9.]+ s  signal 5 'part in place' reset by Feeder#1\n"
                                                 "cycle [0-9]+  [0-9.]+ s  signal 6 'glue valve' set by Feeder#2\n"
                                                 "cycle [0-9]+  the run has ended\n"));
}

TEST_F(DoorScenario, WhoMayOnlyLookIsRefused) {
  RunningTool run(runArguments({"--keep-waiting", "--grant", "motion.operate", "--grant", "motion.view"}));
  untilExit(0, {"signals", "--scope", "motion.view"});
  const ToolResult refused = runTool({"set", "7", "--scope", "motion.view"});
  EXPECT_EQ(refused.exitCode, 1) << show(refused);
  EXPECT_EQ(refused.err, "kavo: Signal 7 'go on' could not be set: the scopes of this request do not allow it\n");
  const ToolResult foreign = runTool({"get", "7", "--scope", "motion.manage"});
  EXPECT_EQ(foreign.exitCode, 1) << show(foreign);
  EXPECT_THAT(foreign.err,
              HasSubstr("names 'motion.manage', which this run does not grant. It grants: motion.operate, motion.view."));
  EXPECT_EQ(runTool({"get", "7"}).out, "signal 7 'go on' is reset\n");
  EXPECT_EQ(runTool({"set", "100"}).exitCode, 2);
  const ToolResult unknown = runTool({"set", "no such name"});
  EXPECT_EQ(unknown.exitCode, 2);
  EXPECT_THAT(unknown.err, HasSubstr("'no such name' is neither the number of a signal nor the name of one"));
  EXPECT_EQ(runTool({"set", "5"}).exitCode, 0);
  EXPECT_EQ(runTool({"set", "7"}).exitCode, 0);
  EXPECT_EQ(run.wait().exitCode, 0);
}

TEST_F(DoorScenario, WithoutARunThereIsNothingToActOn) {
  for (const char* const command : {"signals", "why", "watch"}) {
    const ToolResult result = runTool({command});
    EXPECT_EQ(result.exitCode, 2) << show(result);
    EXPECT_THAT(result.err,
                StartsWith("kavo: no run is going on: there is no door in " + m_runtime.path().string() + "/kavo."));
  }
  const ToolResult named = runTool({"set", "5", "--socket", m_scratch.path() / "none.sock"});
  EXPECT_EQ(named.exitCode, 2);
  EXPECT_THAT(named.err, HasSubstr("no run answers at"));
}

TEST_F(DoorScenario, SeveralRunsAreToldApart) {
  const std::string other = m_runtime.path() / "kavo" / "other.sock";
  RunningTool first(runArguments({"--keep-waiting"}));
  untilExit(0, {"get", "5"});
  RunningTool second(runArguments({"--keep-waiting", "--socket", other}));
  untilExit(0, {"get", "5", "--socket", other});
  const ToolResult unclear = runTool({"get", "5"});
  EXPECT_EQ(unclear.exitCode, 2);
  EXPECT_THAT(unclear.err, AllOf(StartsWith("kavo: several runs are going on; choose one of them with --socket:\n"),
                                 HasSubstr(other + "  "), HasSubstr("scenario.yaml")));
  for (const char* const signal : {"5", "7"}) {
    EXPECT_EQ(runTool({"set", signal, "--socket", other}).exitCode, 0);
  }
  EXPECT_EQ(second.wait().exitCode, 0);
  for (const char* const signal : {"5", "7"}) {
    EXPECT_EQ(runTool({"set", signal}).exitCode, 0);
  }
  EXPECT_EQ(first.wait().exitCode, 0);
}

TEST_F(DoorScenario, ADoorThatCannotBeOpenedWhereItWasAskedForStopsTheRun) {
  const std::string file = m_scratch.write("important", "text");
  const ToolResult result = runTool(runArguments({"--socket", file}));
  EXPECT_EQ(result.exitCode, 2) << show(result);
  EXPECT_THAT(result.err, HasSubstr("is there and is no socket; it stays as it is"));
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(readFile(file), "text");
}

TEST_F(DoorScenario, ADefaultPlaceThatIsNotSafeIsAWarning) {
  std::filesystem::create_directory(m_runtime.path() / "kavo");
  ASSERT_EQ(chmod((m_runtime.path() / "kavo").c_str(), 0777), 0);
  const ToolResult result = runTool(runArguments({"--keep-waiting", "--json"}));
  EXPECT_EQ(result.exitCode, 1) << "nobody could let it go on, so it does not wait";
  EXPECT_THAT(result.err, HasSubstr("warning: the run has no door: others may write to the directory"));
}

TEST_F(DoorScenario, ARunNeedsNoDoor) {
  const ToolResult result = runTool(runArguments({"--no-door"}));
  EXPECT_EQ(result.exitCode, 1) << "it is stuck";
  EXPECT_FALSE(std::filesystem::exists(m_runtime.path() / "kavo"));
  for (const std::vector<std::string>& words : {std::vector<std::string>{"--no-door", "--keep-waiting"},
                                                {"--no-door", "--socket", "/tmp/x.sock"},
                                                {"--keep-waiting", "--stuck-after", "5"}}) {
    EXPECT_EQ(runTool(runArguments(words)).exitCode, 2);
  }
}

}  // namespace
}  // namespace motion::test
