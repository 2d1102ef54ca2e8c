// Types of motion objects.
#pragma once

#include <cstdint>

namespace motion::core {

/// What kind of motion object something is for; commands and options are registered per kind.
enum class ObjectType : std::uint32_t {
  UNDEFINED = 0,   ///< not said; nothing is registered for it
  AXIS = 1,        ///< moves in one direction
  KINEMATICS = 2,  ///< moves a tool in space
};

}  // namespace motion::core
