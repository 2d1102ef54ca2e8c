// Runs checks, each in a child process, so that a crash is a result like any other.
#pragma once

#include <chrono>
#include <filesystem>
#include <string>

#include "conformance/check.h"

namespace motion::conformance {

enum class Outcome { PASSED, FAILED, CRASHED, TIMED_OUT };

/// The outcome as reports write it: "passed", "failed", "crashed", "timed out".
[[nodiscard]] const char* toString(Outcome outcome) noexcept;

struct Verdict {
  Outcome outcome = Outcome::PASSED;
  std::string what;      ///< what was looked at when it failed; how it ended when it crashed or timed out; remarks else
  std::string expected;  ///< empty unless it failed on a comparison
  std::string found;
  std::chrono::milliseconds duration{0};
};

/// Limit of a check that names none. Generous: it is there for bundles that hang.
inline constexpr std::chrono::seconds DEFAULT_TIME_LIMIT{60};

/// Forks; the child loads the bundle and runs the check. An orderly end of the child belongs to the check: a bundle that
/// crashes while its static objects are destroyed has crashed. Call it from a process with one thread. Throws
/// std::system_error when no process can be made.
[[nodiscard]] Verdict runCheck(const Check& check, const std::filesystem::path& bundleDirectory,
                               std::chrono::seconds defaultLimit = DEFAULT_TIME_LIMIT);

}  // namespace motion::conformance
