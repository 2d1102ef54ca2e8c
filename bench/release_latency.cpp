// How fast a wait is released in real time: a signal is set from outside strictly between two cycles; in which cycle does
// the wait end, and in which does the next move begin?
#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

#include "host/motion/builtin/builtin_cmds.h"
#include "host/motion/pacer.h"
#include "host/run/session.h"

namespace {

using motion::core::FctResult;
using motion::host::Event;
using motion::host::EventKind;

constexpr unsigned int SIGNAL = 7;
constexpr std::size_t RELEASES = 200;
constexpr std::size_t ATTEMPTS = 2'000;
constexpr const char* AXIS = "Axis";
constexpr std::chrono::microseconds LOOK_AGAIN{50};

/// Counted from the cycle that is next when the signal is set: 0 is that cycle itself.
struct Release {
  std::int64_t waitEnds = 0;
  std::int64_t moveBegins = 0;
};

class Measurement {
 public:
  explicit Measurement(double cycleTime)
      : m_session(
            {KAVO_BENCH_BUNDLE_DIR, {cycleTime, 8}, motion::host::framework::ComponentLifecycle::DEFAULT_TIME_LIMIT, false}),
        m_pacer(cycleTime) {}

  /// False, after a message, when the host could not be started or refused something.
  [[nodiscard]] bool run() {
    std::string problem;
    if (!m_session.open(problem)) {
      fmt::print(stderr, "kavo_release_latency: {}\n", problem);
      return false;
    }
    m_axis = runtime().addObject(AXIS, motion::core::ObjectType::AXIS, {});
    m_axis->setEvents(&m_events);
    runtime().startThreads(m_pacer, [](const std::string& warning) {
      if (!warning.empty()) {
        fmt::print("  warning: {}\n", warning);
      }
    });
    bool isFine = true;
    for (std::size_t attempt = 0; isFine && attempt < ATTEMPTS && m_releases.size() < RELEASES; ++attempt) {
      isFine = release(attempt);
    }
    runtime().stopThreads();
    if (!isFine) {
      fmt::print(stderr, "kavo_release_latency: a command or signal was refused\n");
    }
    return isFine;
  }

  void print(double cycleTime) const {
    const motion::host::Punctuality punctuality = m_pacer.punctuality();
    fmt::print("  cycle {:>6.0f} us, {} releases, {} settings that met a cycle left out\n", cycleTime * 1e6,
               m_releases.size(), m_leftOut);
    printRow("wait ends in cycle k +", &Release::waitEnds, 0);
    printRow("move begins in cycle k +", &Release::moveBegins, 1);
    fmt::print("    {} of {} cycles late, latest wake-up {:.0f} us\n", punctuality.overruns, punctuality.cycles,
               static_cast<double>(punctuality.latestWakeUp) / 1e3);
  }

  [[nodiscard]] bool isComplete() const noexcept { return m_releases.size() == RELEASES; }

 private:
  [[nodiscard]] motion::host::Runtime& runtime() noexcept { return m_session.runtime(); }

  /// One wait and one move behind it.
  [[nodiscard]] bool release(std::size_t attempt) {
    const motion::core::MotionSysIf2T& sys = runtime().records().sys2;
    unsigned long waitID = 0;
    unsigned long moveID = 0;
    const double distance = attempt % 2 == 0 ? 0.02 : -0.02;  // [mm]
    const motion::host::builtin::AxisMovePars move(motion::host::builtin::AxisMoveParsT{distance, 100.0, 10'000.0});
    if (runtime().records().cmd2.general->waitForSignalCmd(&runtime(), {}, AXIS, SIGNAL, true, waitID) != FctResult::Okay ||
        runtime().addCmd({}, AXIS, "MoveRel", move, 1, &moveID) != FctResult::Okay) {
      return false;
    }
    while (m_axis->getCurrentCmdID() != waitID || m_axis->getLatestPreparedCmdID() != moveID) {
      std::this_thread::sleep_for(LOOK_AGAIN);
    }
    std::this_thread::sleep_for(std::chrono::microseconds(attempt * 37 % 500));  // at every phase of a cycle
    const motion::host::Cycle& cycle = runtime().cycle();
    const std::uint64_t begun = cycle.begun();
    const std::uint64_t ended = cycle.ended();
    if (sys.sync->setSignal(sys.context, SIGNAL) != FctResult::Okay) {
      return false;
    }
    const bool isBetween = begun == ended && cycle.begun() == begun && cycle.ended() == begun;
    note(isBetween, begun + 1, waitID, moveID);
    return true;
  }

  /// Waits for the end of the move.
  void note(bool isBetween, std::uint64_t nextCycle, std::uint64_t waitID, std::uint64_t moveID) {
    Release release;
    for (bool isOver = false; !isOver;) {
      Event event;
      while (m_events.read(event)) {
        const auto cycles = static_cast<std::int64_t>(event.cycle) - static_cast<std::int64_t>(nextCycle);
        if (event.cmdID == waitID && event.kind == EventKind::CMD_DONE) {
          release.waitEnds = cycles;
        } else if (event.cmdID == moveID && event.kind == EventKind::MOTION_BEGAN) {
          release.moveBegins = cycles;
        }
        isOver = isOver || (event.cmdID == moveID && event.kind == EventKind::CMD_DONE);
      }
      std::this_thread::sleep_for(LOOK_AGAIN);
    }
    if (isBetween) {
      m_releases.push_back(release);
    } else {
      ++m_leftOut;
    }
  }

  void printRow(const char* what, std::int64_t Release::*value, std::int64_t expected) const {
    std::vector<std::int64_t> values;
    for (const Release& release : m_releases) {
      values.push_back(release.*value);
    }
    std::ranges::sort(values);
    if (!values.empty()) {
      fmt::print("    {:<26} min {}  median {}  max {}   (expected {})\n", what, values.front(), values[values.size() / 2],
                 values.back(), expected);
    }
  }

  motion::host::EventRing m_events{1U << 10U};  // before the session, which uses it until it is closed
  motion::host::run::Session m_session;
  motion::host::RealTimePacer m_pacer;
  motion::host::MotionObject* m_axis = nullptr;
  std::vector<Release> m_releases;
  std::size_t m_leftOut = 0;
};

}  // namespace

int main() {
  fmt::print("\n  signal set from outside before cycle k\n");
  for (const double cycleTime : {0.001, 0.00025}) {
    Measurement measurement(cycleTime);
    if (!measurement.run()) {
      return 3;
    }
    measurement.print(cycleTime);
    if (!measurement.isComplete()) {
      return 1;
    }
  }
  return 0;
}
