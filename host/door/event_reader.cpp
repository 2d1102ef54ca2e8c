#include "host/door/event_reader.h"

namespace motion::host::door {

void EventReader::feed(std::string_view piece) {
  for (const char c : piece) {
    if (c == '\n') {
      take(m_line);
      m_line.clear();
    } else if (c != '\r') {
      m_line += c;
    }
  }
}

void EventReader::take(std::string_view line) {
  if (line.empty()) {
    if (!m_data.empty()) {
      m_handler(m_name, m_data);
    }
    m_name.clear();
    m_data.clear();
    return;
  }
  const std::size_t colon = line.find(':');
  const std::string_view field = line.substr(0, colon);
  std::string_view value = colon == std::string_view::npos ? "" : line.substr(colon + 1);
  if (value.starts_with(' ')) {
    value.remove_prefix(1);
  }
  if (field == "event") {
    m_name = value;
  } else if (field == "data") {
    m_data += m_data.empty() ? "" : "\n";
    m_data += value;
  }
}

}  // namespace motion::host::door
