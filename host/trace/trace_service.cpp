// The trace service of the host: units, their level switches, and the way of their entries to the journal.
#include "host/trace/trace_service.h"

#include <algorithm>
#include <atomic>
#include <functional>
#include <utility>

#include "host/support/guarded.h"

namespace motion::host::trace {

using common::log::trace::EnablingState;
using common::log::trace::ILogRealTime3;

namespace {

using enum RegistrationResult;

/// Runs an operation of the contract; what it throws becomes a result. Foreign code runs in it as well: a unit's callback
/// when it is copied.
template <typename Operation>
std::int32_t guarded(const Operation& operation) noexcept {
  return static_cast<std::int32_t>(host::guarded(OUT_OF_MEMORY, CALLBACK_FAILED, operation));
}

RegistrationResult tell(const TraceService::EnablingCallback& callback, const EnablingState& state) noexcept {
  return host::guarded(CALLBACK_FAILED, [&] {
    if (callback) {
      callback(state);
    }
    return OK;
  });
}

/// The registered unit that has the sink, or null.
template <typename Units>
auto* findUnit(Units& units, const ILogRealTime3* sink) {
  const auto found = std::find_if(units.begin(), units.end(), [sink](const auto& unit) {
    return unit.second.isRegistered && unit.second.sink.get() == sink;
  });
  return found != units.end() ? &found->second : nullptr;
}

}  // namespace

TraceService::TraceService(std::unique_ptr<TraceWriter> writer, const TraceServiceConfig& config)
    : m_pump(std::move(writer), config.ringCapacity, config.pollInterval) {}

std::int32_t TraceService::registerUnit(ILogRealTime3** sink, const char* unitName, const EnablingCallback& callback) {
  return guarded([&] {
    if (sink == nullptr || unitName == nullptr || *unitName == '\0') {
      return INVALID_ARGUMENT;
    }
    const std::lock_guard change(m_changeMutex);
    EnablingCallback kept = callback;
    Unit* unit = nullptr;
    {
      const std::lock_guard lock(m_unitsMutex);
      unit = &m_units[unitName];
      if (unit->isRegistered) {
        return ALREADY_REGISTERED;
      }
      if (unit->sink == nullptr) {
        unit->sink = std::make_unique<UnitSink>(m_pump.ring(), unitName, m_snapName.get());
      }
    }
    if (const RegistrationResult told = tell(kept, unit->state); told != OK) {
      return told;
    }
    const std::lock_guard lock(m_unitsMutex);
    unit->callback = std::move(kept);
    unit->isRegistered = true;
    unit->sink->setEnabled(true);
    std::atomic_ref<ILogRealTime3*>(*sink).store(unit->sink.get(), std::memory_order_release);
    return OK;
  });
}

std::int32_t TraceService::getEnablingState(const ILogRealTime3* sink, EnablingState& state) const {
  return guarded([&] {
    const std::lock_guard lock(m_unitsMutex);
    const auto* const unit = findUnit(m_units, sink);
    if (unit == nullptr) {
      return UNKNOWN_SINK;
    }
    state = unit->state;
    return OK;
  });
}

std::int32_t TraceService::unregisterUnit(ILogRealTime3** sink) {
  return guarded([&] {
    if (sink == nullptr) {
      return INVALID_ARGUMENT;
    }
    const std::lock_guard change(m_changeMutex);
    EnablingCallback dropped;
    {
      const std::lock_guard lock(m_unitsMutex);
      auto* const unit = findUnit(m_units, *sink);
      if (unit == nullptr) {
        return UNKNOWN_SINK;
      }
      unit->sink->setEnabled(false);
      unit->isRegistered = false;
      dropped.swap(unit->callback);
    }
    *sink = nullptr;
    return OK;
  });
}

std::int32_t TraceService::setLevels(std::string_view unitName, const EnablingState& state) {
  return guarded([&] {
    if (unitName.empty()) {
      return INVALID_ARGUMENT;
    }
    const std::lock_guard change(m_changeMutex);
    const Unit* unit = nullptr;
    {
      const std::lock_guard lock(m_unitsMutex);
      Unit& found = m_units[std::string(unitName)];
      found.state = state;
      unit = &found;
    }
    return tell(unit->callback, state);
  });
}

std::size_t TraceService::unitCount() const {
  const std::lock_guard lock(m_unitsMutex);
  return static_cast<std::size_t>(
      std::count_if(m_units.begin(), m_units.end(), [](const auto& unit) { return unit.second.isRegistered; }));
}

EntryPump::ListenerId TraceService::addListener(EntryPump::Listener listener) {
  return m_pump.addListener(std::move(listener));
}

}  // namespace motion::host::trace
