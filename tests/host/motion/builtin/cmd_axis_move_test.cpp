// Checks and units of axis moves.
#include "host/motion/builtin/cmd_axis_move.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "host/motion/builtin/diagnosis.h"
#include "host/motion/section_mgr.h"
#include "tests/host/motion/world.h"

namespace motion::host::builtin {
namespace {

using core::cmd::CmdResult;
using core::job::JobResult;
using testing::ElementsAre;

constexpr double INFINITE = std::numeric_limits<double>::infinity();
constexpr double NAN_VALUE = std::numeric_limits<double>::quiet_NaN();

struct CmdAxisMoveTest : testing::Test {
  CmdResult set(const AxisMoveParsT& values) { return sut.onSetCmdValues(AxisMoveParsPtr(values).get(), {}, &axis, false); }
  static std::unique_ptr<AxisMovePars> AxisMoveParsPtr(const AxisMoveParsT& values) {
    return std::make_unique<AxisMovePars>(values);
  }
  /// Validates and gives the text of the diagnosis.
  std::string refusalOf(CmdAxisMove& cmd, const AxisMoveParsT& values) {
    EXPECT_EQ(cmd.onSetCmdValues(AxisMoveParsPtr(values).get(), {}, &axis, false), CmdResult::Okay);
    const auto before = axis.diaLog().count();
    EXPECT_EQ(cmd.onValidate({"client", "file", 9}, &axis.diaLog()), CmdResult::Refused);
    EXPECT_EQ(axis.diaLog().count(), before + 1);
    EXPECT_EQ(cmd.onValidate({}, nullptr), CmdResult::Refused) << "also without anybody to report to";
    return axis.diaLog().latestText();
  }

  test::World world;
  MotionObject& axis = world.addAxis("X");
  CmdAxisMove sut{MoveKind::ABSOLUTE, world.runtime.objFactory()};
  CmdAxisMove relative{MoveKind::RELATIVE, world.runtime.objFactory()};
};

TEST_F(CmdAxisMoveTest, isNamedAfterItsKind) {
  EXPECT_EQ(sut.getName(), "MoveAbs");
  EXPECT_EQ(relative.getName(), "MoveRel");
  EXPECT_EQ(sut.onGetCmdType(), 1U);
  EXPECT_EQ(relative.onGetCmdType(), 2U);
  EXPECT_THAT(sut.getJobNames(), ElementsAre("host_axis_profile"));
}

TEST_F(CmdAxisMoveTest, publishesItsParametersInInternalUnits) {
  for (CmdAxisMove* cmd : {&sut, &relative}) {
    JobDataHandler handler;
    ASSERT_EQ(cmd->onSetCmdValues(AxisMoveParsPtr({250.0, 500.0, 2000.0}).get(), {}, &axis, false), CmdResult::Okay);
    ASSERT_EQ(cmd->onRegisterJobListsInputs(handler), CmdResult::Okay);
    core::IContainer* data = nullptr;
    ASSERT_EQ(handler.registerRead(ProfilePars::getMyID(), SectionMgr::CMD_DATA, 1, "test", data), JobResult::NoEffect);
    const ProfileParsT pars = ProfilePars::safeCast(data)->get();
    EXPECT_EQ(pars.relative, cmd == &relative);
    EXPECT_DOUBLE_EQ(pars.target, 0.25);
    EXPECT_DOUBLE_EQ(pars.velocity, 0.5);
    EXPECT_DOUBLE_EQ(pars.acceleration, 2.0);
    EXPECT_EQ(cmd->onRegisterJobListsInputs(handler), CmdResult::JobRegistrationFailed) << "somebody publishes that already";
  }
}

TEST_F(CmdAxisMoveTest, refusesParametersOfAnotherTypeAndNoObject) {
  const DwellPars dwell(DwellParsT{1.0});
  EXPECT_EQ(sut.onSetCmdValues(&dwell, {}, &axis, false), CmdResult::WrongContainer);
  EXPECT_EQ(sut.onSetCmdValues(nullptr, {}, &axis, false), CmdResult::WrongContainer);
  EXPECT_EQ(sut.onSetCmdValues(AxisMoveParsPtr({}).get(), {}, nullptr, false), CmdResult::NullPointer);
}

TEST_F(CmdAxisMoveTest, acceptsAnyFiniteTargetWithPositiveLimits) {
  for (const double target : {-1e6, 0.0, 1e6}) {
    ASSERT_EQ(set({target, 1e-3, 1e-3}), CmdResult::Okay);
    EXPECT_EQ(sut.onValidate({}, &axis.diaLog()), CmdResult::Okay);
  }
  EXPECT_EQ(axis.diaLog().count(), 0U);
}

TEST_F(CmdAxisMoveTest, refusesATargetThatIsNoNumber) {
  for (const double target : {INFINITE, -INFINITE, NAN_VALUE}) {
    EXPECT_EQ(refusalOf(sut, {target, 1.0, 1.0}), "'to' must be a finite number");
    EXPECT_EQ(refusalOf(relative, {target, 1.0, 1.0}), "'by' must be a finite number");
  }
}

TEST_F(CmdAxisMoveTest, refusesLimitsThatAreNotAboveZeroOrNoNumbers) {
  for (const double limit : {0.0, -0.0, -1.0, INFINITE, -INFINITE, NAN_VALUE}) {
    EXPECT_EQ(refusalOf(sut, {1.0, limit, 1.0}), "'velocity' must be above 0") << limit;
    EXPECT_EQ(refusalOf(relative, {1.0, 1.0, limit}), "'acceleration' must be above 0") << limit;
  }
}

TEST_F(CmdAxisMoveTest, reportsWhoAskedAndWhy) {
  refusalOf(sut, {1.0, 0.0, 1.0});
  const Diagnosis diagnosis = axis.diaLog().all().back();
  EXPECT_EQ(diagnosis.mainCode, DIA_INVALID_COMMAND);
  EXPECT_EQ(diagnosis.detailCode, DIA_INVALID_PARAMETER);
  EXPECT_EQ(diagnosis.source.client, "client");
  EXPECT_EQ(diagnosis.source.line, 9U);
  EXPECT_TRUE(diagnosis.closed);
}

}  // namespace
}  // namespace motion::host::builtin
