// Providers of the data layer.
#include "host/datalayer/provider.h"

#include <utility>

#include "host/datalayer/built_in_nodes.h"
#include "host/datalayer/guarded.h"

namespace motion::host::datalayer {

using namespace comm::datalayer;

Provider::Provider(std::shared_ptr<NodeRegister> nodes)
    : m_nodes(std::move(nodes)), m_core(std::make_shared<ProviderCore>()) {
  m_nodes->addProvider(this, m_core);
}

Provider::~Provider() {
  static_cast<void>(m_core->stop());
  m_nodes->removeProvider(this);
  m_core->waitForCallbacks();  // of nodes that they withdrew themselves, too
}

DlResult Provider::start() {
  return guarded([this] { return m_core->start() ? DL_OK : DL_FAILED; });
}

DlResult Provider::stop() {
  return m_core->stop() ? DL_OK : DL_FAILED;
}

DlResult Provider::registerNode(const std::string& address, IProviderNode* node) {
  return guarded([&] {
    // Nobody else speaks for what the data layer says itself.
    return isBuiltIn(address) ? DL_ALREADY_EXISTS : m_nodes->addNode(this, address, node);
  });
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
