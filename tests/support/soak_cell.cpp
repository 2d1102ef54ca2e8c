// Five objects of a long run that work together, and what they are told to do.
#include "support/soak_cell.h"

#include <fmt/format.h>

#include <algorithm>
#include <numeric>
#include <utility>

#include "support/parameter_table.h"

namespace motion::test {
namespace {

using core::FctResult;
using core::ObjectType;
using std::chrono::milliseconds;

/// Commands that wait in a buffer at most.
constexpr std::size_t WAITING = 8;
/// A running cell ends a command at least so often; generous, for a machine that does other things as well.
constexpr std::chrono::seconds PATIENCE{20};
/// Between the abort of one object and that of its cell.
constexpr milliseconds ABORT_DELAY{30};
/// The last signal of a cell is switched on the path; nobody waits for it.
constexpr std::uint32_t PATH_SIGNAL = SoakCell::SIGNALS - 1;

}  // namespace

void SoakErrors::add(const std::string& text) {
  ++m_count;
  if (m_texts.size() < KEPT) {
    m_texts.push_back(text);
  }
}

SoakCell::SoakCell(host::Runtime& runtime, std::uint32_t number, std::uint32_t seed, SoakReport& report, SoakErrors& errors)
    : m_runtime(runtime),
      m_report(report),
      m_errors(errors),
      m_random(seed + 7919 * number),
      m_firstSignal(number * SIGNALS),
      m_isSignalFree(PATH_SIGNAL, true),
      m_nextAbort(Clock::now()),
      m_lastProgress(Clock::now()) {
  for (std::uint32_t i = 0; i < OBJECTS; ++i) {
    m_names.push_back(fmt::format("Cell{}{}", number, static_cast<char>('A' + i)));
    m_objects.push_back(runtime.addObject(m_names.back(), i % 2 == 0 ? ObjectType::AXIS : ObjectType::KINEMATICS, {}));
  }
}

std::uint32_t SoakCell::below(std::uint32_t end) {
  return std::uniform_int_distribution<std::uint32_t>(0, end - 1)(m_random);
}

void SoakCell::feed(Clock::time_point now) {
  settle(now);
  if (m_state == State::WORKING && m_nextAbort < now) {
    abortOne(now);
  }
  while (m_state == State::WORKING && m_waiting.empty()) {
    addStep();
    issueWaiting();
  }
}

void SoakCell::issueWaiting() {
  while (!m_waiting.empty()) {
    const auto& next = m_waiting.front();
    if (m_objects[next.object]->bufferedCount() >= WAITING || !issue(next)) {
      return;
    }
    m_waiting.pop_front();
  }
}

void SoakCell::addStep() {
  const auto what = below(10);
  if (what < 2) {
    addDwell(below(OBJECTS));
  } else if (what < 4) {
    addMove(below(OBJECTS), below(2) == 1);
  } else if (what < 7) {
    addHandOver();
  } else {
    addJoin();
  }
}

void SoakCell::addDwell(std::uint32_t object) {
  const double time = 0.001 * (1 + below(15));
  m_waiting.push_back({object, Kind::DWELL, "Dwell", ParameterTable().with<double>(4, time).finish(), {}, 0, nullptr});
}

void SoakCell::addMove(std::uint32_t object, bool hasCondition) {
  const auto distance = [this] { return static_cast<double>(below(21)) - 10.0; };
  Command move{object, Kind::MOVE, "", {}, {}, 0, nullptr};
  if (m_objects[object]->isAxis()) {
    move.name = "MoveRel";
    move.parameters = ParameterTable().with<double>(4, distance()).with<double>(6, 500).with<double>(8, 20'000).finish();
  } else {
    const std::vector<double> target{distance(), distance(), distance()};
    move.name = "MoveLin";
    move.parameters = ParameterTable().with(4, target).with<double>(10, 500).with<double>(12, 20'000).finish();
    if (!hasCondition) {
      m_waiting.push_back(std::move(move));
      return;
    }
    const auto condition = ParameterTable()
                               .withText(4, "Once")
                               .with<std::uint32_t>(8, m_firstSignal + PATH_SIGNAL)
                               .with<std::uint8_t>(10, static_cast<std::uint8_t>(below(2)))
                               .with(12, target)
                               .with<double>(14, 2)
                               .with<double>(16, 0.001 * below(5))
                               .finish();
    move.options.push_back({"SwitchOnPath", condition, {}});
  }
  m_waiting.push_back(std::move(move));
}

void SoakCell::endOptions() {
  for (std::uint32_t object = 0; object < OBJECTS; ++object) {
    addMove(object, false);
  }
}

void SoakCell::addHandOver() {
  const auto free = std::find(m_isSignalFree.begin(), m_isSignalFree.end(), true);
  if (free == m_isSignalFree.end()) {
    addDwell(below(OBJECTS));
    return;
  }
  *free = false;
  const auto signal = m_firstSignal + static_cast<std::uint32_t>(free - m_isSignalFree.begin());
  const auto setter = below(OBJECTS);
  const auto waiter = (setter + 1 + below(OBJECTS - 1)) % OBJECTS;
  const auto id = ParameterTable().with(4, signal).finish();
  m_waiting.push_back({setter, Kind::SET, "SetSignal", id, {}, signal, nullptr});
  const auto wait = ParameterTable().with(4, signal).with<std::uint8_t>(6, 1).finish();
  m_waiting.push_back({waiter, Kind::WAIT, "WaitForSignal", wait, {}, signal, nullptr});
}

void SoakCell::addJoin() {
  std::vector<std::uint32_t> members(OBJECTS);
  std::iota(members.begin(), members.end(), 0U);
  std::shuffle(members.begin(), members.end(), m_random);
  members.resize(2 + below(OBJECTS - 1));
  const auto meeting = std::make_shared<Meeting>();
  meeting->open = members.size();
  const bool awaitsNext = below(2) == 1;
  for (const auto member : members) {
    std::vector<std::string> group;
    for (const auto other : members) {
      if (other != member || below(2) == 1) {
        group.push_back(m_names[other]);
      }
    }
    std::shuffle(group.begin(), group.end(), m_random);
    const auto parameters = ParameterTable().withTexts(4, group).with<std::uint8_t>(6, awaitsNext ? 1 : 0).finish();
    m_waiting.push_back({member, Kind::JOIN, "Join", parameters, {}, 0, meeting});
  }
  for (const auto member : members) {
    addDwell(member);  // the join may await it
  }
}

bool SoakCell::issue(const Command& command) {
  static const core::dia::CmdSourceInfo SOURCE{"soak", "random", 1};
  unsigned long id = 0;
  std::string problem;
  const host::EncodedCmd encoded{command.name, command.parameters, SOURCE, command.options};
  const auto result = m_runtime.issue(*m_objects[command.object], encoded, id, problem);
  if (result == FctResult::TooManyCommands) {
    return false;
  }
  if (result != FctResult::Okay) {
    m_errors.add(fmt::format("{} was refused {}: {}", m_names[command.object], command.name, problem));
    return true;
  }
  m_underWay[id] = {command.kind, command.signal, command.meeting};
  m_report.options += command.options.size();
  return true;
}

bool SoakCell::take(const host::Event& event) {
  if (!knows(event.cmdID)) {
    return false;
  }
  switch (event.kind) {
    case host::EventKind::CMD_DONE:
      noteEnd(event.cmdID, true, event.cycle);
      break;
    case host::EventKind::CMD_ABORTED:
      noteEnd(event.cmdID, false, event.cycle);
      break;
    case host::EventKind::CMD_FAILED:
      m_errors.add(fmt::format("a command failed with 0x{:08X}", event.detail));
      noteEnd(event.cmdID, false, event.cycle);
      break;
    default:
      break;
  }
  return true;
}

void SoakCell::noteEnd(std::uint64_t cmdId, bool isDone, std::uint64_t cycle) {
  const auto found = m_underWay.find(cmdId);
  const auto command = found->second;
  m_underWay.erase(found);
  m_lastProgress = Clock::now();
  if (isDone) {
    noteDone(command, cycle);
    return;
  }
  ++m_report.commandsAborted;
  if (m_state == State::WORKING) {
    m_errors.add("a command was aborted by nobody");
  }
  if (command.meeting != nullptr) {
    command.meeting->isBroken = true;
  }
}

void SoakCell::noteDone(const UnderWay& command, std::uint64_t cycle) {
  ++m_report.commandsDone;
  switch (command.kind) {
    case Kind::MOVE:
      ++m_report.moves;
      break;
    case Kind::WAIT:
      ++m_report.signals;
      m_isSignalFree[command.signal - m_firstSignal] = true;
      break;
    case Kind::JOIN: {
      auto& meeting = *command.meeting;
      if (meeting.endedIn != 0 && meeting.endedIn != cycle) {
        m_errors.add(fmt::format("members of a join ended in cycles {} and {}", meeting.endedIn, cycle));
      }
      meeting.endedIn = cycle;
      if (--meeting.open == 0 && !meeting.isBroken) {
        ++m_report.joins;
      }
      break;
    }
    default:
      break;
  }
}

void SoakCell::abortOne(Clock::time_point now) {
  m_nextAbort = now + milliseconds(500 + below(3000));
  if (m_underWay.empty()) {
    return;
  }
  m_objects[below(OBJECTS)]->abortAll();
  ++m_report.aborts;
  m_state = State::ONE_ABORTED;
  m_lastProgress = now;
}

void SoakCell::abortAll() {
  for (auto* object : m_objects) {
    object->abortAll();
  }
  m_state = State::ALL_ABORTED;
}

void SoakCell::settle(Clock::time_point now) {
  if (m_state == State::WORKING) {
    issueWaiting();
  } else if (m_state == State::ONE_ABORTED && now > m_lastProgress + ABORT_DELAY) {
    abortAll();
  } else if (m_state == State::ALL_ABORTED && m_underWay.empty()) {
    beginAnew(now);
  }
}

void SoakCell::beginAnew(Clock::time_point now) {
  m_waiting.clear();
  for (std::uint32_t signal = 0; signal < PATH_SIGNAL; ++signal) {
    const auto result = m_runtime.records().sys2.sync->resetSignal(nullptr, m_firstSignal + signal);
    if (result != FctResult::Okay) {
      m_errors.add("a signal could not be reset");
    }
    m_isSignalFree[signal] = true;
  }
  m_state = State::WORKING;
  m_lastProgress = now;
}

void SoakCell::checkProgress(Clock::time_point now) {
  if (!m_underWay.empty() && now > m_lastProgress + PATIENCE) {
    m_errors.add(fmt::format("{} and its cell stand still", m_names.front()));
    m_lastProgress = now;
  }
}

}  // namespace motion::test
