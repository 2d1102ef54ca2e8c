// Texts that callers may leave out.
#pragma once

namespace common::log {

/// The text, or an empty one in place of null.
[[nodiscard]] constexpr const char* orEmpty(const char* text) noexcept {
  return text != nullptr ? text : "";
}

}  // namespace common::log
