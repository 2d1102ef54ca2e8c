// A pretended data layer: providers, clients, and real-time memories of real bytes.
#include "support/fake_data_layer.h"

#include <utility>

namespace motion::test {
namespace {

using comm::datalayer::DL_OK;
using comm::datalayer::DlResult;
using comm::datalayer::IMemoryOwner;
using comm::datalayer::IMemoryUser;
using comm::datalayer::IProvider;
using comm::datalayer::IProviderNode;
using comm::datalayer::MemoryType;
using comm::datalayer::Variant;

DlResult toResult(const std::optional<std::uint32_t>& code) {
  return code ? DlResult(*code) : DL_OK;
}

std::string lastLevel(const std::string& address) {
  return address.substr(address.rfind('/') + 1);
}

/// What owners and users of a memory have in common.
template <typename BASE>
class FakeMemory : public BASE {
 public:
  FakeMemory(FakeCalls& calls, std::shared_ptr<FakeMemoryState> state) : m_calls(calls), m_state(std::move(state)) {}

  DlResult beginAccess(std::uint8_t*& data, std::uint32_t revision) override {
    const AllocationPause pause;
    if (const auto code = m_calls.note("memory.beginAccess " + m_state->name, revision)) {
      return DlResult(*code);
    }
    ++m_state->openAccesses;
    data = m_state->bytes.data();
    return DL_OK;
  }

  DlResult endAccess() override {
    const AllocationPause pause;
    if (m_state->openAccesses == 0) {
      return comm::datalayer::DL_RT_NOTOPEN;
    }
    --m_state->openAccesses;
    return toResult(m_calls.note("memory.endAccess " + m_state->name));
  }

  std::uint32_t getSize() const override { return static_cast<std::uint32_t>(m_state->bytes.size()); }

 protected:
  FakeCalls& m_calls;
  std::shared_ptr<FakeMemoryState> m_state;
};

class FakeMemoryOwner : public FakeMemory<IMemoryOwner> {
 public:
  using FakeMemory::FakeMemory;

  DlResult setMemoryMap(const Variant& map) override {
    const AllocationPause pause;
    if (const auto code = m_calls.note("memory.setMemoryMap " + m_state->name)) {
      return DlResult(*code);
    }
    m_state->map = map;
    return DL_OK;
  }

  [[nodiscard]] const FakeMemoryState& state() const { return *m_state; }
};

class FakeMemoryUser : public FakeMemory<IMemoryUser> {
 public:
  using FakeMemory::FakeMemory;

  DlResult getMemoryMap(Variant& map) const override {
    map = m_state->map;
    return DL_OK;
  }

