// Providers and the register of the addresses that they answer for.
#include "host/datalayer/provider.h"

#include <utility>

#include "host/datalayer/guarded.h"

namespace motion::host::datalayer {

using namespace comm::datalayer;

void NodeRegister::addProvider(const IProvider* provider) {
  const std::lock_guard lock(m_mutex);
  m_providers.insert(provider);
}

void NodeRegister::removeProvider(const IProvider* provider) noexcept {
  const std::lock_guard lock(m_mutex);
  const auto isOfProvider = [provider](const auto& entry) { return entry.second.provider == provider; };
  std::erase_if(m_nodes, isOfProvider);
  std::erase_if(m_types, isOfProvider);
  m_providers.erase(provider);
}

bool NodeRegister::hasProvider(const IProvider* provider) const {
  const std::lock_guard lock(m_mutex);
  return m_providers.contains(provider);
}

std::size_t NodeRegister::providerCount() const {
  const std::lock_guard lock(m_mutex);
  return m_providers.size();
}

DlResult NodeRegister::addNode(const IProvider* provider, const std::string& address, IProviderNode* node) {
  return node != nullptr ? add(m_nodes, provider, address, node) : DL_INVALID_HANDLE;
}

DlResult NodeRegister::removeNode(const IProvider* provider, const std::string& address) {
  return remove(m_nodes, provider, address);
}

DlResult NodeRegister::addType(const IProvider* provider, const std::string& address, const Variant& value) {
  return value.getType() != VariantType::UNKNOWN ? add(m_types, provider, address, value) : DL_INVALID_VALUE;
}

DlResult NodeRegister::removeType(const IProvider* provider, const std::string& address) {
  return remove(m_types, provider, address);
}

template <typename Value>
DlResult NodeRegister::add(Entries<Value>& entries, const IProvider* provider, const std::string& address, Value value) {
  if (address.empty()) {
    return DL_INVALID_ADDRESS;
  }
  const std::lock_guard lock(m_mutex);
  const bool isNew = entries.try_emplace(address, Entry<Value>{provider, std::move(value)}).second;
  return isNew ? DL_OK : DL_ALREADY_EXISTS;
}

template <typename Value>
DlResult NodeRegister::remove(Entries<Value>& entries, const IProvider* provider, const std::string& address) {
  const std::lock_guard lock(m_mutex);
  const auto found = entries.find(address);
  if (found == entries.end() || found->second.provider != provider) {
    return DL_INVALID_ADDRESS;
  }
  entries.erase(found);
  return DL_OK;
}

Provider::Provider(std::shared_ptr<NodeRegister> nodes) : m_nodes(std::move(nodes)) {
  m_nodes->addProvider(this);
}

Provider::~Provider() {
  m_nodes->removeProvider(this);
}

DlResult Provider::start() {
  return m_isStarted.exchange(true) ? DL_FAILED : DL_OK;
}

DlResult Provider::stop() {
  return m_isStarted.exchange(false) ? DL_OK : DL_FAILED;
}

DlResult Provider::registerNode(const std::string& address, IProviderNode* node) {
  return guarded([&] { return m_nodes->addNode(this, address, node); });
}

DlResult Provider::unregisterNode(const std::string& address) {
  return guarded([&] { return m_nodes->removeNode(this, address); });
}

DlResult Provider::registerType(const std::string& address, const Variant& value) {
  return guarded([&] { return m_nodes->addType(this, address, value); });
}

DlResult Provider::unregisterType(const std::string& address) {
  return guarded([&] { return m_nodes->removeType(this, address); });
}

}  // namespace motion::host::datalayer
