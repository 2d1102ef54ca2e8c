// What a command does for other objects or wants of them, as the host knows it from the command's name and parameters.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

namespace motion::host::observe {

enum class SyncKind { NONE, SETS, RESETS, WAITS_SET, WAITS_RESET, JOINS };

/// What an option does while it accompanies a command.
struct OptionEffect {
  std::uint32_t signal = 0;
  bool sets = true;     ///< else it resets
  bool onPath = false;  ///< somewhere on the way, or never; else when the command starts

  [[nodiscard]] bool operator==(const OptionEffect&) const = default;
};

struct SyncStep {
  SyncKind kind = SyncKind::NONE;
  std::uint32_t signal = 0;  ///< of all kinds but joins
  bool consumes = false;     ///< a wait that resets the signal which it finds set
  std::vector<std::uint32_t>
      group;                ///< of a join: indices of all members, the object itself among them, ascending, each once
  bool namesTwice = false;  ///< of a join: its group names an object twice, so that it never completes
  bool awaitsNext = false;  ///< of a join: waits until the object's next command is prepared
  std::vector<OptionEffect> options;  ///< of those that accompany the command

  /// Some part of the command sets, or resets, that signal.
  [[nodiscard]] bool maySet(std::uint32_t id) const noexcept {
    return (kind == SyncKind::SETS && signal == id) || has(id, true);
  }
  [[nodiscard]] bool mayReset(std::uint32_t id) const noexcept {
    return ((kind == SyncKind::RESETS || consumes) && signal == id) || has(id, false);
  }

  [[nodiscard]] bool operator==(const SyncStep&) const = default;

 private:
  [[nodiscard]] bool has(std::uint32_t id, bool sets) const noexcept {
    return std::ranges::any_of(options,
                               [=](const OptionEffect& effect) { return effect.signal == id && effect.sets == sets; });
  }
};

/// True for steps that only wait.
[[nodiscard]] constexpr bool isWait(SyncKind kind) noexcept {
  return kind == SyncKind::WAITS_SET || kind == SyncKind::WAITS_RESET || kind == SyncKind::JOINS;
}

}  // namespace motion::host::observe
