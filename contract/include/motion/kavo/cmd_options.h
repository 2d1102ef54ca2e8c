// Names of the command options that this component offers.
#pragma once

namespace motion::kavo {

/// Sets a signal when an accompanied command starts.
inline constexpr const char* OPTION_SET_SIGNAL = "SetSignal";
/// Sets or resets a signal when the tool enters a sphere.
inline constexpr const char* OPTION_SWITCH_ON_PATH = "SwitchOnPath";

}  // namespace motion::kavo
