// Five objects of a long run that work together, and what they are told to do.
#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "host/motion/runtime.h"
#include "support/soak.h"

namespace motion::test {

/// Where errors go: counted, the first few in words.
class SoakErrors {
 public:
  void add(const std::string& text);
  [[nodiscard]] std::uint64_t count() const noexcept { return m_count; }
  [[nodiscard]] const std::vector<std::string>& texts() const noexcept { return m_texts; }

 private:
  static constexpr std::size_t KEPT = 20;
  std::uint64_t m_count = 0;
  std::vector<std::string> m_texts;
};

/// Makes its programs from one sequence of steps, so that they never lock one another out: whoever takes the steps in their
/// order never waits for a later one. Now and then one object is aborted; then the cell is aborted as a whole and begins
/// anew, as an operator would do it. For one thread.
class SoakCell {
 public:
  using Clock = std::chrono::steady_clock;

  static constexpr std::uint32_t OBJECTS = 5;
  static constexpr std::uint32_t SIGNALS = 6;

  /// Adds its objects. Before the first cycle.
  SoakCell(host::Runtime& runtime, std::uint32_t number, std::uint32_t seed, SoakReport& report, SoakErrors& errors);

  /// Gives the objects what their buffers take; from time to time aborts.
  void feed(Clock::time_point now);
  /// Nothing shall accompany the moves of the cell any more: conditions that have not fired would go with the next one, too.
  void endOptions();
  /// Goes on with a step or an abort that was begun, and begins nothing.
  void settle(Clock::time_point now);
  /// Nothing is under way.
  [[nodiscard]] bool isIdle() const noexcept { return m_underWay.empty() && m_waiting.empty() && m_state == State::WORKING; }
  /// Is the command one of this cell's? Then its end is noted.
  bool take(const host::Event& event);
  void checkProgress(Clock::time_point now);
  [[nodiscard]] bool knows(std::uint64_t cmdId) const { return m_underWay.contains(cmdId); }

 private:
  enum class State { WORKING, ONE_ABORTED, ALL_ABORTED };
  enum class Kind { DWELL, MOVE, SET, WAIT, JOIN };

  /// Members of one join; the first that ends says when.
  struct Meeting {
    std::size_t open = 0;
    std::uint64_t endedIn = 0;
    bool isBroken = false;
  };
  struct Command {
    std::uint32_t object = 0;
    Kind kind = Kind::DWELL;
    std::string name;
    comm::datalayer::Variant parameters;
    std::vector<host::EncodedOption> options;
    std::uint32_t signal = 0;
    std::shared_ptr<Meeting> meeting;
  };
  struct UnderWay {
    Kind kind = Kind::DWELL;
    std::uint32_t signal = 0;
    std::shared_ptr<Meeting> meeting;
  };

  [[nodiscard]] std::uint32_t below(std::uint32_t end);
  void addStep();
  void addDwell(std::uint32_t object);
  void addMove(std::uint32_t object, bool hasCondition);
  void addHandOver();
  void addJoin();
  void issueWaiting();
  /// False when there is no room at present.
  [[nodiscard]] bool issue(const Command& command);
  void noteDone(const UnderWay& command, std::uint64_t cycle);
  void noteEnd(std::uint64_t cmdId, bool isDone, std::uint64_t cycle);
  void abortOne(Clock::time_point now);
  void abortAll();
  void beginAnew(Clock::time_point now);

  host::Runtime& m_runtime;
  SoakReport& m_report;
  SoakErrors& m_errors;
  std::mt19937 m_random;
  std::uint32_t m_firstSignal;
  std::vector<host::MotionObject*> m_objects;
  std::vector<std::string> m_names;
  std::vector<bool> m_isSignalFree;
  std::deque<Command> m_waiting;
  std::map<std::uint64_t, UnderWay> m_underWay;
  State m_state = State::WORKING;
  Clock::time_point m_nextAbort;
  Clock::time_point m_lastProgress;
};

}  // namespace motion::test
