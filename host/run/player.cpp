#include "host/run/player.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <optional>
#include <thread>
#include <utility>

#include "host/observe/wait_graph.h"
#include "host/run/expectations.h"

namespace motion::host::run {

using core::cmd::CmdState;
using observe::CmdRecord;
using scenario::OutsideEvent;

namespace {

/// In real time preparation works beside the cycle; this long without any event means that it has nothing to do either [s].
constexpr double QUIET_TIME = 0.25;
/// How often the player looks after a real-time run.
constexpr std::chrono::microseconds PLAYER_INTERVAL{500};
constexpr std::chrono::milliseconds PROGRESS_INTERVAL{200};

/// Tells who watches that the run is over, also when an exception ends it.
class EndOfRun {
 public:
  explicit EndOfRun(const Watch& watch) : m_watch(watch) {}
  EndOfRun(const EndOfRun&) = delete;
  EndOfRun& operator=(const EndOfRun&) = delete;
  ~EndOfRun() {
    if (m_watch.onEnd) {
      m_watch.onEnd();
    }
  }

 private:
  const Watch& m_watch;
};

}  // namespace

Player::Player(Session& session, const scenario::Scenario& scenario, std::vector<ObjectCalls> programs)
    : m_session(session),
      m_scenario(scenario),
      m_runtime(session.runtime()),
      m_watch(session.dataLayer()),
      m_recorder(m_watch, m_record),
      m_outsideWrites(session.dataLayer()),
      m_outside(scenario.outside) {
  for (ObjectCalls& program : programs) {
    m_feeds.push_back({std::move(program), 0});
  }
  std::ranges::stable_sort(m_outside, {}, &OutsideEvent::at);
}

bool Player::connect(std::string& problem) {
  if (!m_watch.open(problem)) {
    return false;
  }
  m_record.file = m_scenario.file;
  m_record.cycleTime = m_scenario.cycleTime;
  m_record.signalNames.resize(kavo::SIGNAL_COUNT);
  for (const scenario::SignalName& named : m_scenario.signals) {
    m_record.signalNames.at(named.id) = named.name;
  }
  m_recorder.attach(m_runtime.objMgr().objects());
  for (const Feed& feed : m_feeds) {
    std::vector<observe::CmdDescription> program;
    for (const ProgramCall& call : feed.program.calls) {
      program.push_back(call.description);
    }
    m_recorder.setProgram(feed.program.object->index(), std::move(program));
  }
  auto probes = probesFor(m_scenario, m_runtime.objMgr());
  if (!probes.empty()) {
    m_lastNeededCycle = probes.back().cycle;
  }
  if (!m_outside.empty()) {
    m_lastNeededCycle = std::max(m_lastNeededCycle, firstCycleFrom(m_outside.back().at, m_scenario.cycleTime));
  }
  m_recorder.setProbes(std::move(probes));
  m_runtime.cycle().setObserver(&m_recorder);
  m_runtime.preparation().setListener(&m_recorder);
  m_runtime.preparation().setWatch(&m_triggers);
  return true;
}

void Player::playVirtual() {
  for (;;) {
    if (!pump(m_runtime.cycle().begun() + 1)) {
      break;
    }
    m_runtime.step();
    m_runtime.preparation().prepareAll();
  }
  finish();
}

void Player::playReal(const Watch& watch) {
  m_record.realTime = true;
  m_quietCycles = m_stuckAfter != 0
                      ? m_stuckAfter
                      : std::max(m_quietCycles, static_cast<std::uint64_t>(std::ceil(QUIET_TIME / m_scenario.cycleTime)));
  const std::string notice = watch.onStart ? watch.onStart(m_session, m_scenario) : "";
  std::optional<EndOfRun> end(std::in_place, watch);
  feedPrograms();
  RealTimePacer pacer(m_scenario.cycleTime);
  std::atomic<bool> started{false};
  m_runtime.startThreads(pacer, [&](const std::string& warning) {
    m_record.warning = warning;
    started.store(true, std::memory_order_release);
  });
  auto nextProgress = std::chrono::steady_clock::now() + PROGRESS_INTERVAL;
  while (!started.load(std::memory_order_acquire) || pump(m_runtime.cycle().ended() + 1)) {
    tell(watch);
    if (watch.onProgress && std::chrono::steady_clock::now() >= nextProgress) {
      watch.onProgress(progress(m_runtime.cycle().begun()));
      nextProgress += PROGRESS_INTERVAL;
    }
    if (watch.wantsExplanation && watch.wantsExplanation()) {
      watch.onExplanation(fmt::format("cycle {}{}", m_runtime.cycle().begun(), whoWaits()));
    }
    std::this_thread::sleep_for(PLAYER_INTERVAL);
  }
  m_runtime.stopThreads();
  m_recorder.drain();
  tell(watch);
  end.reset();
  if (!notice.empty()) {
    m_record.warning += (m_record.warning.empty() ? "" : ". ") + notice;
  }
  const Punctuality punctuality = pacer.punctuality();
  m_record.punctuality = {punctuality.cycles, punctuality.overruns, static_cast<double>(punctuality.latestWakeUp) * 1e-9};
  finish();
}

void Player::tell(const Watch& watch) const {
  if (watch.onLook) {
    watch.onLook(m_record, m_runtime.cycle().begun());
  }
}

bool Player::pump(std::uint64_t nextCycle) {
  m_record.cycles = m_runtime.cycle().ended();  // before the events are taken over, so that none of these cycles is missing
  m_recorder.drain();
  if (isOver(nextCycle)) {
    return false;
  }
  if (static_cast<double>(nextCycle) * m_scenario.cycleTime > m_scenario.limit) {
    m_record.stuck = fmt::format("the limit of {:g} s was reached{}", m_scenario.limit, whoWaits());
    return false;
  }
  if (isStuck(nextCycle)) {
    m_record.stuck = fmt::format("since cycle {} nothing can happen any more{}", m_recorder.lastEventCycle(), whoWaits());
    return false;
  }
  happenOutside(nextCycle);
  feedPrograms();
  return true;
}

void Player::happenOutside(std::uint64_t nextCycle) {
  while (m_nextOutside < m_outside.size() &&
         firstCycleFrom(m_outside[m_nextOutside].at, m_scenario.cycleTime) <= nextCycle) {
    carryOut(m_outside[m_nextOutside++]);
  }
}

void Player::carryOut(const OutsideEvent& event) {
  actOutside(event);
  m_lastActCycle = m_runtime.cycle().begun();
}

void Player::actOutside(const OutsideEvent& event) {
  if (event.kind == OutsideEvent::Kind::ABORT) {
    m_runtime.objMgr().find(event.object.c_str())->abortAll();
    return;
  }
  if (std::string problem = m_outsideWrites.carryOut(event, m_record); !problem.empty()) {
    m_record.failures.push_back(std::move(problem));
  }
}

void Player::feedPrograms() {
  for (Feed& feed : m_feeds) {
    while (!isProgramOver(feed)) {
      const ProgramCall& call = feed.program.calls[feed.next];
      unsigned long cmdID = 0;
      std::string problem;
      const auto result = m_runtime.issue(*feed.program.object, call.encoded(), cmdID, problem);
      if (result == core::FctResult::TooManyCommands) {
        break;  // the rest follows when the buffer has room
      }
      if (core::isFailure(result)) {
        m_record.failures.push_back(fmt::format("line {}: {}", call.source.line, problem));
        feed.next = feed.program.calls.size();
        break;
      }
      ++feed.next;
    }
  }
}

bool Player::isProgramOver(const Feed& feed) const {
  if (feed.next == feed.program.calls.size()) {
    return true;
  }
  // Whoever aborts an object, or lets it fail, ends its program: what was not yet issued stays undone.
  const auto& commands = m_record.objects.at(feed.program.object->index()).commands;
  return std::any_of(
      commands.begin(), commands.begin() + static_cast<std::ptrdiff_t>(feed.next),
      [](const CmdRecord& command) { return command.state == CmdState::ABORTED || command.state == CmdState::FAILED; });
}

bool Player::isOver(std::uint64_t nextCycle) const {
  return nextCycle > m_lastNeededCycle && m_nextOutside == m_outside.size() &&
         std::ranges::all_of(m_feeds, [this](const Feed& feed) { return isProgramOver(feed); }) &&
         m_runtime.preparation().alive() == 0;
}

bool Player::isStuck(std::uint64_t nextCycle) const {
  if (nextCycle <= m_lastNeededCycle || m_nextOutside < m_outside.size() ||
      nextCycle <= std::max(m_recorder.lastEventCycle(), m_lastActCycle) + m_quietCycles) {
    return false;
  }
  return std::ranges::none_of(m_record.objects, [](const observe::ObjectRecord& object) {
    return std::ranges::any_of(object.commands,
                               [](const CmdRecord& command) { return command.state == CmdState::ACTIVE && !command.waits; });
  });
}

std::string Player::whoWaits() const {
  std::string text;
  for (const observe::ObjectRecord& object : m_record.objects) {
    for (const CmdRecord& command : object.commands) {
      if (command.state == CmdState::ACTIVE && !command.waits) {
        text += fmt::format("\n  {} is busy in {} {} (line {}) since cycle {}", object.name,
                            observe::commandText(m_record, command.object, command.number), command.name, command.line,
                            command.active);
      }
    }
  }
  if (const std::string waits = observe::explain(m_record, observe::makeWaitGraph(m_record)); !waits.empty()) {
    text += "\n" + waits;
  }
  return text.empty() ? "" : ":" + text;
}

Progress Player::progress(std::uint64_t cycle) const {
  Progress result;
  result.time = observe::cycleStart(m_record, cycle);
  for (const Feed& feed : m_feeds) {
    result.issued += feed.next;
    result.total += feed.program.calls.size();
    const auto& commands = m_record.objects.at(feed.program.object->index()).commands;
    result.ended += static_cast<std::size_t>(
        std::ranges::count_if(commands, [](const CmdRecord& command) { return command.ended != 0; }));
  }
  return result;
}

void Player::finish() {
  m_runtime.preparation().prepareAll();
  m_recorder.drain();
  m_record.cycles = m_runtime.cycle().ended();
  for (std::size_t i = 0; i < m_record.objects.size(); ++i) {
    m_record.objects[i].endPosition = m_runtime.objMgr().objects()[i]->pose();
  }
  judge(m_scenario, m_recorder.probes(), m_runtime.objMgr(), m_watch, m_record);
  m_triggers.report(m_record);
  noteDiagnoses();
  m_record.messages = m_session.takeMessages();
  m_runtime.cycle().setObserver(nullptr);
  m_runtime.stopCommands();
  m_runtime.preparation().setListener(nullptr);
  m_runtime.preparation().setWatch(nullptr);
  m_watch.close();
}

void Player::noteDiagnoses() {
  for (const auto& object : m_runtime.objMgr().objects()) {
    for (const Diagnosis& diagnosis : object->diaLog().all()) {
      m_record.diagnoses.push_back(
          {object->index(), diagnosis.mainCode, diagnosis.detailCode, diagnosis.source.line, diagnosis.text});
    }
  }
}

}  // namespace motion::host::run
