// The in-process data layer of the host: nodes, clients and real-time memories.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "comm/datalayer/i_data_layer_factory.h"
#include "host/datalayer/client.h"
#include "host/datalayer/provider.h"
#include "host/datalayer/rt_memory.h"

namespace motion::host::datalayer {

/// Makes and keeps what components share through the data layer. All operations are thread-safe and none lets an exception
/// out: a failed allocation is DL_OUT_OF_MEMORY, or null, and changes nothing.
///
/// | operation, in the order of its checks | result |
/// |---|---|
/// | createMemorySync: size 0 | DL_SIZE_MISMATCH |
/// | createMemorySync: empty address | DL_INVALID_ADDRESS |
/// | createMemorySync: not a provider of this data layer | DL_INVALID_HANDLE |
/// | createMemorySync: neither INPUT nor OUTPUT | DL_INVALID_VALUE |
/// | createMemorySync: address taken | DL_ALREADY_EXISTS |
/// | deleteMemorySync, closeMemory: null, a stranger's handle, or already given back | DL_INVALID_HANDLE |
/// | openMemory: nobody owns a memory there | DL_INVALID_ADDRESS |
///
/// What becomes of a memory:
///
/// | event | bytes and handles |
/// |---|---|
/// | deleteMemorySync | the address is free at once; no access begins any more, through any handle |
/// | closeMemory | no access begins through this handle any more |
/// | open access | its handle and the bytes stay until endAccess, also when every shared pointer to the handle is gone |
/// | shared pointer dropped, nothing given back | the memory or the handle stays and is counted as open |
/// | provider deleted | its memories stay until they are deleted |
/// | end of the data layer | handles that nobody holds go, whatever is open; it must outlive the last access |
///
/// The data layer keeps each handle itself, so dropping a shared pointer or ending an access never frees anything, on
/// whatever thread it happens. What was given back and is no longer used is freed by the next operation called here, or by
/// reclaim.
class DataLayer : public comm::datalayer::IDataLayerFactory {
 public:
  static constexpr std::string_view PROVIDER_ENDPOINT = "inproc:///tmp/datalayer/backend";
  static constexpr std::string_view CLIENT_ENDPOINT = "inproc:///tmp/datalayer/frontend";
  /// How long a client waits for an answer, unless it asks for another limit.
  static constexpr std::chrono::milliseconds CLIENT_LIMIT{2'000};
  /// How long closing waits for nodes that still answer somebody.
  static constexpr std::chrono::milliseconds CLOSE_LIMIT{30'000};

  DataLayer();
  DataLayer(const DataLayer&) = delete;
  DataLayer& operator=(const DataLayer&) = delete;
  ~DataLayer() override = default;

  /// A client that may do everything, for the parts of this process. Null for every endpoint but CLIENT_ENDPOINT.
  /// [framework]
  comm::datalayer::IClient* createClient(const std::string& endpoint) override;
  /// A client with the rights of these scopes, as they are registered at each of its requests. Throws std::bad_alloc. [any]
  [[nodiscard]] std::unique_ptr<Client> connect(Client::Scopes scopes, std::chrono::milliseconds limit = CLIENT_LIMIT) const;
  /// What can be granted to clients. [any]
  [[nodiscard]] const ScopeRegister& scopes() const noexcept { return m_nodes->scopes(); }
  /// Refuses all clients until openClients, and waits until no provider answers any of them; false when one still
  /// does so after the limit. Before what answers goes. [framework]
  bool closeClients(std::chrono::milliseconds limit = CLOSE_LIMIT) noexcept;
  /// Serves clients again, those of before among them. A new data layer does so from the beginning. [framework]
  void openClients() noexcept;
  /// Null for every endpoint but PROVIDER_ENDPOINT. [framework]
  comm::datalayer::IProvider* createProvider(const std::string& endpoint) override;

  /// The owner handle and its bytes, zero-filled. INPUT and OUTPUT give the same rights. [framework]
  comm::datalayer::DlResult createMemorySync(std::shared_ptr<comm::datalayer::IMemoryOwner>& memory,
                                             const std::string& address, comm::datalayer::IProvider* provider,
                                             std::uint32_t size, comm::datalayer::MemoryType type) override;
  comm::datalayer::DlResult deleteMemorySync(const std::shared_ptr<comm::datalayer::IMemoryOwner>& memory) override;
  comm::datalayer::DlResult openMemory(std::shared_ptr<comm::datalayer::IMemoryUser>& memory,
                                       const std::string& address) override;
  comm::datalayer::DlResult closeMemory(const std::shared_ptr<comm::datalayer::IMemoryUser>& memory) override;

  [[nodiscard]] std::size_t memoryCount() const;      ///< memories that are not deleted [framework]
  [[nodiscard]] std::size_t openHandleCount() const;  ///< owner and user handles that were not given back [framework]
  [[nodiscard]] std::size_t providerCount() const;    ///< providers that are not deleted [framework]

  /// Frees what was given back and is no longer used. Returns how many handles still wait, because somebody holds them or
  /// has an access open. [framework]
  std::size_t reclaim() noexcept;

 private:
  struct IssuedHandle {
    /// Shares the ownership of the whole handle.
    std::shared_ptr<AccessGate> gate;
    const comm::datalayer::IMemory* handle;
  };

  template <typename Handle>
  [[nodiscard]] static std::list<IssuedHandle> issue(const std::shared_ptr<Handle>& handle);
  [[nodiscard]] AccessGate* findIssued(const comm::datalayer::IMemory* handle) const;
  void sweep() noexcept;

  const std::shared_ptr<NodeRegister> m_nodes;
  const std::shared_ptr<ClientHub> m_hub;
  mutable std::mutex m_mutex;
  std::map<std::string, std::shared_ptr<MemoryBlock>, std::less<>> m_memories;
  std::list<IssuedHandle> m_handles;
};

}  // namespace motion::host::datalayer
