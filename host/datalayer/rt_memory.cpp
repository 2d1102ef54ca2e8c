// Real-time memories: the accesses, and the check of their memory maps.
#include "host/datalayer/rt_memory.h"

#include <utility>

#include "host/datalayer/guarded.h"
#include "schemas/datalayer/memory_map_generated.h"

namespace motion::host::datalayer {

using namespace comm::datalayer;

namespace {

/// The map in a value, null when the value holds no valid one.
const MemoryMap* verifiedMap(const Variant& value) {
  const auto buffer = value.getFlatBuffer();
  flatbuffers::Verifier verifier(buffer.data(), buffer.size());
  return !buffer.empty() && VerifyMemoryMapBuffer(verifier) ? GetMemoryMap(buffer.data()) : nullptr;
}

/// True when every variable lies within a memory of `size` bytes.
bool isWithin(const MemoryMap& map, std::uint32_t size) {
  if (map.variables() == nullptr) {
    return true;
  }
  for (const Variable* variable : *map.variables()) {
    // In 64 bits, so that an offset near the limit of its type does not wrap to a small end.
    const std::uint64_t end = std::uint64_t{variable->bitoffset()} + variable->bitsize();
    if (end > std::uint64_t{size} * 8) {
      return false;
    }
  }
  return true;
}

}  // namespace

MemoryBlock::MemoryBlock(std::string address, std::uint32_t size)
    : m_address(std::move(address)), m_size(size), m_bytes(std::make_unique<std::uint8_t[]>(size)) {}

DlResult MemoryBlock::setMap(const Variant& map) {
  const MemoryMap* const verified = verifiedMap(map);
  if (verified == nullptr || !isWithin(*verified, m_size)) {
    return DL_RT_INVALIDMEMORYMAP;
  }
  Variant copy = map;
  const std::lock_guard lock(m_mapMutex);
  // A memory may be deleted meanwhile and stays so.
  std::uint64_t state = m_state.load(std::memory_order_relaxed);
  while (!m_state.compare_exchange_weak(state, (state & CLOSED) | verified->revision(), std::memory_order_release,
                                        std::memory_order_relaxed)) {
  }
  m_map = std::move(copy);
  return DL_OK;
}

DlResult MemoryBlock::getMap(Variant& map) const {
  const std::lock_guard lock(m_mapMutex);
  if (m_map.getType() == VariantType::UNKNOWN) {
    return DL_RT_NOVALIDDATA;
  }
  map = m_map;
  return DL_OK;
}

DlResult AccessGate::beginElsewhere(std::uint8_t*& data) noexcept {
  m_otherCount.fetch_add(1, std::memory_order_relaxed);
  if (m_home.load(std::memory_order_relaxed) == nullptr) {
    considerHome();
  }
  data = m_bytes;
  return DL_OK;
}

void AccessGate::considerHome() noexcept {
  const void* const thread = thisThread();
  if (m_lastThread.load(std::memory_order_relaxed) != thread) {
    m_lastThread.store(thread, std::memory_order_relaxed);
    m_inARow.store(0, std::memory_order_relaxed);
    return;
  }
  const std::uint32_t inARow = m_inARow.load(std::memory_order_relaxed) + 1;
  m_inARow.store(inARow, std::memory_order_relaxed);
  if (inARow >= HOME_AFTER) {
    const void* nobody = nullptr;
    m_home.compare_exchange_strong(nobody, thread, std::memory_order_relaxed);
  }
}

DlResult AccessGate::endElsewhere() noexcept {
  if (m_otherCount.load(std::memory_order_relaxed) <= 0) {
    return DL_RT_NOTOPEN;
  }
  // Pairs with isOpen. From here on the handle may be freed by another thread, unless the count says that it was too low.
  if (m_otherCount.fetch_sub(1, std::memory_order_release) > 0) {
    return DL_OK;
  }
  // Another surplus end was faster between the two lines above.
  m_otherCount.fetch_add(1, std::memory_order_relaxed);
  return DL_RT_NOTOPEN;
}

DlResult OwnerHandle::setMemoryMap(const Variant& map) {
  return guarded([&] { return isUsable() ? m_gate.block().setMap(map) : DL_RT_INVALIDOBJECT; });
}

DlResult UserHandle::getMemoryMap(Variant& map) const {
  return guarded([&] { return isUsable() ? m_gate.block().getMap(map) : DL_RT_INVALIDOBJECT; });
}

}  // namespace motion::host::datalayer
