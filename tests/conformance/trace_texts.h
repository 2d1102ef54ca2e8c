// Traces as checks expect them.
#pragma once

#include <fmt/format.h>

#include <initializer_list>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "conformance/check.h"

namespace motion::conformance {

using Texts = std::vector<std::string>;

/// @name A trace as Subject::traces gives it.
/// @{
[[nodiscard]] inline std::string infoOf(const std::string& unit, const std::string& function, const std::string& text) {
  return fmt::format("Info {} {}: {}", unit, function, text);
}
[[nodiscard]] inline std::string warningOf(const std::string& unit, const std::string& function, const std::string& text) {
  return fmt::format("Warning {} {}: {}", unit, function, text);
}
[[nodiscard]] inline std::string errorOf(const std::string& unit, const std::string& function, const std::string& text) {
  return fmt::format("Error {} {}: {}", unit, function, text);
}
/// @}

/// The checks of one group out of several files.
[[nodiscard]] inline Checks together(std::initializer_list<Checks> parts) {
  Checks all;
  for (const auto& part : parts) {
    all.insert(all.end(), part.begin(), part.end());
  }
  return all;
}

}  // namespace motion::conformance
