// What others may see of a real-time run while it goes on: the player tells it, threads of the door ask.
#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "host/observe/run_record.h"
#include "motion/kavo/signal_memory.h"

namespace motion::host::door {

/// What does not change during a run.
struct RunFacts {
  std::string file;
  double cycleTime = 0.001;              ///< [s]
  std::vector<std::string> signalNames;  ///< by number; empty = unnamed, missing ones too
};

struct SignalChange {
  std::uint64_t number = 0;  ///< of all changes of the run, from 1
  std::uint64_t cycle = 0;
  std::uint32_t signal = 0;
  bool value = false;
  std::string by;  ///< "Feeder#2", "outside"
};

struct Changes {
  std::vector<SignalChange> changes;  ///< in order
  std::uint64_t lost = 0;             ///< older ones that were not kept
  bool isOver = false;                ///< nothing comes after these
};

/// The signals after a certain change.
struct SignalValues {
  std::uint64_t number = 0;  ///< of the last change, 0 = none yet
  std::uint64_t cycle = 0;
  std::array<bool, kavo::SIGNAL_COUNT> values{};
};

struct Explanation {
  std::uint64_t cycle = 0;
  std::string waits;  ///< as JSON
  std::string text;   ///< the same for people; empty when nobody waits
};

/// | operation | who | waits |
/// |---|---|---|
/// | begin, end | player | never |
/// | look | player | for a short lock, and only if something changed or somebody asked |
/// | cycle, facts | any | never |
/// | values | any | for a short lock |
/// | changesAfter, explain | any | for the player, up to the limit given |
class LiveRun {
 public:
  /// Before anybody asks.
  void begin(RunFacts facts) { m_facts = std::move(facts); }
  /// Takes over what is new in the record, and answers who asked for an explanation.
  void look(const observe::RunRecord& record, std::uint64_t cycle);
  /// From now on nobody waits for anything.
  void end() noexcept;

  [[nodiscard]] const RunFacts& facts() const noexcept { return m_facts; }
  [[nodiscard]] std::uint64_t cycle() const noexcept { return m_cycle.load(std::memory_order_relaxed); }
  [[nodiscard]] bool isOver() const noexcept { return m_isOver.load(std::memory_order_acquire); }
  [[nodiscard]] SignalValues values() const;
  /// The changes after that number; waits for the first of them.
  [[nodiscard]] Changes changesAfter(std::uint64_t number, std::chrono::milliseconds limit) const;
  /// Who waits for whom, at a moment after the call; nothing when the run ends or is not heard of in time.
  [[nodiscard]] std::optional<Explanation> explain(std::chrono::milliseconds limit) const;

 private:
  void takeChanges(const observe::RunRecord& record);
  void answer(const observe::RunRecord& record, std::uint64_t cycle);

  RunFacts m_facts;
  std::atomic<std::uint64_t> m_cycle{0};
  std::atomic<bool> m_isOver{false};
  std::size_t m_taken = 0;  ///< changes of the record that were taken over; the player's own

  mutable std::mutex m_mutex;
  mutable std::condition_variable m_news;
  std::deque<SignalChange> m_kept;
  SignalValues m_values;
  mutable std::atomic<std::uint64_t> m_asked{0};  ///< number of the last question; written under the lock
  std::uint64_t m_answered = 0;                   ///< up to here
  Explanation m_explanation;
};

}  // namespace motion::host::door
