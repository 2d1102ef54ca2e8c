// The extension interface hands out the parts of its runtime.
#include "host/motion/motion_ext.h"

#include <gtest/gtest.h>

#include <memory>

#include "host/motion/runtime.h"

namespace motion::host {
namespace {

TEST(MotionExtTest, handsOutThePartsOfItsRuntime) {
  Runtime runtime{RuntimeConfig{}};
  const auto sut = std::make_unique<MotionExt>(runtime);
  EXPECT_EQ(sut->getObjMgr(), &runtime.objMgr());
  EXPECT_EQ(sut->getSectionMgr(), &runtime.sectionMgr());
  EXPECT_EQ(sut->getJobDataIDMgr(), &runtime.jobDataIDMgr());
  EXPECT_EQ(sut->getObjFactory(), &runtime.objFactory());
  EXPECT_EQ(sut->getGenericCmdFactory(), &runtime.cmdFactory());
  EXPECT_EQ(sut->getGenericCmdOptionFactory(), &runtime.cmdOptionFactory());
}

}  // namespace
}  // namespace motion::host
