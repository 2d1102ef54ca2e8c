// Where the trace library reports its own trouble: standard error, or a hook that takes its place.
#pragma once

#include "common/log/trace/i_log_real_time3.h"

namespace common::log {

/// Receives one internal output message. Texts are borrowed for the duration of the call; they are never null.
/// Called on whatever thread has the message; it must not trace through this library.
using OutputHook = void (*)(const char* level, unsigned int line, const char* function, const char* message,
                            void* userData) noexcept;

/// Reports trouble of the library itself: formats the message into 200 characters, the terminator included, and hands it
/// to `outputMessageLog`. Neither allocates nor locks. `level` is "ERR" throughout the library. [any]
void outputFunction(const char* level, unsigned int line, const char* function, const char* format, ...) noexcept
    __attribute__((format(printf, 4, 5)));

/// Hands a finished message to the hook. Without one, writes "level: function (line N): message" and a line end to
/// standard error, in one piece. Null texts count as empty. [any]
void outputMessageLog(const char* level, unsigned int line, const char* function, const char* message) noexcept;

/// Installs a hook that receives the messages instead of standard error, or removes it (null). Messages may come at any
/// time meanwhile; to exchange one hook for another, remove the first and let running reports end. [framework]
void setOutputHook(OutputHook hook, void* userData) noexcept;

/// Keeps a trace object for the library's own use. It is borrowed: remove it before it ends. [framework]
void setInternalTracePointer(trace::ILogRealTime3* internalTrace) noexcept;
/// The trace object that is kept, or null. [any & real-time]
[[nodiscard]] trace::ILogRealTime3* getInternalTracePointer() noexcept;
/// Forgets the trace object. [framework]
void removeInternalTracePointer() noexcept;

}  // namespace common::log
