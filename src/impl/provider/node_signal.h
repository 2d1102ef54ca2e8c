// The node that stands for every signal.
#pragma once

#include <cstdint>

#include "comm/datalayer/dl_result.h"
#include "impl/provider/node_base.h"

namespace motion::kavo {

/// Reads and writes signals through the system functions, as any other part of the host does.
class NodeSignal : public NodeBase {
 public:
  explicit NodeSignal(const ProviderMgr& manager);

  /// Answers with the names of all signals, whatever the address. [provider]
  void onBrowse(const std::string& address, const ResponseCallback& callback) noexcept override;
  void onRead(const std::string& address, const comm::datalayer::Variant* data,
              const ResponseCallback& callback) noexcept override;
  void onWrite(const std::string& address, const comm::datalayer::Variant* data,
               const ResponseCallback& callback) noexcept override;
  void onMetadata(const std::string& address, const ResponseCallback& callback) noexcept override;

  /// The number at the end of a signal's address; whether there is such a signal is not looked at. DL_INVALID_ADDRESS. [any]
  [[nodiscard]] static comm::datalayer::DlResult getSignalId(const std::string& address, std::uint32_t& signalId) noexcept;

 private:
  void read(const std::string& address, const ResponseCallback& callback) const;
  void write(const std::string& address, bool value, const ResponseCallback& callback) const;
};

}  // namespace motion::kavo
