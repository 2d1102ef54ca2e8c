// Numbers as users write them: decimal, with a point, independent of the locale, the whole text or nothing.
#pragma once

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <concepts>
#include <cstddef>
#include <string>
#include <string_view>
#include <system_error>

namespace motion::host::scenario {

enum class NumberFault { NONE, MALFORMED, OUT_OF_RANGE, NOT_FINITE };

template <typename T>
struct Number {
  T value{};
  NumberFault fault = NumberFault::NONE;
};

namespace detail {

// from_chars knows no plus sign.
[[nodiscard]] inline std::string_view withoutPlus(std::string_view text) {
  const bool plus = text.size() > 1 && text[0] == '+' && text[1] != '-';
  return plus ? text.substr(1) : text;
}

[[nodiscard]] inline bool isDigits(std::string_view text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// YAML's words for what is no number; C's words are understood by from_chars itself.
[[nodiscard]] inline bool isYamlNotFinite(std::string_view text) {
  text.remove_prefix(!text.empty() && text[0] == '-' ? 1 : 0);
  std::string word(text);
  std::transform(word.begin(), word.end(), word.begin(),
                 [](char c) { return static_cast<char>(std::tolower(static_cast<unsigned char>(c))); });
  return word == ".inf" || word == ".nan";
}

}  // namespace detail

/// Reads a floating-point number at the start of `text` and removes it from there.
template <std::floating_point T>
[[nodiscard]] Number<T> takeNumber(std::string_view& text) {
  const std::string_view digits = detail::withoutPlus(text);
  if (detail::isYamlNotFinite(digits)) {
    text = {};
    return {{}, NumberFault::NOT_FINITE};
  }
  Number<T> result;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), result.value);
  if (error == std::errc::invalid_argument) {
    return {{}, NumberFault::MALFORMED};
  }
  text = digits.substr(static_cast<std::size_t>(end - digits.data()));
  if (error == std::errc::result_out_of_range) {
    return {{}, NumberFault::OUT_OF_RANGE};
  }
  return std::isfinite(result.value) ? result : Number<T>{{}, NumberFault::NOT_FINITE};
}

template <std::floating_point T>
[[nodiscard]] Number<T> parseNumber(std::string_view text) {
  const Number<T> result = takeNumber<T>(text);
  return text.empty() ? result : Number<T>{{}, NumberFault::MALFORMED};
}

template <std::integral T>
[[nodiscard]] Number<T> parseNumber(std::string_view text) {
  const std::string_view number = detail::withoutPlus(text);
  const bool minus = !number.empty() && number[0] == '-';
  if (!detail::isDigits(minus ? number.substr(1) : number)) {
    return {{}, NumberFault::MALFORMED};
  }
  Number<T> result;
  // An unsigned type refuses every minus as malformed; all that is left to be wrong here is the range.
  const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), result.value);
  return error == std::errc() ? result : Number<T>{{}, NumberFault::OUT_OF_RANGE};
}

}  // namespace motion::host::scenario
