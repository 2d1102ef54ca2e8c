// What the host asks of its own commands that move a kinematics.
#pragma once

#include "host/motion/setpoint.h"

namespace motion::host {

/// A command whose path is known before it runs, so that the path of the command behind it can begin at its end.
class IPathCmd {
 public:
  virtual ~IPathCmd() = default;
  /// Where its path ends; only of a command that has been validated. [prepare]
  [[nodiscard]] virtual const Point& plannedEnd() const noexcept = 0;

 protected:
  IPathCmd() = default;
  IPathCmd(const IPathCmd&) = default;
  IPathCmd& operator=(const IPathCmd&) = default;
};

}  // namespace motion::host
