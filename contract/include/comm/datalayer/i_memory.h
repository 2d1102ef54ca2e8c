// Real-time memories: fixed blocks of bytes that cyclic and other threads share without a lock.
#pragma once

#include <cstdint>

#include "comm/datalayer/dl_result.h"
#include "comm/datalayer/variant.h"

namespace comm::datalayer {

/// Direction of a memory, as its users see it. It informs; nothing keeps a side from writing.
enum class MemoryType : std::uint32_t {
  INPUT = 1,   ///< the owner's side writes, users read
  OUTPUT = 2,  ///< users write, the owner's side reads
};

/// Access to one real-time memory.
///
/// | what | promise |
/// |---|---|
/// | writers, readers | any number, unordered by the data layer: bytes that several threads touch are atomics |
/// | beginAccess, endAccess | wait-free, bounded, never allocate |
/// | lifetime | the bytes stay valid from beginAccess to endAccess, whatever happens to the owner meanwhile |
class IMemory {
 public:
  virtual ~IMemory() = default;

  /// Opens an access and stores the address of the first byte. `revision` must be the revision of the memory map;
  /// otherwise DL_RT_WRONGREVISON. DL_RT_INVALIDOBJECT once the owner has deleted the memory. [any & real-time]
  virtual DlResult beginAccess(std::uint8_t*& data, std::uint32_t revision) = 0;
  /// Ends one access. DL_RT_NOTOPEN when none is open. [any & real-time]
  virtual DlResult endAccess() = 0;
  /// Size in bytes. [any & real-time]
  [[nodiscard]] virtual std::uint32_t getSize() const = 0;

 protected:
  IMemory() = default;
  IMemory(const IMemory&) = default;
  IMemory& operator=(const IMemory&) = default;
};

/// A memory as its users see it.
class IMemoryUser : public IMemory {
 public:
  /// The memory map, as a FlatBuffers value of schemas/datalayer/memory_map.fbs. [any]
  virtual DlResult getMemoryMap(Variant& map) const = 0;
};

/// A memory as its owner sees it.
class IMemoryOwner : public IMemory {
 public:
  /// Describes the content. The map must be a valid buffer of schemas/datalayer/memory_map.fbs and every variable must lie
  /// within the memory, otherwise DL_RT_INVALIDMEMORYMAP. [framework]
  virtual DlResult setMemoryMap(const Variant& map) = 0;
};

}  // namespace comm::datalayer
