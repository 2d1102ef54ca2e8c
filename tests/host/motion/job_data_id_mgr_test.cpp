// Names of job data, both ways.
#include "host/motion/job_data_id_mgr.h"

#include <gtest/gtest.h>

namespace motion::host {
namespace {

TEST(JobDataIDMgrTest, recordsBothDirections) {
  JobDataIDMgr sut;
  EXPECT_TRUE(sut.addID(7, "seven"));
  EXPECT_TRUE(sut.addID(8, "eight"));
  EXPECT_STREQ(sut.getName(7), "seven");
  EXPECT_STREQ(sut.getName(8), "eight");
  EXPECT_EQ(sut.getID("seven"), 7U);
  EXPECT_EQ(sut.getID("eight"), 8U);
}

TEST(JobDataIDMgrTest, keepsTheFirstNameOfAKnownID) {
  JobDataIDMgr sut;
  ASSERT_TRUE(sut.addID(7, "seven"));
  EXPECT_FALSE(sut.addID(7, "another"));
  EXPECT_STREQ(sut.getName(7), "seven");
  EXPECT_EQ(sut.getID("another"), 0U);
}

TEST(JobDataIDMgrTest, knowsNothingOfStrangers) {
  JobDataIDMgr sut;
  EXPECT_EQ(sut.getName(7), nullptr);
  EXPECT_EQ(sut.getID("seven"), 0U);
  EXPECT_EQ(sut.getID(nullptr), 0U);
  EXPECT_FALSE(sut.addID(7, nullptr));
  EXPECT_EQ(sut.getName(7), nullptr);
}

TEST(JobDataIDMgrTest, namesStayWhereTheyAre) {
  JobDataIDMgr sut;
  ASSERT_TRUE(sut.addID(1, "one"));
  const char* name = sut.getName(1);
  for (core::DataID id = 2; id < 200; ++id) {
    ASSERT_TRUE(sut.addID(id, "other"));
  }
  EXPECT_EQ(sut.getName(1), name);
}

}  // namespace
}  // namespace motion::host
