// Stands between the trace library and what it uses, to see what goes out and to make it fail.
#include "interception.h"

#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <sstream>

#include "log_trace/outputs_lib.h"

namespace motion::test {
namespace {
thread_local JournalTap* t_journalTap = nullptr;
thread_local ClockTap* t_clockTap = nullptr;
}  // namespace

JournalTap::JournalTap() {
  t_journalTap = this;
}
JournalTap::~JournalTap() {
  t_journalTap = nullptr;
}

int JournalTap::take(const std::string& bytes) {
  auto& lines = m_entries.emplace_back();
  std::istringstream stream(bytes);
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(line);
  }
  return m_error;
}

ClockTap::ClockTap() {
  t_clockTap = this;
}
ClockTap::~ClockTap() {
  t_clockTap = nullptr;
}

int ClockTap::take(clockid_t id) {
  m_asked.push_back(id);
  return m_error;
}

OutputTap::OutputTap() {
  common::log::setOutputHook(
      [](const char* level, unsigned int line, const char* function, const char* message, void* userData) noexcept {
        static_cast<OutputTap*>(userData)->m_messages.push_back({level, line, function, message});
      },
      this);
}

OutputTap::~OutputTap() {
  common::log::setOutputHook(nullptr, nullptr);
}

std::vector<std::string> OutputTap::texts() const {
  std::vector<std::string> result;
  for (const auto& message : m_messages) {
    result.push_back(message.text);
  }
  return result;
}

}  // namespace motion::test

// The journal client's shared library binds to this definition instead of the C library's.
extern "C" ssize_t sendmsg(int descriptor, const msghdr* message, int flags) {
  if (auto* const tap = motion::test::t_journalTap; tap != nullptr) {
    std::string bytes;
    for (std::size_t i = 0; i < message->msg_iovlen; ++i) {
      bytes.append(static_cast<const char*>(message->msg_iov[i].iov_base), message->msg_iov[i].iov_len);
    }
    if (const int error = tap->take(bytes); error != 0) {
      errno = error;
      return -1;
    }
  }
  return ::syscall(SYS_sendmsg, descriptor, message, flags);
}

// The linker sends every clock_gettime of statically linked code here (option --wrap).
extern "C" int __real_clock_gettime(clockid_t id, timespec* time);
extern "C" int __wrap_clock_gettime(clockid_t id, timespec* time) {
  if (auto* const tap = motion::test::t_clockTap; tap != nullptr) {
    if (const int error = tap->take(id); error != 0) {
      errno = error;
      return -1;
    }
  }
  return __real_clock_gettime(id, time);
}
