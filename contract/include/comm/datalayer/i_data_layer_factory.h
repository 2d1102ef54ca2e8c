// Makes providers, clients and real-time memories.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "comm/datalayer/dl_result.h"
#include "comm/datalayer/i_client.h"
#include "comm/datalayer/i_memory.h"
#include "comm/datalayer/i_provider.h"

namespace comm::datalayer {

/// The data layer as a component receives it. It outlives everything it made.
class IDataLayerFactory {
 public:
  virtual ~IDataLayerFactory() = default;

  /// A new client of the endpoint, owned by the caller; null when there is none. [framework]
  virtual IClient* createClient(const std::string& endpoint) = 0;
  /// A new provider of the endpoint, owned by the caller; null when there is none. [framework]
  virtual IProvider* createProvider(const std::string& endpoint) = 0;

  /// Makes a memory of `size` bytes, zero-filled, and hands out its owner handle. DL_ALREADY_EXISTS when the address is
  /// taken; on failure `memory` is left as it was. [framework]
  virtual DlResult createMemorySync(std::shared_ptr<IMemoryOwner>& memory, const std::string& address, IProvider* provider,
                                    std::uint32_t size, MemoryType type) = 0;
  /// Withdraws a memory. Open accesses stay valid until they end; new ones are refused. [framework]
  virtual DlResult deleteMemorySync(const std::shared_ptr<IMemoryOwner>& memory) = 0;

  /// Opens a memory that somebody owns. DL_INVALID_ADDRESS when there is none. [framework]
  virtual DlResult openMemory(std::shared_ptr<IMemoryUser>& memory, const std::string& address) = 0;
  /// Gives a user handle back. [framework]
  virtual DlResult closeMemory(const std::shared_ptr<IMemoryUser>& memory) = 0;

 protected:
  IDataLayerFactory() = default;
  IDataLayerFactory(const IDataLayerFactory&) = default;
  IDataLayerFactory& operator=(const IDataLayerFactory&) = default;
};

}  // namespace comm::datalayer
