// The one door through which the component writes diagnostic text.
#pragma once

#include <atomic>
#include <cstdint>

#include "common/log/trace/enabling_state.h"
#include "common/log/trace/i_log_real_time3.h"
#include "common/log/trace/i_registration_real_time3.h"
#include "impl/call_site.h"

namespace motion::kavo {

/// Level of a trace. A value without a name counts as Error.
enum class TraceType : std::uint32_t { Info = 0, Warning = 1, Error = 2 };

/// Hands traces to the current sink: the buffered sink of the process, or that of the host's trace service while the
/// component's unit is registered there.
class DebugTrace {
 public:
  DebugTrace() = delete;

  /// Writes one entry, printf-style; a fixed text is passed as the argument of "%s". Only the base name of `file` reaches
  /// the sink. Neither allocates nor locks; with the level switched off nothing is formatted either. [any & real-time]
  static void doTrace(TraceType type, const char* file, const char* function, unsigned int line, const char* format,
                      ...) noexcept __attribute__((format(printf, 5, 6)));

  /// The current sink. [any & real-time]
  [[nodiscard]] static common::log::trace::ILogRealTime3* getTrace() noexcept;
  /// The sink that is current while no trace service has given one; made on first use. [any]
  [[nodiscard]] static common::log::trace::ILogRealTime3* getBufferedTrace();

  /// The switches; whoever reads them while a trace service changes them goes through std::atomic_ref. [any & real-time]
  [[nodiscard]] static const common::log::trace::EnablingState& getTraceEnablingState() noexcept;
  /// Copies all three switches. [any & real-time]
  static void setTraceEnablingState(const common::log::trace::EnablingState& state) noexcept;

  /// Registers the component's unit with the trace service and uses the service's sink from then on; on failure the buffered
  /// sink. [framework]
  static void addTraceBundle(common::log::trace::IRegistrationRealTime3* registration) noexcept;
  /// Goes back to the buffered sink and gives the service's sink back. Nothing happens when it is the buffered one.
  /// [framework]
  static void removeTraceBundle(common::log::trace::IRegistrationRealTime3* registration) noexcept;

 private:
  static void setTrace(common::log::trace::ILogRealTime3* trace) noexcept;

  /// The service writes here while it registers the unit; everybody else goes through std::atomic_ref.
  static common::log::trace::ILogRealTime3* s_trace;
  static common::log::trace::EnablingState s_enablingState;
};

}  // namespace motion::kavo

/// Traces a printf-style text from the place where this is written; `type` is the bare name of a TraceType.
#define KAVO_TRACE(type, ...)                                                                                        \
  ::motion::kavo::DebugTrace::doTrace(::motion::kavo::TraceType::type, ::motion::kavo::unitPath<__FILE__>, __func__, \
                                      __LINE__, __VA_ARGS__)

/// The same for a fixed text.
#define KAVO_TRACE_TEXT(type, text) KAVO_TRACE(type, "%s", text)

/// Traces a printf-style text from a place that was handed in.
#define KAVO_TRACE_AT(site, type, ...)                                                                            \
  ::motion::kavo::DebugTrace::doTrace(::motion::kavo::TraceType::type, (site).unit, (site).function, (site).line, \
                                      __VA_ARGS__)

/// Traces from here in the name of the operation at a place of the same file: for lambdas and pieces of an operation.
#define KAVO_TRACE_IN(site, type, ...) \
  ::motion::kavo::DebugTrace::doTrace(::motion::kavo::TraceType::type, (site).unit, (site).function, __LINE__, __VA_ARGS__)
