// The in-process data layer of the host: nodes, clients and real-time memories.
#include "host/datalayer/data_layer.h"

#include <algorithm>
#include <utility>

#include "host/datalayer/guarded.h"

namespace motion::host::datalayer {

using namespace comm::datalayer;

DataLayer::DataLayer() : m_nodes(std::make_shared<NodeRegister>()), m_hub(std::make_shared<ClientHub>(m_nodes)) {}

IClient* DataLayer::createClient(const std::string& endpoint) {
  if (endpoint != CLIENT_ENDPOINT) {
    return nullptr;
  }
  return host::guarded<IClient*>(nullptr,
                                 [this] { return std::make_unique<Client>(m_hub, std::nullopt, CLIENT_LIMIT).release(); });
}

std::unique_ptr<Client> DataLayer::connect(Client::Scopes scopes, std::chrono::milliseconds limit) const {
  return std::make_unique<Client>(m_hub, std::move(scopes), limit);
}

bool DataLayer::closeClients(std::chrono::milliseconds limit) noexcept {
  m_hub->setClosed(true);
  return m_nodes->waitUntilIdle(ProviderCore::Clock::now() + limit);
}

void DataLayer::openClients() noexcept {
  m_hub->setClosed(false);
}

IProvider* DataLayer::createProvider(const std::string& endpoint) {
  if (endpoint != PROVIDER_ENDPOINT) {
    return nullptr;
  }
  return host::guarded<IProvider*>(nullptr, [this] { return std::make_unique<Provider>(m_nodes).release(); });
}

DlResult DataLayer::createMemorySync(std::shared_ptr<IMemoryOwner>& memory, const std::string& address, IProvider* provider,
                                     std::uint32_t size, MemoryType type) {
  return guarded([&] {
    if (size == 0) {
      return DL_SIZE_MISMATCH;
    }
    if (address.empty()) {
      return DL_INVALID_ADDRESS;
    }
    if (provider == nullptr || !m_nodes->hasProvider(provider)) {
      return DL_INVALID_HANDLE;
    }
    if (type != MemoryType::INPUT && type != MemoryType::OUTPUT) {
      return DL_INVALID_VALUE;
    }
    const std::lock_guard lock(m_mutex);
    sweep();
    if (m_memories.contains(address)) {
      return DL_ALREADY_EXISTS;
    }
    const auto block = std::make_shared<MemoryBlock>(address, size);
    const auto handle = std::make_shared<OwnerHandle>(block);
    // All that may throw comes first, so that a failure leaves nothing behind.
    auto issued = issue(handle);
    m_memories.emplace(address, block);
    m_handles.splice(m_handles.end(), issued);
    memory = handle;
    return DL_OK;
  });
}

DlResult DataLayer::deleteMemorySync(const std::shared_ptr<IMemoryOwner>& memory) {
  return guarded([&] {
    const std::lock_guard lock(m_mutex);
    sweep();
    AccessGate* const gate = findIssued(memory.get());
    if (gate == nullptr) {
      return DL_INVALID_HANDLE;
    }
    gate->block().markDeleted();
    gate->giveBack();
    m_memories.erase(gate->block().address());
    return DL_OK;
  });
}

DlResult DataLayer::openMemory(std::shared_ptr<IMemoryUser>& memory, const std::string& address) {
  return guarded([&] {
    const std::lock_guard lock(m_mutex);
    sweep();
    const auto found = m_memories.find(address);
    if (found == m_memories.end()) {
      return DL_INVALID_ADDRESS;
    }
    const auto handle = std::make_shared<UserHandle>(found->second);
    auto issued = issue(handle);
    m_handles.splice(m_handles.end(), issued);
    memory = handle;
    return DL_OK;
  });
}

DlResult DataLayer::closeMemory(const std::shared_ptr<IMemoryUser>& memory) {
  return guarded([&] {
    const std::lock_guard lock(m_mutex);
    sweep();
    AccessGate* const gate = findIssued(memory.get());
    if (gate == nullptr) {
      return DL_INVALID_HANDLE;
    }
    gate->giveBack();
    return DL_OK;
  });
}

std::size_t DataLayer::memoryCount() const {
  const std::lock_guard lock(m_mutex);
  return m_memories.size();
}

std::size_t DataLayer::openHandleCount() const {
  const std::lock_guard lock(m_mutex);
  return static_cast<std::size_t>(
      std::count_if(m_handles.begin(), m_handles.end(), [](const auto& issued) { return !issued.gate->isGivenBack(); }));
}

std::size_t DataLayer::providerCount() const {
  return m_nodes->providerCount();
}

std::size_t DataLayer::reclaim() noexcept {
  const std::lock_guard lock(m_mutex);
  sweep();
  return static_cast<std::size_t>(
      std::count_if(m_handles.begin(), m_handles.end(), [](const auto& issued) { return issued.gate->isGivenBack(); }));
}

template <typename Handle>
std::list<DataLayer::IssuedHandle> DataLayer::issue(const std::shared_ptr<Handle>& handle) {
  std::list<IssuedHandle> result;
  result.push_back({std::shared_ptr<AccessGate>(handle, &handle->gate()), handle.get()});
  return result;
}

AccessGate* DataLayer::findIssued(const IMemory* handle) const {
  const auto found = std::find_if(m_handles.begin(), m_handles.end(), [handle](const auto& issued) {
    return issued.handle == handle && !issued.gate->isGivenBack();
  });
  return found != m_handles.end() ? found->gate.get() : nullptr;
}

void DataLayer::sweep() noexcept {
  m_handles.remove_if([](const IssuedHandle& issued) {
    if (!issued.gate->isGivenBack() || issued.gate.use_count() != 1) {
      return false;
    }
    // Held only here, so nobody begins an access any more unless one is open. Reading the use count orders nothing, but
    // taking a share does: it makes visible what the others did before they dropped theirs.
    const std::shared_ptr<AccessGate> share = issued.gate;
    return !share->isOpen();
  });
}

}  // namespace motion::host::datalayer
