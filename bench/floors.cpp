// Floors: the least that the hardware needs for the same work.
#include "bench/floors.h"

#include <sys/socket.h>
#include <sys/uio.h>

#include <array>
#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <mutex>

namespace motion::bench {

namespace {

constexpr std::size_t SIGNALS = 100;

std::atomic<bool> g_isTraceEnabled{false};

class SignalFloor : public ISignalFloor {
 public:
  bool get(std::uint32_t id) override { return load(m_in[id]) != load(m_out[id]); }

  void set(std::uint32_t id) override {
    const auto next = static_cast<std::uint8_t>(load(m_in[id]) + 1);
    store(m_in[id], next != load(m_out[id]) ? next : static_cast<std::uint8_t>(next + 1));
  }

  void reset(std::uint32_t id) override { store(m_in[id], load(m_out[id])); }

 private:
  static std::uint8_t load(std::uint8_t& counter) noexcept {
    return std::atomic_ref<std::uint8_t>(counter).load(std::memory_order_acquire);
  }
  static void store(std::uint8_t& counter, std::uint8_t value) noexcept {
    std::atomic_ref<std::uint8_t>(counter).store(value, std::memory_order_release);
  }

  std::array<std::uint8_t, SIGNALS> m_in{};
  std::array<std::uint8_t, SIGNALS> m_out{};
};

class LockedSignalFloor final : public SignalFloor {
 public:
  bool get(std::uint32_t id) override {
    const std::lock_guard lock(m_mutex);
    return SignalFloor::get(id);
  }

  void set(std::uint32_t id) override {
    const std::lock_guard lock(m_mutex);
    SignalFloor::set(id);
  }

  void reset(std::uint32_t id) override {
    const std::lock_guard lock(m_mutex);
    SignalFloor::reset(id);
  }

 private:
  std::mutex m_mutex;
};

}  // namespace

std::unique_ptr<ISignalFloor> makeSignalFloor() {
  return std::make_unique<SignalFloor>();
}

std::unique_ptr<ISignalFloor> makeLockedSignalFloor() {
  return std::make_unique<LockedSignalFloor>();
}

void traceFloor(const char* format, unsigned int value) noexcept {
  if (g_isTraceEnabled.load(std::memory_order_relaxed)) {
    std::fprintf(stderr, "%s %u\n", format, value);
  }
}

void entryFloor(int socket, const char* format, ...) noexcept {
  std::array<char, 768> text;
  std::va_list arguments;
  va_start(arguments, format);
  const int length = std::vsnprintf(text.data(), text.size(), format, arguments);
  va_end(arguments);
  iovec part{text.data(), static_cast<std::size_t>(length)};
  msghdr message{};
  message.msg_iov = &part;
  message.msg_iovlen = 1;
  static_cast<void>(::sendmsg(socket, &message, MSG_NOSIGNAL));
}

}  // namespace motion::bench
