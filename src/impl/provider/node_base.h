// What all nodes of the component have in common.
#pragma once

#include <string>

#include "comm/datalayer/i_provider_node.h"
#include "impl/provider/provider_helper.h"
#include "motion/core/records/motion_sys_if.h"

namespace motion::kavo {

class ProviderMgr;

/// Answers every operation with "not implemented" that a node does not have. Every operation answers once and lets no
/// exception out: without memory with DL_OUT_OF_MEMORY.
class NodeBase : public comm::datalayer::IProviderNode {
 public:
  /// The manager is borrowed and outlives the node.
  NodeBase(MetaDataInfo info, const ProviderMgr& manager);
  NodeBase(const NodeBase&) = delete;
  NodeBase& operator=(const NodeBase&) = delete;
  ~NodeBase() override = default;

  void onCreate(const std::string& address, const comm::datalayer::Variant* data,
                const ResponseCallback& callback) noexcept override;
  void onRemove(const std::string& address, const ResponseCallback& callback) noexcept override;
  void onBrowse(const std::string& address, const ResponseCallback& callback) noexcept override;
  void onRead(const std::string& address, const comm::datalayer::Variant* data,
              const ResponseCallback& callback) noexcept override;
  void onWrite(const std::string& address, const comm::datalayer::Variant* data,
               const ResponseCallback& callback) noexcept override;
  void onMetadata(const std::string& address, const ResponseCallback& callback) noexcept override;

  [[nodiscard]] const std::string& getDescription() const noexcept { return m_info.description; }        ///< [any]
  [[nodiscard]] const std::string& getDescriptionUrl() const noexcept { return m_info.descriptionUrl; }  ///< [any]
  /// The functions through which signals are read and written. [any]
  [[nodiscard]] const core::MotionSysIfT& getMotionSysIF() const noexcept;

 protected:
  [[nodiscard]] const MetaDataInfo& info() const noexcept { return m_info; }

 private:
  MetaDataInfo m_info;
  const ProviderMgr& m_manager;
};

}  // namespace motion::kavo
