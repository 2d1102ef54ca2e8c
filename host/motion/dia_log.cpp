#include "host/motion/dia_log.h"

#include <array>
#include <cstdarg>
#include <cstdio>

namespace motion::host {

void DiaLog::report(std::uint32_t mainCode, std::uint32_t detailCode, const core::dia::CmdSourceInfo& source,
                    const core::dia::SourcePosition& position, const char* format, ...) {
  std::array<char, 512> text{};
  std::va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text.data(), text.size(), format, arguments);
  va_end(arguments);
  try {
    const std::scoped_lock lock(m_mutex);
    if (m_entries.size() == CAPACITY) {
      m_entries.erase(m_entries.begin());
    }
    m_entries.push_back(
        {mainCode, detailCode, source, position.file, position.function, position.line, text.data(), false});
    ++m_count;
  } catch (const std::exception&) {
    // Without memory the diagnosis is lost, but the command that reports it is refused all the same.
  }
}

void DiaLog::close() {
  const std::scoped_lock lock(m_mutex);
  if (!m_entries.empty()) {
    m_entries.back().closed = true;
  }
}

std::vector<Diagnosis> DiaLog::all() const {
  const std::scoped_lock lock(m_mutex);
  return m_entries;
}

std::uint64_t DiaLog::count() const {
  const std::scoped_lock lock(m_mutex);
  return m_count;
}

std::string DiaLog::latestText() const {
  const std::scoped_lock lock(m_mutex);
  return m_entries.empty() ? std::string() : m_entries.back().text;
}

}  // namespace motion::host
