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

  /// Asks a node for its value; the argument may narrow what is asked for. DL_INVALID_ADDRESS when nobody answers there.
  /// [any]
  virtual DlResult readSync(const std::string& address, Variant* data) = 0;
  /// Hands a value to a node. DL_TYPE_MISMATCH when it is of another type than the node holds. [any]
  virtual DlResult writeSync(const std::string& address, Variant* data) = 0;
  /// Lists what lies directly below an address, as an ARRAY_OF_STRING of last levels; the argument is ignored. [any]
  virtual DlResult browseSync(const std::string& address, Variant* data) = 0;
  /// Asks a node to make something below itself; most nodes answer DL_UNSUPPORTED. [any]
  virtual DlResult createSync(const std::string& address, Variant* data) = 0;
  /// Asks a node to remove what createSync made; the one operation that hands nothing out. [any]
  virtual DlResult removeSync(const std::string& address) = 0;
  /// Asks what a node is: a FLATBUFFERS value of schemas/datalayer/metadata.fbs. [any]
  virtual DlResult metadataSync(const std::string& address, Variant* data) = 0;

 protected:
  IClient() = default;
  IClient(const IClient&) = default;
  IClient& operator=(const IClient&) = default;
};

}  // namespace comm::datalayer
