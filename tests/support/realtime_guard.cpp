// Counts what a thread with real-time promises must not do: allocate, free, lock and make system calls.
#include "support/realtime_guard.h"

#include <cxxabi.h>
#include <dlfcn.h>
#include <execinfo.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ostream>
#include <stdexcept>

#include "support/system_call_watch.h"

namespace motion::test {

namespace {

constinit thread_local RealtimeGuard* t_armed __attribute__((tls_model("initial-exec"))) = nullptr;

/// The guard's own functions at the top of every record of callers.
constexpr std::size_t OWN_FRAMES = 2;

const char* toText(Violation kind) noexcept {
  switch (kind) {
    case Violation::ALLOCATION:
      return "allocation";
    case Violation::DEALLOCATION:
      return "deallocation";
    case Violation::LOCK:
      return "lock";
    case Violation::SYSTEM_CALL:
      break;
  }
  return "system call";
}

}  // namespace

void RealtimeGuard::arm() {
  if (t_armed != nullptr) {
    throw std::logic_error("a real-time guard is armed on this thread already");
  }
  SystemCallWatch::prepareThread();
  void* unused = nullptr;
  backtrace(&unused, 1);  // its first use loads a library
  t_armed = this;
  SystemCallWatch::start();
}

void RealtimeGuard::disarm() noexcept {
  if (t_armed == this) {
    SystemCallWatch::stop();
    t_armed = nullptr;
  }
}

void RealtimeGuard::note(Violation kind, const char* operation, long number) noexcept {
  RealtimeGuard* guard = t_armed;
  if (guard == nullptr) {
    return;
  }
  // What recording itself does is not counted.
  t_armed = nullptr;
  SystemCallWatch::stop();
  guard->record(kind, operation, number);
  t_armed = guard;
  if (kind != Violation::SYSTEM_CALL) {
    SystemCallWatch::start();  // a system call is still to be carried out
  }
}

void RealtimeGuard::record(Violation kind, const char* operation, long number) noexcept {
  ++m_counts[static_cast<std::size_t>(kind)];
  if (m_recordCount < m_records.size()) {
    Record& entry = m_records[m_recordCount++];
    entry.kind = kind;
    entry.operation = operation;
    entry.number = number;
    entry.depth = backtrace(entry.callers.data(), static_cast<int>(entry.callers.size()));
  }
}

Violations RealtimeGuard::violations() const noexcept {
  return {count(Violation::ALLOCATION), count(Violation::DEALLOCATION), count(Violation::LOCK),
          count(Violation::SYSTEM_CALL)};
}

bool RealtimeGuard::countsSystemCalls() noexcept {
  return SystemCallWatch::isPossible();
}

std::string RealtimeGuard::describe() const {
  std::string text;
  for (const Violation kind : {Violation::ALLOCATION, Violation::DEALLOCATION, Violation::LOCK, Violation::SYSTEM_CALL}) {
    text += std::string(text.empty() ? "" : ", ") + toText(kind) + "s: " + std::to_string(count(kind));
  }
  for (std::size_t i = 0; i < m_recordCount; ++i) {
    const Record& entry = m_records[i];
    text += std::string("\n") + toText(entry.kind) + " ";
    text += entry.operation != nullptr ? entry.operation : "number " + std::to_string(entry.number);
    const auto callers = std::span(entry.callers).first(static_cast<std::size_t>(entry.depth));
    appendCallers(text, callers.subspan(std::min(callers.size(), OWN_FRAMES)));
  }
  return text;
}

void RealtimeGuard::appendCallers(std::string& text, std::span<void* const> callers) {
  for (void* const address : callers) {
    Dl_info info{};
    char line[64];
    if (dladdr(address, &info) == 0 || info.dli_fname == nullptr) {
      std::snprintf(line, sizeof(line), "\n    %p", address);
      text += line;
      continue;
    }
    const auto offset = static_cast<const char*>(address) - static_cast<const char*>(info.dli_fbase);
    std::snprintf(line, sizeof(line), "+0x%tx", offset);
    text += std::string("\n    ") + info.dli_fname + line;
    if (info.dli_sname != nullptr) {
      char* readable = abi::__cxa_demangle(info.dli_sname, nullptr, nullptr, nullptr);
      text += std::string(" ") + (readable != nullptr ? readable : info.dli_sname);
      std::free(readable);
    }
  }
}

void PrintTo(const Violations& violations, std::ostream* out) {
  *out << violations.allocations << " allocations, " << violations.deallocations << " deallocations, " << violations.locks
       << " locks, " << violations.systemCalls << " system calls";
}

}  // namespace motion::test
