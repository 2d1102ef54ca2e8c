// How many cycles a dwell lasts.
#include "host/motion/builtin/dwell_job.h"

#include <gtest/gtest.h>

#include "host/motion/builtin/builtin_cmds.h"
#include "tests/host/motion/world.h"

namespace motion::host::builtin {
namespace {

using core::cmd::CmdState;
using core::job::JobListTypes;
using core::job::JobResult;

/// Cycles in which a dwell is current, seen from outside.
unsigned cyclesOf(double time, double cycleTime, core::ObjectType type) {
  test::World world({cycleTime, 4});
  MotionObject& object = type == core::ObjectType::AXIS ? world.addAxis("X") : world.addKinematics("X");
  const auto id = world.issue(object, "Dwell", DwellPars({time}));
  unsigned cycles = 0;
  do {
    world.step();
    ++cycles;
  } while (object.getCmdState(id) == CmdState::ACTIVE && cycles < 100'000);
  EXPECT_EQ(object.getCmdState(id), CmdState::DONE);
  return cycles;
}

struct Duration {
  double time;
  double cycleTime;
  unsigned cycles;
};

class DwellJobDurationTest : public testing::TestWithParam<Duration> {};

TEST_P(DwellJobDurationTest, lastsAsManyCyclesAsTheTimeNeeds) {
  const auto& [time, cycleTime, cycles] = GetParam();
  EXPECT_EQ(cyclesOf(time, cycleTime, core::ObjectType::AXIS), cycles);
  EXPECT_EQ(cyclesOf(time, cycleTime, core::ObjectType::KINEMATICS), cycles);
}

INSTANTIATE_TEST_SUITE_P(Times, DwellJobDurationTest,
                         testing::Values(Duration{0.0, 0.001, 1}, Duration{0.0001, 0.001, 1}, Duration{0.001, 0.001, 1},
                                         Duration{0.0011, 0.001, 2}, Duration{0.2, 0.001, 200}, Duration{0.3, 0.001, 300},
                                         Duration{0.7, 0.001, 700}, Duration{1.1, 0.001, 1100}, Duration{0.2001, 0.001, 201},
                                         Duration{0.3, 0.1, 3}, Duration{0.01, 0.004, 3}, Duration{2.0, 0.002, 1000},
                                         Duration{0.1 + 0.2, 0.001, 300}));

struct DwellJobTest : testing::Test {
  test::World world;
  MotionObject& axis = world.addAxis("X");
  DwellJobPars pars{DwellJobParsT{0.5}};
  JobDataHandler handler{&axis.data()};
  DwellJob sut;
};

TEST_F(DwellJobTest, needsParametersAndObject) {
  EXPECT_EQ(sut.registerInputs(&handler), JobResult::DataNotPublished);
  JobDataHandler withoutObject;
  withoutObject.registerPublish(DwellJobPars::getMyID(), SectionMgr::CMD_DATA, "test", &pars);
  EXPECT_EQ(DwellJob().registerInputs(&withoutObject), JobResult::DataNotPublished);
  handler.registerPublish(DwellJobPars::getMyID(), SectionMgr::CMD_DATA, "test", &pars);
  EXPECT_EQ(sut.registerInputs(&handler), JobResult::NoEffect);
}

TEST_F(DwellJobTest, runsInTheCycleOnly) {
  JobList list;
  EXPECT_EQ(sut.addJobsToJoblist(&list, JobListTypes::BEFORE_EXECUTION), JobResult::ListTypeNotServed);
  EXPECT_EQ(sut.addJobsToJoblist(&list, JobListTypes::COMMAND_PREPARED), JobResult::ListTypeNotServed);
  EXPECT_EQ(list.size(), 0U);
  EXPECT_EQ(sut.addJobsToJoblist(&list, JobListTypes::CYCLIC_EXECUTION), JobResult::NoEffect);
  EXPECT_EQ(list.size(), 1U);
}

TEST_F(DwellJobTest, describesItself) {
  EXPECT_EQ(sut.getJobString(), "No inputs registered");
  handler.registerPublish(DwellJobPars::getMyID(), SectionMgr::CMD_DATA, "test", &pars);
  ASSERT_EQ(sut.registerInputs(&handler), JobResult::NoEffect);
  EXPECT_EQ(sut.getJobString(), "dwell(time=0.5)");
}

TEST_F(DwellJobTest, clonesStartAfresh) {
  handler.registerPublish(DwellJobPars::getMyID(), SectionMgr::CMD_DATA, "test", &pars);
  ASSERT_EQ(sut.registerInputs(&handler), JobResult::NoEffect);
  const std::unique_ptr<core::IAmCreatable> clone(sut.createNew());
  EXPECT_EQ(dynamic_cast<const DwellJob&>(*clone).getJobString(), "No inputs registered");
}

}  // namespace
}  // namespace motion::host::builtin
