// What the suite prints.
#include "conformance/report.h"

#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>

namespace motion::conformance {
namespace {

std::size_t count(const std::vector<CheckResult>& results, Outcome outcome) {
  return static_cast<std::size_t>(std::count_if(
      results.begin(), results.end(), [outcome](const CheckResult& result) { return result.verdict.outcome == outcome; }));
}

std::string indented(const std::string& text) {
  std::string result;
  for (const char letter : text) {
    result += letter;
    if (letter == '\n') {
      result += "                ";
    }
  }
  return result;
}

}  // namespace

std::string lineOf(const CheckResult& result) {
  const auto& [outcome, what, expected, found, duration] = result.verdict;
  auto text = fmt::format("  {:<9} {}", toString(outcome), result.check->name);
  if (outcome == Outcome::PASSED) {
    return what.empty() ? text : fmt::format("{} ({})", text, what);
  }
  text += fmt::format("\n      says      {}\n      {:<9} {}", result.check->sentence,
                      outcome == Outcome::FAILED ? "at" : "how", indented(what));
  if (!expected.empty() || !found.empty()) {
    text += fmt::format("\n      expected  {}\n      found     {}", indented(expected), indented(found));
  }
  return text;
}

std::string summaryOf(const std::vector<CheckResult>& results) {
  const auto passed = count(results, Outcome::PASSED);
  const auto crashed = count(results, Outcome::CRASHED);
  const auto timedOut = count(results, Outcome::TIMED_OUT);
  std::string details;
  if (crashed + timedOut > 0) {
    details = fmt::format(" ({} crashed, {} timed out)", crashed, timedOut);
  }
  return fmt::format("{} passed, {} failed{}", passed, results.size() - passed, details);
}

std::string jsonOf(const std::string& bundle, const std::vector<CheckResult>& results) {
  auto checks = nlohmann::ordered_json::array();
  for (const auto& [check, verdict] : results) {
    checks.push_back({{"name", check->name},
                      {"sentence", check->sentence},
                      {"outcome", toString(verdict.outcome)},
                      {"what", verdict.what},
                      {"expected", verdict.expected},
                      {"found", verdict.found},
                      {"ms", verdict.duration.count()}});
  }
  const nlohmann::ordered_json report = {{"bundle", bundle},
                                         {"checks", checks},
                                         {"passed", count(results, Outcome::PASSED)},
                                         {"failed", count(results, Outcome::FAILED)},
                                         {"crashed", count(results, Outcome::CRASHED)},
                                         {"timedOut", count(results, Outcome::TIMED_OUT)}};
  return report.dump(2, ' ', false, nlohmann::json::error_handler_t::replace);
}

}  // namespace motion::conformance
