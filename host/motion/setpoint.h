// What a built-in axis command tells its axis.
#pragma once

#include "motion/core/named_type.h"

namespace motion::host {

struct AxisSetpointT {
  double position = 0.0;  ///< [m]
  double velocity = 0.0;  ///< [m/s]
};

struct AxisSetpoint___t;
/// Published by an axis in section "OBJ_DATA", written by the job of the current command.
using AxisSetpoint = core::NamedType<AxisSetpointT, AxisSetpoint___t>;

}  // namespace motion::host
