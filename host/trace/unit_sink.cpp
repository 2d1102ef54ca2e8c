// The sink that the trace service hands out to a unit.
#include "host/trace/unit_sink.h"

#include <cstdio>
#include <ctime>

namespace motion::host::trace {

using common::log::trace::LogParameters;
using common::log::trace::LogParametersExtended;
using common::log::trace::TraceResult;

namespace {
constexpr unsigned int INTERNAL_ERROR_CODE = 0x080F0112;
constexpr const char* INTERNAL_ERROR_ENTITY = "trace";
constexpr const char* UNIT_FILE = "unit_sink";
}  // namespace

UnitSink::UnitSink(TraceRing& ring, const char* unitName, const char* snapName) noexcept
    : m_ring(ring), m_isUnitNameCut(copyText(m_unitName, unitName)), m_snapName(snapName) {}

TraceResult UnitSink::logRealTime(unsigned int mainDiagnosisCode, const LogParameters* parameters, ...) noexcept {
  std::va_list arguments;
  va_start(arguments, parameters);
  const TraceResult result = logRealTimeVaList(mainDiagnosisCode, parameters, arguments);
  va_end(arguments);
  return result;
}

TraceResult UnitSink::logRealTimeVaList(unsigned int mainDiagnosisCode, const LogParameters* parameters,
                                        std::va_list arguments) noexcept {
  if (!m_isEnabled.load(std::memory_order_relaxed)) {
    return TraceResult::Disabled;
  }
  if (parameters == nullptr || parameters->classType != LogParameters::EXTENDED) {
    const int classType = parameters != nullptr ? static_cast<int>(parameters->classType) : 0;
    logInternalError(__func__, __LINE__, "Incorrect class type was sent. Class type: %d. Unit name: %s.", classType,
                     m_unitName.data());
    return TraceResult::InvalidParameter;
  }
  if (parameters->format == nullptr || *parameters->format == '\0') {
    return TraceResult::Ok;
  }
  // Formatted before a place in the ring is taken: the reader never waits for a format, and a text that fails or turns out
  // empty needs no place.
  std::array<char, TraceEntry::TEXT_SIZE> text;
  const int length = std::vsnprintf(text.data(), text.size(), parameters->format, arguments);
  if (length < 0) {
    logInternalError(__func__, __LINE__, "Calling 'vsnprintf' failed. Output string could not be built.");
    return TraceResult::FormatFailed;
  }
  if (length == 0) {
    return TraceResult::Ok;
  }
  return accept(mainDiagnosisCode, *parameters, text.data(), static_cast<std::size_t>(length) >= text.size());
}

void UnitSink::logInternalError(const char* function, unsigned int line, const char* format, ...) noexcept {
  LogParametersExtended parameters;
  parameters.entity = INTERNAL_ERROR_ENTITY;
  parameters.origin = m_snapName;
  parameters.fileName = UNIT_FILE;
  parameters.functionName = function;
  parameters.line = line;
  parameters.format = format;
  std::va_list arguments;
  va_start(arguments, format);
  (void)logRealTimeVaList(INTERNAL_ERROR_CODE, &parameters, arguments);
  va_end(arguments);
}

TraceResult UnitSink::accept(unsigned int mainDiagnosisCode, const LogParameters& parameters, const char* text,
                             bool isTextCut) noexcept {
  bool isCut = isTextCut || m_isUnitNameCut;
  const bool isAccepted = m_ring.push([&](TraceEntry& entry) {
    ::clock_gettime(CLOCK_REALTIME, &entry.time);
    entry.mainDiagnosisCode = mainDiagnosisCode;
    entry.line = parameters.line;
    copyText(entry.unitName, m_unitName.data());
    isCut |= copyText(entry.entity, parameters.entity);
    isCut |= copyText(entry.origin, parameters.origin);
    isCut |= copyText(entry.fileName, parameters.fileName);
    isCut |= copyText(entry.functionName, parameters.functionName);
    copyText(entry.text, text);
    entry.isTruncated = isCut;
  });
  if (!isAccepted) {
    return TraceResult::JournalWriteFailed;
  }
  return isCut ? TraceResult::Truncated : TraceResult::Ok;
}

}  // namespace motion::host::trace
