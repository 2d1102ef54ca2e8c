// Writes trace entries to the systemd journal.
#pragma once

#include <map>
#include <string>
#include <string_view>

#include "host/trace/trace_writer.h"
#include "log_trace/log_buffered3.h"

namespace motion::host::trace {

/// Entries look as if the unit had written them through a buffered sink of its own, at the time when it traced. Texts that
/// were cut on the way are reported through the trace library's output function. Keeps one sink per unit name.
class JournalWriter final : public TraceWriter {
 public:
  void write(const TraceEntry& entry) override;

 private:
  std::map<std::string, common::log::trace::LogBuffered3, std::less<>> m_sinks;
};

}  // namespace motion::host::trace
