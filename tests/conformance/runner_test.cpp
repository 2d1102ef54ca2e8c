// Checks that end in every way a check can end.
#include "conformance/runner.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <thread>

#include "conformance/expect.h"

namespace motion::conformance {
namespace {

Verdict run(const std::function<void(const Bundle&)>& body, std::chrono::seconds limit = std::chrono::seconds(20)) {
  return runCheck({"a.check", "a sentence", body, limit}, KAVO_BUNDLE);
}

TEST(RunnerTest, PassesWhatReturns) {
  const auto verdict = run([](const Bundle& bundle) { static_cast<void>(bundle); });
  EXPECT_EQ(verdict.outcome, Outcome::PASSED) << verdict.what;
  EXPECT_EQ(verdict.what, "");
}

TEST(RunnerTest, KeepsTheRemarksOfAPass) {
  const auto verdict = run([](const Bundle&) {
    remark("3 tried");
    remark("none left");
  });
  EXPECT_EQ(verdict.outcome, Outcome::PASSED);
  EXPECT_EQ(verdict.what, "3 tried, none left");
}

TEST(RunnerTest, TellsWhatWasExpectedAndWhatWasFound) {
  const auto verdict = run([](const Bundle&) { expectEqual("the number", 4, 5); });
  EXPECT_EQ(verdict.outcome, Outcome::FAILED);
  EXPECT_EQ(verdict.what, "the number");
  EXPECT_EQ(verdict.expected, "5");
  EXPECT_EQ(verdict.found, "4");
}

TEST(RunnerTest, FailsWhatThrows) {
  EXPECT_EQ(run([](const Bundle&) { throw std::runtime_error("no"); }).what, "an exception: no");
  EXPECT_EQ(run([](const Bundle&) { throw 5; }).what, "an exception of an unknown type");
  EXPECT_EQ(run([](const Bundle&) { throw 5; }).outcome, Outcome::FAILED);
}

TEST(RunnerTest, SaysWhichSignalEndedACheck) {
  const auto verdict = run([](const Bundle&) {
    std::signal(SIGTERM, SIG_DFL);
    std::raise(SIGTERM);
  });
  EXPECT_EQ(verdict.outcome, Outcome::CRASHED);
  EXPECT_THAT(verdict.what, testing::StartsWith("killed by signal 15"));
}

TEST(RunnerTest, TakesACheckThatLeavesTheProcessForACrash) {
  EXPECT_EQ(run([](const Bundle&) { std::_Exit(0); }).outcome, Outcome::CRASHED);
  EXPECT_THAT(run([](const Bundle&) { std::_Exit(7); }).what, testing::HasSubstr("exit code 7"));
}

TEST(RunnerTest, TakesACrashAfterTheCheckForACrash) {
  const auto verdict = run([](const Bundle&) { std::atexit([] { std::raise(SIGKILL); }); });
  EXPECT_EQ(verdict.outcome, Outcome::CRASHED);
  EXPECT_THAT(verdict.what, testing::HasSubstr("after its end"));
}

TEST(RunnerTest, EndsWhatDoesNotEnd) {
  const auto verdict =
      run([](const Bundle&) { std::this_thread::sleep_for(std::chrono::hours(1)); }, std::chrono::seconds(1));
  EXPECT_EQ(verdict.outcome, Outcome::TIMED_OUT);
  EXPECT_EQ(verdict.what, "still running after 1 s");
  EXPECT_GE(verdict.duration.count(), 1000);
}

TEST(RunnerTest, FailsWithoutABundle) {
  const auto verdict = runCheck({"a.check", "", [](const Bundle&) {}}, "plugins/empty");
  EXPECT_EQ(verdict.outcome, Outcome::FAILED);
  EXPECT_THAT(verdict.what, testing::HasSubstr("libmotion_kavo.so: cannot be loaded"));
  EXPECT_THAT(runCheck({"a.check", "", [](const Bundle&) {}}, "plugins/no_factory").what,
              testing::HasSubstr("createMotionKavoCmp"));
}

}  // namespace
}  // namespace motion::conformance
