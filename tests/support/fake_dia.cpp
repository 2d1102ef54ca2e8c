// Diagnosis receivers that keep what is reported.
#include "support/fake_dia.h"

#include <array>
#include <cstdarg>
#include <cstdio>

namespace motion::test {

void FakeDia::report(std::uint32_t mainCode, std::uint32_t detailCode, const core::dia::CmdSourceInfo& source,
                     const core::dia::SourcePosition& position, const char* format, ...) {
  const AllocationPause pause;
  std::array<char, 512> text{};
  std::va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text.data(), text.size(), format, arguments);
  va_end(arguments);
  m_calls.note("dia.report", text.data());
  m_reports.push_back({mainCode, detailCode, source, position.file, position.function, position.line, format, text.data()});
}

void FakeDia::close() {
  m_calls.note("dia.close");
  if (!m_reports.empty()) {
    m_reports.back().isClosed = true;
  }
}

void FakeDiagCollector::add(std::uint32_t mainCode, std::uint32_t detailCode, const char* text) {
  m_calls.note("collector.add", mainCode, detailCode, text);
}

}  // namespace motion::test
