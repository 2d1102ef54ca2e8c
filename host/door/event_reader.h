// Reads a stream of server-sent events.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace motion::host::door {

/// Takes a stream in pieces of any size, and gives event after event. Comments are left out.
class EventReader {
 public:
  using Handler = std::function<void(const std::string& name, const std::string& data)>;

  explicit EventReader(Handler handler) : m_handler(std::move(handler)) {}

  void feed(std::string_view piece);

 private:
  void take(std::string_view line);

  Handler m_handler;
  std::string m_line;  ///< so far
  std::string m_name;
  std::string m_data;
};

}  // namespace motion::host::door
