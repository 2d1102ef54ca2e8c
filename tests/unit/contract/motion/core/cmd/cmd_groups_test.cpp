// Names of the host's groups of commands: hosts and components that were built apart compare them as texts.
#include "motion/core/cmd/cmd_groups.h"

#include <gtest/gtest.h>

namespace motion::core::cmd {
namespace {

TEST(CmdGroups, OfAxesHaveTheirNames) {
  EXPECT_STREQ(axs::GROUP_ALL_COMMANDS, "AllAxsCommandsGroup");
  EXPECT_STREQ(axs::GROUP_NON_MOTION_COMMANDS, "AxsNonMotionCommandsGroup");
  EXPECT_STREQ(axs::GROUP_MOTION_COMMANDS, "AxsMotionCommandsGroup");
}

TEST(CmdGroups, OfKinematicsHaveTheirNames) {
  EXPECT_STREQ(kin::GROUP_ALL_COMMANDS, "AllKinCommandsGroup");
  EXPECT_STREQ(kin::GROUP_MOTION_PCS_COMMANDS, "KinMotionPCSCommandsGroup");
  EXPECT_STREQ(kin::GROUP_MOTION_COORDS_COMMANDS, "KinMotionCoordsCommandsGroup");
  EXPECT_STREQ(kin::GROUP_MOTION_COORDS_ASYNC_COMMANDS, "KinMotionCoordsAsyncCommandsGroup");
  EXPECT_STREQ(kin::GROUP_MOTION_JOG_COMMANDS, "KinMotionJogCommandsGroup");
  EXPECT_STREQ(kin::GROUP_NON_MOTION_COMMANDS, "KinNonMotionCommandsGroup");
  EXPECT_STREQ(kin::GROUP_MOTION_COMMANDS, "KinMotionCommandsGroup");
  EXPECT_STREQ(kin::GROUP_MCS_COMMANDS, "AllKinMCSCommandsGroup");
}

}  // namespace
}  // namespace motion::core::cmd
