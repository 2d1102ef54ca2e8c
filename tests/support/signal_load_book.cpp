// What a load run knows of its signals.
#include "support/signal_load_book.h"

#include <stdexcept>
#include <utility>

namespace motion::test {

namespace {

// An announcement in one word: the sequence, whether it is open, and the two counters.
constexpr unsigned int SEQUENCE_SHIFT = 24;
constexpr unsigned int OPEN_SHIFT = 16;
constexpr unsigned int BEFORE_SHIFT = 8;
constexpr unsigned int CHANGES_SHIFT = 8;

std::uint64_t pack(const Announcement& announcement) noexcept {
  return announcement.sequence << SEQUENCE_SHIFT | std::uint64_t{announcement.isOpen} << OPEN_SHIFT |
         std::uint64_t{announcement.before} << BEFORE_SHIFT | announcement.after;
}

}  // namespace

RawSignals::RawSignals(comm::datalayer::IDataLayerFactory& dataLayer) : m_dataLayer(dataLayer) {
  if (isFailure(dataLayer.openMemory(m_in, kavo::SIGNALS_IN_ADDRESS)) ||
      isFailure(dataLayer.openMemory(m_out, kavo::SIGNALS_OUT_ADDRESS)) || isFailure(m_in->beginAccess(m_inBytes, 0)) ||
      isFailure(m_out->beginAccess(m_outBytes, 0))) {
    throw std::runtime_error("the memories of the signals cannot be opened");
  }
}

RawSignals::~RawSignals() {
  for (const auto& memory : {m_in, m_out}) {
    static_cast<void>(memory->endAccess());
    static_cast<void>(m_dataLayer.closeMemory(memory));
  }
}

void SignalBook::beginWrite(std::uint32_t id, std::uint8_t before, std::uint8_t after, bool isOpen) noexcept {
  m_hot.store(id, std::memory_order_relaxed);
  const std::uint64_t sequence = announced(id).sequence + 1;
  // Whoever sees the new counter has to see this, too; the write itself comes later and releases.
  m_announced[id].store(pack({sequence, isOpen, before, after}), std::memory_order_seq_cst);
}

void SignalBook::endWrite(std::uint32_t id, std::uint8_t after) noexcept {
  const std::uint64_t sequence = announced(id).sequence + 1;
  m_announced[id].store(pack({sequence, false, after, after}), std::memory_order_seq_cst);
}

Announcement SignalBook::announced(std::uint32_t id) const noexcept {
  const std::uint64_t word = m_announced[id].load(std::memory_order_seq_cst);
  return {word >> SEQUENCE_SHIFT, (word >> OPEN_SHIFT & 1U) != 0, static_cast<std::uint8_t>(word >> BEFORE_SHIFT),
          static_cast<std::uint8_t>(word)};
}

void SignalBook::note(std::uint32_t id, const Noted& noted) noexcept {
  m_noted[id].store(noted.changes << CHANGES_SHIFT | noted.value, std::memory_order_release);
}

Noted SignalBook::noted(std::uint32_t id) const noexcept {
  const std::uint64_t word = m_noted[id].load(std::memory_order_acquire);
  return {word >> CHANGES_SHIFT, static_cast<std::uint8_t>(word)};
}

std::vector<std::string> Findings::texts() const {
  const std::lock_guard lock(m_mutex);
  return m_texts;
}

void Findings::note(std::atomic<std::uint64_t>& count, std::string text) {
  count.fetch_add(1, std::memory_order_relaxed);
  const std::lock_guard lock(m_mutex);
  if (m_texts.size() < TEXTS) {
    m_texts.push_back(std::move(text));
  }
}

}  // namespace motion::test
