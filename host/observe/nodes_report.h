// What a client sees of the data layer, as a tree for people and as JSON for programs.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "host/datalayer/access_rights.h"
#include "host/datalayer/node_walk.h"

namespace motion::host::observe {

struct NodesSeen {
  std::string file;                      ///< of the scenario
  bool isUnrestricted = false;           ///< the client may do everything
  std::vector<std::string> scopes;       ///< that it was granted
  std::vector<std::string> knownScopes;  ///< that could be granted
  datalayer::AccessRights rights;        ///< of its scopes
  std::vector<datalayer::NodeView> roots;
  std::map<std::string, std::string> names;  ///< that the scenario gives to signals, by address

  /// Whether the client has that right, whatever the node offers.
  [[nodiscard]] bool may(datalayer::Right right, const datalayer::NodeView& node) const;
};

/// Throws std::bad_alloc. [any]
[[nodiscard]] std::string nodesText(const NodesSeen& seen);
/// Likewise.
[[nodiscard]] std::string nodesJson(const NodesSeen& seen);

}  // namespace motion::host::observe
