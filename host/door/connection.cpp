#include "host/door/connection.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace motion::host::door {

namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds DRAIN_LIMIT{200};
constexpr int DRAIN_READS = 16;

/// What poll says of the descriptor until the deadline; 0 when it says nothing.
int await(int descriptor, short events, SteadyClock::time_point deadline) {
  for (;;) {
    const auto rest = std::chrono::ceil<std::chrono::milliseconds>(deadline - SteadyClock::now()).count();
    pollfd what{descriptor, events, 0};
    const int count = poll(&what, 1, static_cast<int>(std::max<decltype(rest)>(rest, 0)));
    if (count > 0) {
      return what.revents;
    }
    if (count == 0 || errno != EINTR) {
      return 0;
    }
  }
}

}  // namespace

bool Connection::awaitRequest() {
  m_isTooLarge = false;
  m_hasAnswered = false;
  if (m_begin == m_end && !fill(SteadyClock::now() + m_limits.idle)) {
    return false;
  }
  m_left = m_limits.head;
  m_deadline = SteadyClock::now() + m_limits.request;
  return true;
}

bool Connection::fill(Time deadline) {
  for (;;) {
    const ssize_t count = recv(m_descriptor, m_buffer.data(), m_buffer.size(), MSG_DONTWAIT);
    if (count > 0) {
      m_begin = 0;
      m_end = static_cast<std::size_t>(count);
      return true;
    }
    const bool mayTryAgain = count < 0 && (errno == EAGAIN || errno == EINTR);
    if (!mayTryAgain || await(m_descriptor, POLLIN, deadline) == 0) {
      return false;
    }
  }
}

std::ptrdiff_t Connection::read(std::span<char> bytes) {
  if (m_left == 0) {
    m_isTooLarge = true;
    return 0;
  }
  if (bytes.empty() || (m_begin == m_end && !fill(m_deadline))) {
    return 0;
  }
  const std::size_t count = std::min({bytes.size(), m_end - m_begin, m_left});
  std::copy_n(m_buffer.begin() + static_cast<std::ptrdiff_t>(m_begin), count, bytes.begin());
  m_begin += count;
  m_left -= count;
  return static_cast<std::ptrdiff_t>(count);
}

bool Connection::write(std::string_view bytes) {
  m_hasAnswered = true;
  const auto deadline = SteadyClock::now() + m_limits.write;
  while (!bytes.empty()) {
    const ssize_t count = send(m_descriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    if (count >= 0) {
      bytes.remove_prefix(static_cast<std::size_t>(count));
    } else if ((errno != EAGAIN && errno != EINTR) || await(m_descriptor, POLLOUT, deadline) == 0) {
      return false;
    }
  }
  return true;
}

void Connection::drain() {
  shutdown(m_descriptor, SHUT_WR);
  const auto deadline = SteadyClock::now() + DRAIN_LIMIT;
  for (int i = 0; i < DRAIN_READS && fill(deadline); ++i) {
  }
  m_begin = m_end = 0;
}

bool Connection::isReadable() const {
  return m_begin != m_end || await(m_descriptor, POLLIN, m_deadline) != 0;
}

bool Connection::isWritable() const {
  const int events = await(m_descriptor, POLLOUT, SteadyClock::now() + m_limits.write);
  return (events & POLLOUT) != 0 && (events & (POLLERR | POLLHUP)) == 0;
}

bool isWelcome(unsigned int user, unsigned int owner) noexcept {
  return user == owner || user == 0;
}

bool isPeerWelcome(int descriptor) noexcept {
  ucred peer{};
  socklen_t size = sizeof(peer);
  return getsockopt(descriptor, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && isWelcome(peer.uid, geteuid());
}

}  // namespace motion::host::door
