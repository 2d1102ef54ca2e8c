// Writes trace entries to the systemd journal.
#include "host/trace/journal_writer.h"

#include <functional>

#include "log_trace/outputs_lib.h"

namespace motion::host::trace {

void JournalWriter::write(const TraceEntry& entry) {
  const std::string_view unitName = entry.unitName.data();
  auto sink = m_sinks.find(unitName);
  if (sink == m_sinks.end()) {
    sink = m_sinks.try_emplace(std::string(unitName), entry.unitName.data(), true).first;
  }
  common::log::trace::LogParametersExtended parameters;
  parameters.entity = entry.entity.data();
  parameters.origin = entry.origin.data();
  parameters.fileName = entry.fileName.data();
  parameters.functionName = entry.functionName.data();
  parameters.line = entry.line;
  if (entry.isTruncated) {
    common::log::outputFunction("ERR", __LINE__, __func__, "An entry of unit '%s' was too long and is truncated.",
                                entry.unitName.data());
  }
  // A journal that refuses an entry leaves nobody to tell.
  (void)sink->second.logFinal(entry.mainDiagnosisCode, &parameters, entry.text.data(), entry.time);
}

}  // namespace motion::host::trace
