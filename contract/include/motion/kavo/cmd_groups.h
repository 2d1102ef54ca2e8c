// Groups of commands that this component adds to those of the host.
#pragma once

namespace motion::kavo {

/// Commands that set or reset a signal and go on.
inline constexpr const char* GROUP_SEND_SIGNAL = "SendSignalGroup";
/// Commands that wait for a signal.
inline constexpr const char* GROUP_SYNC_ON_SIGNAL = "SyncOnSignalGroup";
/// Commands that wait for other objects.
inline constexpr const char* GROUP_JOIN_CMD = "JoinCmdGroup";

}  // namespace motion::kavo
