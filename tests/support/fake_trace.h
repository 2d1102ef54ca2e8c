// A trace service whose sink keeps every entry.
#pragma once

#include <cstdarg>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "common/log/trace/i_log_real_time3.h"
#include "common/log/trace/i_registration_real_time3.h"
#include "support/fake_calls.h"

namespace motion::test {

/// One entry as it reached a sink; texts that were null are absent.
struct TraceEntry {
  std::uint32_t mainCode = 0;
  std::uint32_t classType = 0;
  std::optional<std::string> entity;
  std::optional<std::string> origin;
  std::optional<std::string> file;
  std::optional<std::string> function;
  std::uint32_t line = 0;
  std::string format;
  std::string text;  ///< the format with its arguments

  /// "Info", "Warning" or "Error", or the main code in hexadecimal digits when it is another.
  [[nodiscard]] std::string level() const;
  /// As in "Error rt_signals initialize: Already initialized".
  [[nodiscard]] std::string summary() const;
  /// As in "Error rt_signals: Already initialized", for entries whose function has no name of its own.
  [[nodiscard]] std::string summaryWithoutFunction() const;
};

/// Keeps entries. May be used from several threads.
class FakeTraceSink : public common::log::trace::ILogRealTime3 {
 public:
  common::log::trace::TraceResult logRealTime(unsigned int mainDiagnosisCode,
                                              const common::log::trace::LogParameters* parameters, ...) override;
  common::log::trace::TraceResult logRealTimeVaList(unsigned int mainDiagnosisCode,
                                                    const common::log::trace::LogParameters* parameters,
                                                    std::va_list arguments) override;

  [[nodiscard]] std::vector<TraceEntry> entries() const;
  [[nodiscard]] std::vector<std::string> summaries() const;
  [[nodiscard]] std::vector<std::string> summariesWithoutFunction() const;
  void clear();

 private:
  mutable std::mutex m_mutex;
  std::vector<TraceEntry> m_entries;
};

/// Hands out one sink. Operations: "trace.registerUnit", "trace.unregisterUnit".
class FakeTraceService : public common::log::trace::IRegistrationRealTime3 {
 public:
  FakeTraceService(FakeCalls& calls, FakeTraceSink& sink) : m_calls(calls), m_sink(sink) {}

  std::int32_t registerUnit(common::log::trace::ILogRealTime3** sink, const char* unitName,
                            const EnablingCallback& callback) override;
  std::int32_t getEnablingState(const common::log::trace::ILogRealTime3* sink,
                                common::log::trace::EnablingState& state) const override;
  std::int32_t unregisterUnit(common::log::trace::ILogRealTime3** sink) override;

  /// The callback of the registered unit.
  EnablingCallback m_callback;
  /// Called in unregisterUnit, while the old sink is still good.
  std::function<void()> m_onUnregister;
  /// The sink that was given back last.
  const common::log::trace::ILogRealTime3* m_returned = nullptr;

 private:
  FakeCalls& m_calls;
  FakeTraceSink& m_sink;
};

}  // namespace motion::test
