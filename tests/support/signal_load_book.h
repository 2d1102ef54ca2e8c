// What a load run knows of its signals: who may write which, which counters the writers are storing, and the counters as
// they are.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "comm/datalayer/i_data_layer_factory.h"
#include "host/motion/cycle.h"
#include "motion/kavo/signal_memory.h"

namespace motion::test {

/// Who writes a signal during a load run. Of the clients, each signal has only one.
enum class Writers {
  CLIENT,  ///< one client
  JOBS,    ///< the jobs of one object
  BOTH,    ///< one client and the jobs of one object, whenever they like
  TURNS,   ///< one client and the jobs of one object, each only after it has seen that the other one is done
};

inline constexpr std::uint32_t FIRST_OF_JOBS = 40;
inline constexpr std::uint32_t FIRST_OF_BOTH = 60;
inline constexpr std::uint32_t FIRST_OF_TURNS = 70;
inline constexpr std::uint32_t SIGNALS_PER_TURN = 3;
/// How many clients there are signals for.
inline constexpr std::uint32_t MAX_WRITERS = (kavo::SIGNAL_COUNT - FIRST_OF_TURNS) / SIGNALS_PER_TURN;

[[nodiscard]] constexpr Writers writersOf(std::uint32_t id) noexcept {
  return id < FIRST_OF_JOBS    ? Writers::CLIENT
         : id < FIRST_OF_BOTH  ? Writers::JOBS
         : id < FIRST_OF_TURNS ? Writers::BOTH
                               : Writers::TURNS;
}

/// The counter that sets a signal: one further, or two where one would meet the other side's counter.
[[nodiscard]] constexpr std::uint8_t counterThatSets(std::uint8_t own, std::uint8_t other) noexcept {
  const auto next = static_cast<std::uint8_t>(own + 1);
  return next != other ? next : static_cast<std::uint8_t>(next + 1);
}

/// The counters of all signals, read as any stranger may read them: through memories that it has opened for itself.
class RawSignals {
 public:
  /// Throws std::runtime_error when the memories are not there.
  explicit RawSignals(comm::datalayer::IDataLayerFactory& dataLayer);
  RawSignals(const RawSignals&) = delete;
  RawSignals& operator=(const RawSignals&) = delete;
  ~RawSignals();

  [[nodiscard]] std::uint8_t in(std::uint32_t id) const noexcept { return load(m_inBytes, id); }    ///< [any & real-time]
  [[nodiscard]] std::uint8_t out(std::uint32_t id) const noexcept { return load(m_outBytes, id); }  ///< [any & real-time]

 private:
  static std::uint8_t load(std::uint8_t* bytes, std::uint32_t id) noexcept {
    return std::atomic_ref<std::uint8_t>(bytes[id]).load(std::memory_order_acquire);
  }

  comm::datalayer::IDataLayerFactory& m_dataLayer;
  std::shared_ptr<comm::datalayer::IMemoryUser> m_in;
  std::shared_ptr<comm::datalayer::IMemoryUser> m_out;
  std::uint8_t* m_inBytes = nullptr;
  std::uint8_t* m_outBytes = nullptr;
};

/// A write of a client as it announces it: while it goes on, the counter is `before` or `after`.
struct Announcement {
  std::uint64_t sequence = 0;  ///< odd while a write goes on
  bool isOpen = false;         ///< `after` depends on what jobs do meanwhile
  std::uint8_t before = 0;
  std::uint8_t after = 0;

  [[nodiscard]] bool isWriting() const noexcept { return sequence % 2 != 0; }
  /// Writes that had at least begun.
  [[nodiscard]] std::uint64_t begun() const noexcept { return (sequence + 1) / 2; }
  /// Writes that had ended.
  [[nodiscard]] std::uint64_t ended() const noexcept { return sequence / 2; }
  bool operator==(const Announcement&) const = default;
};

/// A counter of the jobs after a turn of its object, and how often it had changed by then.
struct Noted {
  std::uint64_t changes = 0;
  std::uint8_t value = 0;
};

/// Thread-safe and lock-free; one client and the cyclic thread write each entry.
class SignalBook {
 public:
  void beginWrite(std::uint32_t id, std::uint8_t before, std::uint8_t after, bool isOpen) noexcept;
  void endWrite(std::uint32_t id, std::uint8_t after) noexcept;
  [[nodiscard]] Announcement announced(std::uint32_t id) const noexcept;
  /// The signal that a client has begun to write most recently.
  [[nodiscard]] std::uint32_t hot() const noexcept { return m_hot.load(std::memory_order_relaxed); }

  void note(std::uint32_t id, const Noted& noted) noexcept;
  [[nodiscard]] Noted noted(std::uint32_t id) const noexcept;

 private:
  std::array<std::atomic<std::uint64_t>, kavo::SIGNAL_COUNT> m_announced{};
  std::array<std::atomic<std::uint64_t>, kavo::SIGNAL_COUNT> m_noted{};
  std::atomic<std::uint32_t> m_hot{0};
};

/// The time between two cycles, from when it is made on: what jobs write stays as it is while it lasts.
class BetweenCycles {
 public:
  explicit BetweenCycles(const host::Cycle& cycle) noexcept
      : m_cycle(cycle), m_begun(cycle.begun()), m_isBetween(cycle.ended() == m_begun) {}

  /// At the beginning of each cycle, so that either the cycle sees what was written before, or that it has begun is seen.
  /// [any]
  static void meet() noexcept { s_meetings.fetch_add(1, std::memory_order_seq_cst); }

  /// No cycle has touched it so far.
  [[nodiscard]] bool lasts() const noexcept { return m_isBetween && cyclesSince() == 0; }
  /// Cycles that ran, at least in part, since then.
  [[nodiscard]] std::uint64_t cyclesTouched() const noexcept { return cyclesSince() + (m_isBetween ? 0 : 1); }

 private:
  [[nodiscard]] std::uint64_t cyclesSince() const noexcept {
    meet();
    return m_cycle.begun() - m_begun;
  }

  /// Of two that meet here, the later one sees all that the earlier one did before. A fence would do, but the thread
  /// sanitizer knows none.
  inline static std::atomic<std::uint64_t> s_meetings{0};

  const host::Cycle& m_cycle;
  std::uint64_t m_begun;
  bool m_isBetween;
};

/// What went wrong, counted, and the first few in words. Thread-safe.
class Findings {
 public:
  void lost(std::string text) { note(m_lost, "lost: " + std::move(text)); }           ///< a write had no effect
  void torn(std::string text) { note(m_torn, "torn: " + std::move(text)); }           ///< a value that no write made
  void refused(std::string text) { note(m_refused, "refused: " + std::move(text)); }  ///< an operation failed

  [[nodiscard]] std::uint64_t lostCount() const noexcept { return m_lost; }
  [[nodiscard]] std::uint64_t tornCount() const noexcept { return m_torn; }
  [[nodiscard]] std::uint64_t refusedCount() const noexcept { return m_refused; }
  [[nodiscard]] bool isFine() const noexcept { return m_lost + m_torn + m_refused == 0; }
  [[nodiscard]] std::vector<std::string> texts() const;

 private:
  static constexpr std::size_t TEXTS = 20;

  void note(std::atomic<std::uint64_t>& count, std::string text);

  std::atomic<std::uint64_t> m_lost{0};
  std::atomic<std::uint64_t> m_torn{0};
  std::atomic<std::uint64_t> m_refused{0};
  mutable std::mutex m_mutex;
  std::vector<std::string> m_texts;
};

}  // namespace motion::test
