// The buffered trace sink: turns one trace call into entries of the systemd journal.
#pragma once

#include <array>
#include <cstdarg>
#include <cstddef>
#include <ctime>

#include "common/log/trace/i_log_real_time3.h"
#include "log_trace/snap_name.h"

namespace common::log::trace {

/// Writes entries of one trace unit to the journal, on the caller's thread. All texts live in fixed buffers on the stack
/// and no lock is taken, so one sink serves several threads at once.
///
/// | text                  | kept characters                                         |
/// |-----------------------|---------------------------------------------------------|
/// | formatted text        | 767                                                     |
/// | description of entry  | 255, or 250 in each of at most 3 numbered entries       |
/// | title                 | 127                                                     |
/// | entity                | 127                                                     |
/// | unit name, origin     | 63                                                      |
/// | file and function     | 63                                                      |
///
/// Trouble with a record becomes an internal error entry of its own: code 0x080F0112, entity "trace", origin the snap name.
class LogBuffered3 : public ILogRealTime3 {
 public:
  /// A null or empty name becomes "unknown buffered3 trace". A disabled sink writes nothing. [framework]
  LogBuffered3(const char* unitName, bool enabled) noexcept;

  LogBuffered3(const LogBuffered3&) = delete;
  LogBuffered3& operator=(const LogBuffered3&) = delete;

  /// Formats and writes one text. [any]
  TraceResult logRealTime(unsigned int mainDiagnosisCode, const LogParameters* parameters, ...) noexcept override;
  /// As logRealTime. `Disabled` for a disabled sink; `InvalidParameter` for a class type other than 1 (a null record
  /// counts as type 0) and `FormatFailed`, both with an internal error entry; else the result of logFinal. [any]
  TraceResult logRealTimeVaList(unsigned int mainDiagnosisCode, const LogParameters* parameters,
                                std::va_list arguments) noexcept override;

  /// Writes a finished text with the time of now. An empty text writes no entry. `InvalidParameter` for a class type other
  /// than 1, without the entry, or for a code whose class is none of message, warning and error, which is written as an
  /// error; `Truncated` when a text was cut; or why the journal did not take the entry. [any]
  TraceResult logFinal(unsigned int mainDiagnosisCode, const LogParameters* parameters, const char* text) noexcept;
  /// As above, with a time that was taken earlier, for writers that run behind the trace calls. [any]
  TraceResult logFinal(unsigned int mainDiagnosisCode, const LogParameters* parameters, const char* text,
                       const timespec& timestamp) noexcept;

 private:
  static constexpr std::size_t UNIT_NAME_SIZE = 64;

  /// The steps of both; without a time, it is taken just before writing.
  TraceResult logFinal(unsigned int mainDiagnosisCode, const LogParameters* parameters, const char* text,
                       const timespec* timestamp) noexcept;
  [[nodiscard]] LogParametersExtended internalError(const char* function, unsigned int line,
                                                    const char* format) const noexcept;
  void reportClassType(const char* function, unsigned int line, const LogParameters* parameters) noexcept;

  bool m_enabled;
  std::array<char, UNIT_NAME_SIZE> m_unitName{};
  SnapName m_snapName;
  /// Length of the name as it was given: each entry of a unit whose name was cut says so.
  std::size_t m_givenUnitNameLength = 0;
};

}  // namespace common::log::trace
