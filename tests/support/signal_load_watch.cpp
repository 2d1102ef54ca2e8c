// Looks at the counters of the signals during a load run.
#include "support/signal_load_watch.h"

#include <fmt/format.h>

#include <bitset>
#include <thread>
#include <utility>

namespace motion::test {

CycleWatch::CycleWatch(SignalBook& book, const RawSignals& raw, std::size_t maxCycles) : m_book(book), m_raw(raw) {
  m_withoutClients.reserve(maxCycles);
  m_withClients.reserve(maxCycles);
}

void CycleWatch::watch(std::vector<std::uint32_t> signals, bool isMeasured) {
  m_objects.push_back({std::move(signals), isMeasured});
}

void CycleWatch::beforeObjects(std::uint64_t /*cycle*/) noexcept {
  BetweenCycles::meet();
  for (const Watched& object : m_objects) {
    for (const std::uint32_t id : object.signals) {
      m_announced[id] = m_book.announced(id);
      m_out[id] = m_raw.out(id);
    }
  }
  m_ownTime = {};
  m_mark = Clock::now();
}

void CycleWatch::afterObject(std::uint64_t /*cycle*/, const host::MotionObject& object) noexcept {
  const Watched& watched = m_objects[object.index()];
  if (watched.isMeasured) {
    m_ownTime += Clock::now() - m_mark;
  }
  for (const std::uint32_t id : watched.signals) {
    look(id);
  }
  m_mark = Clock::now();
}

void CycleWatch::afterObjects(std::uint64_t /*cycle*/) noexcept {
  const Half half = m_half.load(std::memory_order_relaxed);
  auto& times = half == Half::WITH_CLIENTS ? m_withClients : m_withoutClients;
  if (half != Half::NONE && times.size() < times.capacity()) {
    times.push_back(static_cast<std::uint32_t>(std::chrono::nanoseconds(m_ownTime).count()));
  }
}

void CycleWatch::look(std::uint32_t id) noexcept {
  const Noted noted = m_book.noted(id);
  const std::uint8_t value = m_raw.in(id);
  if (value == noted.value) {
    return;
  }
  ++m_changes;
  if (!mayBecome(id, noted.value, value) && m_wrongSteps++ == 0) {
    m_firstWrong = {id, noted.value, value, m_out[id]};
  }
  m_book.note(id, {noted.changes + 1, value});
}

bool CycleWatch::mayBecome(std::uint32_t id, std::uint8_t from, std::uint8_t to) const noexcept {
  const std::uint8_t before = m_out[id];
  const Announcement& then = m_announced[id];
  const std::uint8_t out = m_raw.out(id);
  const Announcement now = m_book.announced(id);
  if (now == then && !now.isWriting()) {
    return to == counterThatSets(from, before) || to == before;
  }
  // A client has written meanwhile: a job may have met the counter before or after that.
  const bool isOneWrite = now.begun() - then.ended() <= 1;
  return !isOneWrite || to == counterThatSets(from, before) || to == counterThatSets(from, out) || to == before || to == out;
}

const std::vector<std::uint32_t>& CycleWatch::times(Half half) const noexcept {
  return half == Half::WITH_CLIENTS ? m_withClients : m_withoutClients;
}

void CycleWatch::report(Findings& findings) const {
  for (std::uint64_t i = 0; i < m_wrongSteps; ++i) {
    findings.torn(fmt::format("{} wrong steps of jobs; the first: signal {} from {} to {} while the other side had {}",
                              m_wrongSteps, m_firstWrong.id, m_firstWrong.from, m_firstWrong.to, m_firstWrong.out));
  }
}

void RawReader::run(const std::atomic<bool>& stop) {
  for (std::uint32_t id = 0; !stop; id = (id + 1) % kavo::SIGNAL_COUNT) {
    const std::uint32_t hot = m_book.hot();
    lookAtOutside(hot);
    lookAtOutside(id);
    if (hot >= FIRST_OF_TURNS && (hot - FIRST_OF_TURNS) % SIGNALS_PER_TURN == SIGNALS_PER_TURN - 1) {
      // A job has just been told to go on: its next step with the shared signal has to pass the counter of the client.
      lookAtJobs(hot + 1 - SIGNALS_PER_TURN, CYCLES_OF_A_TURN, stop);
    }
    if (writersOf(id) != Writers::CLIENT) {
      lookAtJobs(id, 0, stop);
    } else if (const std::uint8_t in = m_raw.in(id); in != 0) {
      m_findings.torn(fmt::format("no job uses signal {}, whose input counter is {}", id, in));
    }
    std::this_thread::yield();
  }
}

void RawReader::lookAtOutside(std::uint32_t id) {
  for (int look = 0; look < LOOKS; ++look) {
    const Announcement before = m_book.announced(id);
    const std::uint8_t value = m_raw.out(id);
    if (before.isOpen || m_book.announced(id) != before) {
      continue;
    }
    ++m_outsideLooks;
    if (value != before.before && value != before.after) {
      m_findings.torn(fmt::format("the output counter of signal {} was {} during a write from {} to {}", id, value,
                                  before.before, before.after));
    }
  }
}

void RawReader::lookAtJobs(std::uint32_t id, std::uint64_t cycles, const std::atomic<bool>& stop) {
  const Noted before = m_book.noted(id);
  const std::uint64_t end = m_cycle.begun() + cycles;
  std::bitset<256> seen;
  do {
    for (int look = 0; look < LOOKS; ++look) {
      seen.set(m_raw.in(id));
    }
  } while (m_cycle.begun() < end && m_book.noted(id).changes == before.changes && !stop);
  // What was seen is noted once the cycle is over in which it was written.
  const std::uint64_t cycle = m_cycle.begun();
  while (m_cycle.ended() < cycle && !stop) {
    std::this_thread::yield();
  }
  const Noted after = m_book.noted(id);
  if (m_cycle.ended() < cycle || after.changes - before.changes > 1) {
    return;
  }
  ++m_jobLooks;
  seen.reset(before.value);
  seen.reset(after.value);
  if (seen.any()) {
    m_findings.torn(fmt::format("the input counter of signal {} was neither {} nor {}, between which a job moved it", id,
                                before.value, after.value));
  }
}

}  // namespace motion::test
