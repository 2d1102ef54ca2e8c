// What a check compares, and how it says what differs.
#pragma once

#include <fmt/format.h>

#include <cstdint>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "comm/datalayer/dl_result.h"

namespace motion::conformance {

/// Ends a check: what was looked at, what should have been found, and what was.
class Mismatch : public std::runtime_error {
 public:
  Mismatch(std::string subject, std::string expected, std::string found)
      : std::runtime_error(subject + ": expected " + expected + ", found " + found),
        m_subject(std::move(subject)),
        m_expected(std::move(expected)),
        m_found(std::move(found)) {}

  [[nodiscard]] const std::string& subject() const noexcept { return m_subject; }
  [[nodiscard]] const std::string& expected() const noexcept { return m_expected; }
  [[nodiscard]] const std::string& found() const noexcept { return m_found; }

 private:
  std::string m_subject;
  std::string m_expected;
  std::string m_found;
};

/// @name A value as a report shows it: results in hexadecimal digits, texts in quotes, lists line by line.
/// @{
[[nodiscard]] inline std::string show(bool value) {
  return value ? "true" : "false";
}
[[nodiscard]] inline std::string show(std::string_view value) {
  return fmt::format("\"{}\"", value);
}
[[nodiscard]] inline std::string show(const std::string& value) {
  return show(std::string_view(value));
}
[[nodiscard]] inline std::string show(const char* value) {
  return value != nullptr ? show(std::string_view(value)) : "null";
}
[[nodiscard]] inline std::string show(comm::datalayer::DlResult value) {
  return fmt::format("0x{:08X}", value.code());
}
template <typename NUMBER>
requires std::is_arithmetic_v<NUMBER>
[[nodiscard]] std::string show(NUMBER value) {
  return fmt::format("{}", value);
}
template <typename ENUM>
requires std::is_enum_v<ENUM>
[[nodiscard]] std::string show(ENUM value) {
  return fmt::format("0x{:08X}", static_cast<std::uint64_t>(value));
}
template <typename T>
[[nodiscard]] std::string show(const std::vector<T>& values) {
  std::string result = fmt::format("{} element(s)", values.size());
  for (const auto& value : values) {
    result += "\n  " + show(value);
  }
  return result;
}
template <typename T>
[[nodiscard]] std::string show(const std::optional<T>& value) {
  return value ? show(*value) : "nothing";
}
/// @}

/// Throws a Mismatch unless both are equal.
template <typename FOUND, typename EXPECTED>
void expectEqual(std::string_view what, const FOUND& found, const EXPECTED& expected) {
  if constexpr (std::is_convertible_v<FOUND, std::string_view> && std::is_convertible_v<EXPECTED, std::string_view>) {
    if (std::string_view(found) == std::string_view(expected)) {
      return;
    }
  } else if (found == expected) {
    return;
  }
  throw Mismatch(std::string(what), show(expected), show(found));
}

/// Throws a Mismatch unless the text holds that piece.
void expectHolds(std::string_view what, std::string_view text, std::string_view piece);

inline void expectTrue(std::string_view what, bool found) {
  expectEqual(what, found, true);
}
inline void expectFalse(std::string_view what, bool found) {
  expectEqual(what, found, false);
}

/// Throws a Mismatch unless the pointer is null, or is not.
inline void expectNull(std::string_view what, bool isNull) {
  if (!isNull) {
    throw Mismatch(std::string(what), "null", "not null");
  }
}
inline void expectNotNull(std::string_view what, bool isNotNull) {
  if (!isNotNull) {
    throw Mismatch(std::string(what), "not null", "null");
  }
}

/// Says something about a check that passes, such as how much it has tried. Reports show it.
void remark(const std::string& text);
/// The remarks of this process.
[[nodiscard]] const std::string& remarks();

}  // namespace motion::conformance
