// The signals themselves, as jobs see them: two real-time memories of counters; moves the input counters only.
#pragma once

#include <cstdint>
#include <memory>

#include "comm/datalayer/i_data_layer_factory.h"
#include "impl/debug_trace.h"
#include "impl/memory_access.h"
#include "impl/signal_counters.h"
#include "motion/kavo/signal_memory.h"

namespace motion::kavo::rt_data {

/// Owns the memories and publishes them in the data layer. A signal is set when its two counters differ.
///
/// | promise | |
/// |---|---|
/// | set, reset, get, getOutCounter | wait-free, allocate nothing; each new counter is stored once |
/// | initialize, terminate | not at the same time as anything else |
class RtSignals {
 public:
  RtSignals() = default;
  RtSignals(const RtSignals&) = delete;
  RtSignals& operator=(const RtSignals&) = delete;
  virtual ~RtSignals();

  /// The one instance, made on first use. [any]
  [[nodiscard]] static RtSignals& getInstance();
  /// [any & real-time]
  [[nodiscard]] static constexpr std::uint32_t getNrOfSignals() noexcept { return SIGNAL_COUNT; }
  /// [any & real-time]
  [[nodiscard]] static constexpr bool isValidId(std::uint32_t id) noexcept { return id < getNrOfSignals(); }

  /// Makes and publishes the memories; false, with a trace, when that fails or was done already. [framework]
  [[nodiscard]] bool initialize(comm::datalayer::IDataLayerFactory& factory) noexcept;
  /// Takes everything back; may be called in any state. [framework]
  void terminate() noexcept;

  /// The counter that the system functions move; 0 while the memory cannot be read. False when not initialised and for an
  /// invalid `id`. [any & real-time]
  [[nodiscard]] bool getOutCounter(std::uint32_t id, std::uint8_t& counter) noexcept;
  /// False when not initialised, for an invalid `id` and when the memory refuses; the same holds for `reset` and `get`.
  /// [cyclic & real-time]
  [[nodiscard]] bool set(std::uint32_t id) noexcept;
  [[nodiscard]] bool reset(std::uint32_t id) noexcept;  ///< [cyclic & real-time]
  /// Reads a signal and, with `resetIfSet`, resets in the same access what it found set. [cyclic & real-time]
  [[nodiscard]] bool get(std::uint32_t id, bool& value, bool resetIfSet) noexcept;

 private:
  [[nodiscard]] comm::datalayer::DlResult createMemories();
  [[nodiscard]] comm::datalayer::DlResult describeMemories();
  [[nodiscard]] comm::datalayer::DlResult clearInMemory();

  comm::datalayer::IDataLayerFactory* m_factory = nullptr;
  std::unique_ptr<comm::datalayer::IProvider> m_provider;
  std::shared_ptr<comm::datalayer::IMemoryOwner> m_inMemory;
  std::shared_ptr<comm::datalayer::IMemoryOwner> m_outMemory;
};

// The accessors stand here because jobs call them in every cycle: within a job that asks for it nothing remains of them but
// the calls of the memories. Each spells its steps out: a common piece that is handed the last step as a function makes a
// job measurably slower.

inline bool RtSignals::getOutCounter(std::uint32_t id, std::uint8_t& counter) noexcept {
  if (!m_outMemory) [[unlikely]] {
    KAVO_TRACE_TEXT(Error, "RtSignals::initialize() not called!");
    return false;
  }
  if (!isValidId(id)) [[unlikely]] {
    KAVO_TRACE(Error, "wrong id(%d)", id);
    return false;
  }
  const MemoryAccess out(*m_outMemory);
  if (out.hasFailed()) [[unlikely]] {
    counter = 0;
  } else {
    counter = loadCounter(out.data(), id);
  }
  return true;
}

inline bool RtSignals::set(std::uint32_t id) noexcept {
  std::uint8_t out = 0;
  if (!getOutCounter(id, out)) [[unlikely]] {
    return false;
  }
  const MemoryAccess in(*m_inMemory);
  if (in.hasFailed()) [[unlikely]] {
    return false;
  }
  storeCounter(in.data(), id, settingCounter(KAVO_HERE, id, loadCounter(in.data(), id), out));
  return true;
}

inline bool RtSignals::reset(std::uint32_t id) noexcept {
  std::uint8_t out = 0;
  if (!getOutCounter(id, out)) [[unlikely]] {
    return false;
  }
  const MemoryAccess in(*m_inMemory);
  if (in.hasFailed()) [[unlikely]] {
    return false;
  }
  storeCounter(in.data(), id, out);
  return true;
}

inline bool RtSignals::get(std::uint32_t id, bool& value, bool resetIfSet) noexcept {
  std::uint8_t out = 0;
  if (!getOutCounter(id, out)) [[unlikely]] {
    return false;
  }
  const MemoryAccess in(*m_inMemory);
  if (in.hasFailed()) [[unlikely]] {
    return false;
  }
  value = loadCounter(in.data(), id) != out;
  if (value && resetIfSet) {
    storeCounter(in.data(), id, out);
  }
  return true;
}

}  // namespace motion::kavo::rt_data
