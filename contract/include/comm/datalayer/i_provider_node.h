// A node that a provider answers for.
#pragma once

#include <functional>
#include <string>

#include "comm/datalayer/dl_result.h"
#include "comm/datalayer/variant.h"

namespace comm::datalayer {

/// Callbacks of a provider's node. Each answers exactly once through `callback`, before it returns or later.
/// The data of an answer is borrowed for the duration of the callback; it may be null. Slot order is fixed.
class IProviderNode {
 public:
  using ResponseCallback = std::function<void(DlResult, const Variant*)>;

  virtual ~IProviderNode() = default;

  virtual void onCreate(const std::string& address, const Variant* data,
                        const ResponseCallback& callback) = 0;                              ///< [provider]
  virtual void onRemove(const std::string& address, const ResponseCallback& callback) = 0;  ///< [provider]
  virtual void onBrowse(const std::string& address, const ResponseCallback& callback) = 0;  ///< [provider]
  virtual void onRead(const std::string& address, const Variant* data,
                      const ResponseCallback& callback) = 0;  ///< [provider]
  virtual void onWrite(const std::string& address, const Variant* data,
                       const ResponseCallback& callback) = 0;                                 ///< [provider]
  virtual void onMetadata(const std::string& address, const ResponseCallback& callback) = 0;  ///< [provider]

 protected:
  IProviderNode() = default;
  IProviderNode(const IProviderNode&) = default;
  IProviderNode& operator=(const IProviderNode&) = default;
};

}  // namespace comm::datalayer
