// What a command does for other objects or wants of them, as the host knows it from the command's name and parameters.
#pragma once

#include <cstdint>
#include <vector>

namespace motion::host::observe {

enum class SyncKind { NONE, SETS, RESETS, WAITS_SET, WAITS_RESET, JOINS };

struct SyncStep {
  SyncKind kind = SyncKind::NONE;
  std::uint32_t signal = 0;  ///< of all kinds but joins
  bool consumes = false;     ///< a wait that resets the signal which it finds set
  std::vector<std::uint32_t>
      group;                ///< of a join: indices of all members, the object itself among them, ascending, each once
  bool namesTwice = false;  ///< of a join: its group names an object twice, so that it never completes
  bool awaitsNext = false;  ///< of a join: waits until the object's next command is prepared

  [[nodiscard]] bool operator==(const SyncStep&) const = default;
};

/// True for steps that only wait.
[[nodiscard]] constexpr bool isWait(SyncKind kind) noexcept {
  return kind == SyncKind::WAITS_SET || kind == SyncKind::WAITS_RESET || kind == SyncKind::JOINS;
}

}  // namespace motion::host::observe
