// The joins of a run: which commands belong to one occurrence, who arrived when, and how long each waited for what.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/observe/run_record.h"

namespace motion::host::observe {

struct JoinMember {
  std::uint32_t object = 0;
  std::size_t number = 0;     ///< its command, 0 when its program has no such join
  std::uint64_t active = 0;   ///< cycle in which its command began, 0 = it did not come to that
  std::uint64_t arrived = 0;  ///< cycle in which it joined; later than `active` when it waited for its next command
  std::uint64_t ended = 0;
  bool done = false;
  bool aborted = false;  ///< or failed

  /// Cycles before it could join, and cycles that it waited for others from then on; the run's end counts for who still
  /// waits.
  [[nodiscard]] std::uint64_t forPreparation(std::uint64_t runEnd) const;
  [[nodiscard]] std::uint64_t forMembers(std::uint64_t runEnd) const;
};

/// The n-th joins that all members of a group have with one another.
struct JoinOccurrence {
  std::vector<std::uint32_t> group;
  std::size_t occurrence = 0;       ///< from 1, counted per group
  std::vector<JoinMember> members;  ///< in group order
  std::uint64_t completed = 0;      ///< cycle in which all ended, 0 = they did not

  /// The member that arrived last, null while somebody is missing.
  [[nodiscard]] const JoinMember* last() const;
};

/// In the order in which they were completed, then those that were not, in program order.
[[nodiscard]] std::vector<JoinOccurrence> findJoins(const RunRecord& record);

/// The same in words: a line per occurrence and one per member; empty without joins.
[[nodiscard]] std::string joinsText(const RunRecord& record);

}  // namespace motion::host::observe
