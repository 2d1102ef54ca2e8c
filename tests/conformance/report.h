// What the suite prints.
#pragma once

#include <string>
#include <vector>

#include "conformance/runner.h"

namespace motion::conformance {

/// A check with its verdict.
struct CheckResult {
  const Check* check = nullptr;
  Verdict verdict;
};

/// One check as a line for people, with what differs on the lines below it.
[[nodiscard]] std::string lineOf(const CheckResult& result);
/// "N passed, N failed", crashes and time-outs counted as failures and named.
[[nodiscard]] std::string summaryOf(const std::vector<CheckResult>& results);
/// All of it for programs: {"bundle", "checks": [{"name", "sentence", "outcome", "what", "expected", "found", "ms"}],
/// "passed", "failed", "crashed", "timedOut"}.
[[nodiscard]] std::string jsonOf(const std::string& bundle, const std::vector<CheckResult>& results);

}  // namespace motion::conformance
