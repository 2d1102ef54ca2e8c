// Publishes the component's nodes in the data layer, and the scopes that grant access to them.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "comm/datalayer/i_client.h"
#include "comm/datalayer/i_data_layer_factory.h"
#include "impl/provider/node_base.h"
#include "motion/core/records/motion_sys_if.h"

namespace motion::kavo {

/// Owns the nodes and a provider of their own. All operations are for the thread that starts and stops the component.
class ProviderMgr {
 public:
  using Sleep = std::function<void(std::chrono::milliseconds)>;

  /// Builds the list of nodes; registers nothing. The record and the factory are borrowed. Throws std::bad_alloc.
  /// [framework]
  ProviderMgr(const core::MotionSysIfT& sysIf, comm::datalayer::IDataLayerFactory& factory, Sleep sleep = sleepFor);
  ProviderMgr(const ProviderMgr&) = delete;
  ProviderMgr& operator=(const ProviderMgr&) = delete;
  /// Deletes the nodes, withdraws the scopes and deletes the provider, in this order. [framework]
  virtual ~ProviderMgr();

  /// Brings the provider up and waits until the data layer lists all nodes; false, with a trace, when that fails, and then
  /// no provider is left. [framework]
  [[nodiscard]] bool run() noexcept;
  /// Looks every 50 ms, `timeoutMs / 50` times at most. [framework]
  [[nodiscard]] bool waitForAllNodes(std::uint32_t timeoutMs) noexcept;
  /// True when the data layer has answered; `allFound` is written only then. [framework]
  [[nodiscard]] bool checkForAllNodes(comm::datalayer::IClient* client, bool& allFound) noexcept;

  void registerScopes() noexcept;    ///< the outcome is traced [framework]
  void unregisterScopes() noexcept;  ///< the outcome is traced [framework]

  [[nodiscard]] const core::MotionSysIfT& getMotionSysIF() const noexcept { return m_sysIf; }  ///< [any]

 private:
  struct NodeEntry {
    std::string address;
    std::unique_ptr<NodeBase> node;
  };

  /// Sleeps at least that long, also when a signal interrupts it.
  static void sleepFor(std::chrono::milliseconds duration);
  void giveUp() noexcept;

  const core::MotionSysIfT& m_sysIf;
  comm::datalayer::IDataLayerFactory& m_factory;
  std::vector<NodeEntry> m_nodes;
  std::unique_ptr<comm::datalayer::IProvider> m_provider;  ///< null while not running
  Sleep m_sleep;
};

}  // namespace motion::kavo
