// Groups of commands that the host defines. An option names the groups of commands that it may accompany.
#pragma once

namespace motion::core::cmd::axs {
inline constexpr const char* GROUP_ALL_COMMANDS = "AllAxsCommandsGroup";
inline constexpr const char* GROUP_NON_MOTION_COMMANDS = "AxsNonMotionCommandsGroup";
inline constexpr const char* GROUP_MOTION_COMMANDS = "AxsMotionCommandsGroup";
}  // namespace motion::core::cmd::axs

namespace motion::core::cmd::kin {
inline constexpr const char* GROUP_ALL_COMMANDS = "AllKinCommandsGroup";
inline constexpr const char* GROUP_MOTION_PCS_COMMANDS = "KinMotionPCSCommandsGroup";
inline constexpr const char* GROUP_MOTION_COORDS_COMMANDS = "KinMotionCoordsCommandsGroup";
inline constexpr const char* GROUP_MOTION_COORDS_ASYNC_COMMANDS = "KinMotionCoordsAsyncCommandsGroup";
inline constexpr const char* GROUP_MOTION_JOG_COMMANDS = "KinMotionJogCommandsGroup";
inline constexpr const char* GROUP_NON_MOTION_COMMANDS = "KinNonMotionCommandsGroup";
inline constexpr const char* GROUP_MOTION_COMMANDS = "KinMotionCommandsGroup";
inline constexpr const char* GROUP_MCS_COMMANDS = "AllKinMCSCommandsGroup";
}  // namespace motion::core::cmd::kin
