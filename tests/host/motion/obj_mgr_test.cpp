// Motion objects by name, address and order.
#include "host/motion/obj_mgr.h"

#include <gtest/gtest.h>

namespace motion::host {
namespace {

using core::ObjectType;

struct ObjMgrTest : testing::Test {
  MotionObject* add(const std::string& name, ObjectType type = ObjectType::AXIS) {
    ObjectConfig config;
    config.name = name;
    config.type = type;
    return sut.add(config, retired);
  }

  RetiredCmds retired;
  ObjMgr sut;
};

TEST_F(ObjMgrTest, findsObjectsByName) {
  MotionObject* const x = add("X");
  MotionObject* const robot = add("Robot", ObjectType::KINEMATICS);
  EXPECT_EQ(sut.findObj("X", 0), x);
  EXPECT_EQ(sut.findObj("Robot", 0), robot);
  EXPECT_EQ(sut.find("Robot"), robot);
  EXPECT_TRUE(robot->isKinematics());
  EXPECT_EQ(sut.findObj("Y", 0), nullptr);
  EXPECT_EQ(sut.findObj("", 0), nullptr);
  EXPECT_EQ(sut.findObj(nullptr, 0), nullptr);
}

TEST_F(ObjMgrTest, givesNamesOfItsOwnObjects) {
  MotionObject* const x = add("X");
  EXPECT_STREQ(sut.getObjName(x), "X");
  EXPECT_EQ(sut.getObjName(nullptr), nullptr);
  ObjectConfig config;
  config.name = "X";
  const MotionObject stranger(config, retired);
  EXPECT_EQ(sut.getObjName(&stranger), nullptr);
}

TEST_F(ObjMgrTest, refusesATakenName) {
  MotionObject* const first = add("X");
  EXPECT_EQ(add("X", ObjectType::KINEMATICS), nullptr);
  EXPECT_EQ(sut.getObjCount(), 1U);
  EXPECT_EQ(sut.find("X"), first);
}

TEST_F(ObjMgrTest, numbersObjectsInOrderOfCreation) {
  EXPECT_EQ(sut.getObjCount(), 0U);
  for (const char* name : {"Z", "A", "M"}) {
    add(name);
  }
  ASSERT_EQ(sut.getObjCount(), 3U);
  EXPECT_EQ(sut.objects()[0]->name(), "Z");
  EXPECT_EQ(sut.objects()[1]->name(), "A");
  EXPECT_EQ(sut.objects()[2]->name(), "M");
  for (std::uint32_t i = 0; i < 3; ++i) {
    EXPECT_EQ(sut.objects()[i]->index(), i);
  }
}

}  // namespace
}  // namespace motion::host
