#include "host/motion/dia_log.h"

#include <fmt/format.h>

#include <array>
#include <cstdarg>
#include <cstdio>

#include "host/support/guarded.h"

namespace motion::host {

namespace {

const char* orEmpty(const char* text) noexcept {
  return text != nullptr ? text : "";
}

}  // namespace

void DiaLog::report(std::uint32_t mainCode, std::uint32_t detailCode, const core::dia::CmdSourceInfo& source,
                    const core::dia::SourcePosition& position, const char* format, ...) noexcept {
  std::array<char, 512> text{};
  std::va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text.data(), text.size(), format, arguments);
  va_end(arguments);
  static_cast<void>(guarded(false, [&] {
    Diagnosis diagnosis{mainCode,      detailCode,  source, orEmpty(position.file), orEmpty(position.function),
                        position.line, text.data(), false};
    const std::scoped_lock lock(m_mutex);
    if (m_entries.size() == CAPACITY) {
      m_entries.erase(m_entries.begin());
    }
    m_entries.push_back(std::move(diagnosis));
    ++m_count;
    return true;
  }));
}

void DiaLog::close() noexcept {
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

std::string DiaLog::latestWithCodes() const {
  const std::scoped_lock lock(m_mutex);
  if (m_entries.empty()) {
    return {};
  }
  const Diagnosis& latest = m_entries.back();
  return fmt::format("{} (0x{:08X}, 0x{:08X})", latest.text, latest.mainCode, latest.detailCode);
}

}  // namespace motion::host
