// A provider: the part of a process that answers for nodes.
#pragma once

#include <string>

#include "comm/datalayer/dl_result.h"
#include "comm/datalayer/i_provider_node.h"
#include "comm/datalayer/variant.h"

namespace comm::datalayer {

/// Whoever received it from the factory owns it and deletes it; deletion stops it and withdraws what it registered.
class IProvider {
 public:
  virtual ~IProvider() = default;

  /// Starts answering. [framework]
  virtual DlResult start() = 0;
  /// Stops answering; callbacks that run are finished first. DL_FAILED when not started. [framework]
  virtual DlResult stop() = 0;
  /// Answers `address` (which may end in a wildcard level) with the node, which is borrowed. [framework]
  virtual DlResult registerNode(const std::string& address, IProviderNode* node) = 0;
  virtual DlResult unregisterNode(const std::string& address) = 0;  ///< [framework]
  /// Registers a type or a list of scopes at an address. The value is copied. [framework]
  virtual DlResult registerType(const std::string& address, const Variant& value) = 0;
  virtual DlResult unregisterType(const std::string& address) = 0;  ///< [framework]
  [[nodiscard]] virtual bool isStarted() const = 0;                 ///< [any]

 protected:
  IProvider() = default;
  IProvider(const IProvider&) = default;
  IProvider& operator=(const IProvider&) = default;
};

}  // namespace comm::datalayer
