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
  /// Takes the answer, from whatever thread; on failure the data is an error record of schemas/datalayer/diagnosis.fbs.
  using ResponseCallback = std::function<void(DlResult, const Variant*)>;

  virtual ~IProviderNode() = default;

  /// Makes something below the node. [provider]
  virtual void onCreate(const std::string& address, const Variant* data, const ResponseCallback& callback) = 0;
  /// Removes what onCreate made. [provider]
  virtual void onRemove(const std::string& address, const ResponseCallback& callback) = 0;
  /// Lists the children, as an ARRAY_OF_STRING of names without a slash. [provider]
  virtual void onBrowse(const std::string& address, const ResponseCallback& callback) = 0;
  /// Answers with the value; `data` is the client's argument: null or UNKNOWN when it gave none. [provider]
  virtual void onRead(const std::string& address, const Variant* data, const ResponseCallback& callback) = 0;
  /// Takes a value over; `data` is borrowed until the call returns, not until the answer. [provider]
  virtual void onWrite(const std::string& address, const Variant* data, const ResponseCallback& callback) = 0;
  /// Says what the node is, as a FLATBUFFERS value of schemas/datalayer/metadata.fbs. [provider]
  virtual void onMetadata(const std::string& address, const ResponseCallback& callback) = 0;

 protected:
  IProviderNode() = default;
  IProviderNode(const IProviderNode&) = default;
  IProviderNode& operator=(const IProviderNode&) = default;
};

}  // namespace comm::datalayer
