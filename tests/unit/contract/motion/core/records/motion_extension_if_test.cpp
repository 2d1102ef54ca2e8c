// The record that makes extension interfaces: hosts fill its fields by their places.
#include "motion/core/records/motion_extension_if.h"

#include <gtest/gtest.h>

#include <cstddef>

namespace motion::core {
namespace {

TEST(MotionExtensionIf, HasItsFieldsInOrder) {
  EXPECT_EQ(offsetof(MotionExtensionIfT, context), 0U);
  EXPECT_EQ(offsetof(MotionExtensionIfT, createExtIfObj), sizeof(void*));
}

TEST(MotionExtensionIf, IsEmptyAtFirst) {
  const MotionExtensionIfT sut;
  EXPECT_EQ(sut.context, nullptr);
  EXPECT_EQ(sut.createExtIfObj, nullptr);
}

}  // namespace
}  // namespace motion::core
