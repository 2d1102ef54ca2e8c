// The record that accompanies every trace text.
#pragma once

#include <cstdint>

namespace common::log::trace {

/// What a trace entry says besides its text. Texts are borrowed for the duration of the call and may be null.
class LogParameters {
 public:
  /// Values of `classType`.
  enum ClassType : std::uint32_t {
    BASIC = 0,     ///< this class; sinks refuse it with InvalidParameter
    EXTENDED = 1,  ///< LogParametersExtended
  };

  LogParameters() = default;
  LogParameters(const LogParameters&) = default;
  LogParameters& operator=(const LogParameters&) = default;
  virtual ~LogParameters() = default;

  std::uint32_t classType = BASIC;     ///< 1 means LogParametersExtended, the only type that sinks accept
  const char* entity = nullptr;        ///< what the entry is about, at most 127 characters; longer texts are cut
  const char* origin = nullptr;        ///< the unit that writes, at most 63 characters
  const char* fileName = nullptr;      ///< source file, at most 63 characters; no folder
  const char* functionName = nullptr;  ///< the function that writes, at most 63 characters
  std::uint32_t line = 0;              ///< 0 = none
  const char* format = nullptr;        ///< printf format of the text; null gives an empty text
};

/// The record that sinks accept; it only sets its class type.
class LogParametersExtended : public LogParameters {
 public:
  /// Marks the record as one that sinks accept. [any & real-time]
  LogParametersExtended() { classType = EXTENDED; }
};

}  // namespace common::log::trace
