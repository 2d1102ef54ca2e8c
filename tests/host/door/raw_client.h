// Writes bytes to a local socket as they are, and reads what comes back.
#pragma once

#include <chrono>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>

namespace motion::host::door {

struct RawAnswer {
  int status = 0;  ///< 0 = nothing came
  std::map<std::string, std::string> headers;
  std::string body;  ///< as it travelled
};

class RawClient {
 public:
  /// Throws when nobody listens.
  explicit RawClient(const std::filesystem::path& socket);
  RawClient(const RawClient&) = delete;
  RawClient& operator=(const RawClient&) = delete;
  ~RawClient();

  /// False when the other side does not take it.
  bool send(std::string_view bytes);
  /// No more will be sent.
  void closeForWriting();
  /// Ends the connection at once.
  void hangUp();
  /// All that comes until the other side ends the connection; fails the test when that takes too long.
  [[nodiscard]] std::string readAll();
  /// What comes until it contains that text, or until the connection ends.
  [[nodiscard]] std::string readUntil(std::string_view text);
  /// One answer with a length.
  [[nodiscard]] RawAnswer readAnswer();

 private:
  bool receive(std::string& text);

  int m_descriptor;
  std::string m_rest;
};

/// One request on a connection of its own. Headers end with "\r\n" each.
[[nodiscard]] RawAnswer ask(const std::filesystem::path& socket, const std::string& method, const std::string& target,
                            const std::string& headers = "", const std::string& body = "");
/// The same for bytes that may be anything; sends no more after them.
[[nodiscard]] RawAnswer askRaw(const std::filesystem::path& socket, std::string_view bytes);

}  // namespace motion::host::door
