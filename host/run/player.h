// Plays a prepared scenario in a session: feeds the programs, lets things happen from outside, and writes down the run.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <vector>

#include "host/observe/recorder.h"
#include "host/observe/run_record.h"
#include "host/observe/trigger_watch.h"
#include "host/run/outside_writes.h"
#include "host/run/program.h"
#include "host/run/session.h"
#include "host/scenario/scenario.h"

namespace motion::host::run {

/// How far a run is, for the impatient.
struct Progress {
  double time = 0.0;  ///< [s] of the scenario
  std::size_t issued = 0;
  std::size_t ended = 0;
  std::size_t total = 0;
};

/// How a real-time run is watched. All calls come from the thread that plays.
struct Watch {
  std::function<void(const Progress&)> onProgress;  ///< now and then; may be empty
  /// Asked often; true means that somebody wants to know who waits for whom. May be empty.
  std::function<bool()> wantsExplanation;
  std::function<void(const std::string&)> onExplanation;
  /// Once, before the first cycle. A text that is not empty is a warning for the record. May be empty.
  std::function<std::string(Session& session, const scenario::Scenario& scenario)> onStart;
  /// Often, when the record has been brought up to date, with the cycle that has begun; also after the last cycle. May be
  /// empty.
  std::function<void(const observe::RunRecord& record, std::uint64_t cycle)> onLook;
  /// Once after onStart, whatever ends the run, while the session is still open. Must not throw. May be empty.
  std::function<void()> onEnd;
};

class Player {
 public:
  Player(Session& session, const scenario::Scenario& scenario, std::vector<ObjectCalls> programs);

  /// Prepares recording; false with a text when the component publishes no signals. Before play.
  [[nodiscard]] bool connect(std::string& problem);
  /// Plays in virtual time, as fast as the machine allows.
  void playVirtual();
  /// Plays in real time.
  void playReal(const Watch& watch);
  /// A run without any event for that many cycles is given up, if nobody is busy and nothing is to come from outside.
  /// Without it a quarter of a second in real time. Before play.
  void setStuckAfter(std::uint64_t cycles) noexcept { m_stuckAfter = cycles; }
  /// The run, after play.
  [[nodiscard]] const observe::RunRecord& record() const noexcept { return m_record; }

 private:
  struct Feed {
    ObjectCalls program;
    std::size_t next = 0;
  };

  /// What has to be done before the next cycle; false when the run is over.
  [[nodiscard]] bool pump(std::uint64_t nextCycle);
  void tell(const Watch& watch) const;
  void happenOutside(std::uint64_t nextCycle);
  void carryOut(const scenario::OutsideEvent& event);
  void actOutside(const scenario::OutsideEvent& event);
  void feedPrograms();
  [[nodiscard]] bool isProgramOver(const Feed& feed) const;
  [[nodiscard]] bool isOver(std::uint64_t nextCycle) const;
  [[nodiscard]] bool isStuck(std::uint64_t nextCycle) const;
  [[nodiscard]] std::string whoWaits() const;
  [[nodiscard]] Progress progress(std::uint64_t cycle) const;
  void finish();
  void noteDiagnoses();

  Session& m_session;
  const scenario::Scenario& m_scenario;
  Runtime& m_runtime;
  observe::RunRecord m_record;
  observe::SignalWatch m_watch;
  observe::Recorder m_recorder;
  observe::TriggerWatch m_triggers;
  OutsideWrites m_outsideWrites;
  std::vector<Feed> m_feeds;
  std::vector<scenario::OutsideEvent> m_outside;  ///< in order of time
  std::size_t m_nextOutside = 0;
  std::uint64_t m_lastNeededCycle = 0;  ///< the run goes on at least until then
  /// The cycle that had begun when something happened from outside for the last time. In real time the cycle that shows its
  /// effect comes later, however late the player itself was.
  std::uint64_t m_lastActCycle = 0;
  std::uint64_t m_quietCycles = 5;  ///< cycles without any event after which nothing can happen any more
  std::uint64_t m_stuckAfter = 0;   ///< the same as somebody asked for it, 0 = nobody did
};

}  // namespace motion::host::run
