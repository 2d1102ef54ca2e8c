// The services of the component: their texts, and what depends on each.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "conformance/subject.h"

namespace motion::conformance {

struct ServiceRow {
  Service service;
  std::string label;           ///< in the names of checks
  std::string name;            ///< in the texts of its coming and going
  std::string setFunction;     ///< in traces
  std::string removeFunction;  ///< in traces
  std::string nullText;        ///< traced for a null argument
  std::string missingText;     ///< traced by a start without it
  std::size_t slot;            ///< of its set operation; the remove operation follows
  bool stopsCommands;          ///< when it leaves
  bool stopsSystem;            ///< when it leaves

  [[nodiscard]] std::string added() const;    ///< the trace of its coming
  [[nodiscard]] std::string removed() const;  ///< the trace of its going
};

/// In the order of the component's operations.
[[nodiscard]] const std::vector<ServiceRow>& serviceRows();

/// @name What a termination of the commands, and of the system functions, traces.
/// @{
[[nodiscard]] std::vector<std::string> commandTerminationTraces();
[[nodiscard]] std::vector<std::string> systemTerminationTraces();
/// @}

/// Throws a Mismatch unless the component's commands are there in full, or are gone in full.
void expectCommands(const Subject& subject, bool isThere);
/// Throws a Mismatch unless the component's system functions, nodes and open memories are there in full, or are gone in
/// full.
void expectSystemFunctions(const Subject& subject, bool isThere);

}  // namespace motion::conformance
