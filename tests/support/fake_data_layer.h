// A pretended data layer: providers, clients, and real-time memories of real bytes.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "comm/datalayer/i_client.h"
#include "comm/datalayer/i_data_layer_factory.h"
#include "support/fake_calls.h"

namespace motion::test {

/// One memory, shared by its owner and its users.
struct FakeMemoryState {
  std::string name;  ///< last level of the address, for calls
  std::string address;
  std::vector<std::uint8_t> bytes;
  comm::datalayer::MemoryType type{};
  comm::datalayer::Variant map;
  std::atomic<int> openAccesses = 0;  ///< begun and not ended, by owner and users together
};

/// Operations: "provider.start", "provider.stop", "provider.registerNode", "provider.unregisterNode",
/// "provider.registerType", "provider.unregisterType", and "provider.destroyed".
class FakeProvider : public comm::datalayer::IProvider {
 public:
  /// `alive` counts the providers that exist.
  FakeProvider(FakeCalls& calls, int& alive) : m_calls(calls), m_alive(alive) { ++m_alive; }
  ~FakeProvider() override;

  comm::datalayer::DlResult start() override;
  comm::datalayer::DlResult stop() override;
  comm::datalayer::DlResult registerNode(const std::string& address, comm::datalayer::IProviderNode* node) override;
  comm::datalayer::DlResult unregisterNode(const std::string& address) override;
  comm::datalayer::DlResult registerType(const std::string& address, const comm::datalayer::Variant& value) override;
  comm::datalayer::DlResult unregisterType(const std::string& address) override;
  bool isStarted() const override { return m_isStarted; }

  std::map<std::string, comm::datalayer::IProviderNode*> m_nodes;
  std::map<std::string, comm::datalayer::Variant> m_types;

 private:
  FakeCalls& m_calls;
  int& m_alive;
  bool m_isStarted = false;
};

/// A client that knows values and nothing else; every other operation is refused with DL_UNSUPPORTED. Operations:
/// "client.readSync" and so on, and "client.destroyed". A call is noted before it is answered, so that an action on it may
/// change the values.
class FakeClient : public comm::datalayer::IClient {
 public:
  using Values = std::map<std::string, comm::datalayer::Variant>;

  /// The values, by address, belong to whoever made the client.
  FakeClient(FakeCalls& calls, const Values& values) : m_calls(calls), m_values(values) {}
  ~FakeClient() override;

  /// DL_INVALID_ADDRESS for an address without a value.
  comm::datalayer::DlResult readSync(const std::string& address, comm::datalayer::Variant* data) override;
  comm::datalayer::DlResult writeSync(const std::string& address, comm::datalayer::Variant* data) override;
  comm::datalayer::DlResult browseSync(const std::string& address, comm::datalayer::Variant* data) override;
  comm::datalayer::DlResult createSync(const std::string& address, comm::datalayer::Variant* data) override;
  comm::datalayer::DlResult removeSync(const std::string& address) override;
  comm::datalayer::DlResult metadataSync(const std::string& address, comm::datalayer::Variant* data) override;

 private:
  FakeCalls& m_calls;
  const Values& m_values;
};

/// Operations: "dataLayer.createClient", "dataLayer.createProvider", "dataLayer.createMemorySync",
/// "dataLayer.deleteMemorySync", "dataLayer.openMemory", "dataLayer.closeMemory"; of its memories "memory.setMemoryMap",
/// "memory.beginAccess", "memory.endAccess", shown with the memory's name first. Failing names the memory too, as in
/// fail("memory.beginAccess signals_in", ...).
class FakeDataLayer : public comm::datalayer::IDataLayerFactory {
 public:
  explicit FakeDataLayer(FakeCalls& calls) : m_calls(calls) {}

  comm::datalayer::IClient* createClient(const std::string& endpoint) override;
  comm::datalayer::IProvider* createProvider(const std::string& endpoint) override;
  comm::datalayer::DlResult createMemorySync(std::shared_ptr<comm::datalayer::IMemoryOwner>& memory,
                                             const std::string& address, comm::datalayer::IProvider* provider,
                                             std::uint32_t size, comm::datalayer::MemoryType type) override;
  comm::datalayer::DlResult deleteMemorySync(const std::shared_ptr<comm::datalayer::IMemoryOwner>& memory) override;
  comm::datalayer::DlResult openMemory(std::shared_ptr<comm::datalayer::IMemoryUser>& memory,
                                       const std::string& address) override;
  comm::datalayer::DlResult closeMemory(const std::shared_ptr<comm::datalayer::IMemoryUser>& memory) override;

  /// Makes a memory that no component owns.
  FakeMemoryState& addMemory(const std::string& address, std::size_t size);
  /// The memories that exist, by address.
  std::map<std::string, std::shared_ptr<FakeMemoryState>> m_memories;
  /// What a new memory is filled with.
  std::uint8_t m_initialByte = 0;
  /// Makes the clients; there are none without it.
  std::function<comm::datalayer::IClient*(const std::string& endpoint)> m_makeClient;
  /// From now on the clients are FakeClients that read m_clientValues.
  void makeFakeClients();
  FakeClient::Values m_clientValues;
  /// The provider that was given to the last createMemorySync, and the last one created.
  const comm::datalayer::IProvider* m_memoryProvider = nullptr;
  FakeProvider* m_lastProvider = nullptr;
  int m_openUsers = 0;       ///< user handles opened and not closed
  int m_providersAlive = 0;  ///< providers created and not destroyed

 private:
  FakeCalls& m_calls;
};

}  // namespace motion::test
