// A start, a program that uses everything, and a stop.
#pragma once

#include <string>
#include <vector>

#include "conformance/subject.h"

namespace motion::conformance {

/// How a play went.
struct PlayReport {
  std::int32_t startStatus = 0;
  std::vector<std::string> refused;  ///< steps that did not succeed
  std::size_t callsOfStart = 0;      ///< calls into the host until start returned
  std::size_t callsBeforeStop = 0;   ///< until stop was called
  std::size_t calls = 0;             ///< all of them
  bool hasComplained = false;        ///< the component traced a warning or an error
  bool leftNothing = false;          ///< after the stop
};

/// Gives everything, starts, uses system functions, nodes, command functions, every command and both options with their
/// jobs, and stops. A step that the component refuses is noted, and the play goes on without it. A Mismatch when an
/// exception comes back, or when what must succeed whatever fails (a stop) does not.
[[nodiscard]] PlayReport playEverything(Subject& subject);

}  // namespace motion::conformance
