#include "bench/local_exchange.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

namespace motion::bench {

namespace {

sockaddr_un addressOf(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::copy_n(path.begin(), std::min(path.size(), sizeof(address.sun_path) - 1), address.sun_path);
  return address;
}

bool sendAll(int descriptor, std::string_view bytes) {
  return send(descriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(bytes.size());
}

bool receiveAll(int descriptor, std::size_t size) {
  std::array<char, 4096> bytes;
  while (size > 0) {
    const ssize_t count = recv(descriptor, bytes.data(), std::min(bytes.size(), size), 0);
    if (count <= 0) {
      return false;
    }
    size -= static_cast<std::size_t>(count);
  }
  return true;
}

/// Bytes of the whole answer, as far as its head is there; 0 before that.
std::size_t sizeOfAnswer(std::string_view answer) {
  constexpr std::string_view END = "\r\n\r\n";
  constexpr std::string_view LENGTH = "Content-Length: ";
  const std::size_t end = answer.find(END);
  const std::size_t length = answer.find(LENGTH);
  std::size_t body = 0;
  if (end == std::string_view::npos || length == std::string_view::npos) {
    return 0;
  }
  std::from_chars(answer.data() + length + LENGTH.size(), answer.data() + answer.size(), body);
  return end + END.size() + body;
}

}  // namespace

LocalConnection::LocalConnection(const std::string& path) : m_descriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  const sockaddr_un address = addressOf(path);
  if (connect(m_descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
    close(std::exchange(m_descriptor, -1));
  }
}

LocalConnection::~LocalConnection() {
  if (m_descriptor >= 0) {
    close(m_descriptor);
  }
}

bool LocalConnection::exchange(std::string_view request, std::size_t answerSize) {
  return sendAll(m_descriptor, request) && receiveAll(m_descriptor, answerSize);
}

bool LocalConnection::exchange(std::string_view request, std::string& answer) {
  answer.clear();
  if (!sendAll(m_descriptor, request)) {
    return false;
  }
  std::array<char, 4096> bytes;
  for (std::size_t size = 0; size == 0 || answer.size() < size; size = sizeOfAnswer(answer)) {
    const ssize_t count = recv(m_descriptor, bytes.data(), bytes.size(), 0);
    if (count <= 0) {
      return false;
    }
    answer.append(bytes.data(), static_cast<std::size_t>(count));
  }
  return true;
}

BounceServer::BounceServer(std::string path, std::size_t requestSize, std::size_t answerSize)
    : m_path(std::move(path)),
      m_requestSize(requestSize),
      m_answerSize(answerSize),
      m_descriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  const sockaddr_un address = addressOf(m_path);
  if (bind(m_descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0 &&
      listen(m_descriptor, 16) == 0) {
    m_thread = std::thread([this] { serve(); });
  }
}

BounceServer::~BounceServer() {
  shutdown(m_descriptor, SHUT_RDWR);
  if (m_thread.joinable()) {
    m_thread.join();
  }
  close(m_descriptor);
  unlink(m_path.c_str());
}

void BounceServer::serve() const {
  const std::string answer(m_answerSize, 'a');
  for (int peer = accept(m_descriptor, nullptr, nullptr); peer >= 0; peer = accept(m_descriptor, nullptr, nullptr)) {
    while (receiveAll(peer, m_requestSize) && sendAll(peer, answer)) {
    }
    close(peer);
  }
}

}  // namespace motion::bench
