// Brings the component's nodes up and takes them down.
#include "impl/provider/provider_mgr.h"

#include <algorithm>
#include <functional>
#include <set>
#include <string_view>
#include <thread>
#include <utility>

#include "impl/debug_trace.h"
#include "impl/guarded.h"
#include "impl/provider/access_scopes.h"
#include "impl/provider/node_addresses.h"
#include "impl/provider/node_signal.h"
#include "impl/provider/node_signals_folder.h"

namespace motion::kavo {

using comm::datalayer::DlResult;
using comm::datalayer::IClient;
using comm::datalayer::Variant;

namespace {

constexpr const char* PROVIDER_ENDPOINT = "inproc:///tmp/datalayer/backend";
constexpr const char* CLIENT_ENDPOINT = "inproc:///tmp/datalayer/frontend";
constexpr const char* NODE_LIST = "datalayer/nodes";
constexpr const char* SCOPES = "scopes/motion";
constexpr std::uint32_t CHECK_INTERVAL_MS = 50;
constexpr std::uint32_t NODES_TIMEOUT_MS = 10'000;

/// What is thrown counts as a failure of the data layer.
template <typename STEP>
DlResult tryTo(const STEP& step) noexcept {
  return guarded(comm::datalayer::DL_OUT_OF_MEMORY, step);
}

}  // namespace

ProviderMgr::ProviderMgr(const core::MotionSysIfT& sysIf, comm::datalayer::IDataLayerFactory& factory, Sleep sleep)
    : m_sysIf(sysIf), m_factory(factory), m_sleep(std::move(sleep)) {
  m_nodes.push_back({signalsNodeUri.substr(0, signalsNodeUri.size() - 1), std::make_unique<NodeSignalsFolder>(*this)});
  m_nodes.push_back({signalsNodeUri + WILDCARD, std::make_unique<NodeSignal>(*this)});
}

ProviderMgr::~ProviderMgr() {
  m_nodes.clear();
  if (m_provider != nullptr) {
    giveUp();
  }
}

void ProviderMgr::giveUp() noexcept {
  unregisterScopes();
  guarded([this] { m_provider.reset(); });
}

bool ProviderMgr::run() noexcept {
  if (m_provider != nullptr) {
    KAVO_TRACE_TEXT(Error, "Provider is already running!");
    return false;
  }
  m_provider.reset(
      guarded<comm::datalayer::IProvider*>(nullptr, [this] { return m_factory.createProvider(PROVIDER_ENDPOINT); }));
  if (m_provider == nullptr) {
    KAVO_TRACE_TEXT(Error, "DlFactory does not provide a provider");
    return false;
  }
  for (const NodeEntry& entry : m_nodes) {
    const DlResult result = tryTo([&] { return m_provider->registerNode(entry.address, entry.node.get()); });
    if (isFailure(result)) {
      KAVO_TRACE(Error, "Failed to register the node address %s with error %s", entry.address.c_str(), result.toString());
      giveUp();
      return false;
    }
  }
  registerScopes();
  const DlResult started = tryTo([this] { return m_provider->start(); });
  if (!isFailure(started) && waitForAllNodes(NODES_TIMEOUT_MS)) {
    return true;
  }
  giveUp();
  return false;
}

bool ProviderMgr::waitForAllNodes(std::uint32_t timeoutMs) noexcept {
  const std::unique_ptr<IClient> client(
      guarded<IClient*>(nullptr, [this] { return m_factory.createClient(CLIENT_ENDPOINT); }));
  if (client == nullptr) {
    return false;
  }
  bool allFound = false;
  for (std::uint32_t check = 0; check < timeoutMs / CHECK_INTERVAL_MS; ++check) {
    if (!checkForAllNodes(client.get(), allFound) || allFound) {
      break;
    }
    guarded([this] { m_sleep(std::chrono::milliseconds(CHECK_INTERVAL_MS)); });
  }
  return allFound;
}

bool ProviderMgr::checkForAllNodes(IClient* client, bool& allFound) noexcept {
  return guarded(false, [&] {
    Variant nodes;
    if (isFailure(client->readSync(NODE_LIST, &nodes)) || nodes.getStrings() == nullptr) {
      return false;
    }
    const std::set<std::string_view> listed(nodes.getStrings()->begin(), nodes.getStrings()->end());
    allFound = std::ranges::all_of(m_nodes, [&listed](const NodeEntry& entry) { return listed.contains(entry.address); });
    return true;
  });
}

void ProviderMgr::registerScopes() noexcept {
  if (m_provider == nullptr) {
    KAVO_TRACE_TEXT(Error, "Provider not available");
    return;
  }
  const DlResult result = tryTo([this] { return m_provider->registerType(SCOPES, makeAccessScopes()); });
  if (isFailure(result)) {
    KAVO_TRACE(Error, "Creation of scopes at datalayer/security/scopes failed : '%s'", result.toString());
  } else {
    KAVO_TRACE_TEXT(Info, "Creation of scopes at datalayer/security/scopes succeeded");
  }
}

void ProviderMgr::unregisterScopes() noexcept {
  if (m_provider == nullptr) {
    KAVO_TRACE_TEXT(Error, "Provider not available");
    return;
  }
  const DlResult result = tryTo([this] { return m_provider->unregisterType(SCOPES); });
  if (isFailure(result)) {
    KAVO_TRACE(Error, "Deletion of scopes failed: '%s'", result.toString());
  } else {
    KAVO_TRACE_TEXT(Info, "Deletion of scopes succeeded");
  }
}

void ProviderMgr::sleepFor(std::chrono::milliseconds duration) {
  std::this_thread::sleep_for(duration);  // goes on with the rest after a signal
}

}  // namespace motion::kavo
