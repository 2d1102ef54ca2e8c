// Sections by name and their order.
#include "host/motion/section_mgr.h"

#include <gtest/gtest.h>

namespace motion::host {
namespace {

core::SectionValue valueOf(SectionMgr& sut, const char* name) {
  const void* address = sut.getSection(name);
  return address != nullptr ? *static_cast<const core::SectionValue*>(address) : core::section::INVALID;
}

TEST(SectionMgrTest, valuesAscendInStageOrder) {
  SectionMgr sut;
  core::SectionValue expected = 0;
  for (const char* name :
       {"OBJ_DATA", "CMD_DATA", "PREEXEC_OPMODE", "PREEXEC", "EXEC_DYNAMICS", "GEOMETRY_TOOL_OFFSET", "EXEC_FINAL"}) {
    EXPECT_EQ(valueOf(sut, name), expected++) << name;
  }
}

TEST(SectionMgrTest, constantsAreTheValuesOfTheirSections) {
  SectionMgr sut;
  EXPECT_EQ(valueOf(sut, "OBJ_DATA"), SectionMgr::OBJ_DATA);
  EXPECT_EQ(valueOf(sut, "CMD_DATA"), SectionMgr::CMD_DATA);
  EXPECT_EQ(valueOf(sut, "EXEC_DYNAMICS"), SectionMgr::EXEC_DYNAMICS);
  EXPECT_EQ(valueOf(sut, "GEOMETRY_TOOL_OFFSET"), SectionMgr::GEOMETRY_TOOL_OFFSET);
  EXPECT_EQ(valueOf(sut, "EXEC_FINAL"), SectionMgr::EXEC_FINAL);
}

TEST(SectionMgrTest, hasNoAddressForAnUnknownName) {
  SectionMgr sut;
  EXPECT_EQ(sut.getSection("EXEC"), nullptr);
  EXPECT_EQ(sut.getSection("obj_data"), nullptr);
  EXPECT_EQ(sut.getSection(""), nullptr);
  EXPECT_EQ(sut.getSection(nullptr), nullptr);
}

TEST(SectionMgrTest, addressesStay) {
  SectionMgr sut;
  EXPECT_EQ(sut.getSection("PREEXEC"), sut.getSection("PREEXEC"));
}

TEST(SectionMgrTest, knowsItsOwnValuesOnly) {
  EXPECT_TRUE(SectionMgr::isKnown(0));
  EXPECT_TRUE(SectionMgr::isKnown(6));
  EXPECT_FALSE(SectionMgr::isKnown(7));
  EXPECT_FALSE(SectionMgr::isKnown(core::section::INVALID));
}

}  // namespace
}  // namespace motion::host
