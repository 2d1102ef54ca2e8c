// Types of motion objects.
#pragma once

#include <cstdint>

namespace motion::core {

enum class ObjectType : std::uint32_t { UNDEFINED = 0, AXIS = 1, KINEMATICS = 2 };

}  // namespace motion::core
