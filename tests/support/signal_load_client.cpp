// A client that sets, resets and reads random signals during a load run.
#include "support/signal_load_client.h"

#include <fmt/format.h>

#include <utility>

namespace motion::test {

using comm::datalayer::Variant;

NodeAccess::NodeAccess(std::unique_ptr<host::datalayer::Client> client) : m_client(std::move(client)) {
  for (std::uint32_t id = 0; id < kavo::SIGNAL_COUNT; ++id) {
    m_addresses.push_back(fmt::format("motion/state/functions/kavo/signals/{:02}", id));
  }
}

bool NodeAccess::write(std::uint32_t id, bool value) {
  Variant data(value);
  return !isFailure(m_client->writeSync(m_addresses[id], &data));
}

bool NodeAccess::read(std::uint32_t id, bool& value) {
  Variant data;
  if (isFailure(m_client->readSync(m_addresses[id], &data)) || data.getBool() == nullptr) {
    return false;
  }
  value = *data.getBool();
  return true;
}

bool FunctionAccess::write(std::uint32_t id, bool value) {
  const core::SignalFn function = value ? m_functions.sync->setSignal : m_functions.sync->resetSignal;
  return function(m_functions.context, id) == core::FctResult::Okay;
}

bool FunctionAccess::read(std::uint32_t id, bool& value) {
  return m_functions.sync->getSignal(m_functions.context, id, value) == core::FctResult::Okay;
}

ClientCounts& ClientCounts::operator+=(const ClientCounts& other) noexcept {
  reads += other.reads;
  checkedReads += other.checkedReads;
  writes += other.writes;
  checkedWrites += other.checkedWrites;
  turns += other.turns;
  return *this;
}

LoadClient::LoadClient(World world, std::uint32_t index, std::unique_ptr<ISignalAccess> access, std::function<void()> pause)
    : m_world(world), m_index(index), m_access(std::move(access)), m_pause(std::move(pause)), m_random(index) {}

void LoadClient::run(const std::atomic<bool>& stop) {
  while (!stop) {
    round();
    m_pause();
  }
}

std::uint32_t LoadClient::pickOwn(std::uint32_t first, std::uint32_t end) {
  const std::uint32_t own = (end - first - m_index + m_world.writers - 1) / m_world.writers;
  return first + m_index + m_world.writers * (m_random() % own);
}

void LoadClient::round() {
  const std::uint32_t choice = m_random() % 100;
  if (choice == 0) {
    goRound();
  } else if (choice < 40) {
    write(pickOwn(0, FIRST_OF_JOBS), m_random() % 2 != 0);
  } else if (choice < 60) {
    write(pickOwn(FIRST_OF_BOTH, FIRST_OF_TURNS), m_random() % 2 != 0);
  } else if (choice < 80) {
    read(m_random() % FIRST_OF_TURNS);
  } else {
    takeTurn();
  }
}

void LoadClient::goRound() {
  const std::uint32_t id = pickOwn(0, FIRST_OF_JOBS);
  for (int i = 0; i < 256; ++i) {
    write(id, true, ReadBack::NO);
  }
  expect(id, true, "set by this client 256 times");
}

void LoadClient::write(std::uint32_t id, bool value, ReadBack readBack) {
  const BetweenCycles between(m_world.cycle);
  const std::uint8_t in = m_world.raw.in(id);
  const std::uint8_t out = m_world.raw.out(id);
  m_world.book.beginWrite(id, out, value ? counterThatSets(out, in) : in, writersOf(id) == Writers::BOTH);
  const bool isDone = m_access->write(id, value);
  m_world.book.endWrite(id, m_world.raw.out(id));
  ++m_counts.writes;
  if (!isDone) {
    m_world.findings.refused(fmt::format("signal {} could not be written", id));
    return;
  }
  judge(id, value, out, in, between);
  if (readBack == ReadBack::NO) {
    return;
  }
  bool isSet = !value;
  const bool isRead = m_access->read(id, isSet);
  ++m_counts.reads;
  if (!isRead) {
    m_world.findings.refused(fmt::format("signal {} could not be read", id));
  } else if (writersOf(id) != Writers::BOTH || between.lasts()) {
    ++m_counts.checkedReads;
    if (isSet != value) {
      m_world.findings.lost(fmt::format("signal {} was written {} and reads {}", id, value, isSet));
    }
  }
}

void LoadClient::judge(std::uint32_t id, bool value, std::uint8_t before, std::uint8_t inBefore,
                       const BetweenCycles& between) {
  const std::uint8_t after = m_world.raw.out(id);
  const std::uint8_t inAfter = m_world.raw.in(id);
  const std::uint64_t cycles = between.cyclesTouched();  // after what is known of the counters
  if (writersOf(id) == Writers::BOTH && cycles != 0) {
    if (cycles == 1) {  // else the jobs may have moved on by more than one step
      judgeOverlapped(id, value, {before, after}, {inBefore, inAfter});
    }
    return;
  }
  // Nobody else could write: it is known to the digit what has to be there.
  ++m_counts.checkedWrites;
  const std::uint8_t expected = value ? counterThatSets(before, inBefore) : inBefore;
  if (after == expected) {
    return;
  }
  const std::string text =
      fmt::format("signal {} was written {}: output counter {} became {}, not {}, with input counter {}", id, value, before,
                  after, expected, inBefore);
  if ((after != inBefore) != value) {
    m_world.findings.lost(text);
  } else {
    m_world.findings.torn(text);
  }
}

void LoadClient::judgeOverlapped(std::uint32_t id, bool value, Move out, Move in) {
  const bool isPossible =
      value ? out.after == counterThatSets(out.before, in.before) || out.after == counterThatSets(out.before, in.after)
            : out.after == in.before || out.after == in.after;
  if (!isPossible) {
    m_world.findings.torn(
        fmt::format("signal {} was written {}: output counter {} became {} while the input counter went "
                    "from {} to {}",
                    id, value, out.before, out.after, in.before, in.after));
  }
}

void LoadClient::read(std::uint32_t id) {
  const BetweenCycles between(m_world.cycle);
  const Announcement announced = m_world.book.announced(id);
  const bool expected = m_world.raw.in(id) != m_world.raw.out(id);
  bool isSet = false;
  ++m_counts.reads;
  if (!m_access->read(id, isSet)) {
    m_world.findings.refused(fmt::format("signal {} could not be read", id));
    return;
  }
  const bool isKnown = !announced.isWriting() && m_world.book.announced(id) == announced &&
                       (writersOf(id) == Writers::CLIENT || between.lasts());
  m_counts.checkedReads += isKnown ? 1 : 0;
  if (isKnown && isSet != expected) {
    m_world.findings.torn(fmt::format("signal {} reads {}, and no write has made that", id, isSet));
  }
}

void LoadClient::expect(std::uint32_t id, bool value, const char* why) {
  bool isSet = !value;
  ++m_counts.reads;
  ++m_counts.checkedReads;
  if (!m_access->read(id, isSet)) {
    m_world.findings.refused(fmt::format("signal {} could not be read", id));
  } else if (isSet != value) {
    m_world.findings.lost(fmt::format("signal {} reads {}, but was {}", id, isSet, why));
  }
}

void LoadClient::takeTurn() {
  const std::uint32_t shared = FIRST_OF_TURNS + SIGNALS_PER_TURN * m_index;
  const std::uint32_t yourTurn = shared + 1;
  const std::uint32_t goOn = shared + 2;
  bool isMyTurn = false;
  ++m_counts.reads;
  if (!m_access->read(yourTurn, isMyTurn)) {
    m_world.findings.refused(fmt::format("signal {} could not be read", yourTurn));
  }
  if (!isMyTurn) {
    return;
  }
  if (!m_isJobDone) {
    expect(shared, true, "set by a job");
    write(shared, true);  // one step would meet the counter that the job has moved
    write(shared, false);
    write(shared, true);  // now the next step of the job would
  } else {
    expect(shared, false, "reset by a job");
    ++m_counts.turns;
    m_turns.store(m_counts.turns, std::memory_order_relaxed);
  }
  m_isJobDone = !m_isJobDone;
  write(yourTurn, false);
  write(goOn, true, ReadBack::NO);  // the job consumes it
}

}  // namespace motion::test
