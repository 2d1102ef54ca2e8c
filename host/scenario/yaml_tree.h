// Turns YAML text into a tree of values with their places. Nothing of the YAML library is visible outside.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "host/scenario/problem_collector.h"
#include "host/scenario/scenario.h"

namespace motion::host::scenario {

/// No scenario nests deeper; what does is a mistake or an attack.
inline constexpr std::size_t MAX_YAML_DEPTH = 32;
/// More values than the longest text can spell out one by one: only aliases that repeat one another reach it.
inline constexpr std::size_t MAX_YAML_VALUES = 1'200'000;

/// The value that the text's one document holds, empty if it cannot be used. Keys that stand twice in one map are reported
/// and the later one is left out. Aliases are replaced by what they name. Columns count characters, not bytes.
[[nodiscard]] std::optional<Value> parseYaml(const std::string& text, ProblemCollector& problems);

}  // namespace motion::host::scenario
