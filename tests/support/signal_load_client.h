// A client that sets, resets and reads random signals during a load run, and knows what each of them must be.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "host/datalayer/client.h"
#include "motion/core/records/motion_sys_if.h"
#include "support/signal_load_book.h"

namespace motion::test {

/// A way to the signals from outside the cycle. False when the operation failed.
class ISignalAccess {
 public:
  virtual ~ISignalAccess() = default;
  [[nodiscard]] virtual bool write(std::uint32_t id, bool value) = 0;
  [[nodiscard]] virtual bool read(std::uint32_t id, bool& value) = 0;
};

/// Through the nodes of the data layer.
class NodeAccess : public ISignalAccess {
 public:
  explicit NodeAccess(std::unique_ptr<host::datalayer::Client> client);

  [[nodiscard]] bool write(std::uint32_t id, bool value) override;
  [[nodiscard]] bool read(std::uint32_t id, bool& value) override;

 private:
  std::unique_ptr<host::datalayer::Client> m_client;
  std::vector<std::string> m_addresses;
};

/// Through the system functions, as other parts of a host do.
class FunctionAccess : public ISignalAccess {
 public:
  explicit FunctionAccess(const core::MotionSysIf2T& functions) : m_functions(functions) {}

  [[nodiscard]] bool write(std::uint32_t id, bool value) override;
  [[nodiscard]] bool read(std::uint32_t id, bool& value) override;

 private:
  const core::MotionSysIf2T& m_functions;
};

/// What a client has done.
struct ClientCounts {
  std::uint64_t reads = 0;
  std::uint64_t checkedReads = 0;  ///< of which it was known what they had to give
  std::uint64_t writes = 0;
  std::uint64_t checkedWrites = 0;  ///< of which the counter that they had to make was known exactly
  std::uint64_t turns = 0;          ///< complete exchanges with the jobs of an object

  ClientCounts& operator+=(const ClientCounts& other) noexcept;
};

class LoadClient {
 public:
  /// What all clients of a run share.
  struct World {
    SignalBook& book;
    const RawSignals& raw;
    const host::Cycle& cycle;
    Findings& findings;
    std::uint32_t writers = 1;  ///< how many clients share the signals
  };

  /// The client pauses as long as `pause` does after each round of operations.
  LoadClient(World world, std::uint32_t index, std::unique_ptr<ISignalAccess> access, std::function<void()> pause);

  void run(const std::atomic<bool>& stop);
  [[nodiscard]] std::uint64_t turns() const noexcept { return m_turns.load(std::memory_order_relaxed); }  ///< [any]
  [[nodiscard]] const ClientCounts& counts() const noexcept { return m_counts; }  ///< once it has ended

 private:
  enum class ReadBack { YES, NO };
  /// A counter before and after an operation.
  struct Move {
    std::uint8_t before = 0;
    std::uint8_t after = 0;
  };

  /// One signal of many, of those that this client writes.
  [[nodiscard]] std::uint32_t pickOwn(std::uint32_t first, std::uint32_t end);
  void round();
  void write(std::uint32_t id, bool value, ReadBack readBack = ReadBack::YES);
  void judge(std::uint32_t id, bool value, std::uint8_t before, std::uint8_t inBefore, const BetweenCycles& between);
  /// A write during which one cycle ran, so that its jobs may have met it.
  void judgeOverlapped(std::uint32_t id, bool value, Move out, Move in);
  void read(std::uint32_t id);
  void expect(std::uint32_t id, bool value, const char* why);
  void takeTurn();
  /// Sets one signal so often that its counter goes all the way round.
  void goRound();

  World m_world;
  std::uint32_t m_index;
  std::unique_ptr<ISignalAccess> m_access;
  std::function<void()> m_pause;
  std::mt19937 m_random;
  bool m_isJobDone = false;
  std::atomic<std::uint64_t> m_turns{0};
  ClientCounts m_counts;
};

}  // namespace motion::test
