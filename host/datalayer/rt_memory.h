// Real-time memories: the shared bytes, and the handles through which owner and users reach them without a lock.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "comm/datalayer/i_memory.h"

namespace motion::host::datalayer {

/// The bytes of one memory and what is known about them. All handles of the memory share it.
///
/// | what | who writes | how |
/// |---|---|---|
/// | bytes | whoever has an access open | not ordered here; bytes that several threads touch are atomics |
/// | revision, deleted | the owner's operations | one atomic word, read by each beginAccess |
/// | memory map | the owner's setMemoryMap | mutex, never taken by an access |
class MemoryBlock {
 public:
  /// Zero-filled and aligned for any scalar. Throws std::bad_alloc. [framework]
  MemoryBlock(std::string address, std::uint32_t size);
  MemoryBlock(const MemoryBlock&) = delete;
  MemoryBlock& operator=(const MemoryBlock&) = delete;

  [[nodiscard]] const std::string& address() const noexcept { return m_address; }  ///< [any & real-time]
  [[nodiscard]] std::uint32_t size() const noexcept { return m_size; }             ///< [any & real-time]
  [[nodiscard]] std::uint8_t* bytes() const noexcept { return m_bytes.get(); }     ///< [any & real-time]
  /// Set in a state in which no access begins.
  static constexpr std::uint64_t CLOSED = std::uint64_t{1} << 32U;
  /// What an access checks: the revision of the memory map, 0 before there is one, and CLOSED once the memory is deleted.
  /// [any & real-time]
  [[nodiscard]] const std::atomic<std::uint64_t>& state() const noexcept { return m_state; }
  /// [any & real-time]
  [[nodiscard]] bool isDeleted() const noexcept { return (m_state.load(std::memory_order_acquire) & CLOSED) != 0; }

  /// From now on no access begins; what is open goes on. [framework]
  void markDeleted() noexcept { m_state.fetch_or(CLOSED, std::memory_order_release); }
  /// As IMemoryOwner::setMemoryMap. A refused map changes nothing. Throws std::bad_alloc. [framework]
  [[nodiscard]] comm::datalayer::DlResult setMap(const comm::datalayer::Variant& map);
  /// DL_RT_NOVALIDDATA when no map was set. Throws std::bad_alloc. [any]
  [[nodiscard]] comm::datalayer::DlResult getMap(comm::datalayer::Variant& map) const;

 private:
  const std::string m_address;
  const std::uint32_t m_size;
  const std::unique_ptr<std::uint8_t[]> m_bytes;
  std::atomic<std::uint64_t> m_state{0};
  mutable std::mutex m_mapMutex;
  comm::datalayer::Variant m_map;
};

/// The accesses of one handle.
///
/// | promise | |
/// |---|---|
/// | begin, end | wait-free and bounded: a few atomic operations, no loop, no lock, no allocation, no system call |
/// | callers | any number of threads at once, nested too: a begin needs an end each, on the same thread |
/// | home thread | the first with HOME_AFTER accesses in a row, as a cyclic thread has; counts without read-modify-write |
/// | handle given back, memory deleted | begin is refused with DL_RT_INVALIDOBJECT; what is open stays open and valid |
/// | end without a begin | DL_RT_NOTOPEN; told by counting per handle, so it cannot tell whose access a surplus end ends |
/// | freeing | never here: the last end only counts down and touches nothing after it |
class AccessGate {
 public:
  static constexpr std::uint32_t HOME_AFTER = 64;

  explicit AccessGate(std::shared_ptr<MemoryBlock> block) noexcept
      : m_state(&block->state()), m_bytes(block->bytes()), m_block(std::move(block)) {}
  AccessGate(const AccessGate&) = delete;
  AccessGate& operator=(const AccessGate&) = delete;

