// What a built-in command tells its axis or kinematics.
#pragma once

#include <array>
#include <cmath>

#include "motion/core/named_type.h"

namespace motion::host {

/// A point in space, in the base frame of its kinematics [m].
using Point = std::array<double, 3>;

/// [m]; not a number when a coordinate is none (std::hypot of three is not so careful).
[[nodiscard]] inline double distance(const Point& a, const Point& b) noexcept {
  const double x = b[0] - a[0];
  const double y = b[1] - a[1];
  const double z = b[2] - a[2];
  return std::sqrt(x * x + y * y + z * z);
}

struct AxisSetpointT {
  double position = 0.0;  ///< [m]
  double velocity = 0.0;  ///< [m/s]
};

struct AxisSetpoint___t;
/// Published by an axis in section "OBJ_DATA", written by the job of the current command.
using AxisSetpoint = core::NamedType<AxisSetpointT, AxisSetpoint___t>;

struct KinSetpointT {
  Point position{};
  double velocity = 0.0;  ///< along the path [m/s]
};

struct KinSetpoint___t;
/// Published by a kinematics in section "OBJ_DATA", written by the job of the current command. From there the position goes
/// into the KinPose.
using KinSetpoint = core::NamedType<KinSetpointT, KinSetpoint___t>;

}  // namespace motion::host
