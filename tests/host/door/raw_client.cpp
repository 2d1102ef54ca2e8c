#include "raw_client.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace motion::host::door {

namespace {

constexpr int LIMIT = 60'000;  // [ms]

RawAnswer parse(const std::string& text) {
  RawAnswer answer;
  const std::size_t end = text.find("\r\n\r\n");
  if (end == std::string::npos || !text.starts_with("HTTP/1.1 ")) {
    return answer;
  }
  answer.status = std::stoi(text.substr(9, 3));
  std::istringstream lines(text.substr(0, end));
  std::string line;
  std::getline(lines, line);
  while (std::getline(lines, line)) {
    const std::size_t colon = line.find(':');
    std::string name = line.substr(0, colon);
    std::ranges::transform(name, name.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    std::string value = line.substr(colon + 2);
    if (value.ends_with('\r')) {
      value.pop_back();
    }
    answer.headers[name] = value;
  }
  answer.body = text.substr(end + 4);
  return answer;
}

}  // namespace

RawClient::RawClient(const std::filesystem::path& socket) : m_descriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  socket.string().copy(address.sun_path, sizeof(address.sun_path) - 1);
  if (connect(m_descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
    hangUp();
    throw std::runtime_error("nobody listens at " + socket.string());
  }
}

RawClient::~RawClient() {
  hangUp();
}

bool RawClient::send(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::send(m_descriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (count < 0) {
      return false;
    }
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

void RawClient::closeForWriting() {
  shutdown(m_descriptor, SHUT_WR);
}

void RawClient::hangUp() {
  if (m_descriptor >= 0) {
    close(std::exchange(m_descriptor, -1));
  }
}

bool RawClient::receive(std::string& text) {
  pollfd what{m_descriptor, POLLIN, 0};
  if (poll(&what, 1, LIMIT) <= 0) {
    ADD_FAILURE() << "no end of the answer in time; so far: " << text;
    return false;
  }
  std::array<char, 4096> bytes{};
  const ssize_t count = recv(m_descriptor, bytes.data(), bytes.size(), 0);
  if (count <= 0) {
    return false;
  }
  text.append(bytes.data(), static_cast<std::size_t>(count));
  return true;
}

std::string RawClient::readAll() {
  while (receive(m_rest)) {
  }
  return std::exchange(m_rest, {});
}

std::string RawClient::readUntil(std::string_view text) {
  while (m_rest.find(text) == std::string::npos && receive(m_rest)) {
  }
  return std::exchange(m_rest, {});
}

RawAnswer RawClient::readAnswer() {
  while (m_rest.find("\r\n\r\n") == std::string::npos && receive(m_rest)) {
  }
  RawAnswer answer = parse(m_rest);
  if (answer.status == 0) {
    return answer;
  }
  const std::size_t head = m_rest.size() - answer.body.size();
  const std::size_t size = answer.headers.contains("content-length") ? std::stoul(answer.headers["content-length"]) : 0;
  while (m_rest.size() < head + size && receive(m_rest)) {
  }
  answer.body = m_rest.substr(head, size);
  m_rest.erase(0, head + size);
  return answer;
}

RawAnswer ask(const std::filesystem::path& socket, const std::string& method, const std::string& target,
              const std::string& headers, const std::string& body) {
  RawClient client(socket);
  const std::string length = body.empty() ? "" : "Content-Length: " + std::to_string(body.size()) + "\r\n";
  client.send(method + " " + target + " HTTP/1.1\r\nHost: x\r\n" + headers + length + "\r\n" + body);
  return client.readAnswer();
}

RawAnswer askRaw(const std::filesystem::path& socket, std::string_view bytes) {
  RawClient client(socket);
  client.send(bytes);
  client.closeForWriting();
  return parse(client.readAll());
}

}  // namespace motion::host::door
