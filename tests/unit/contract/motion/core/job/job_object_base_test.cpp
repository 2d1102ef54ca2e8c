#include "motion/core/job/job_object_base.h"

#include <gtest/gtest.h>

#include <cstring>

namespace motion::core::job {
namespace {

class PlainJob : public JobObjectBase {
 public:
  IAmCreatable* createNew() const override { return new PlainJob; }
  const char* getID() const override { return "plain"; }
  JobResult addJobsToJoblist(IJobList*, JobListTypes) override { return JobResult::ListTypeNotServed; }
  std::string getJobString() const override { return "plain()"; }
};

TEST(JobObjectBase, LeavesMostOperationsWithoutEffect) {
  PlainJob sut;
  EXPECT_EQ(sut.getType(), static_cast<std::uint32_t>(CreatableType::JOB));
  EXPECT_EQ(sut.registerOutputs(nullptr), JobResult::NoEffect);
  EXPECT_EQ(sut.registerInputs(nullptr), JobResult::NoEffect);
  EXPECT_EQ(sut.setJobData(nullptr), JobResult::NoEffect);
  EXPECT_EQ(sut.checkParameter(nullptr, nullptr), JobResult::NoEffect);
  EXPECT_EQ(sut.getJobData(), nullptr);
  EXPECT_FALSE(sut.copyToInsertCmd());
  EXPECT_EQ(sut.copyOutputs(nullptr), JobResult::NoEffect);
}

TEST(JobObjectBase, KeepsTheMetaInformationOfItsOption) {
  PlainJob sut;
  EXPECT_EQ(sut.getCmdOptMetaInfo().optionID, 0U);
  sut.setCmdOptMetaInfo({17, 2});
  EXPECT_EQ(sut.getCmdOptMetaInfo().optionID, 17U);
  EXPECT_EQ(sut.getCmdOptMetaInfo().slot, 2U);
}

TEST(JobObjectBase, HasItsOperationsInTheirPlaces) {
  const auto slotOf = [](auto operation) {
    std::uintptr_t offset = 0;
    std::memcpy(&offset, &operation, sizeof(offset));
    return (offset - 1) / sizeof(void*);
  };
  EXPECT_EQ(slotOf(&JobObjectBase::createNew), 2U);
  EXPECT_EQ(slotOf(&JobObjectBase::getID), 3U);
  EXPECT_EQ(slotOf(&JobObjectBase::getType), 4U);
  EXPECT_EQ(slotOf(&JobObjectBase::addJobsToJoblist), 5U);
  EXPECT_EQ(slotOf(&JobObjectBase::registerOutputs), 6U);
  EXPECT_EQ(slotOf(&JobObjectBase::registerInputs), 7U);
  EXPECT_EQ(slotOf(&JobObjectBase::setJobData), 8U);
  EXPECT_EQ(slotOf(&JobObjectBase::checkParameter), 9U);
  EXPECT_EQ(slotOf(&JobObjectBase::getJobString), 10U);
  EXPECT_EQ(slotOf(&JobObjectBase::getJobData), 11U);
  EXPECT_EQ(slotOf(&JobObjectBase::copyToInsertCmd), 12U);
  EXPECT_EQ(slotOf(&JobObjectBase::copyOutputs), 13U);
  EXPECT_EQ(slotOf(&JobObjectBase::setCmdOptMetaInfo), 14U);
  EXPECT_EQ(slotOf(&JobObjectBase::getCmdOptMetaInfo), 15U);
}

}  // namespace
}  // namespace motion::core::job
