// A load run: clients on several threads set, reset and read random signals against a real-time run whose jobs do the same.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "support/signal_load_client.h"
#include "support/signal_load_watch.h"

namespace motion::test {

struct SignalLoadConfig {
  std::filesystem::path bundleDir;
  std::chrono::milliseconds duration{10'000};  ///< half of it without clients
  std::uint32_t clients = 4;                   ///< of the data layer; at most MAX_WRITERS - 1
  std::chrono::microseconds cycle{1'000};
};

/// What a cycle's objects need of its time, and how punctual it was.
struct CycleFigures {
  std::size_t cycles = 0;
  std::uint64_t overruns = 0;
  // [us]
  double min = 0.0;
  double median = 0.0;
  double percent99 = 0.0;
  double permille999 = 0.0;
  double max = 0.0;
};

struct SignalLoadReport {
  CycleFigures withoutClients;
  CycleFigures withClients;
  ClientCounts clients;
  std::uint64_t commandsDone = 0;
  std::uint64_t jobChanges = 0;    ///< of counters, each one looked at
  std::uint64_t outsideLooks = 0;  ///< at counters of clients, by a reader of the bare memory
  std::uint64_t jobLooks = 0;      ///< at counters of jobs, likewise
  std::uint64_t collisions = 0;    ///< sets that had to step over the counter of the other side
  std::uint64_t refused = 0;
  std::uint64_t lost = 0;
  std::uint64_t torn = 0;
  std::vector<std::string> findings;  ///< the first few
  std::string warning;                ///< about real-time scheduling

  [[nodiscard]] bool isFine() const noexcept { return refused + lost + torn == 0; }
};

/// Runs at least as long as configured, and until each client has taken a turn with jobs. Throws std::runtime_error when the
/// host cannot be started.
[[nodiscard]] SignalLoadReport runSignalLoad(const SignalLoadConfig& config);

}  // namespace motion::test
