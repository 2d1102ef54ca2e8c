// Addresses of nodes: levels that are separated by slashes.
#pragma once

#include <cstddef>
#include <string_view>

namespace motion::host::datalayer {

/// Longer addresses are none.
inline constexpr std::size_t MAX_ADDRESS_LENGTH = 1'024;
/// Stands for one level, in patterns and in addresses under which providers register.
inline constexpr std::string_view ONE_LEVEL = "*";
/// Stands for all further levels, none among them, at the end of a pattern.
inline constexpr std::string_view ALL_LEVELS = "**";

/// What a client may ask for: levels that are not empty, in valid UTF-8, without control characters and wildcards, and none
/// of them "." or "..". [any]
[[nodiscard]] bool isAddress(std::string_view text) noexcept;
/// What a provider may register under: an address, whose last level may be ONE_LEVEL. [any]
[[nodiscard]] bool isNodeAddress(std::string_view text) noexcept;
/// An address, any of whose levels may be ONE_LEVEL, and the last one ALL_LEVELS. [any]
[[nodiscard]] bool isPattern(std::string_view text) noexcept;

/// Takes the first level off the rest of an address. False when there is none left. [any]
[[nodiscard]] bool takeLevel(std::string_view& rest, std::string_view& level) noexcept;

/// Everything ahead of the last level, without the slash; empty when there is only one. [any]
[[nodiscard]] std::string_view parentOf(std::string_view address) noexcept;

}  // namespace motion::host::datalayer