  [[nodiscard]] const FakeMemoryState& state() const { return *m_state; }
};

}  // namespace

FakeProvider::~FakeProvider() {
  --m_alive;
  m_calls.note("provider.destroyed");
}

DlResult FakeProvider::start() {
  const auto code = m_calls.note("provider.start");
  m_isStarted = !code;
  return toResult(code);
}

DlResult FakeProvider::stop() {
  const auto code = m_calls.note("provider.stop");
  const bool wasStarted = std::exchange(m_isStarted, false);
  return wasStarted ? toResult(code) : comm::datalayer::DL_FAILED;
}

DlResult FakeProvider::registerNode(const std::string& address, IProviderNode* node) {
  const AllocationPause pause;
  if (const auto code = m_calls.note("provider.registerNode", address)) {
    return DlResult(*code);
  }
  m_nodes[address] = node;
  return DL_OK;
}

DlResult FakeProvider::unregisterNode(const std::string& address) {
  m_nodes.erase(address);
  return toResult(m_calls.note("provider.unregisterNode", address));
}

DlResult FakeProvider::registerType(const std::string& address, const Variant& value) {
  const AllocationPause pause;
  if (const auto code = m_calls.note("provider.registerType", address)) {
    return DlResult(*code);
  }
  m_types[address] = value;
  return DL_OK;
}

DlResult FakeProvider::unregisterType(const std::string& address) {
  m_types.erase(address);
  return toResult(m_calls.note("provider.unregisterType", address));
}

FakeClient::~FakeClient() {
  m_calls.note("client.destroyed");
}

DlResult FakeClient::readSync(const std::string& address, Variant* data) {
  const AllocationPause pause;
  if (const auto code = m_calls.note("client.readSync", address)) {
    return DlResult(*code);
  }
  const auto found = m_values.find(address);
  if (found == m_values.end()) {
    return comm::datalayer::DL_INVALID_ADDRESS;
  }
  *data = found->second;
  return DL_OK;
}

DlResult FakeClient::writeSync(const std::string& address, Variant* /*data*/) {
  m_calls.note("client.writeSync", address);
  return comm::datalayer::DL_UNSUPPORTED;
}

DlResult FakeClient::browseSync(const std::string& address, Variant* /*data*/) {
  m_calls.note("client.browseSync", address);
  return comm::datalayer::DL_UNSUPPORTED;
}

DlResult FakeClient::createSync(const std::string& address, Variant* /*data*/) {
  m_calls.note("client.createSync", address);
  return comm::datalayer::DL_UNSUPPORTED;
}

DlResult FakeClient::removeSync(const std::string& address) {
  m_calls.note("client.removeSync", address);
  return comm::datalayer::DL_UNSUPPORTED;
}

DlResult FakeClient::metadataSync(const std::string& address, Variant* /*data*/) {
  m_calls.note("client.metadataSync", address);
  return comm::datalayer::DL_UNSUPPORTED;
}

void FakeDataLayer::makeFakeClients() {
  m_makeClient = [this](const std::string& /*endpoint*/) {
    const AllocationPause pause;
    return new FakeClient(m_calls, m_clientValues);
  };
}

comm::datalayer::IClient* FakeDataLayer::createClient(const std::string& endpoint) {
  if (m_calls.note("dataLayer.createClient", endpoint) || !m_makeClient) {
    return nullptr;
  }
  return m_makeClient(endpoint);
}

IProvider* FakeDataLayer::createProvider(const std::string& endpoint) {
  const AllocationPause pause;
  if (m_calls.note("dataLayer.createProvider", endpoint)) {
    return nullptr;
  }
  m_lastProvider = new FakeProvider(m_calls, m_providersAlive);
  return m_lastProvider;
}

DlResult FakeDataLayer::createMemorySync(std::shared_ptr<IMemoryOwner>& memory, const std::string& address,
                                         IProvider* provider, std::uint32_t size, MemoryType type) {
  const AllocationPause pause;
  m_memoryProvider = provider;
  if (const auto code = m_calls.note("dataLayer.createMemorySync", address, size, static_cast<std::uint32_t>(type))) {
    return DlResult(*code);
  }
  auto& state = addMemory(address, size);
  state.type = type;
  memory = std::make_shared<FakeMemoryOwner>(m_calls, m_memories.at(address));
  return DL_OK;
}

DlResult FakeDataLayer::deleteMemorySync(const std::shared_ptr<IMemoryOwner>& memory) {
  const AllocationPause pause;
  const auto& state = dynamic_cast<FakeMemoryOwner&>(*memory).state();
  const auto code = m_calls.note("dataLayer.deleteMemorySync", state.name);
  m_memories.erase(state.address);
  return toResult(code);
}

DlResult FakeDataLayer::openMemory(std::shared_ptr<IMemoryUser>& memory, const std::string& address) {
  const AllocationPause pause;
  if (const auto code = m_calls.note("dataLayer.openMemory", address)) {
    return DlResult(*code);
  }
  const auto found = m_memories.find(address);
  if (found == m_memories.end()) {
    return comm::datalayer::DL_INVALID_ADDRESS;
  }
  memory = std::make_shared<FakeMemoryUser>(m_calls, found->second);
  ++m_openUsers;
  return DL_OK;
}

DlResult FakeDataLayer::closeMemory(const std::shared_ptr<IMemoryUser>& memory) {
  const AllocationPause pause;
  --m_openUsers;
  return toResult(m_calls.note("dataLayer.closeMemory", dynamic_cast<FakeMemoryUser&>(*memory).state().name));
}

FakeMemoryState& FakeDataLayer::addMemory(const std::string& address, std::size_t size) {
  auto state = std::make_shared<FakeMemoryState>();
  state->name = lastLevel(address);
  state->address = address;
  state->bytes.assign(size, m_initialByte);
  return *(m_memories[address] = std::move(state));
}

}  // namespace motion::test
