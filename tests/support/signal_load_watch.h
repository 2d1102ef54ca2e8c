// Looks at the counters of the signals during a load run: after each turn of an object, and all the time from outside.
#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <vector>

#include "host/motion/cycle.h"
#include "support/signal_load_book.h"

namespace motion::test {

/// What of a run is measured.
enum class Half : std::uint32_t { NONE, WITHOUT_CLIENTS, WITH_CLIENTS };

/// Takes the time that objects need in a cycle, and looks after each turn whether their jobs moved counters only as a set or
/// a reset may. Its own work is not part of the time.
class CycleWatch : public host::ICycleObserver {
 public:
  /// Keeps the times of at most so many cycles of each half. Throws std::bad_alloc.
  CycleWatch(SignalBook& book, const RawSignals& raw, std::size_t maxCycles);

  /// Only this object's jobs move the counters of these signals. Before the first cycle, in order of creation.
  void watch(std::vector<std::uint32_t> signals, bool isMeasured);
  void measure(Half half) noexcept { m_half.store(half, std::memory_order_relaxed); }

  void beforeObjects(std::uint64_t cycle) noexcept override;
  void afterObject(std::uint64_t cycle, const host::MotionObject& object) noexcept override;
  void afterObjects(std::uint64_t cycle) noexcept override;

  // Once no cycle runs any more.
  [[nodiscard]] const std::vector<std::uint32_t>& times(Half half) const noexcept;  ///< [ns] of each cycle
  [[nodiscard]] std::uint64_t changes() const noexcept { return m_changes; }
  /// Tells the first wrong step, and counts all.
  void report(Findings& findings) const;

 private:
  using Clock = std::chrono::steady_clock;
  struct Watched {
    std::vector<std::uint32_t> signals;
    bool isMeasured = false;
  };
  struct WrongStep {
    std::uint32_t id = 0;
    std::uint8_t from = 0;
    std::uint8_t to = 0;
    std::uint8_t out = 0;
  };

  void look(std::uint32_t id) noexcept;
  [[nodiscard]] bool mayBecome(std::uint32_t id, std::uint8_t from, std::uint8_t to) const noexcept;

  SignalBook& m_book;
  const RawSignals& m_raw;
  std::vector<Watched> m_objects;
  std::vector<std::uint32_t> m_withoutClients;
  std::vector<std::uint32_t> m_withClients;
  std::atomic<Half> m_half{Half::NONE};
  // As they were before the cycle.
  std::array<Announcement, kavo::SIGNAL_COUNT> m_announced{};
  std::array<std::uint8_t, kavo::SIGNAL_COUNT> m_out{};

  Clock::time_point m_mark{};
  Clock::duration m_ownTime{};
  std::uint64_t m_changes = 0;
  std::uint64_t m_wrongSteps = 0;
  WrongStep m_firstWrong;
};

/// Reads counters as fast as it can, on a thread of its own, and checks that each value is one that a write has made.
class RawReader {
 public:
  RawReader(const SignalBook& book, const RawSignals& raw, const host::Cycle& cycle, Findings& findings)
      : m_book(book), m_raw(raw), m_cycle(cycle), m_findings(findings) {}

  void run(const std::atomic<bool>& stop);

  // Once it has ended.
  [[nodiscard]] std::uint64_t outsideLooks() const noexcept { return m_outsideLooks; }  ///< that told something
  [[nodiscard]] std::uint64_t jobLooks() const noexcept { return m_jobLooks; }          ///< likewise

 private:
  static constexpr int LOOKS = 256;
  static constexpr std::uint64_t CYCLES_OF_A_TURN = 4;

  void lookAtOutside(std::uint32_t id);
  /// For a moment, or for so many cycles unless something changes before.
  void lookAtJobs(std::uint32_t id, std::uint64_t cycles, const std::atomic<bool>& stop);

  const SignalBook& m_book;
  const RawSignals& m_raw;
  const host::Cycle& m_cycle;
  Findings& m_findings;
  std::uint64_t m_outsideLooks = 0;
  std::uint64_t m_jobLooks = 0;
};

}  // namespace motion::test
