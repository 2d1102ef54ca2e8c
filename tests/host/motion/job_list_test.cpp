// Order in which a list runs its jobs, and what their results make together.
#include "host/motion/job_list.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "host/motion/section_mgr.h"

namespace motion::host {
namespace {

using core::job::JobResult;
using testing::ElementsAre;
using testing::IsEmpty;

struct JobListTest : testing::Test {
  void add(const char* name, core::SectionValue section, JobResult result = JobResult::NoEffect) {
    const auto job = [this, name, result] {
      calls.emplace_back(name);
      return result;
    };
    EXPECT_EQ(sut.addJob(job, name, section), JobResult::NoEffect);
  }
  void addAll(std::initializer_list<JobResult> results) {
    for (const JobResult result : results) {
      add("job", SectionMgr::CMD_DATA, result);
    }
  }

  std::vector<std::string> calls;
  JobList sut;
};

TEST_F(JobListTest, runsStagesInOrderAndJobsOfAStageInTheOrderOfAdding) {
  SectionMgr sections;
  const auto value = [&sections](const char* name) { return *static_cast<core::SectionValue*>(sections.getSection(name)); };
  add("final 1", value("EXEC_FINAL"));
  add("geometry", value("GEOMETRY_TOOL_OFFSET"));
  add("preexec", value("PREEXEC"));
  add("object 1", value("OBJ_DATA"));
  add("final 2", value("EXEC_FINAL"));
  add("opmode", value("PREEXEC_OPMODE"));
  add("dynamics", value("EXEC_DYNAMICS"));
  add("command", value("CMD_DATA"));
  add("object 2", value("OBJ_DATA"));
  EXPECT_EQ(sut.run().result, JobResult::NoEffect);
  EXPECT_THAT(calls, ElementsAre("object 1", "object 2", "command", "opmode", "preexec", "dynamics", "geometry", "final 1",
                                 "final 2"));
  EXPECT_EQ(sut.size(), 9U);
}

TEST_F(JobListTest, refusesAnUnknownSection) {
  const auto job = [] { return JobResult::NoEffect; };
  EXPECT_EQ(sut.addJob(job, "job", 7), JobResult::UnknownSection);
  EXPECT_EQ(sut.addJob(job, "job", core::section::INVALID), JobResult::UnknownSection);
  EXPECT_EQ(sut.size(), 0U);
}

TEST_F(JobListTest, refusesAnEmptyJob) {
  EXPECT_EQ(sut.addJob({}, "job", SectionMgr::CMD_DATA), JobResult::InvalidObject);
  EXPECT_EQ(sut.size(), 0U);
}

TEST_F(JobListTest, givesAnAddressToPrefetchWhenItHasJobs) {
  EXPECT_EQ(sut.data(), nullptr);
  add("job", SectionMgr::CMD_DATA);
  EXPECT_NE(sut.data(), nullptr);
}

TEST_F(JobListTest, anEmptyListHasNoEffect) {
  EXPECT_EQ(sut.run().result, JobResult::NoEffect);
}

TEST_F(JobListTest, busyOutweighsNoEffect) {
  addAll({JobResult::NoEffect, JobResult::Busy, JobResult::NoEffect});
  EXPECT_EQ(sut.run().result, JobResult::Busy);
}

TEST_F(JobListTest, finishedOutweighsBusyOnBothSides) {
  addAll({JobResult::Busy, JobResult::CmdFinished, JobResult::Busy, JobResult::NoEffect});
  EXPECT_EQ(sut.run().result, JobResult::CmdFinished);
  EXPECT_EQ(calls.size(), 4U) << "finished does not end the run";
}

TEST_F(JobListTest, failureOutweighsEverythingAndEndsTheRun) {
  add("first", SectionMgr::CMD_DATA, JobResult::CmdFinished);
  add("second", SectionMgr::CMD_DATA, JobResult::InvalidJobData);
  add("third", SectionMgr::CMD_DATA, JobResult::ExecutionFailed);
  const JobListResult result = sut.run();
  EXPECT_EQ(result.result, JobResult::InvalidJobData);
  EXPECT_STREQ(result.failedJob, "second");
  EXPECT_THAT(calls, ElementsAre("first", "second"));
}

TEST_F(JobListTest, aThrowingJobHasFailedAndEndsTheRun) {
  for (const bool standard : {true, false}) {
    JobList list;
    bool reached = false;
    const auto thrower = [standard]() -> JobResult {
      if (standard) {
        throw std::runtime_error("no");
      }
      throw 7;
    };
    ASSERT_EQ(list.addJob(thrower, "thrower", SectionMgr::CMD_DATA), JobResult::NoEffect);
    ASSERT_EQ(list.addJob(
                  [&reached] {
                    reached = true;
                    return JobResult::NoEffect;
                  },
                  "next", SectionMgr::CMD_DATA),
              JobResult::NoEffect);
    const JobListResult result = list.run();
    EXPECT_EQ(result.result, JobResult::ExecutionFailed);
    EXPECT_STREQ(result.failedJob, "thrower");
    EXPECT_FALSE(reached);
  }
}

TEST_F(JobListTest, namesNoFailedJobOnSuccess) {
  addAll({JobResult::CmdFinished});
  EXPECT_EQ(sut.run().failedJob, nullptr);
}

}  // namespace
}  // namespace motion::host
