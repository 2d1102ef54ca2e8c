// Writes one entry to the systemd journal.
#include "log_trace/send_log.h"

// The entry's own location fields are those of the trace call; the client would add a second set with ours.
#define SD_JOURNAL_SUPPRESS_LOCATION
#include <systemd/sd-journal.h>

#include <array>
#include <cstddef>
#include <cstdio>
#include <string_view>

#include "log_trace/clock.h"
#include "log_trace/or_empty.h"
#include "log_trace/outputs_lib.h"

namespace common::log {
namespace {

constexpr std::size_t TIME_TEXT_SIZE = 28;
constexpr std::size_t DESCRIPTION_SIZE = 768;

}  // namespace

CommonResult sendLogNoVaList(const char* identifier, int priority, const timespec& timestamp, const char* userId,
                             const char* mainDiagnosis, const char* title, const char* detailedDiagnosis,
                             const char* additionalText, const char* entity, const char* origin, const char* unit,
                             const char* fileName, const char* functionName, const char* line,
                             const char* description) noexcept {
  long microseconds = 0;
  std::array<char, TIME_TEXT_SIZE> timeText{};
  Clock::convertTimestamp(timestamp, &microseconds, timeText.data(), static_cast<unsigned short>(timeText.size()));

  // clang-format off
  const int result = ::sd_journal_send(
      "MESSAGE=%s|%s|%s|%s|%s|%s|%s|%s|%s|%s|%s|%s|%s", timeText.data(), orEmpty(userId), orEmpty(mainDiagnosis),
          orEmpty(title), orEmpty(detailedDiagnosis), orEmpty(additionalText), orEmpty(entity), orEmpty(origin),
          orEmpty(unit), orEmpty(fileName), orEmpty(functionName), orEmpty(line), orEmpty(description),
      "R_ENTRY_TYPE=%s", orEmpty(identifier),
      "PRIORITY=%d", priority,
      "R_TIMESTAMP=%lld", static_cast<long long>(microseconds),
      "R_USER_ID=%s", orEmpty(userId),
      "R_DIAG_MAIN=%s", orEmpty(mainDiagnosis),
      "R_DIAG_DETAILED=%s", orEmpty(detailedDiagnosis),
      "R_ENTITY=%s", orEmpty(entity),
      "R_ORIGIN=%s", orEmpty(origin),
      "R_UNIT=%s", orEmpty(unit),
      "CODE_FILE=%s", orEmpty(fileName),
      "CODE_FUNC=%s", orEmpty(functionName),
      "CODE_LINE=%s", orEmpty(line),
      nullptr);
  // clang-format on
  if (result >= 0) {
    return CommonResult::Ok;
  }
  if (std::string_view(orEmpty(identifier)) == DIAGNOSIS_IDENTIFIER) {
    outputFunction("ERR", __LINE__, __func__, "Calling 'sd_journal_send' failed with error code %d.", -result);
  }
  return CommonResult::JournalWriteFailed;
}

CommonResult sendLog(const char* identifier, int priority, const timespec& timestamp, const char* userId,
                     const char* mainDiagnosis, const char* title, const char* detailedDiagnosis, const char* additionalText,
                     const char* entity, const char* origin, const char* unit, const char* fileName,
                     const char* functionName, const char* line, const char* descriptionFormat,
                     std::va_list arguments) noexcept {
  std::array<char, DESCRIPTION_SIZE> description{};
  if (descriptionFormat != nullptr) {
    const int length = std::vsnprintf(description.data(), description.size(), descriptionFormat, arguments);
    if (length < 0) {
      outputFunction("ERR", __LINE__, __func__, "Calling 'vsnprintf' failed. Output string could not be built.");
      return CommonResult::FormatFailed;
    }
    if (static_cast<std::size_t>(length) >= description.size()) {
      outputFunction("ERR", __LINE__, __func__,
                     "Message size of output string exceeded. String is truncated after %d characters (or before, "
                     "depending on implementation).",
                     static_cast<int>(description.size() - 1));
    }
  }
  return sendLogNoVaList(identifier, priority, timestamp, userId, mainDiagnosis, title, detailedDiagnosis, additionalText,
                         entity, origin, unit, fileName, functionName, line, description.data());
}

}  // namespace common::log
