// A trace service whose sink keeps every entry.
#include "support/fake_trace.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>

#include "support/fake_allocation.h"

namespace motion::test {
namespace {

using common::log::trace::LogParameters;
using common::log::trace::TraceResult;

std::optional<std::string> copyOf(const char* text) {
  return text != nullptr ? std::optional<std::string>(text) : std::nullopt;
}

std::string formatted(const char* format, std::va_list arguments) {
  std::va_list copy;
  va_copy(copy, arguments);
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
  const int length = std::vsnprintf(nullptr, 0, format, copy);
  va_end(copy);
  std::string text(static_cast<std::size_t>(std::max(length, 0)) + 1, '\0');
  std::vsnprintf(text.data(), text.size(), format, arguments);
#pragma GCC diagnostic pop
  text.pop_back();
  return text;
}

}  // namespace

std::string TraceEntry::level() const {
  switch (mainCode) {
    case 0x090A0FFC:
      return "Info";
    case 0x090E0FFC:
      return "Warning";
    case 0x090F0FFC:
      return "Error";
    default:
      return fmt::format("{:08X}", mainCode);
  }
}

std::string TraceEntry::summary() const {
  return fmt::format("{} {} {}: {}", level(), file.value_or("(null)"), function.value_or("(null)"), text);
}

std::string TraceEntry::summaryWithoutFunction() const {
  return fmt::format("{} {}: {}", level(), file.value_or("(null)"), text);
}

TraceResult FakeTraceSink::logRealTime(unsigned int mainDiagnosisCode, const LogParameters* parameters, ...) {
  std::va_list arguments;
  va_start(arguments, parameters);
  const auto result = logRealTimeVaList(mainDiagnosisCode, parameters, arguments);
  va_end(arguments);
  return result;
}

TraceResult FakeTraceSink::logRealTimeVaList(unsigned int mainDiagnosisCode, const LogParameters* parameters,
                                             std::va_list arguments) {
  const AllocationPause pause;
  TraceEntry entry;
  entry.mainCode = mainDiagnosisCode;
  entry.classType = parameters->classType;
  entry.entity = copyOf(parameters->entity);
  entry.origin = copyOf(parameters->origin);
  entry.file = copyOf(parameters->fileName);
  entry.function = copyOf(parameters->functionName);
  entry.line = parameters->line;
  entry.format = parameters->format;
  entry.text = formatted(parameters->format, arguments);
  const std::lock_guard lock(m_mutex);
  m_entries.push_back(std::move(entry));
  return TraceResult::Ok;
}

std::vector<TraceEntry> FakeTraceSink::entries() const {
  const std::lock_guard lock(m_mutex);
  return m_entries;
}

std::vector<std::string> FakeTraceSink::summaries() const {
  std::vector<std::string> result;
  for (const auto& entry : entries()) {
    result.push_back(entry.summary());
  }
  return result;
}

std::vector<std::string> FakeTraceSink::summariesWithoutFunction() const {
  std::vector<std::string> result;
  for (const auto& entry : entries()) {
    result.push_back(entry.summaryWithoutFunction());
  }
  return result;
}

void FakeTraceSink::clear() {
  const std::lock_guard lock(m_mutex);
  m_entries.clear();
}

std::int32_t FakeTraceService::registerUnit(common::log::trace::ILogRealTime3** sink, const char* unitName,
                                            const EnablingCallback& callback) {
  if (const auto code = m_calls.note("trace.registerUnit", unitName)) {
    return static_cast<std::int32_t>(*code);
  }
  *sink = &m_sink;
  m_callback = callback;
  return 0;
}

std::int32_t FakeTraceService::getEnablingState(const common::log::trace::ILogRealTime3* /*sink*/,
                                                common::log::trace::EnablingState& /*state*/) const {
  return -1;
}

std::int32_t FakeTraceService::unregisterUnit(common::log::trace::ILogRealTime3** sink) {
  m_returned = *sink;
  if (m_onUnregister) {
    m_onUnregister();
  }
  if (const auto code = m_calls.note("trace.unregisterUnit")) {
    return static_cast<std::int32_t>(*code);
  }
  *sink = nullptr;
  m_callback = nullptr;
  return 0;
}

}  // namespace motion::test
