// Diagnoses: what a component reports to the user of a motion object.
#pragma once

#include <cstdint>

#include "motion/core/dia/cmd_source_info.h"

/// Diagnoses, which users read to learn why a command was refused or failed.
namespace motion::core::dia {

/// The place in the component's source that reports.
struct SourcePosition {
  const char* file = "";      ///< source file; a text with static storage, not null
  const char* function = "";  ///< function in it; as above
  std::uint32_t line = 0;     ///< line of the report, from 1; 0 = unknown
};

/// Takes diagnoses one at a time: report opens one, close ends it.
class IDia {
 public:
  virtual ~IDia() = default;

  /// Opens a diagnosis; the text is printf-formatted. [prepare]
  virtual void report(std::uint32_t mainCode, std::uint32_t detailCode, const CmdSourceInfo& source,
                      const SourcePosition& position, const char* format, ...) = 0;
  /// Ends the open diagnosis. [prepare]
  virtual void close() = 0;

 protected:
  IDia() = default;
  IDia(const IDia&) = default;
  IDia& operator=(const IDia&) = default;
};

/// Collects diagnoses while parameters are decoded, before there is an object to report to.
class IDiagCollector {
 public:
  virtual ~IDiagCollector() = default;
  /// Notes one finished diagnosis; the text is copied, not formatted, and null counts as empty. [prepare]
  virtual void add(std::uint32_t mainCode, std::uint32_t detailCode, const char* text) = 0;

 protected:
  IDiagCollector() = default;
  IDiagCollector(const IDiagCollector&) = default;
  IDiagCollector& operator=(const IDiagCollector&) = default;
};

}  // namespace motion::core::dia
