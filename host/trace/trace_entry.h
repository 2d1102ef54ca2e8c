// One trace entry on its way from a unit to the writers.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <span>

namespace motion::host::trace {

/// Fixed in size, so that entries can live in a ring. Texts end with a zero; longer ones were cut.
struct TraceEntry {
  static constexpr std::size_t NAME_SIZE = 64;
  static constexpr std::size_t ENTITY_SIZE = 128;
  static constexpr std::size_t TEXT_SIZE = 768;

  std::timespec time{};  ///< when the unit traced, since the epoch
  unsigned int mainDiagnosisCode = 0;
  std::uint32_t line = 0;    ///< 0 = none
  bool isTruncated = false;  ///< at least one text was cut
  std::array<char, NAME_SIZE> unitName{};
  std::array<char, ENTITY_SIZE> entity{};
  std::array<char, NAME_SIZE> origin{};
  std::array<char, NAME_SIZE> fileName{};
  std::array<char, NAME_SIZE> functionName{};
  std::array<char, TEXT_SIZE> text{};  ///< never empty
};

/// Copies what fits of a text, null counting as empty. Returns whether it was longer. [any & real-time]
bool copyText(std::span<char> target, const char* source) noexcept;

}  // namespace motion::host::trace
