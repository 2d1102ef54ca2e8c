// Reads scenario files: the YAML in which users describe objects, programs, outside events and expectations.
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "host/scenario/problem.h"
#include "host/scenario/scenario.h"

namespace motion::host::scenario {

/// Longer files are refused unread. [byte]
inline constexpr std::size_t MAX_SCENARIO_SIZE = std::size_t{1} << 20;

struct ReadResult {
  std::optional<Scenario> scenario;  ///< empty if anything but a warning was found
  Problems problems;                 ///< in the order of the file
};

/// Command and option names and their parameters are taken as they are: what is right for them is known to whoever
/// registered the commands. Everything else is checked. No exception leaves. [any]
[[nodiscard]] ReadResult readScenarioFile(const std::filesystem::path& path);

/// The same for a text in memory; `fileName` is what the problems name as their file. [any]
[[nodiscard]] ReadResult readScenarioText(std::string_view text, std::string fileName);

}  // namespace motion::host::scenario
