// Values of the SwitchOnPath command function.
#pragma once

#include <cstdint>

namespace motion::kavo {

/// What makes a condition fire.
enum class SwitchOnPathMode : std::uint32_t {
  ENTER_SPHERE = 0,  ///< the tool comes as near to the target as the radius says
};
/// What a condition does when it fires.
enum class SwitchOnPathAction : std::uint32_t {
  SET_SIGNAL = 0,    ///< the signal is set afterwards, whatever it was
  RESET_SIGNAL = 1,  ///< the signal is reset afterwards, whatever it was
};

}  // namespace motion::kavo
