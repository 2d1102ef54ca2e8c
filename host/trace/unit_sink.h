// The sink that the trace service hands out to a unit.
#pragma once

#include <array>
#include <atomic>
#include <cstdarg>

#include "common/log/trace/i_log_real_time3.h"
#include "host/trace/trace_ring.h"

namespace motion::host::trace {

/// Takes the time, formats the text and copies all texts into the ring, on the caller's thread.
///
/// | promise | |
/// |---|---|
/// | callers | any number of threads at once |
/// | cost | lock-free; neither allocates nor locks nor makes a system call |
///
/// Two limits of the platform: `clock_gettime` reads memory that the kernel maps into the process (vDSO), but on a machine
/// whose clock source is not of that kind it is a system call; and `vsnprintf` allocates for a width or precision of several
/// hundred characters, so that no format used in a cycle may have one.
///
/// | result | when |
/// |---|---|
/// | Ok | accepted; or the text is empty, which makes no entry |
/// | Truncated | accepted, with at least one text cut |
/// | Disabled | the unit is not registered |
/// | InvalidParameter | null record, or class type other than 1; an error entry says so instead |
/// | FormatFailed | the text could not be made; an error entry says so instead |
/// | JournalWriteFailed | the ring is full; the entry is dropped and counted |
class UnitSink final : public common::log::trace::ILogRealTime3 {
 public:
  /// Ring and snap name are borrowed. Starts switched off. [framework]
  UnitSink(TraceRing& ring, const char* unitName, const char* snapName) noexcept;
  UnitSink(const UnitSink&) = delete;
  UnitSink& operator=(const UnitSink&) = delete;

  /// [any & real-time]
  common::log::trace::TraceResult logRealTime(unsigned int mainDiagnosisCode,
                                              const common::log::trace::LogParameters* parameters, ...) noexcept override;
  /// [any & real-time]
  common::log::trace::TraceResult logRealTimeVaList(unsigned int mainDiagnosisCode,
                                                    const common::log::trace::LogParameters* parameters,
                                                    std::va_list arguments) noexcept override;

  void setEnabled(bool isEnabled) noexcept { m_isEnabled.store(isEnabled, std::memory_order_relaxed); }  ///< [any]

 private:
  /// An error entry of the sink's own, in the form of the trace library's.
  void logInternalError(const char* function, unsigned int line, const char* format, ...) noexcept;
  [[nodiscard]] common::log::trace::TraceResult accept(unsigned int mainDiagnosisCode,
                                                       const common::log::trace::LogParameters& parameters, const char* text,
                                                       bool isTextCut) noexcept;

  TraceRing& m_ring;
  std::array<char, TraceEntry::NAME_SIZE> m_unitName{};
  bool m_isUnitNameCut;
  const char* m_snapName;
  std::atomic<bool> m_isEnabled{false};
};

}  // namespace motion::host::trace
