#include "host/motion/cmd_states.h"

#include <bit>

namespace motion::host {

using core::cmd::CmdState;

namespace {

/// Commands that have ended and can still be asked for.
constexpr std::size_t ENDED = 16;
/// Twice as many guesses as slots, so that two commands seldom share one.
constexpr std::size_t HINTS_PER_SLOT = 2;

}  // namespace

CmdStates::CmdStates(std::size_t alive)
    : m_slotCount(alive + ENDED),
      m_hintShift(64U - static_cast<unsigned int>(std::bit_width(std::bit_ceil(HINTS_PER_SLOT * m_slotCount) - 1))),
      m_slots(std::make_unique<Slot[]>(m_slotCount)),
      m_hints(std::make_unique<std::atomic<std::uint32_t>[]>(std::bit_ceil(HINTS_PER_SLOT * m_slotCount))) {}

bool CmdStates::Slot::isAlive() const noexcept {
  return cmdID.load(std::memory_order_acquire) != 0 && state.load(std::memory_order_acquire) < CmdState::DONE;
}

void CmdStates::note(std::uint64_t cmdID, CmdState state) noexcept {
  if (state == CmdState::BUFFERED) {
    add(cmdID, state);
  } else if (Slot* const slot = find(cmdID); slot != nullptr) {
    slot->state.store(state, std::memory_order_release);
  }
}

void CmdStates::add(std::uint64_t cmdID, CmdState state) noexcept {
  // There are more slots than commands that can be alive.
  for (std::size_t i = 0; i < m_slotCount && m_slots[m_next].isAlive(); ++i) {
    m_next = (m_next + 1) % m_slotCount;
  }
  hintFor(cmdID).store(static_cast<std::uint32_t>(m_next), std::memory_order_relaxed);
  Slot& slot = m_slots[m_next];
  m_next = (m_next + 1) % m_slotCount;
  slot.cmdID.store(0, std::memory_order_release);
  slot.state.store(state, std::memory_order_release);
  slot.cmdID.store(cmdID, std::memory_order_release);
}

CmdState CmdStates::get(std::uint64_t cmdID) const noexcept {
  if (const Slot* const slot = find(cmdID); slot != nullptr) {
    const CmdState state = slot->state.load(std::memory_order_acquire);
    if (slot->cmdID.load(std::memory_order_acquire) == cmdID) {
      return state;
    }
  }
  return CmdState::DONE;
}

CmdStates::Slot* CmdStates::find(std::uint64_t cmdID) const noexcept {
  if (cmdID == 0) {
    return nullptr;
  }
  Slot& guess = m_slots[hintFor(cmdID).load(std::memory_order_relaxed)];
  if (guess.cmdID.load(std::memory_order_acquire) == cmdID) {
    return &guess;
  }
  for (std::size_t i = 0; i < m_slotCount; ++i) {
    if (m_slots[i].cmdID.load(std::memory_order_acquire) == cmdID) {
      return &m_slots[i];
    }
  }
  return nullptr;
}

std::atomic<std::uint32_t>& CmdStates::hintFor(std::uint64_t cmdID) const noexcept {
  // IDs of one object's commands may be any numbers apart: multiplied by 2^64 / golden ratio, they spread over the upper
  // bits.
  return m_hints[(cmdID * 0x9E3779B97F4A7C15U) >> m_hintShift];
}

}  // namespace motion::host
