// States of an object's commands, for whoever asks by ID.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "motion/core/cmd/cmd_state.h"

namespace motion::host {

/// Remembers all commands that are alive and some that have ended.
///
/// | promise | |
/// |---|---|
/// | writers | preparation notes new commands; preparation and cycle change the state of one, never both at once |
/// | readers | any number, lock-free; a command that gives way while it is looked at counts as forgotten |
/// | get | one probe as a rule; at worst all entries are looked through |
class CmdStates {
 public:
  /// For at most `alive` commands that have not ended. Throws std::bad_alloc. [framework]
  explicit CmdStates(std::size_t alive);

  /// A command in state BUFFERED is new; the oldest one that has ended gives way to it. [prepare | cyclic & real-time]
  void note(std::uint64_t cmdID, core::cmd::CmdState state) noexcept;
  /// DONE for a command that was forgotten, or never noted. [any & real-time]
  [[nodiscard]] core::cmd::CmdState get(std::uint64_t cmdID) const noexcept;

 private:
  struct Slot {
    std::atomic<std::uint64_t> cmdID{0};
    std::atomic<core::cmd::CmdState> state{core::cmd::CmdState::CREATED};

    [[nodiscard]] bool isAlive() const noexcept;
  };

  void add(std::uint64_t cmdID, core::cmd::CmdState state) noexcept;
  [[nodiscard]] Slot* find(std::uint64_t cmdID) const noexcept;
  [[nodiscard]] std::atomic<std::uint32_t>& hintFor(std::uint64_t cmdID) const noexcept;

  std::size_t m_slotCount;
  unsigned int m_hintShift;
  std::unique_ptr<Slot[]> m_slots;
  /// Where a command of that hash was put last. Only a guess: commands with the same hash overwrite one another.
  std::unique_ptr<std::atomic<std::uint32_t>[]> m_hints;
  std::size_t m_next = 0;
};

}  // namespace motion::host
