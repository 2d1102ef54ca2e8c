// Where the trace library reports its own trouble: standard error, or a hook that takes its place.
#include "log_trace/outputs_lib.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstddef>
#include <cstdio>

#include "log_trace/or_empty.h"

namespace common::log {
namespace {

constexpr std::size_t MESSAGE_SIZE = 200;
constexpr std::size_t OUTPUT_SIZE = 512;

std::atomic<OutputHook> g_hook{nullptr};
std::atomic<void*> g_hookUserData{nullptr};
std::atomic<trace::ILogRealTime3*> g_internalTrace{nullptr};

/// Writes past stdio, whose streams have a lock.
void writeToStandardError(const char* text, std::size_t length) noexcept {
  while (length > 0) {
    const ssize_t written = ::write(STDERR_FILENO, text, length);
    if (written < 0 && errno == EINTR) {
      continue;
    }
    if (written <= 0) {
      return;  // nobody is left to be told
    }
    text += written;
    length -= static_cast<std::size_t>(written);
  }
}

}  // namespace

void outputFunction(const char* level, unsigned int line, const char* function, const char* format, ...) noexcept {
  std::array<char, MESSAGE_SIZE> message{};
  if (format != nullptr) {
    std::va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(message.data(), message.size(), format, arguments);
    va_end(arguments);
    if (length < 0) {
      // The bare format still says what happened.
      std::snprintf(message.data(), message.size(), "%s", format);
    }
  }
  outputMessageLog(level, line, function, message.data());
}

void outputMessageLog(const char* level, unsigned int line, const char* function, const char* message) noexcept {
  if (const OutputHook hook = g_hook.load(std::memory_order_acquire); hook != nullptr) {
    hook(orEmpty(level), line, orEmpty(function), orEmpty(message), g_hookUserData.load(std::memory_order_relaxed));
    return;
  }
  std::array<char, OUTPUT_SIZE> output{};
  const int length = std::snprintf(output.data(), output.size(), "%s: %s (line %u): %s\n", orEmpty(level), orEmpty(function),
                                   line, orEmpty(message));
  if (length < 0) {
    return;
  }
  const std::size_t kept = std::min(static_cast<std::size_t>(length), output.size() - 1);
  output[kept - 1] = '\n';
  writeToStandardError(output.data(), kept);
}

void setOutputHook(OutputHook hook, void* userData) noexcept {
  // Removal leaves the user data alone, so that a report that has already read the hook hands it what it expects.
  if (hook != nullptr) {
    g_hookUserData.store(userData, std::memory_order_relaxed);
  }
  g_hook.store(hook, std::memory_order_release);
}

void setInternalTracePointer(trace::ILogRealTime3* internalTrace) noexcept {
  g_internalTrace.store(internalTrace, std::memory_order_release);
}

trace::ILogRealTime3* getInternalTracePointer() noexcept {
  return g_internalTrace.load(std::memory_order_acquire);
}

void removeInternalTracePointer() noexcept {
  g_internalTrace.store(nullptr, std::memory_order_release);
}

}  // namespace common::log
