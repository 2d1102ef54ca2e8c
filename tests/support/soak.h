// A long real-time run: cells of objects that are given random valid programs for ever, clients at the signals, and aborts.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace motion::test {

struct SoakConfig {
  std::filesystem::path bundleDir;
  std::chrono::milliseconds duration{10'000};
  std::chrono::milliseconds warmUp{2'000};  ///< until the memory is looked at for the first time
  std::uint32_t cells = 10;                 ///< of five objects each; at most MAX_CELLS
  std::uint32_t clients = 3;
  std::chrono::microseconds cycle{1'000};
  std::uint32_t seed = 1;
};

/// Signals 0 to 59 belong to the cells, the others to the clients.
inline constexpr std::uint32_t MAX_CELLS = 10;

/// What the process holds while nothing is under way.
struct MemoryFigures {
  long blocks = 0;        ///< that C++ code has allocated
  std::size_t bytes = 0;  ///< that the allocator has given out, to whomever
};

struct SoakReport {
  std::uint64_t cycles = 0;
  std::uint64_t overruns = 0;
  std::uint64_t commandsDone = 0;
  std::uint64_t commandsAborted = 0;
  std::uint64_t joins = 0;    ///< of all members, in one cycle
  std::uint64_t signals = 0;  ///< handed from one object to another
  std::uint64_t moves = 0;
  std::uint64_t options = 0;  ///< that accompanied a move
  std::uint64_t aborts = 0;   ///< of one object, then of its cell
  std::uint64_t clientReads = 0;
  std::uint64_t clientWrites = 0;
  MemoryFigures atStart;
  MemoryFigures atEnd;
  std::uint64_t errors = 0;
  std::vector<std::string> findings;  ///< the first few errors
  std::string warning;                ///< about real-time scheduling

  /// As many blocks are held at the end as at the start. The list of open joins may end in a link to one that has died,
  /// which keeps its block until the next start; whether it does is chance, and it is never more than one.
  [[nodiscard]] bool isSteady() const noexcept {
    return atEnd.blocks - atStart.blocks <= 1 && atStart.blocks - atEnd.blocks <= 1;
  }
};

/// Throws std::runtime_error when the host cannot be started. Everything else that goes wrong is an error of the report: a
/// command refused, failed, or aborted by nobody; members of a join that end in different cycles; a cell that stands still;
/// a client refused or lied to; a warning or error of the component; an event lost.
[[nodiscard]] SoakReport runSoak(const SoakConfig& config);

}  // namespace motion::test
