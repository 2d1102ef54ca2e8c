// Access to the signals for everybody but the jobs; moves the output counters only.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>

#include "comm/datalayer/i_data_layer_factory.h"
#include "motion/core/results.h"

namespace motion::kavo {

/// Opens the two memories that RtSignals owns, and keeps them open. When they are not there at construction, every call
/// fails. A mutex orders all callers; an operation lets the system error out with which locking it may fail.
class Signals {
 public:
  /// Traces a failure and does not throw. [framework]
  explicit Signals(comm::datalayer::IDataLayerFactory& factory) noexcept;
  Signals(const Signals&) = delete;
  Signals& operator=(const Signals&) = delete;
  virtual ~Signals();

  /// Opens both memories for the signal: `in` and `out` then lead to all counters of a side. On success the caller holds the
  /// mutex and ends the access with endAccess. NotOkay; InvalidParameter for an invalid `id`. [any]
  [[nodiscard]] core::FctResult beginAccess(std::uint8_t*& in, std::uint8_t*& out, std::uint32_t id);
  /// Ends an access that has begun. NotOkay when a memory refuses; the mutex is unlocked in any case. [any]
  core::FctResult endAccess();

  /// Sets a signal. Results as beginAccess. [any]
  [[nodiscard]] core::FctResult set(std::uint32_t id);
  /// Resets a signal. Results as beginAccess. [any]
  [[nodiscard]] core::FctResult reset(std::uint32_t id);
  /// Reads a signal; `value` is written only on success. Results as beginAccess. [any]
  [[nodiscard]] core::FctResult get(std::uint32_t id, bool& value);

 private:
  comm::datalayer::IDataLayerFactory& m_factory;
  std::shared_ptr<comm::datalayer::IMemoryUser> m_outMemory;
  std::shared_ptr<comm::datalayer::IMemoryUser> m_inMemory;
  std::mutex m_mutex;
};

}  // namespace motion::kavo
