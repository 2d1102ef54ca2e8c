// Groups of commands: a command names its own family first, then the host's group for its kind.
#pragma once

#include "motion/core/cmd/cmd_groups.h"
#include "motion/core/object_type.h"
#include "motion/kavo/cmd_groups.h"

namespace motion::kavo::cmd {

/// The host's group of commands that do not move an object of that type.
[[nodiscard]] constexpr const char* nonMotionGroup(core::ObjectType objectType) noexcept {
  return objectType == core::ObjectType::AXIS ? core::cmd::axs::GROUP_NON_MOTION_COMMANDS
                                              : core::cmd::kin::GROUP_NON_MOTION_COMMANDS;
}

}  // namespace motion::kavo::cmd
