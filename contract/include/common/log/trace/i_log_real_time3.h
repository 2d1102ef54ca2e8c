// The sink that takes trace entries.
#pragma once

#include <cstdarg>

#include "common/log/result.h"
#include "common/log/trace/log_parameters.h"

namespace common::log::trace {

/// A sink for trace entries. Slot order is fixed.
/// A sink that a trace service hands out must be usable from the cyclic thread.
class ILogRealTime3 {
 public:
  virtual ~ILogRealTime3() = default;

  /// Writes one entry; `parameters->format` is a printf format for the remaining arguments. [any]
  virtual TraceResult logRealTime(unsigned int mainDiagnosisCode, const LogParameters* parameters, ...) = 0;
  /// As logRealTime, with the arguments as a list. [any & real-time where the sink says so]
  virtual TraceResult logRealTimeVaList(unsigned int mainDiagnosisCode, const LogParameters* parameters,
                                        std::va_list arguments) = 0;

 protected:
  ILogRealTime3() = default;
  ILogRealTime3(const ILogRealTime3&) = default;
  ILogRealTime3& operator=(const ILogRealTime3&) = default;
};

}  // namespace common::log::trace
