// The record through which a component gets its extension interface.
#pragma once

#include <cstdint>

#include "motion/core/component_version.h"
#include "motion/core/i_motion_ext.h"
#include "motion/core/results.h"

namespace motion::core {

/// Owned by the host; borrowed by the component between set and remove.
struct MotionExtensionIfT {
  void* context = nullptr;  ///< the host's own; handed back with every call
  /// Makes an extension interface for the component that `version` describes. On success `*ext` is set and the component
  /// owns it. [framework]
  FctResult (*createExtIfObj)(void* context, const ComponentVersionAdd* version, IMotionExt** ext) = nullptr;
  /// Version of this record, counted from 1. [any]
  std::uint32_t (*getInterfaceVersion)(void* context) = nullptr;
};

}  // namespace motion::core
