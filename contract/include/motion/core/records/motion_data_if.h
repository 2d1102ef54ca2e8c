// The record of data functions.
#pragma once

#include "motion/core/results.h"

namespace motion::core {

/// Published by the host. ObjectNotFound for an unknown name, NotSupportedByObject for what is no axis; `position` and
/// `velocity` are written only on success.
struct MotionDataIfT {
  void* context = nullptr;  ///< the host's own; handed back with every call
  /// Actual position of an axis [m]. [any]
  FctResult (*getAxisPosition)(void* context, const char* objName, double& position) = nullptr;
  /// Actual velocity of an axis [m/s]. [any]
  FctResult (*getAxisVelocity)(void* context, const char* objName, double& velocity) = nullptr;
};

}  // namespace motion::core
