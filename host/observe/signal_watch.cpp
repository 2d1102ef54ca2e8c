#include "host/observe/signal_watch.h"

#include <fmt/format.h>

#include <atomic>

namespace motion::host::observe {

SignalWatch::~SignalWatch() {
  close();
}

bool SignalWatch::open(std::string& problem) {
  for (const auto& [memory, address] :
       {std::pair{&m_inMemory, kavo::SIGNALS_IN_ADDRESS}, {&m_outMemory, kavo::SIGNALS_OUT_ADDRESS}}) {
    const auto result = m_factory.openMemory(*memory, address);
    if (result.isFailure() || (*memory)->getSize() != kavo::SIGNAL_COUNT) {
      problem = fmt::format("the component publishes no signals at '{}' ({})", address, result.toString());
      close();
      return false;
    }
  }
  return read(*m_inMemory, m_in) && read(*m_outMemory, m_out);
}

void SignalWatch::close() {
  for (auto* memory : {&m_inMemory, &m_outMemory}) {
    if (*memory != nullptr) {
      m_factory.closeMemory(*memory);
      memory->reset();
    }
  }
}

bool SignalWatch::read(comm::datalayer::IMemoryUser& memory, Counters& counters) noexcept {
  std::uint8_t* data = nullptr;
  if (memory.beginAccess(data, 0).isFailure()) {
    return false;
  }
  for (std::size_t i = 0; i < counters.size(); ++i) {
    counters[i] = std::atomic_ref(data[i]).load(std::memory_order_relaxed);
  }
  memory.endAccess();
  return true;
}

void SignalWatch::look(EventRing& events, std::uint64_t cycle, std::uint32_t object) noexcept {
  Counters in = m_in;
  Counters out = m_out;
  if (m_inMemory == nullptr || !read(*m_outMemory, out) || !read(*m_inMemory, in) || (in == m_in && out == m_out)) {
    return;
  }
  const auto report = [&](std::uint32_t signal, bool before, bool now, std::uint32_t who) {
    if (before != now) {
      events.write({cycle, now ? EventKind::SIGNAL_SET : EventKind::SIGNAL_RESET, who, 0, signal});
    }
  };
  for (std::uint32_t i = 0; i < kavo::SIGNAL_COUNT; ++i) {
    report(i, m_in[i] != m_out[i], m_in[i] != out[i], OUTSIDE);
    report(i, m_in[i] != out[i], in[i] != out[i], object);
  }
  m_in = in;
  m_out = out;
}

}  // namespace motion::host::observe
