// The trace service as a component sees it.
#pragma once

#include <cstdint>
#include <functional>

#include "common/log/trace/enabling_state.h"
#include "common/log/trace/i_log_real_time3.h"

namespace common::log::trace {

/// Registers trace units. Results are signed; a negative one is a failure. Slot order is fixed.
class IRegistrationRealTime3 {
 public:
  /// Receives the switches of a unit, all three at once. It must not register or unregister. [any]
  using EnablingCallback = std::function<void(const EnablingState&)>;

  virtual ~IRegistrationRealTime3() = default;

  /// Makes a sink for the unit and stores it in `*sink`, as an atomic: the unit may be tracing meanwhile. The callback is
  /// told the unit's switches now and whenever they change, from any thread. On failure `*sink` is left as it was.
  /// [framework]
  virtual std::int32_t registerUnit(ILogRealTime3** sink, const char* unitName, const EnablingCallback& callback) = 0;
  /// Reports the unit's switches into `state`; negative if the sink is not one of this service. [any]
  virtual std::int32_t getEnablingState(const ILogRealTime3* sink, EnablingState& state) const = 0;
  /// Takes the sink back and sets `*sink` to null. The caller no longer uses it. [framework]
  virtual std::int32_t unregisterUnit(ILogRealTime3** sink) = 0;

 protected:
  IRegistrationRealTime3() = default;
  IRegistrationRealTime3(const IRegistrationRealTime3&) = default;
  IRegistrationRealTime3& operator=(const IRegistrationRealTime3&) = default;
};

}  // namespace common::log::trace
