// Publishing and reading of job data within a command and from its object.
#include "host/motion/job_data_handler.h"

#include <gtest/gtest.h>

#include "host/motion/section_mgr.h"

namespace motion::host {
namespace {

using core::job::JobResult;
using core::job::READ_ONE;

struct Speed___t;
using Speed = core::NamedType<double, Speed___t>;
struct Length___t;
using Length = core::NamedType<double, Length___t>;

constexpr core::SectionValue HERE = SectionMgr::CMD_DATA;
constexpr core::SectionValue THERE = SectionMgr::OBJ_DATA;

struct JobDataHandlerTest : testing::Test {
  static JobResult publish(JobDataHandler& handler, core::SectionValue section, Speed& data) {
    return handler.registerPublish(Speed::getMyID(), section, "test", &data);
  }
  static JobResult read(JobDataHandler& handler, core::DataID id, core::SectionValue section, core::IContainer*& out,
                        std::uint32_t mode = READ_ONE) {
    return handler.registerRead(id, section, mode, "test", out);
  }

  Speed data{3.5};
  Speed other{4.5};
  core::IContainer* out = nullptr;
  JobDataHandler parent;
  JobDataHandler sut{&parent};
};

TEST_F(JobDataHandlerTest, readsWhatWasPublished) {
  ASSERT_EQ(publish(sut, HERE, data), JobResult::NoEffect);
  EXPECT_EQ(read(sut, Speed::getMyID(), HERE, out), JobResult::NoEffect);
  EXPECT_EQ(out, &data);
}

TEST_F(JobDataHandlerTest, readsWhatTheObjectPublished) {
  ASSERT_EQ(publish(parent, THERE, data), JobResult::NoEffect);
  EXPECT_EQ(read(sut, Speed::getMyID(), THERE, out), JobResult::NoEffect);
  EXPECT_EQ(out, &data);
}

TEST_F(JobDataHandlerTest, theObjectDoesNotSeeWhatACommandPublished) {
  ASSERT_EQ(publish(sut, HERE, data), JobResult::NoEffect);
  EXPECT_EQ(read(parent, Speed::getMyID(), HERE, out), JobResult::DataNotPublished);
}

TEST_F(JobDataHandlerTest, findsNothingInAnotherSectionOrOfAnotherType) {
  ASSERT_EQ(publish(sut, HERE, data), JobResult::NoEffect);
  EXPECT_EQ(read(sut, Speed::getMyID(), THERE, out), JobResult::DataNotPublished);
  EXPECT_EQ(read(sut, Length::getMyID(), HERE, out), JobResult::DataNotPublished);
  EXPECT_EQ(out, nullptr) << "a failed read leaves the target alone";
}

TEST_F(JobDataHandlerTest, refusesUnknownSections) {
  EXPECT_EQ(publish(sut, core::section::INVALID, data), JobResult::UnknownSection);
  EXPECT_EQ(publish(sut, 7, data), JobResult::UnknownSection);
  EXPECT_EQ(read(sut, Speed::getMyID(), core::section::INVALID, out), JobResult::UnknownSection);
}

TEST_F(JobDataHandlerTest, refusesDataOfAnotherTypeThanPromisedAndNoData) {
  EXPECT_EQ(sut.registerPublish(Length::getMyID(), HERE, "test", &data), JobResult::InvalidJobData);
  EXPECT_EQ(sut.registerPublish(Speed::getMyID(), HERE, "test", nullptr), JobResult::InvalidJobData);
  EXPECT_EQ(read(sut, Speed::getMyID(), HERE, out), JobResult::DataNotPublished);
}

TEST_F(JobDataHandlerTest, refusesTheSameDataTwiceInOneSection) {
  ASSERT_EQ(publish(sut, HERE, data), JobResult::NoEffect);
  EXPECT_EQ(publish(sut, HERE, other), JobResult::DataAlreadyPublished);
  EXPECT_EQ(publish(sut, THERE, other), JobResult::NoEffect) << "another section is another place";
  ASSERT_EQ(read(sut, Speed::getMyID(), HERE, out), JobResult::NoEffect);
  EXPECT_EQ(out, &data);
}

TEST_F(JobDataHandlerTest, aCommandCannotHideDataOfItsObject) {
  ASSERT_EQ(publish(parent, THERE, data), JobResult::NoEffect);
  EXPECT_EQ(publish(sut, THERE, other), JobResult::DataAlreadyPublished);
}

TEST_F(JobDataHandlerTest, readsOneElementOnly) {
  ASSERT_EQ(publish(sut, HERE, data), JobResult::NoEffect);
  EXPECT_EQ(read(sut, Speed::getMyID(), HERE, out, 0), JobResult::InvalidJobData);
  EXPECT_EQ(read(sut, Speed::getMyID(), HERE, out, 2), JobResult::InvalidJobData);
  EXPECT_EQ(out, nullptr);
}

}  // namespace
}  // namespace motion::host
