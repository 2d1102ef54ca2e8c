// Where the paths of a kinematics begin that are planned before they run.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "host/motion/setpoint.h"

namespace motion::host {

/// A path begins where the one before it ends, or where the kinematics stands when none is pending. Commands that are only
/// tried out form a chain of their own, which begins there too. All operations belong to preparation and its lock. [prepare]
class PathPlan {
 public:
  /// For at most `pending` commands at a time. Throws std::bad_alloc. [framework]
  PathPlan(const Point& start, std::size_t pending) : m_start(start) { m_pending.reserve(pending); }

  /// Forgets the commands of which isPending(cmdID) is false.
  template <typename IS_PENDING>
  void dropEnded(const IS_PENDING& isPending) noexcept {
    std::erase_if(m_pending, [&](const Pending& cmd) { return !isPending(cmd.cmdID); });
  }
  /// Chooses where the next path begins; `actual` was read after the ended commands were dropped.
  void beginNext(const Point& actual) noexcept { m_start = m_pending.empty() ? actual : m_pending.back().end; }
  /// The same for a command that is only tried out.
  void beginTrial(const Point& actual) noexcept {
    beginNext(actual);
    m_start = m_trialEnd.value_or(m_start);
  }
  /// Where the path of the command begins that is being made.
  [[nodiscard]] const Point& start() const noexcept { return m_start; }

  void append(std::uint64_t cmdID, const Point& end) noexcept { m_pending.push_back({cmdID, end}); }
  void appendTrial(const Point& end) noexcept { m_trialEnd = end; }
  void forgetTrials() noexcept { m_trialEnd.reset(); }

 private:
  struct Pending {
    std::uint64_t cmdID;
    Point end;
  };

  Point m_start;
  std::vector<Pending> m_pending;  ///< in the order of their issue; never grows beyond what was reserved
  std::optional<Point> m_trialEnd;
};

}  // namespace motion::host
