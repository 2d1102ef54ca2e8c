// Values of the SwitchOnPath command function.
#pragma once

#include <cstdint>

namespace motion::kavo {

enum class SwitchOnPathMode : std::uint32_t { ENTER_SPHERE = 0 };
enum class SwitchOnPathAction : std::uint32_t { SET_SIGNAL = 0, RESET_SIGNAL = 1 };

}  // namespace motion::kavo
