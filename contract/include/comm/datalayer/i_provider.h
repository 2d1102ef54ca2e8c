// A provider: the part of a process that answers for nodes.
#pragma once

#include <string>

#include "comm/datalayer/dl_result.h"
#include "comm/datalayer/i_provider_node.h"
#include "comm/datalayer/variant.h"

namespace comm::datalayer {

/// Takes requests for the addresses that were registered with it and calls their nodes, on threads of its own.
/// Whoever received it from the factory owns it and deletes it; deletion stops it and withdraws what it registered.
class IProvider {
 public:
  virtual ~IProvider() = default;

  /// Starts answering; nodes may be registered before and after. DL_FAILED when started already. [framework]
  virtual DlResult start() = 0;
  /// Stops answering; callbacks that run are finished first. DL_FAILED when not started. [framework]
  virtual DlResult stop() = 0;
  /// Answers `address` (which may end in a wildcard level) with the node, which is borrowed.
  /// DL_ALREADY_EXISTS, DL_INVALID_ADDRESS; DL_INVALID_HANDLE without a node. [framework]
  virtual DlResult registerNode(const std::string& address, IProviderNode* node) = 0;
  /// Gives a node back; when it returns none of its callbacks runs any more, save one that calls this.
  /// DL_INVALID_ADDRESS for an address that this provider has not registered. [framework]
  virtual DlResult unregisterNode(const std::string& address) = 0;
  /// Registers a type or a list of scopes at an address. The value is copied. [framework]
  virtual DlResult registerType(const std::string& address, const Variant& value) = 0;
  /// Withdraws a type or a list of scopes; what the scopes permitted is refused from then on. DL_INVALID_ADDRESS.
  /// [framework]
  virtual DlResult unregisterType(const std::string& address) = 0;
  /// True from a start that succeeded until the next stop. [any]
  [[nodiscard]] virtual bool isStarted() const = 0;

 protected:
  IProvider() = default;
  IProvider(const IProvider&) = default;
  IProvider& operator=(const IProvider&) = default;
};

}  // namespace comm::datalayer
