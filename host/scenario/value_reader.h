// Single values of a scenario: each function reads one, or reports what is wrong with it and what would be right.
#pragma once

#include <array>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/scenario/problem_collector.h"
#include "host/scenario/scenario.h"

namespace motion::host::scenario {

/// What stands there, for messages: "'abc'", "a list", "a map", "nothing".
[[nodiscard]] std::string describe(const Value& value);

/// The value in one line, as it would be written in YAML's inline style; the outermost braces are left out.
[[nodiscard]] std::string inOneLine(const Value& value);

/// "position: expected a number, found a list". Every message about a value begins with the name of what it is for.
void reportUnexpected(const Value& value, std::string_view what, std::string_view expected, ProblemCollector& problems,
                      std::string remedy = {});

[[nodiscard]] bool isKind(const Value& value, Value::Kind kind, std::string_view what, ProblemCollector& problems);
/// As isKind, but nothing at all is right too and counts as an empty list or map.
[[nodiscard]] bool isKindOrEmpty(const Value& value, Value::Kind kind, std::string_view what, ProblemCollector& problems);

/// The text of a scalar that is not empty; null after a report. Lives as long as the value.
[[nodiscard]] const std::string* readWord(const Value& value, std::string_view what, ProblemCollector& problems);
[[nodiscard]] std::optional<bool> readBool(const Value& value, std::string_view what, ProblemCollector& problems);
[[nodiscard]] std::optional<std::uint32_t> readInteger(const Value& value, std::string_view what, std::uint32_t least,
                                                       std::uint32_t most, ProblemCollector& problems);
/// [mm] in the file, [m] as result
[[nodiscard]] std::optional<double> readLength(const Value& value, std::string_view what, ProblemCollector& problems);
/// Where an object of that type can be: for a kinematics a list of three lengths, else one length, which stands first. Says
/// nothing about an object of unknown type.
[[nodiscard]] std::array<double, 3> readPosition(const Value& value, std::string_view what, core::ObjectType type,
                                                 ProblemCollector& problems);
/// With its unit in the file, [s] as result; not negative.
[[nodiscard]] std::optional<double> readTime(const Value& value, std::string_view what, ProblemCollector& problems);

/// Looks up the fields of a map. Reports the keys that it does not know on construction, and fields that are needed but
/// absent when they are asked for.
class MapReader {
 public:
  /// `what` begins the messages about the map; `keys` are all that it may hold. The map must outlive the reader.
  MapReader(const Value& map, std::string what, std::initializer_list<std::string_view> keys, ProblemCollector& problems);

  [[nodiscard]] const Value* find(std::string_view key) const;
  [[nodiscard]] const Value* require(std::string_view key) const;

 private:
  const Value& m_map;
  std::string m_what;
  std::vector<std::string_view> m_keys;
  ProblemCollector& m_problems;
};

}  // namespace motion::host::scenario
