// Where trace entries end up.
#pragma once

#include "host/trace/trace_entry.h"

namespace motion::host::trace {

/// Writes entries, one after the other, on the trace service's writer thread.
class TraceWriter {
 public:
  virtual ~TraceWriter() = default;

  /// The entry is borrowed for the duration of the call. May block. What it throws is reported and loses this entry only.
  virtual void write(const TraceEntry& entry) = 0;

 protected:
  TraceWriter() = default;
  TraceWriter(const TraceWriter&) = default;
  TraceWriter& operator=(const TraceWriter&) = default;
};

}  // namespace motion::host::trace
