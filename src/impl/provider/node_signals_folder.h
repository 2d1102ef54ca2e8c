// The folder of the signal nodes.
#pragma once

#include "impl/provider/node_base.h"

namespace motion::kavo {

/// Says what it is, and nothing else; its content is listed by the wildcard node below it.
class NodeSignalsFolder : public NodeBase {
 public:
  explicit NodeSignalsFolder(const ProviderMgr& manager);

  void onMetadata(const std::string& address, const ResponseCallback& callback) noexcept override;
};

}  // namespace motion::kavo
