// The trace service of the host: units, their level switches, and the way of their entries to the journal.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "common/log/trace/i_registration_real_time3.h"
#include "host/trace/entry_pump.h"
#include "host/trace/unit_sink.h"
#include "log_trace/snap_name.h"

namespace motion::host::trace {

/// Results of the registration.
enum class RegistrationResult : std::int32_t {
  OK = 0,
  INVALID_ARGUMENT = -1,    ///< no place for the sink, or no unit name
  ALREADY_REGISTERED = -2,  ///< another unit has the name
  UNKNOWN_SINK = -3,        ///< not a sink of a registered unit of this service
  OUT_OF_MEMORY = -4,
  CALLBACK_FAILED = -5,  ///< the unit's callback threw
};

struct TraceServiceConfig {
  std::size_t ringCapacity = 1024;            ///< [entries]
  std::chrono::milliseconds pollInterval{2};  ///< longest wait of an entry for the writer thread
};

/// All operations are thread-safe.
///
/// | what | promise |
/// |---|---|
/// | sinks | real-time for any number of threads (UnitSink) |
/// | sinks of units that left | stay until the service ends, switched off: a call may be inside one, or come late |
/// | units that come back | get the same sink, so sinks do not pile up |
/// | entries | written in the order in which they were taken (EntryPump), also when their unit is gone |
/// | ring full | entries are dropped, counted and reported (TraceRing, EntryPump) |
/// | callbacks | one at a time; they may ask for switches and trace, but not register, unregister or set levels |
/// | unregisterUnit | when it returns, the unit's callback is not called any more |
/// | end of the service | writes all taken entries and ends the writer thread; no sink may be used any more |
class TraceService : public common::log::trace::IRegistrationRealTime3 {
 public:
  /// A null writer writes nowhere. Throws std::bad_alloc, std::system_error when there is no thread. [framework]
  explicit TraceService(std::unique_ptr<TraceWriter> writer, const TraceServiceConfig& config = {});
  TraceService(const TraceService&) = delete;
  TraceService& operator=(const TraceService&) = delete;
  ~TraceService() override = default;

  /// A RegistrationResult. An empty callback is never called; one that throws refuses the registration. [framework]
  std::int32_t registerUnit(common::log::trace::ILogRealTime3** sink, const char* unitName,
                            const EnablingCallback& callback) override;
  std::int32_t getEnablingState(const common::log::trace::ILogRealTime3* sink,
                                common::log::trace::EnablingState& state) const override;
  std::int32_t unregisterUnit(common::log::trace::ILogRealTime3** sink) override;

  /// Sets a unit's level switches and tells the unit, which leaves out what is switched off. Remembered for a unit that is
  /// registered later. A RegistrationResult; after CALLBACK_FAILED the switches are set all the same. [any]
  std::int32_t setLevels(std::string_view unitName, const common::log::trace::EnablingState& state);

  [[nodiscard]] std::size_t unitCount() const;  ///< registered units [framework]

  EntryPump::ListenerId addListener(EntryPump::Listener listener);              ///< As EntryPump. [any]
  void removeListener(EntryPump::ListenerId id) { m_pump.removeListener(id); }  ///< As EntryPump. [any]
  void flush() { m_pump.flush(); }                                              ///< As EntryPump; blocks. [any]

 private:
  struct Unit {
    common::log::trace::EnablingState state;
    EnablingCallback callback;
    bool isRegistered = false;
    std::unique_ptr<UnitSink> sink;  ///< from the first registration to the end of the service
  };

  common::log::SnapName m_snapName;
  /// Serialises whatever changes units and calls callbacks. Units are never removed, so references to them stay valid.
  std::mutex m_changeMutex;
  /// Guards the units themselves; taken after m_changeMutex, and never while a callback runs.
  mutable std::mutex m_unitsMutex;
  // Before the pump, which so ends first, while the sinks still exist.
  std::map<std::string, Unit, std::less<>> m_units;
  EntryPump m_pump;
};

}  // namespace motion::host::trace
