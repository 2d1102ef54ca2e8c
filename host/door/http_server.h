// Serves HTTP on a local socket, with threads of its own.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "host/door/message.h"

namespace motion::host::door {

class HttpServer {
 public:
  using Handler = std::function<Response(const Request&)>;

  /// The handler is called from several threads at a time.
  explicit HttpServer(Handler handler);
  HttpServer(const HttpServer&) = delete;
  HttpServer& operator=(const HttpServer&) = delete;
  /// Stops.
  ~HttpServer();

  /// Serves what comes to the listening socket, which it takes over also when it fails; false with a text then. Once.
  [[nodiscard]] bool start(int listening, std::string& problem);
  /// Ends all connections, after answers that are under way were given a moment, and returns when nothing runs any more.
  void stop() noexcept;

 private:
  class Work;
  std::unique_ptr<Work> m_work;
};

}  // namespace motion::host::door
