// The record that accompanies every trace text.
#pragma once

#include <cstdint>

namespace common::log::trace {

/// What a trace entry says besides its text. Texts are borrowed for the duration of the call and may be null.
class LogParameters {
 public:
  /// Values of `classType`.
  enum ClassType : std::uint32_t { BASIC = 0, EXTENDED = 1 };

  LogParameters() = default;
  LogParameters(const LogParameters&) = default;
  LogParameters& operator=(const LogParameters&) = default;
  virtual ~LogParameters() = default;

  std::uint32_t classType = BASIC;  ///< 1 means LogParametersExtended, the only type that sinks accept
  const char* entity = nullptr;
  const char* origin = nullptr;
  const char* fileName = nullptr;
  const char* functionName = nullptr;
  std::uint32_t line = 0;  ///< 0 = none
  const char* format = nullptr;
};

/// The record that sinks accept; it only sets its class type.
class LogParametersExtended : public LogParameters {
 public:
  LogParametersExtended() { classType = EXTENDED; }
};

}  // namespace common::log::trace
