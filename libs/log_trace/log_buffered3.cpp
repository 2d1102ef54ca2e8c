// The buffered trace sink: turns one trace call into entries of the systemd journal.
#include "log_trace/log_buffered3.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <span>
#include <string_view>

#include "log_trace/clock.h"
#include "log_trace/map_results.h"
#include "log_trace/outputs_lib.h"
#include "log_trace/send_log.h"

namespace common::log::trace {
namespace {

constexpr unsigned int INTERNAL_ERROR_CODE = 0x080F0112;
constexpr const char* INTERNAL_ERROR_ENTITY = "trace";
constexpr const char* UNIT_FILE = "log_buffered3";

constexpr std::size_t TEXT_SIZE = 768;
constexpr std::size_t TITLE_SIZE = 128;
constexpr std::size_t ENTITY_SIZE = 128;
constexpr std::size_t NAME_SIZE = 64;
constexpr std::size_t CODE_SIZE = 9;
constexpr std::size_t LINE_SIZE = 12;

constexpr std::size_t DESCRIPTION_SIZE = 256;
constexpr std::size_t PART_LENGTH = 250;
// Readers of the journal rely on the number of parts as it always was: counted as if a part held one character more. So
// texts just above a multiple of a part lose their last characters, and the limit that is reported is one short.
constexpr std::size_t PART_COUNT_DIVISOR = PART_LENGTH + 1;
constexpr std::size_t MAX_PARTS = 3;
constexpr std::size_t REPORTED_DESCRIPTION_LIMIT = 749;

/// Bits 16 to 19 of a main diagnosis code.
enum class DiagnosisClass : unsigned int { Message = 10, Warning = 14, Error = 15 };
enum Priority : int { PRIORITY_ERROR = 3, PRIORITY_WARNING = 4, PRIORITY_INFO = 6 };

struct Level {
  const char* titlePrefix;
  Priority priority;
  bool isKnown;
};

Level levelOf(unsigned int mainDiagnosisCode) noexcept {
  switch (static_cast<DiagnosisClass>((mainDiagnosisCode >> 16U) & 0xFU)) {
    case DiagnosisClass::Message:
      return {"Trace message", PRIORITY_INFO, true};
    case DiagnosisClass::Warning:
      return {"Trace warning", PRIORITY_WARNING, true};
    case DiagnosisClass::Error:
      return {"Trace error", PRIORITY_ERROR, true};
  }
  return {"Trace error", PRIORITY_ERROR, false};
}

void reportCut(unsigned int line, const char* function, std::size_t length, const char* parameter,
               std::size_t limit) noexcept {
  outputFunction("ERR", line, function,
                 "Source string size (%d) of parameter '%s' exceeded and is truncated after %d characters.",
                 static_cast<int>(length), parameter, static_cast<int>(limit));
}

/// Copies what fits of a text of the given length. Returns whether it was longer, which is reported.
bool copyText(std::span<char> target, const char* source, std::size_t length, const char* parameter) noexcept {
  const std::size_t limit = target.size() - 1;
  const std::size_t kept = std::min(length, limit);
  std::copy_n(source, kept, target.begin());
  target[kept] = '\0';
  if (length > limit) {
    reportCut(__LINE__, __func__, length, parameter, limit);
    return true;
  }
  return false;
}

bool copyText(std::span<char> target, const char* source, const char* parameter) noexcept {
  const std::string_view text = source != nullptr ? source : "";
  return copyText(target, text.data(), text.size(), parameter);
}

using Descriptions = std::array<std::array<char, DESCRIPTION_SIZE>, MAX_PARTS>;

/// Spreads a text over the descriptions of at most three entries; unused ones stay empty. Returns whether the text was too
/// long, which is reported.
bool splitText(std::string_view text, Descriptions& descriptions) noexcept {
  if (text.size() < DESCRIPTION_SIZE) {
    text.copy(descriptions[0].data(), text.size());
    return false;
  }
  const std::size_t neededParts = (text.size() + PART_COUNT_DIVISOR) / PART_COUNT_DIVISOR;
  const std::size_t parts = std::min(neededParts, MAX_PARTS);
  for (std::size_t i = 0; i < parts; ++i) {
    const int prefixLength = std::snprintf(descriptions[i].data(), DESCRIPTION_SIZE, "%zu/%zu: ", i + 1, parts);
    text.copy(descriptions[i].data() + prefixLength, PART_LENGTH, i * PART_LENGTH);
  }
  if (neededParts > MAX_PARTS) {
    reportCut(__LINE__, __func__, text.size(), "dynamic description", REPORTED_DESCRIPTION_LIMIT);
    return true;
  }
  return false;
}

/// The texts of one trace call, all within the journal's limits.
struct EntryTexts {
  std::array<char, CODE_SIZE> mainDiagnosis{};
  std::array<char, TITLE_SIZE> title{};
  std::array<char, ENTITY_SIZE> entity{};
  std::array<char, NAME_SIZE> origin{};
  std::array<char, NAME_SIZE> unitName{};
  std::array<char, NAME_SIZE> fileName{};
  std::array<char, NAME_SIZE> functionName{};
  std::array<char, LINE_SIZE> line{};
  Descriptions descriptions{};
};

/// Fills the texts that come from the record. Returns whether one was cut.
bool copyRecord(const LogParameters& parameters, EntryTexts& texts) noexcept {
  bool isCut = copyText(texts.entity, parameters.entity, "entity");
  isCut |= copyText(texts.origin, parameters.origin, "origin");
  isCut |= copyText(texts.fileName, parameters.fileName, "file name");
  isCut |= copyText(texts.functionName, parameters.functionName, "function name");
  if (parameters.line != 0) {
    std::snprintf(texts.line.data(), texts.line.size(), "%d", static_cast<int>(parameters.line));
  }
  return isCut;
}

/// Writes one entry per description, up to the first empty one.
CommonResult sendEntries(const EntryTexts& texts, Priority priority, const timespec& timestamp) noexcept {
  for (const auto& description : texts.descriptions) {
    if (description.front() == '\0') {
      break;
    }
    const CommonResult result =
        sendLogNoVaList(TRACE_IDENTIFIER, priority, timestamp, "", texts.mainDiagnosis.data(), texts.title.data(), "", "",
                        texts.entity.data(), texts.origin.data(), texts.unitName.data(), texts.fileName.data(),
                        texts.functionName.data(), texts.line.data(), description.data());
    if (isFailure(result)) {
      return result;
    }
  }
  return CommonResult::Ok;
}

}  // namespace

LogBuffered3::LogBuffered3(const char* unitName, bool enabled) noexcept : m_enabled(enabled) {
  const bool isGiven = unitName != nullptr && *unitName != '\0';
  const std::string_view name = isGiven ? unitName : "unknown buffered3 trace";
  name.copy(m_unitName.data(), m_unitName.size() - 1);
  m_givenUnitNameLength = name.size();
}

TraceResult LogBuffered3::logRealTime(unsigned int mainDiagnosisCode, const LogParameters* parameters, ...) noexcept {
  std::va_list arguments;
  va_start(arguments, parameters);
  const TraceResult result = logRealTimeVaList(mainDiagnosisCode, parameters, arguments);
  va_end(arguments);
  return result;
}

TraceResult LogBuffered3::logRealTimeVaList(unsigned int mainDiagnosisCode, const LogParameters* parameters,
                                            std::va_list arguments) noexcept {
  if (!m_enabled) {
    return TraceResult::Disabled;
  }
  if (parameters == nullptr || parameters->classType != LogParameters::EXTENDED) {
    reportClassType(__func__, __LINE__, parameters);
    return TraceResult::InvalidParameter;
  }
  std::array<char, TEXT_SIZE> text{};
  if (parameters->format != nullptr && *parameters->format != '\0' &&
      std::vsnprintf(text.data(), text.size(), parameters->format, arguments) < 0) {
    const LogParametersExtended error =
        internalError(__func__, __LINE__, "Calling 'vsnprintf' failed. Output string could not be built.");
    logRealTime(INTERNAL_ERROR_CODE, &error);
    return TraceResult::FormatFailed;
  }
  return logFinal(mainDiagnosisCode, parameters, text.data());
}

TraceResult LogBuffered3::logFinal(unsigned int mainDiagnosisCode, const LogParameters* parameters,
                                   const char* text) noexcept {
  return logFinal(mainDiagnosisCode, parameters, text, static_cast<const timespec*>(nullptr));
}

TraceResult LogBuffered3::logFinal(unsigned int mainDiagnosisCode, const LogParameters* parameters, const char* text,
                                   const timespec& timestamp) noexcept {
  return logFinal(mainDiagnosisCode, parameters, text, &timestamp);
}

TraceResult LogBuffered3::logFinal(unsigned int mainDiagnosisCode, const LogParameters* parameters, const char* text,
                                   const timespec* timestamp) noexcept {
  const Level level = levelOf(mainDiagnosisCode);
  if (!level.isKnown) {
    const LogParametersExtended error =
        internalError(__func__, __LINE__, "Invalid main diagnosis code 0x%08X: treat as trace error, using 0x%08X instead.");
    logRealTime(INTERNAL_ERROR_CODE, &error, mainDiagnosisCode, INTERNAL_ERROR_CODE);
    mainDiagnosisCode = INTERNAL_ERROR_CODE;
  }

  EntryTexts texts;
  bool isCut = copyText(texts.unitName, m_unitName.data(), m_givenUnitNameLength, "unit name");
  if (parameters == nullptr || parameters->classType != LogParameters::EXTENDED) {
    reportClassType(__func__, __LINE__, parameters);
    return TraceResult::InvalidParameter;
  }
  isCut |= copyRecord(*parameters, texts);
  std::snprintf(texts.title.data(), texts.title.size(), "%s %s", level.titlePrefix, texts.unitName.data());
  std::snprintf(texts.mainDiagnosis.data(), texts.mainDiagnosis.size(), "%08X", mainDiagnosisCode);
  isCut |= splitText(text != nullptr ? text : "", texts.descriptions);

  const timespec time = timestamp != nullptr ? *timestamp : Clock(ClockId::Realtime).getTimestamp();
  if (const CommonResult result = sendEntries(texts, level.priority, time); isFailure(result)) {
    return mapCommonResultToTraceResult(result);
  }
  if (!level.isKnown) {
    return TraceResult::InvalidParameter;
  }
  return isCut ? TraceResult::Truncated : TraceResult::Ok;
}

LogParametersExtended LogBuffered3::internalError(const char* function, unsigned int line,
                                                  const char* format) const noexcept {
  LogParametersExtended parameters;
  parameters.entity = INTERNAL_ERROR_ENTITY;
  parameters.origin = m_snapName.get();
  parameters.fileName = UNIT_FILE;
  parameters.functionName = function;
  parameters.line = line;
  parameters.format = format;
  return parameters;
}

void LogBuffered3::reportClassType(const char* function, unsigned int line, const LogParameters* parameters) noexcept {
  const int classType = parameters != nullptr ? static_cast<int>(parameters->classType) : 0;
  const LogParametersExtended error =
      internalError(function, line, "Incorrect class type was sent. Class type: %d. Unit name: %s.");
  logRealTime(INTERNAL_ERROR_CODE, &error, classType, m_unitName.data());
}

}  // namespace common::log::trace
