// Providers of the data layer.
#pragma once

#include <memory>
#include <string>

#include "comm/datalayer/i_provider.h"
#include "host/datalayer/node_register.h"
#include "host/datalayer/provider_core.h"

namespace motion::host::datalayer {

/// A provider of this host, which answers on threads of its own while it is started. start: DL_FAILED when started, and when
/// there can be no threads; stop: DL_FAILED when not started; registerNode: DL_ALREADY_EXISTS for the nodes that the data
/// layer has by itself; the rest as NodeRegister says. Without memory DL_OUT_OF_MEMORY.
class Provider final : public comm::datalayer::IProvider {
 public:
  /// Throws std::bad_alloc. [framework]
  explicit Provider(std::shared_ptr<NodeRegister> nodes);
  Provider(const Provider&) = delete;
  Provider& operator=(const Provider&) = delete;
  /// Stops it and withdraws what it registered; comes back when none of its callbacks runs any more.
  ~Provider() override;

  comm::datalayer::DlResult start() override;
  comm::datalayer::DlResult stop() override;
  comm::datalayer::DlResult registerNode(const std::string& address, comm::datalayer::IProviderNode* node) override;
  comm::datalayer::DlResult unregisterNode(const std::string& address) override;
  comm::datalayer::DlResult registerType(const std::string& address, const comm::datalayer::Variant& value) override;
  comm::datalayer::DlResult unregisterType(const std::string& address) override;
  [[nodiscard]] bool isStarted() const override { return m_core->isRunning(); }

 private:
  std::shared_ptr<NodeRegister> m_nodes;
  std::shared_ptr<ProviderCore> m_core;
};

}  // namespace motion::host::datalayer
