// Watches the signals of a component in its two real-time memories and tells which changed, when and by whom.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>

#include "comm/datalayer/i_data_layer_factory.h"
#include "host/motion/events.h"
#include "motion/kavo/signal_memory.h"

namespace motion::host::observe {

/// A change of the memory that jobs move is due to the object that just had its turn; a change of the other one came from
/// outside. Between two looks the outside change counts as the earlier one.
class SignalWatch {
 public:
  explicit SignalWatch(comm::datalayer::IDataLayerFactory& factory) : m_factory(factory) {}
  SignalWatch(const SignalWatch&) = delete;
  SignalWatch& operator=(const SignalWatch&) = delete;
  ~SignalWatch();

  /// Opens the memories and takes the present values as known; false with a text when they are not there. [framework]
  [[nodiscard]] bool open(std::string& problem);
  /// Gives the memories back. [framework]
  void close();

  /// Writes an event for every signal that changed since the last look. [cyclic & real-time]
  void look(EventRing& events, std::uint64_t cycle, std::uint32_t object) noexcept;
  /// Value at the last look. [cyclic & real-time]
  [[nodiscard]] bool value(std::uint32_t signal) const noexcept { return m_in.at(signal) != m_out.at(signal); }

 private:
  using Counters = std::array<std::uint8_t, kavo::SIGNAL_COUNT>;

  [[nodiscard]] static bool read(comm::datalayer::IMemoryUser& memory, Counters& counters) noexcept;

  comm::datalayer::IDataLayerFactory& m_factory;
  std::shared_ptr<comm::datalayer::IMemoryUser> m_inMemory;
  std::shared_ptr<comm::datalayer::IMemoryUser> m_outMemory;
  Counters m_in{};
  Counters m_out{};
};

}  // namespace motion::host::observe
