// Which provider answers for which address, over all providers of one data layer.
#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "comm/datalayer/i_provider.h"
#include "host/datalayer/provider_core.h"
#include "host/datalayer/scope_register.h"

namespace motion::host::datalayer {

/// Thread-safe. Operations may throw std::bad_alloc and then change nothing.
///
/// Results otherwise than DL_OK:
/// - to add is DL_INVALID_ADDRESS when it is no address, or when that of a node has a wildcard elsewhere than in its last
/// level,
///   and DL_ALREADY_EXISTS when any provider has it; for a list of scopes also what ScopeRegister says;
/// - to remove is DL_INVALID_ADDRESS when this provider does not have it.
///
/// Nodes and types have address spaces of their own. Types whose address begins with "scopes/" are lists of scopes.
class NodeRegister {
 public:
  using Provider = comm::datalayer::IProvider;

  /// A provider and what answers for its nodes. [framework]
  void addProvider(const Provider* provider, std::shared_ptr<ProviderCore> core);
  /// Forgets the provider and withdraws all that it registered. Waits for its callbacks. [framework]
  void removeProvider(const Provider* provider) noexcept;
  [[nodiscard]] bool hasProvider(const Provider* provider) const;  ///< [framework]
  [[nodiscard]] std::size_t providerCount() const;                 ///< [framework]

  /// The node is borrowed until removeNode or removeProvider have come back; called from a callback of the same provider,
  /// they do not wait, and the node is borrowed until all these callbacks have ended. DL_INVALID_HANDLE for a null one, and
  /// for a provider that was not added. [framework]
  [[nodiscard]] comm::datalayer::DlResult addNode(const Provider* provider, const std::string& address,
                                                  comm::datalayer::IProviderNode* node);
  [[nodiscard]] comm::datalayer::DlResult removeNode(const Provider* provider, const std::string& address);  ///< [framework]
  /// The value is copied. DL_INVALID_VALUE for an empty one. [framework]
  [[nodiscard]] comm::datalayer::DlResult addType(const Provider* provider, const std::string& address,
                                                  const comm::datalayer::Variant& value);
  [[nodiscard]] comm::datalayer::DlResult removeType(const Provider* provider, const std::string& address);  ///< [framework]

  /// Who answers for an address.
  struct Route {
    std::shared_ptr<ProviderCore> core;
    std::string node;  ///< the address under which the node was registered
  };
  /// The node of that very address, else the wildcard node of its folder. [any]
  [[nodiscard]] std::optional<Route> find(std::string_view address) const;
  /// The wildcard node whose nodes stand in that folder. [any]
  [[nodiscard]] std::optional<Route> findContent(std::string_view folder) const;
  /// The levels that follow in the addresses of registered nodes, without wildcards. [any]
  [[nodiscard]] std::set<std::string> childrenOf(std::string_view folder) const;
  /// Something is registered below that address. [any]
  [[nodiscard]] bool isFolder(std::string_view address) const;
  /// All addresses of nodes, as they were registered, in order. [any]
  [[nodiscard]] std::vector<std::string> addresses() const;
  [[nodiscard]] const ScopeRegister& scopes() const noexcept { return m_scopes; }
  /// Comes back when no provider has a request waiting or a callback running, or with false at the deadline. Once nobody
  /// makes requests any more, and not from a callback. [framework]
  bool waitUntilIdle(ProviderCore::Clock::time_point deadline = ProviderCore::Clock::time_point::max()) const noexcept;

 private:
  struct Node {
    const Provider* provider;
    std::shared_ptr<ProviderCore> core;
  };
  using Nodes = std::map<std::string, Node, std::less<>>;
  struct Type {
    const Provider* provider;
    comm::datalayer::Variant value;
  };

  [[nodiscard]] static bool isListOfScopes(const std::string& address) noexcept;
  [[nodiscard]] std::optional<Route> routeOf(const std::string& node) const;
  /// A provider that has something to do; null when none has.
  [[nodiscard]] std::shared_ptr<ProviderCore> findBusy() const;

  mutable std::mutex m_mutex;
  std::map<const Provider*, std::shared_ptr<ProviderCore>> m_providers;
  Nodes m_nodes;
  std::map<std::string, Type> m_types;
  ScopeRegister m_scopes;
};

}  // namespace motion::host::datalayer
