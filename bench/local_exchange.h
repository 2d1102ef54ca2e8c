// One request and its answer over a local socket, as bytes: the client of the benchmarks, and a server that only bounces.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <thread>

namespace motion::bench {

/// A connection that is kept. Operations answer false when the other side has gone.
class LocalConnection {
 public:
  explicit LocalConnection(const std::string& path);
  LocalConnection(const LocalConnection&) = delete;
  LocalConnection& operator=(const LocalConnection&) = delete;
  ~LocalConnection();

  [[nodiscard]] bool isOpen() const noexcept { return m_descriptor >= 0; }
  /// Sends the request and receives that many bytes of an answer.
  [[nodiscard]] bool exchange(std::string_view request, std::size_t answerSize);
  /// Sends the request and receives an answer of HTTP: head, and a body of the length that the head tells.
  [[nodiscard]] bool exchange(std::string_view request, std::string& answer);

 private:
  int m_descriptor = -1;
};

/// Answers each request of `requestSize` bytes with an answer of `answerSize` bytes, one connection after the other.
class BounceServer {
 public:
  BounceServer(std::string path, std::size_t requestSize, std::size_t answerSize);
  BounceServer(const BounceServer&) = delete;
  BounceServer& operator=(const BounceServer&) = delete;
  ~BounceServer();

 private:
  void serve() const;

  std::string m_path;
  std::size_t m_requestSize;
  std::size_t m_answerSize;
  int m_descriptor = -1;
  std::thread m_thread;
};

}  // namespace motion::bench
