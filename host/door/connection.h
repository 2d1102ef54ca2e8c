// One connection of the door: reads and writes bytes, and lets nobody take more time or room than is granted.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <span>
#include <string_view>

namespace motion::host::door {

struct ConnectionLimits {
  std::chrono::milliseconds request;  ///< from the first byte of a request to its last
  std::chrono::milliseconds write;    ///< that the other side may let an answer wait
  std::chrono::milliseconds idle;     ///< without a request
  std::size_t head;                   ///< bytes of a request's first line and headers
  std::size_t body;                   ///< bytes of what follows, as they travel
};

/// For one thread. The descriptor stays with the caller; whoever wants to end the connection from another thread shuts it
/// down there.
class Connection {
 public:
  Connection(int descriptor, const ConnectionLimits& limits) : m_descriptor(descriptor), m_limits(limits) {}
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection() = default;

  /// Waits for the first byte of the next request, whose limits begin then; false when none comes.
  [[nodiscard]] bool awaitRequest();
  /// The head was read: what follows has room of its own.
  void beginBody() noexcept { m_left = m_limits.body; }
  /// Gives at least one byte; 0 at the end of what the other side sends, and when a limit is reached. As read(2) else.
  [[nodiscard]] std::ptrdiff_t read(std::span<char> bytes);
  /// All or nothing: false when the other side does not take it in time or has gone.
  [[nodiscard]] bool write(std::string_view bytes);
  /// Reads for a moment what is still coming, so that the other side finds time for the answer, before the connection ends.
  void drain();

  /// The request was larger than it may be.
  [[nodiscard]] bool isTooLarge() const noexcept { return m_isTooLarge; }
  /// Something was written since the request began.
  [[nodiscard]] bool hasAnswered() const noexcept { return m_hasAnswered; }
  /// There is something to read, or the other side has gone.
  [[nodiscard]] bool isReadable() const;
  /// The other side is there and would take something within the limit.
  [[nodiscard]] bool isWritable() const;
  [[nodiscard]] int descriptor() const noexcept { return m_descriptor; }

 private:
  using Time = std::chrono::steady_clock::time_point;

  [[nodiscard]] bool fill(Time deadline);

  const int m_descriptor;
  const ConnectionLimits m_limits;
  std::array<char, 4096> m_buffer{};
  std::size_t m_begin = 0;  ///< of what was received and not yet read
  std::size_t m_end = 0;
  std::size_t m_left = 0;  ///< bytes that this part of the request may still have
  Time m_deadline{};
  bool m_isTooLarge = false;
  bool m_hasAnswered = false;
};

/// The user at the other end of a local socket may come in: the owner of this process, or root. [any]
[[nodiscard]] bool isWelcome(unsigned int user, unsigned int owner) noexcept;
/// Asks the system who is at the other end; false also when it does not say. [any]
[[nodiscard]] bool isPeerWelcome(int descriptor) noexcept;

}  // namespace motion::host::door