  /// As IMemory::beginAccess. On failure `data` is left as it was. [any & real-time]
  [[nodiscard]] comm::datalayer::DlResult begin(std::uint8_t*& data, std::uint32_t revision) noexcept {
    const std::uint64_t state = m_state.load(std::memory_order_acquire)->load(std::memory_order_acquire);
    if (state != revision) [[unlikely]] {
      return (state & MemoryBlock::CLOSED) != 0 ? comm::datalayer::DL_RT_INVALIDOBJECT : comm::datalayer::DL_RT_WRONGREVISON;
    }
    if (m_home.load(std::memory_order_relaxed) != thisThread()) [[unlikely]] {
      return beginElsewhere(data);
    }
    // The only writer of a count needs no read-modify-write.
    m_homeBegun.store(m_homeBegun.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    data = m_bytes;
    return comm::datalayer::DL_OK;
  }

  /// As IMemory::endAccess. [any & real-time]
  [[nodiscard]] comm::datalayer::DlResult end() noexcept {
    const std::uint64_t ended = m_homeEnded.load(std::memory_order_relaxed);
    // What the home thread ends beyond its own count was begun before it became the home thread, if at all.
    if (m_home.load(std::memory_order_relaxed) != thisThread() || ended == m_homeBegun.load(std::memory_order_relaxed))
        [[unlikely]] {
      return endElsewhere();
    }
    // Pairs with isOpen. From here on the handle may be freed by another thread.
    m_homeEnded.store(ended + 1, std::memory_order_release);
    return comm::datalayer::DL_OK;
  }

  /// True while an access is open. Whoever sees false also sees all that was done in the accesses before. [any & real-time]
  [[nodiscard]] bool isOpen() const noexcept {
    const std::uint64_t ended = m_homeEnded.load(std::memory_order_acquire);
    return m_homeBegun.load(std::memory_order_acquire) != ended || m_otherCount.load(std::memory_order_acquire) > 0;
  }
  [[nodiscard]] bool isGivenBack() const noexcept {  ///< [any & real-time]
    return m_state.load(std::memory_order_acquire) == &s_givenBack;
  }
  void giveBack() noexcept { m_state.store(&s_givenBack, std::memory_order_release); }  ///< [framework]
  [[nodiscard]] MemoryBlock& block() const noexcept { return *m_block; }                ///< [any & real-time]

 private:
  /// Tells living threads apart. A thread that gets the mark of one that has ended also sees all that that one did.
  static const void* thisThread() noexcept { return __builtin_thread_pointer(); }
  [[nodiscard]] comm::datalayer::DlResult beginElsewhere(std::uint8_t*& data) noexcept;
  [[nodiscard]] comm::datalayer::DlResult endElsewhere() noexcept;
  void considerHome() noexcept;

  /// The state that the handle has once it is given back, whatever becomes of the memory.
  static constexpr std::atomic<std::uint64_t> s_givenBack{MemoryBlock::CLOSED};

  // What an access of the home thread touches stands together.
  std::atomic<const std::atomic<std::uint64_t>*> m_state;
  std::uint8_t* const m_bytes;
  /// The home thread; set once.
  std::atomic<const void*> m_home{nullptr};
  /// Accesses that the home thread has begun and ended as such; nobody else writes them. Two counts, because one that goes
  /// up and down would make each access wait for what the one before stored.
  std::atomic<std::uint64_t> m_homeBegun{0};
  std::atomic<std::uint64_t> m_homeEnded{0};
  /// All others.
  std::atomic<std::int64_t> m_otherCount{0};
  /// While there is no home thread: who had the last access, and how many in a row. Inexact when several threads are at it,
  /// who then disturb each other's row, and no harm is done.
  std::atomic<const void*> m_lastThread{nullptr};
  std::atomic<std::uint32_t> m_inARow{0};
  const std::shared_ptr<MemoryBlock> m_block;
};

/// What owner and user handles have in common.
template <typename Interface>
class MemoryHandle : public Interface {
 public:
  explicit MemoryHandle(std::shared_ptr<MemoryBlock> block) noexcept : m_gate(std::move(block)) {}

  comm::datalayer::DlResult beginAccess(std::uint8_t*& data, std::uint32_t revision) final {
    return m_gate.begin(data, revision);
  }
  comm::datalayer::DlResult endAccess() final { return m_gate.end(); }
  [[nodiscard]] std::uint32_t getSize() const override { return m_gate.block().size(); }

  [[nodiscard]] AccessGate& gate() noexcept { return m_gate; }  ///< [any & real-time]

 protected:
  /// False once the memory is deleted or the handle given back.
  [[nodiscard]] bool isUsable() const noexcept { return !m_gate.isGivenBack() && !m_gate.block().isDeleted(); }

  AccessGate m_gate;
};

class OwnerHandle final : public MemoryHandle<comm::datalayer::IMemoryOwner> {
 public:
  using MemoryHandle::MemoryHandle;
  comm::datalayer::DlResult setMemoryMap(const comm::datalayer::Variant& map) override;
};

class UserHandle final : public MemoryHandle<comm::datalayer::IMemoryUser> {
 public:
  using MemoryHandle::MemoryHandle;
  comm::datalayer::DlResult getMemoryMap(comm::datalayer::Variant& map) const override;
};

}  // namespace motion::host::datalayer
