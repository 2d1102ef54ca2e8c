// Pose of a kinematics.
#pragma once

#include "motion/core/named_type.h"

namespace motion::core {

/// Position [m] and orientation (rotation vector, [rad]) of the tool in the kinematics' base frame.
struct KinPoseT {
  double x = 0.0;
  double y = 0.0;
  double z = 0.0;
  double a = 0.0;
  double b = 0.0;
  double c = 0.0;
};

struct KinematicsPos;
/// Published by the host for a kinematics in section "GEOMETRY_TOOL_OFFSET", renewed in every cycle before "EXEC_FINAL".
using KinPose = NamedType<KinPoseT, KinematicsPos>;

}  // namespace motion::core
