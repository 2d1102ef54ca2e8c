// Bundles that are the component but for one mistake each, and the checks that are meant to find it.
#include <gmock/gmock.h>

#include <ostream>
#include <string>
#include <vector>

#include "conformance/runner.h"
#include "tool_run.h"

namespace motion::conformance {
namespace {

struct WrongBundle {
  std::string name;
  std::string check;    ///< that is meant for its mistake
  std::string mistake;  ///< in words
};

void PrintTo(const WrongBundle& wrong, std::ostream* stream) {
  *stream << wrong.name << ": " << wrong.mistake;
}

const std::vector<WrongBundle> WRONG_BUNDLES = {
#include "wrong_bundles.inc"
};

/// Bundles with one mistake each.
class WrongBundleTest : public testing::TestWithParam<WrongBundle> {};

TEST_P(WrongBundleTest, IsCaughtByTheCheckThatIsMeantForIt) {
  bool isFound = false;
  for (const auto& check : allChecks()) {
    if (check.name == GetParam().check) {
      isFound = true;
      const auto verdict = runCheck(check, "wrong/" + GetParam().name);
      EXPECT_NE(verdict.outcome, Outcome::PASSED) << GetParam().mistake;
      EXPECT_THAT(verdict.what, testing::Not(testing::HasSubstr("cannot be loaded")));
    }
  }
  EXPECT_TRUE(isFound) << "no check " << GetParam().check;
}

INSTANTIATE_TEST_SUITE_P(Conformance, WrongBundleTest, testing::ValuesIn(WRONG_BUNDLES),
                         [](const auto& one) { return one.param.name; });

TEST(WrongBundlesTest, AreTwentyAtLeast) {
  EXPECT_GE(WRONG_BUNDLES.size(), 20U);
}

TEST(WrongBundlesTest, MakeTheToolEndWithOne) {
  const auto& wrong = WRONG_BUNDLES.front();
  const auto result = test::runTool({"--bundle", "wrong/" + wrong.name, "--filter", wrong.check});
  EXPECT_EQ(result.exitCode, 1) << test::show(result);
  EXPECT_THAT(result.out, testing::HasSubstr(wrong.check));
  EXPECT_THAT(result.out, testing::HasSubstr("1 failed"));
}

}  // namespace
}  // namespace motion::conformance
