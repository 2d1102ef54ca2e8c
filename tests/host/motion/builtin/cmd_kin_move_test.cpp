// Checks and units of the moves of a kinematics.
#include "host/motion/builtin/cmd_kin_move.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <utility>

#include "host/motion/builtin/diagnosis.h"
#include "host/motion/section_mgr.h"
#include "host/support/guarded.h"
#include "tests/host/motion/allocation_sweep.h"
#include "tests/host/motion/world.h"

namespace motion::host::builtin {
namespace {

using core::cmd::CmdResult;
using core::job::JobResult;
using testing::ElementsAre;

constexpr double INFINITE = std::numeric_limits<double>::infinity();
constexpr double NAN_VALUE = std::numeric_limits<double>::quiet_NaN();

struct CmdKinMoveTest : testing::Test {
  CmdResult validate(CmdKinMove& cmd, const KinMoveParsT& values) {
    const KinMovePars container(values);
    EXPECT_EQ(cmd.onSetCmdValues(&container, {}, &robot, false), CmdResult::Okay);
    return cmd.onValidate({"client", "file", 9}, &robot.diaLog());
  }
  /// Validates and gives the text of the diagnosis.
  std::string refusalOf(CmdKinMove& cmd, const KinMoveParsT& values) {
    const auto before = robot.diaLog().count();
    EXPECT_EQ(validate(cmd, values), CmdResult::Refused);
    EXPECT_EQ(robot.diaLog().count(), before + 1);
    EXPECT_EQ(cmd.onValidate({}, nullptr), CmdResult::Refused) << "also without anybody to report to";
    return robot.diaLog().latestText();
  }
  KinPathParsT published(CmdKinMove& cmd) {
    JobDataHandler handler;
    EXPECT_EQ(cmd.onRegisterJobListsInputs(handler), CmdResult::Okay);
    EXPECT_EQ(cmd.onRegisterJobListsInputs(handler), CmdResult::JobRegistrationFailed) << "somebody publishes that already";
    core::IContainer* data = nullptr;
    EXPECT_EQ(handler.registerRead(KinPathPars::getMyID(), SectionMgr::CMD_DATA, 1, "test", data), JobResult::NoEffect);
    return KinPathPars::safeCast(data)->get();
  }

