// Names of the component's own groups of commands.
#include "motion/kavo/cmd_groups.h"

#include <gtest/gtest.h>

namespace motion::kavo {
namespace {

TEST(KavoCmdGroups, HaveTheirNames) {
  EXPECT_STREQ(GROUP_SEND_SIGNAL, "SendSignalGroup");
  EXPECT_STREQ(GROUP_SYNC_ON_SIGNAL, "SyncOnSignalGroup");
  EXPECT_STREQ(GROUP_JOIN_CMD, "JoinCmdGroup");
}

}  // namespace
}  // namespace motion::kavo
