// What the suite prints.
#include "conformance/report.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace motion::conformance {
namespace {

const Check CHECK{"group.name", "something holds", nullptr};

CheckResult result(Outcome outcome, const std::string& what = "", const std::string& expected = "",
                   const std::string& found = "") {
  return {&CHECK, {outcome, what, expected, found, std::chrono::milliseconds(12)}};
}

TEST(ReportTest, ShowsAPassInOneLine) {
  EXPECT_EQ(lineOf(result(Outcome::PASSED)), "  passed    group.name");
  EXPECT_EQ(lineOf(result(Outcome::PASSED, "12 tried")), "  passed    group.name (12 tried)");
}

TEST(ReportTest, ShowsWhatDiffers) {
  EXPECT_EQ(lineOf(result(Outcome::FAILED, "the texts", "\"a\"", "2 element(s)\n  \"b\"")),
            "  failed    group.name\n      says      something holds\n      at        the texts\n      expected  \"a\"\n"
            "      found     2 element(s)\n                  \"b\"");
}

TEST(ReportTest, ShowsHowACheckEnded) {
  EXPECT_EQ(lineOf(result(Outcome::CRASHED, "killed by signal 11")),
            "  crashed   group.name\n      says      something holds\n      how       killed by signal 11");
  EXPECT_EQ(lineOf(result(Outcome::TIMED_OUT, "still running")).substr(0, 11), "  timed out");
}

TEST(ReportTest, CountsWhatDidNotPass) {
  EXPECT_EQ(summaryOf({result(Outcome::PASSED), result(Outcome::PASSED)}), "2 passed, 0 failed");
  EXPECT_EQ(
      summaryOf({result(Outcome::PASSED), result(Outcome::FAILED), result(Outcome::CRASHED), result(Outcome::TIMED_OUT)}),
      "1 passed, 3 failed (1 crashed, 1 timed out)");
}

TEST(ReportTest, TellsProgramsTheSame) {
  const auto json = nlohmann::json::parse(jsonOf("a/bundle", {result(Outcome::FAILED, "x", "y", "z\xff")}));
  EXPECT_EQ(json["bundle"], "a/bundle");
  EXPECT_EQ(json["failed"], 1);
  EXPECT_EQ(json["passed"], 0);
  const auto& check = json["checks"].at(0);
  EXPECT_EQ(check["name"], "group.name");
  EXPECT_EQ(check["sentence"], "something holds");
  EXPECT_EQ(check["outcome"], "failed");
  EXPECT_EQ(check["expected"], "y");
  EXPECT_EQ(check["ms"], 12);
}

}  // namespace
}  // namespace motion::conformance
