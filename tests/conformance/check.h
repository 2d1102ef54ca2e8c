// A statement about a bundle that is looked at in a child process.
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "conformance/bundle.h"

namespace motion::conformance {

/// One check. Its name never changes once it has been published: "group.what-is-said".
struct Check {
  std::string name;
  std::string sentence;  ///< what holds for a bundle that passes
  /// Throws a Mismatch where the bundle is different.
  std::function<void(const Bundle& bundle)> run;
  /// How long it takes at most [s]; none means the suite's own limit.
  std::chrono::seconds timeLimit{0};
};

using Checks = std::vector<Check>;

/// @name The checks of each group, in the order in which they run.
/// @{
[[nodiscard]] Checks lifecycleChecks();
[[nodiscard]] Checks serviceChecks();
[[nodiscard]] Checks sectionChecks();
[[nodiscard]] Checks systemFunctionChecks();
[[nodiscard]] Checks commandFunctionChecks();
[[nodiscard]] Checks traceChecks();
[[nodiscard]] Checks signalStoreChecks();
[[nodiscard]] Checks memoryChecks();
[[nodiscard]] Checks providerChecks();
[[nodiscard]] Checks nodeChecks();
[[nodiscard]] Checks metadataChecks();
[[nodiscard]] Checks scopeChecks();
[[nodiscard]] Checks registrationChecks();
[[nodiscard]] Checks marshallingChecks();
[[nodiscard]] Checks commandChecks();
[[nodiscard]] Checks signalJobChecks();
[[nodiscard]] Checks joinChecks();
[[nodiscard]] Checks optionChecks();
[[nodiscard]] Checks pathChecks();
[[nodiscard]] Checks journalChecks();
[[nodiscard]] Checks faultChecks();
/// @}

/// All of them.
[[nodiscard]] Checks allChecks();

}  // namespace motion::conformance
