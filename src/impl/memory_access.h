// One access to a real-time memory, from begin to end.
#pragma once

#include <cstdint>

#include "comm/datalayer/i_memory.h"
#include "impl/guarded.h"

namespace motion::kavo {

/// Begins an access when made and ends it when destroyed, if it could begin. [any & real-time]
class MemoryAccess {
 public:
  explicit MemoryAccess(comm::datalayer::IMemory& memory) noexcept : m_memory(memory) {
    // The memory is given a local variable, not the member: what it never sees the address of can stay in registers.
    std::uint8_t* data = nullptr;
    m_result = guarded(comm::datalayer::DL_FAILED, [&] { return m_memory.beginAccess(data, 0); });
    m_data = data;
  }
  MemoryAccess(const MemoryAccess&) = delete;
  MemoryAccess& operator=(const MemoryAccess&) = delete;
  ~MemoryAccess() {
    if (!hasFailed()) [[likely]] {
      guarded([this] { m_memory.endAccess(); });
    }
  }

  [[nodiscard]] bool hasFailed() const noexcept { return m_result.isFailure(); }
  /// Why it could not begin.
  [[nodiscard]] comm::datalayer::DlResult result() const noexcept { return m_result; }
  /// The first byte of the memory, while the access is open.
  [[nodiscard]] std::uint8_t* data() const noexcept { return m_data; }

 private:
  comm::datalayer::IMemory& m_memory;
  std::uint8_t* m_data = nullptr;
  comm::datalayer::DlResult m_result;
};

}  // namespace motion::kavo
