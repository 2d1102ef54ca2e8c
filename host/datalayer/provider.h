// Providers and the register of the addresses that they answer for.
#pragma once

#include <atomic>
#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>

#include "comm/datalayer/i_provider.h"

namespace motion::host::datalayer {

/// Which provider answers for which address, over all providers of one data layer. Thread-safe. Operations may throw
/// std::bad_alloc and then change nothing.
///
/// | asked to | result otherwise than DL_OK |
/// |---|---|
/// | add | DL_INVALID_ADDRESS: empty; DL_ALREADY_EXISTS: any provider has it |
/// | remove | DL_INVALID_ADDRESS: this provider does not have it |
///
/// Nodes and types have address spaces of their own.
class NodeRegister {
 public:
  using Provider = comm::datalayer::IProvider;

  void addProvider(const Provider* provider);  ///< [framework]
  /// Forgets the provider and withdraws all that it registered. [framework]
  void removeProvider(const Provider* provider) noexcept;
  [[nodiscard]] bool hasProvider(const Provider* provider) const;  ///< [framework]
  [[nodiscard]] std::size_t providerCount() const;                 ///< [framework]

  /// The node is borrowed. DL_INVALID_HANDLE for a null one. [framework]
  [[nodiscard]] comm::datalayer::DlResult addNode(const Provider* provider, const std::string& address,
                                                  comm::datalayer::IProviderNode* node);
  [[nodiscard]] comm::datalayer::DlResult removeNode(const Provider* provider, const std::string& address);  ///< [framework]
  /// The value is copied. DL_INVALID_VALUE for an empty one. [framework]
  [[nodiscard]] comm::datalayer::DlResult addType(const Provider* provider, const std::string& address,
                                                  const comm::datalayer::Variant& value);
  [[nodiscard]] comm::datalayer::DlResult removeType(const Provider* provider, const std::string& address);  ///< [framework]

 private:
  template <typename Value>
  struct Entry {
    const Provider* provider;
    Value value;
  };
  template <typename Value>
  using Entries = std::map<std::string, Entry<Value>>;

  template <typename Value>
  comm::datalayer::DlResult add(Entries<Value>& entries, const Provider* provider, const std::string& address, Value value);
  template <typename Value>
  comm::datalayer::DlResult remove(Entries<Value>& entries, const Provider* provider, const std::string& address);

  mutable std::mutex m_mutex;
  std::set<const Provider*> m_providers;
  Entries<comm::datalayer::IProviderNode*> m_nodes;
  Entries<comm::datalayer::Variant> m_types;
};

/// A provider of this host. It keeps its registrations and its state; since the host makes no clients, no node is called.
/// start: DL_FAILED when started; stop: DL_FAILED when not started; the rest as NodeRegister says.
class Provider final : public comm::datalayer::IProvider {
 public:
  /// Throws std::bad_alloc. [framework]
  explicit Provider(std::shared_ptr<NodeRegister> nodes);
  Provider(const Provider&) = delete;
  Provider& operator=(const Provider&) = delete;
  ~Provider() override;

  comm::datalayer::DlResult start() override;
  comm::datalayer::DlResult stop() override;
  comm::datalayer::DlResult registerNode(const std::string& address, comm::datalayer::IProviderNode* node) override;
  comm::datalayer::DlResult unregisterNode(const std::string& address) override;
  comm::datalayer::DlResult registerType(const std::string& address, const comm::datalayer::Variant& value) override;
  comm::datalayer::DlResult unregisterType(const std::string& address) override;
  [[nodiscard]] bool isStarted() const override { return m_isStarted; }

 private:
  std::shared_ptr<NodeRegister> m_nodes;
  std::atomic<bool> m_isStarted{false};
};

}  // namespace motion::host::datalayer
