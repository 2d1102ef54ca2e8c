// Checks of dwells.
#include "host/motion/builtin/cmd_dwell.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "tests/host/motion/world.h"

namespace motion::host::builtin {
namespace {

using core::ObjectType;
using core::cmd::CmdResult;
using core::job::JobResult;

struct CmdDwellTest : testing::Test {
  CmdResult validate(double time) {
    EXPECT_EQ(sut.onSetCmdValues(std::make_unique<DwellPars>(DwellParsT{time}).get(), {}, &axis, false), CmdResult::Okay);
    return sut.onValidate({}, &axis.diaLog());
  }

  test::World world;
  MotionObject& axis = world.addAxis("X");
  CmdDwell<ObjectType::AXIS> sut{world.runtime.objFactory()};
};

TEST_F(CmdDwellTest, hasNameTypeAndJob) {
  EXPECT_EQ(sut.getName(), "Dwell");
  EXPECT_EQ(sut.onGetCmdType(), 3U);
  EXPECT_THAT(sut.getJobNames(), testing::ElementsAre("host_dwell"));
  EXPECT_EQ(CmdDwell<ObjectType::KINEMATICS>(world.runtime.objFactory()).getName(), "Dwell");
}

TEST_F(CmdDwellTest, publishesItsTime) {
  JobDataHandler handler;
  ASSERT_EQ(validate(1.25), CmdResult::Okay);
  ASSERT_EQ(sut.onRegisterJobListsInputs(handler), CmdResult::Okay);
  core::IContainer* data = nullptr;
  ASSERT_EQ(handler.registerRead(DwellJobPars::getMyID(), SectionMgr::CMD_DATA, 1, "test", data), JobResult::NoEffect);
  EXPECT_EQ(DwellJobPars::safeCast(data)->get().time, 1.25);
  EXPECT_EQ(sut.onRegisterJobListsInputs(handler), CmdResult::JobRegistrationFailed) << "somebody publishes that already";
}

TEST_F(CmdDwellTest, refusesParametersOfAnotherTypeAndNoObject) {
  const AxisMovePars move;
  const DwellPars dwell;
  EXPECT_EQ(sut.onSetCmdValues(&move, {}, &axis, false), CmdResult::WrongContainer);
  EXPECT_EQ(sut.onSetCmdValues(nullptr, {}, &axis, false), CmdResult::WrongContainer);
  EXPECT_EQ(sut.onSetCmdValues(&dwell, {}, nullptr, false), CmdResult::NullPointer);
}

TEST_F(CmdDwellTest, acceptsTimesFromZero) {
  for (const double time : {0.0, 1e-9, 1.0, 1e9}) {
    EXPECT_EQ(validate(time), CmdResult::Okay) << time;
  }
}

TEST_F(CmdDwellTest, refusesOtherTimes) {
  using Limits = std::numeric_limits<double>;
  for (const double time : {-1e-9, -1.0, 1.1e9, Limits::infinity(), -Limits::infinity(), Limits::quiet_NaN()}) {
    EXPECT_EQ(validate(time), CmdResult::Refused) << time;
    EXPECT_EQ(axis.diaLog().latestText(), "'time' must be a number of seconds from 0 to 1e9");
  }
  EXPECT_EQ(axis.diaLog().count(), 6U);
}

}  // namespace
}  // namespace motion::host::builtin
