// Pose of a kinematics.
#pragma once

#include "motion/core/named_type.h"

namespace motion::core {

/// Position [m] and orientation (rotation vector, [rad]) of the tool in the kinematics' base frame.
struct KinPoseT {
  double x = 0.0;  ///< along the base's x axis [m]
  double y = 0.0;  ///< along the base's y axis [m]
  double z = 0.0;  ///< along the base's z axis [m]
  double a = 0.0;  ///< x component of the rotation vector [rad]
  double b = 0.0;  ///< y component of the rotation vector [rad]
  double c = 0.0;  ///< z component of the rotation vector [rad]
};

struct KinematicsPos;
/// Published by the host for a kinematics in section "GEOMETRY_TOOL_OFFSET", renewed in every cycle before "EXEC_FINAL".
using KinPose = NamedType<KinPoseT, KinematicsPos>;

}  // namespace motion::core
