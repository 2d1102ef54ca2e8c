// A client of the data layer.
#pragma once

#include <string>

#include "comm/datalayer/dl_result.h"
#include "comm/datalayer/variant.h"

namespace comm::datalayer {

/// Synchronous operations on nodes; each blocks until the answer is there or the client's time limit has passed
/// (DL_TIMEOUT). `data` carries the argument in and the answer out; on failure it holds the provider's error record, if any.
/// Whoever received it from the factory owns it and deletes it.
class IClient {
 public:
  virtual ~IClient() = default;

  virtual DlResult readSync(const std::string& address, Variant* data) = 0;      ///< [any]
  virtual DlResult writeSync(const std::string& address, Variant* data) = 0;     ///< [any]
  virtual DlResult browseSync(const std::string& address, Variant* data) = 0;    ///< [any]
  virtual DlResult createSync(const std::string& address, Variant* data) = 0;    ///< [any]
  virtual DlResult removeSync(const std::string& address) = 0;                   ///< [any]
  virtual DlResult metadataSync(const std::string& address, Variant* data) = 0;  ///< [any]

 protected:
  IClient() = default;
  IClient(const IClient&) = default;
  IClient& operator=(const IClient&) = default;
};

}  // namespace comm::datalayer