  test::World world;
  MotionObject& robot = *world.runtime.addObject("R", core::ObjectType::KINEMATICS, {0.1, 0, 0});
  CmdKinMove lin{PathKind::LINEAR, world.runtime.objFactory()};
  CmdKinMove circ{PathKind::CIRCULAR, world.runtime.objFactory()};
};

TEST_F(CmdKinMoveTest, isNamedAfterItsKind) {
  EXPECT_EQ(lin.getName(), "MoveLin");
  EXPECT_EQ(circ.getName(), "MoveCirc");
  EXPECT_EQ(lin.onGetCmdType(), 4U);
  EXPECT_EQ(circ.onGetCmdType(), 5U);
  EXPECT_THAT(lin.getJobNames(), ElementsAre("host_kin_path"));
}

TEST_F(CmdKinMoveTest, publishesItsPathInInternalUnits) {
  ASSERT_EQ(validate(lin, {{400, 0, 0}, {200, 0, 0}, 0, 500, 2000}), CmdResult::Okay);
  const KinPathParsT straight = published(lin);
  EXPECT_DOUBLE_EQ(straight.path->length(), 0.3);
  EXPECT_DOUBLE_EQ(straight.velocity, 0.5);
  EXPECT_DOUBLE_EQ(straight.acceleration, 2.0);
  EXPECT_EQ(straight.path->start(), (Point{0.1, 0, 0}));
  EXPECT_EQ(lin.plannedEnd(), (Point{0.4, 0, 0}));

  ASSERT_EQ(validate(circ, {{-100, 0, 0}, {0, 100, 0}, 0, 500, 2000}), CmdResult::Okay);
  EXPECT_NEAR(published(circ).path->length(), 0.31416, 1e-5);
  EXPECT_EQ(circ.plannedEnd(), (Point{-0.1, 0, 0}));
}

TEST_F(CmdKinMoveTest, speaksTheUnitsOfItsObject) {
  MotionObject& inches = *world.runtime.addObject("Inches", core::ObjectType::KINEMATICS, {0, 0, 0},
                                                  UnitHelper::settings(LengthUnit::INCH, TimeUnit::MILLISECOND));
  const KinMovePars values({{10, 10, 0}, {10, 0, 0}, 1, 100, 200});
  ASSERT_EQ(lin.onSetCmdValues(&values, {}, &inches, false), CmdResult::Okay);
  ASSERT_EQ(lin.onValidate({}, nullptr), CmdResult::Okay);
  const KinPathParsT pars = published(lin);
  EXPECT_NEAR(pars.path->length(), (18 + 3.14159265 / 2) * 0.0254, 1e-9);
  EXPECT_DOUBLE_EQ(pars.velocity, 2.54);
  EXPECT_DOUBLE_EQ(pars.acceleration, 5.08);
  EXPECT_EQ(lin.plannedEnd()[0], 10 * 0.0254);

  const KinMovePars tooLarge({{10, 10, 0}, {10, 0, 0}, 20, 100, 200});
  ASSERT_EQ(lin.onSetCmdValues(&tooLarge, {}, &inches, false), CmdResult::Okay);
  ASSERT_EQ(lin.onValidate({}, &inches.diaLog()), CmdResult::Refused);
  EXPECT_THAT(inches.diaLog().latestText(), testing::HasSubstr("there are 10 in, but the corners take 20 in"));
}

TEST_F(CmdKinMoveTest, refusesParametersOfAnotherTypeAndNoObject) {
  const DwellPars dwell(DwellParsT{1.0});
  const KinMovePars values({{1, 2, 3}, {}, 0, 1, 1});
  EXPECT_EQ(lin.onSetCmdValues(&dwell, {}, &robot, false), CmdResult::WrongContainer);
  EXPECT_EQ(lin.onSetCmdValues(nullptr, {}, &robot, false), CmdResult::WrongContainer);
  EXPECT_EQ(lin.onSetCmdValues(&values, {}, nullptr, false), CmdResult::NullPointer);
}

TEST_F(CmdKinMoveTest, needsThreeNumbersForEachPoint) {
  EXPECT_EQ(refusalOf(lin, {{}, {}, 0, 1, 1}), "'to' must have 3 numbers, but has 0");
  EXPECT_EQ(refusalOf(lin, {{1, 2}, {}, 0, 1, 1}), "'to' must have 3 numbers, but has 2");
  EXPECT_EQ(refusalOf(circ, {{1, 2, 3, 4}, {1, 2, 3}, 0, 1, 1}), "'to' must have 3 numbers, but has 4");
  EXPECT_EQ(refusalOf(circ, {{1, 2, 3}, {}, 0, 1, 1}), "'via' must have 3 numbers, but has 0");
  EXPECT_EQ(refusalOf(circ, {{1, 2, 3}, {1, 2, 3, 4, 5, 6}, 0, 1, 1}), "'via' must have 3 numbers, but has 6");
  EXPECT_EQ(refusalOf(lin, {{1, 2, 3}, {1, 2, 3, 4}, 0, 1, 1}), "'via' must have 3 numbers for each point, but has 4");
}

TEST_F(CmdKinMoveTest, needsFiniteNumbers) {
  for (const double wrong : {INFINITE, -INFINITE, NAN_VALUE}) {
    EXPECT_EQ(refusalOf(lin, {{1, wrong, 3}, {}, 0, 1, 1}), "'to' must hold finite numbers");
    EXPECT_EQ(refusalOf(circ, {{1, 2, wrong}, {1, 2, 3}, 0, 1, 1}), "'to' must hold finite numbers");
    EXPECT_EQ(refusalOf(lin, {{1, 2, 3}, {1, 2, 3, wrong, 2, 3}, 0, 1, 1}), "'via' must hold finite numbers");
    EXPECT_EQ(refusalOf(circ, {{1, 2, 3}, {wrong, 2, 3}, 0, 1, 1}), "'via' must hold finite numbers");
  }
}

TEST_F(CmdKinMoveTest, refusesLimitsThatAreNotAboveZeroOrNoNumbers) {
  for (const double limit : {0.0, -0.0, -1.0, INFINITE, -INFINITE, NAN_VALUE}) {
    EXPECT_EQ(refusalOf(lin, {{1, 2, 3}, {}, 0, limit, 1}), "'velocity' must be above 0") << limit;
    EXPECT_EQ(refusalOf(circ, {{1, 2, 3}, {4, 5, 7}, 0, 1, limit}), "'acceleration' must be above 0") << limit;
  }
}

TEST_F(CmdKinMoveTest, refusesABlendingBelowZeroOrNoNumber) {
  for (const double blending : {-1e-9, -1.0, INFINITE, -INFINITE, NAN_VALUE}) {
    EXPECT_EQ(refusalOf(lin, {{1, 2, 3}, {4, 5, 6}, blending, 1, 1}), "'blending' must be 0 or above") << blending;
  }
}

TEST_F(CmdKinMoveTest, refusesPathsThatCannotBe) {
  EXPECT_EQ(
      refusalOf(lin, {{200, 100, 0}, {200, 0, 0}, 150, 1, 1}),
      "'blending' is too large at point 1 of 'via': between point 1 of 'via' and 'to' there are 100 mm, but the corners "
      "take 150 mm");
  EXPECT_EQ(refusalOf(circ, {{300, 0, 0}, {200, 0, 0}, 0, 1, 1}),
            "'via' and 'to' must not lie on one line with the start of the arc; MoveLin moves along a line");
  EXPECT_EQ(refusalOf(circ, {{100, 0, 0}, {200, 0, 0}, 0, 1, 1}),
            "'to' must not be where the arc begins; a full circle takes two arcs");
}

TEST_F(CmdKinMoveTest, survivesEveryAllocationThatFails) {
  const KinMovePars polygon({{400, 0, 0}, {200, 0, 0, 200, 100, 0}, 0, 500, 2000});
  const KinMovePars arc({{-100, 0, 0}, {0, 100, 0}, 0, 500, 2000});
  for (const auto& [kind, values] : {std::pair{PathKind::LINEAR, &polygon}, {PathKind::CIRCULAR, &arc}}) {
    std::unique_ptr<CmdKinMove> cmd;
    const auto call = [&, kind = kind, values = values] {
      auto made = std::make_unique<CmdKinMove>(kind, world.runtime.objFactory());
      CmdResult result = made->onSetCmdValues(values, {}, &robot, false);
      if (!core::isFailure(result)) {
        result = made->onValidate({}, nullptr);
      }
      if (!core::isFailure(result)) {
        cmd = std::move(made);
      }
      return result;
    };
    const auto guardedCall = [&] { return guarded(CmdResult::OutOfMemory, call); };
    const test::Sweep sweep{guardedCall, CmdResult::Okay, std::vector{CmdResult::OutOfMemory}, [&cmd] { cmd.reset(); }};
    EXPECT_GT(failEachAllocation(sweep), 5);
  }
}

TEST_F(CmdKinMoveTest, reportsWhoAskedAndWhy) {
  refusalOf(lin, {{}, {}, 0, 1, 1});
  const Diagnosis diagnosis = robot.diaLog().all().back();
  EXPECT_EQ(diagnosis.mainCode, DIA_INVALID_COMMAND);
  EXPECT_EQ(diagnosis.detailCode, DIA_INVALID_PARAMETER);
  EXPECT_EQ(diagnosis.source.client, "client");
  EXPECT_EQ(diagnosis.source.line, 9U);
  EXPECT_TRUE(diagnosis.closed);
}

}  // namespace
}  // namespace motion::host::builtin
