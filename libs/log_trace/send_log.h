// Writes one entry to the systemd journal.
#pragma once

#include <cstdarg>
#include <ctime>

#include "common/log/result.h"

namespace common::log {

/// Values of R_ENTRY_TYPE. Only diagnostics report a failed write through `outputFunction`.
inline constexpr const char* TRACE_IDENTIFIER = "palvane_trace";
inline constexpr const char* DIAGNOSIS_IDENTIFIER = "palvane_diag";

/// Writes one journal entry. MESSAGE holds the time and all texts, joined by vertical bars in the order of the parameters;
/// most texts also stand in a field of their own. Null texts count as empty. `priority` is a syslog level. The journal
/// client strips white space from the end of each field, and a machine without a journal counts as a successful write.
/// Returns `Ok` or `JournalWriteFailed`. Takes no lock; waits only when the journal's socket is full. [any]
[[nodiscard]] CommonResult sendLogNoVaList(const char* identifier, int priority, const timespec& timestamp,
                                           const char* userId, const char* mainDiagnosis, const char* title,
                                           const char* detailedDiagnosis, const char* additionalText, const char* entity,
                                           const char* origin, const char* unit, const char* fileName,
                                           const char* functionName, const char* line, const char* description) noexcept;

/// As sendLogNoVaList, with the description given as a printf format and its arguments. A text longer than 767 characters
/// is cut and reported through `outputFunction`. Returns `FormatFailed`, and writes nothing, when the text cannot be
/// made. [any]
[[nodiscard]] CommonResult sendLog(const char* identifier, int priority, const timespec& timestamp, const char* userId,
                                   const char* mainDiagnosis, const char* title, const char* detailedDiagnosis,
                                   const char* additionalText, const char* entity, const char* origin, const char* unit,
                                   const char* fileName, const char* functionName, const char* line,
                                   const char* descriptionFormat, std::va_list arguments) noexcept;

}  // namespace common::log
