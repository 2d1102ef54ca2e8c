// The suite as a whole: its names, its list of statements, the bundle that passes, and the tool.
#include <fnmatch.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <ostream>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "conformance/runner.h"
#include "tool_run.h"

namespace motion::conformance {

/// For names of tests; GoogleTest looks for it beside the type.
void PrintTo(const Check& check, std::ostream* stream) {
  *stream << check.name << ": " << check.sentence;
}

namespace {

std::string text(const std::string& file) {
  std::ifstream stream(file);
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

std::set<std::string> namesOf(const Checks& checks) {
  std::set<std::string> names;
  for (const auto& check : checks) {
    names.insert(check.name);
  }
  return names;
}

TEST(SuiteTest, GivesEachCheckANameOfItsOwnAndASentence) {
  const auto checks = allChecks();
  EXPECT_EQ(namesOf(checks).size(), checks.size());
  const std::regex form("[a-z-]+(\\.[A-Za-z0-9_-]+)+");
  for (const auto& check : checks) {
    EXPECT_TRUE(std::regex_match(check.name, form)) << check.name;
    EXPECT_GT(check.sentence.size(), 10U) << check.name;
    EXPECT_TRUE(check.run != nullptr) << check.name;
  }
}

/// The names in the last column of the tables, as patterns of a shell: `<row>` in a name stands for several checks, one for
/// each row of a table.
std::vector<std::string> mappedNames(const std::string& readme) {
  const std::regex lastColumn("\\|([^|\n]*)\\|\n");
  const std::regex name("`([a-z-]+\\.[^`]+)`");
  std::vector<std::string> names;
  for (auto row = std::sregex_iterator(readme.begin(), readme.end(), lastColumn); row != std::sregex_iterator(); ++row) {
    const std::string column = (*row)[1];
    for (auto it = std::sregex_iterator(column.begin(), column.end(), name); it != std::sregex_iterator(); ++it) {
      names.push_back(std::regex_replace((*it)[1].str(), std::regex("<[^>]*>"), "*"));
    }
  }
  return names;
}

bool matches(const std::string& check, const std::string& pattern) {
  return fnmatch(pattern.c_str(), check.c_str(), 0) == 0;
}

TEST(SuiteTest, MapsStatementsToExactlyItsChecks) {
  const auto mapped = mappedNames(text("source/tests/conformance/README.md"));
  const auto names = namesOf(allChecks());
  for (const auto& check : names) {
    EXPECT_TRUE(std::ranges::any_of(mapped, [&](const auto& pattern) { return matches(check, pattern); }))
        << check << " stands for no statement";
  }
  for (const auto& pattern : mapped) {
    EXPECT_TRUE(std::ranges::any_of(names, [&](const auto& check) { return matches(check, pattern); }))
        << "there is no check " << pattern;
  }
}

/// Every check, on the bundle of this build tree.
class BundleTest : public testing::TestWithParam<Check> {};

TEST_P(BundleTest, Passes) {
  const auto verdict = runCheck(GetParam(), KAVO_BUNDLE);
  EXPECT_EQ(verdict.outcome, Outcome::PASSED)
      << verdict.what << "\nexpected " << verdict.expected << "\nfound " << verdict.found;
}

std::string testName(const std::string& name) {
  return std::regex_replace(name, std::regex("[^A-Za-z0-9]"), "_");
}

INSTANTIATE_TEST_SUITE_P(Conformance, BundleTest, testing::ValuesIn(allChecks()),
                         [](const auto& one) { return testName(one.param.name); });

TEST(ConformanceToolTest, PrintsLinesAndASum) {
  const auto result = test::runTool({"--bundle", KAVO_BUNDLE, "--filter", "lifecycle.init"});
  EXPECT_EQ(result.exitCode, 0) << test::show(result);
  EXPECT_EQ(result.out, "  passed    lifecycle.init\n\n1 passed, 0 failed\n");
}

TEST(ConformanceToolTest, SpeaksJson) {
  const auto result = test::runTool({"--bundle", KAVO_BUNDLE, "--filter", "lifecycle.init", "--json"});
  EXPECT_EQ(result.exitCode, 0) << test::show(result);
  EXPECT_THAT(result.out, testing::HasSubstr("\"outcome\": \"passed\""));
}

TEST(ConformanceToolTest, ListsWithoutABundle) {
  const auto result = test::runTool({"--list", "--filter", "lifecycle.init"});
  EXPECT_EQ(result.exitCode, 0) << test::show(result);
  EXPECT_THAT(result.out, testing::StartsWith("lifecycle.init "));
}

TEST(ConformanceToolTest, RefusesBadInput) {
  EXPECT_EQ(test::runTool({}).exitCode, 2);
  EXPECT_EQ(test::runTool({"--bundle", KAVO_BUNDLE, "--time-limit", "0"}).exitCode, 2);
  const auto missing = test::runTool({"--bundle", "nowhere"});
  EXPECT_EQ(missing.exitCode, 2);
  EXPECT_EQ(missing.err, "kavo-conformance: nowhere: there is no libmotion_kavo.so; name the directory of a built bundle\n");
  const auto unknown = test::runTool({"--bundle", KAVO_BUNDLE, "--filter", "no such"});
  EXPECT_EQ(unknown.exitCode, 2);
  EXPECT_EQ(unknown.err, "kavo-conformance: no check has \"no such\" in its name; --list names them all\n");
}

}  // namespace
}  // namespace motion::conformance
