// Chooses level, code and sink of a trace, and follows the host's trace service.
#include "impl/debug_trace.h"

#include <cstdarg>
#include <cstring>

#include "impl/diagnosis_codes.h"
#include "impl/guarded.h"
#include "log_trace/log_buffered3.h"

namespace motion::kavo {

namespace {

using common::log::trace::EnablingState;
using common::log::trace::ILogRealTime3;
using common::log::trace::IRegistrationRealTime3;

constexpr const char* UNIT_NAME = "motion.kavo";

/// What a level means: its switch and its main diagnosis code.
struct Level {
  bool EnablingState::*enabled;
  std::uint32_t code;
};

constexpr Level levelOf(TraceType type) noexcept {
  switch (type) {
    case TraceType::Info:
      return {&EnablingState::info, diagnosis::TRACE_INFO};
    case TraceType::Warning:
      return {&EnablingState::warning, diagnosis::TRACE_WARNING};
    case TraceType::Error:
      break;
  }
  return {&EnablingState::error, diagnosis::TRACE_ERROR};
}

/// What follows the last separator, of either kind; a separator at the very beginning does not count.
const char* baseName(const char* file) noexcept {
  if (file == nullptr) {
    return file;
  }
  const char* base = file;
  for (const char* c = file; *c != '\0'; ++c) {
    if (*c == '/' || *c == '\\') {
      base = c == file ? file : c + 1;
    }
  }
  return base;
}

}  // namespace

// Traces may come while the service changes a switch, so each switch is an atomic of its own.
EnablingState DebugTrace::s_enablingState;
// So may traces come while the service writes its sink here.
ILogRealTime3* DebugTrace::s_trace = getBufferedTrace();

void DebugTrace::doTrace(TraceType type, const char* file, const char* function, unsigned int line, const char* format,
                         ...) noexcept {
  const Level level = levelOf(type);
  if (!std::atomic_ref<bool>(s_enablingState.*level.enabled).load(std::memory_order_relaxed)) {
    return;
  }
  ILogRealTime3* const trace = getTrace();
  if (trace == nullptr) {
    return;
  }
  common::log::trace::LogParametersExtended parameters;
  parameters.origin = UNIT_NAME;
  parameters.fileName = baseName(file);
  parameters.functionName = function;
  parameters.line = line;
  parameters.format = format;
  std::va_list arguments;
  va_start(arguments, format);
  guarded([&] { trace->logRealTimeVaList(level.code, &parameters, arguments); });
  va_end(arguments);
}

ILogRealTime3* DebugTrace::getTrace() noexcept {
  return std::atomic_ref<ILogRealTime3*>(s_trace).load(std::memory_order_acquire);
}

void DebugTrace::setTrace(ILogRealTime3* trace) noexcept {
  std::atomic_ref<ILogRealTime3*>(s_trace).store(trace, std::memory_order_release);
}

ILogRealTime3* DebugTrace::getBufferedTrace() {
  static common::log::trace::LogBuffered3 bufferedTrace(UNIT_NAME, true);
  return &bufferedTrace;
}

const EnablingState& DebugTrace::getTraceEnablingState() noexcept {
  return s_enablingState;
}

void DebugTrace::setTraceEnablingState(const EnablingState& state) noexcept {
  for (const auto enabled : {&EnablingState::info, &EnablingState::warning, &EnablingState::error}) {
    std::atomic_ref<bool>(s_enablingState.*enabled).store(state.*enabled, std::memory_order_relaxed);
  }
}

void DebugTrace::addTraceBundle(IRegistrationRealTime3* registration) noexcept {
  if (registration == nullptr) {
    KAVO_TRACE_TEXT(Error, "registration is NULL");
    return;
  }
  constexpr std::int32_t notCalled = -1;
  const std::int32_t result = guarded(notCalled, [&] {
    return registration->registerUnit(&s_trace, UNIT_NAME, [](const EnablingState& state) { setTraceEnablingState(state); });
  });
  if (result < 0) {
    setTrace(getBufferedTrace());
    KAVO_TRACE(Error, "Calling 'registerUnit' failed with error code 0x%08X, so continue using buffered trace.",
               static_cast<unsigned int>(result));
    return;
  }
  // The lower half of the address is enough to recognise a sink.
  KAVO_TRACE(Info, "Registered trace from bundle with pointer 0x%08X.",
             static_cast<unsigned int>(reinterpret_cast<std::uintptr_t>(getTrace())));
}

void DebugTrace::removeTraceBundle(IRegistrationRealTime3* registration) noexcept {
  ILogRealTime3* trace = getTrace();
  if (trace == getBufferedTrace()) {
    return;
  }
  // First of all, whoever the sink belongs to: it may be gone as soon as the service knows.
  setTrace(getBufferedTrace());
  if (registration == nullptr) {
    KAVO_TRACE_TEXT(Error, "registration is NULL");
    return;
  }
  constexpr std::int32_t notCalled = -1;
  const std::int32_t result = guarded(notCalled, [&] { return registration->unregisterUnit(&trace); });
  if (result < 0) {
    KAVO_TRACE(Error, "Calling 'unregisterUnit' failed with error code 0x%08X.", static_cast<unsigned int>(result));
  }
  KAVO_TRACE_TEXT(Info, "Removed trace from bundle.");
}

}  // namespace motion::kavo
