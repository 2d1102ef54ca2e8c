// Where clients of the data layer find the signals.
#pragma once

namespace motion::kavo {

/// Folder of the signal nodes. Each is named by its number in two digits, "00" to "99", and holds a bool8: reading gives the
/// signal, writing true sets it and writing false resets it.
inline constexpr const char* SIGNALS_FOLDER_ADDRESS = "motion/state/functions/kavo/signals";

}  // namespace motion::kavo
