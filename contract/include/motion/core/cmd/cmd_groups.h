// Groups of commands that the host defines. An option names the groups of commands that it may accompany.
#pragma once

/// Names of the groups of axis commands.
namespace motion::core::cmd::axs {
/// Every axis command; no command has to name it.
inline constexpr const char* GROUP_ALL_COMMANDS = "AllAxsCommandsGroup";
/// Axis commands in which the axis stands still.
inline constexpr const char* GROUP_NON_MOTION_COMMANDS = "AxsNonMotionCommandsGroup";
/// Axis commands that move the axis.
inline constexpr const char* GROUP_MOTION_COMMANDS = "AxsMotionCommandsGroup";
}  // namespace motion::core::cmd::axs

/// Names of the groups of kinematics commands.
namespace motion::core::cmd::kin {
/// Every kinematics command; no command has to name it.
inline constexpr const char* GROUP_ALL_COMMANDS = "AllKinCommandsGroup";
/// Moves whose target is given in product coordinates.
inline constexpr const char* GROUP_MOTION_PCS_COMMANDS = "KinMotionPCSCommandsGroup";
/// Moves along a path to a target in coordinates.
inline constexpr const char* GROUP_MOTION_COORDS_COMMANDS = "KinMotionCoordsCommandsGroup";
/// Moves to a target in coordinates in which the axes are not bound to a common path.
inline constexpr const char* GROUP_MOTION_COORDS_ASYNC_COMMANDS = "KinMotionCoordsAsyncCommandsGroup";
/// Moves that last as long as somebody asks for them.
inline constexpr const char* GROUP_MOTION_JOG_COMMANDS = "KinMotionJogCommandsGroup";
/// Kinematics commands in which the tool stands still.
inline constexpr const char* GROUP_NON_MOTION_COMMANDS = "KinNonMotionCommandsGroup";
/// Kinematics commands that move the tool; the only ones with a path to switch on.
inline constexpr const char* GROUP_MOTION_COMMANDS = "KinMotionCommandsGroup";
/// Kinematics commands whose positions are given in machine coordinates.
inline constexpr const char* GROUP_MCS_COMMANDS = "AllKinMCSCommandsGroup";
}  // namespace motion::core::cmd::kin
