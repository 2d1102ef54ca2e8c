// What a client of a started host sees in its data layer: everything that `kavo nodes` does, without printing.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/observe/nodes_report.h"
#include "host/run/play.h"

namespace motion::host::run {

struct NodesOptions {
  PlayOptions play;
  /// What the client is granted; none = it is the host itself and may do everything.
  std::optional<std::vector<std::string>> scopes;
};

struct NodesResult {
  PlayResult play;  ///< how starting and stopping went; BAD_INPUT when a scope is unknown
  std::optional<observe::NodesSeen> seen;
};

/// Starts the bundle with the scenario's objects, looks, and stops it. No cycle runs. [framework]
[[nodiscard]] NodesResult lookAtNodes(const NodesOptions& options);

}  // namespace motion::host::run
