// Identity of a command or a command option.
#pragma once

#include <compare>
#include <string>

#include "motion/core/object_type.h"

namespace motion::core::cmd {

/// Key of a registration: one name may stand for a command of axes and another one of kinematics. Ordered by type, then
/// name.
struct CmdId {
  ObjectType objectType = ObjectType::UNDEFINED;  ///< what kind of object the command is for
  std::string name;                               ///< as users write it; upper and lower case count

  friend auto operator<=>(const CmdId&, const CmdId&) = default;
};

}  // namespace motion::core::cmd
