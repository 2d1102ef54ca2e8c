// The published functions of the command options: from an object's name and parameters to an option.
#include <array>
#include <string>

#include "impl/bundle_if/motion_kavo_cmd.h"
#include "impl/send_signal/option_set_signal_pars.h"
#include "impl_fixture.h"
#include "motion/kavo/switch_on_path_pars.h"

namespace motion::kavo {
namespace {

using core::FctResult;
using core::cmd::CmdOptPermType;
using testing::ElementsAre;
using testing::IsEmpty;
using sut = MotionKavoCmd;

constexpr auto NOT_AVAILABLE = static_cast<FctResult>(0xF010000E);
constexpr std::array<double, 3> TARGET = {1.5, -2.25, 1e9};

struct OptionFunctionCase {
  std::string name;
  std::string call;  ///< as the context notes it
  FctResult (*issue)(core::cmd::ICmdContext* context, const core::dia::CmdSourceInfo& source, const char* objName);
  bool (*isRight)(const core::IContainer& values);
};

const OptionFunctionCase SET_SIGNAL = {"setSignalCmdOpt", "context.addCmdOption(Robot, SetSignal, 0)",
                                       [](auto* context, const auto& source, const char* objName) {
                                         return sut::setSignalCmdOpt(context, source, objName, 42);
                                       },
                                       [](const core::IContainer& values) {
                                         const auto* const record = cmd::CmdOptionSetSignalPars::safeCast(&values);
                                         return record != nullptr && record->get().signalId == 42;
                                       }};

const OptionFunctionCase SWITCH_ON_PATH = {
    "kinSwitchOnPathCmdOpt", "context.addCmdOption(Robot, SwitchOnPath, 1)",
    [](auto* context, const auto& source, const char* objName) {
      return sut::kinSwitchOnPathCmdOpt(context, source, CmdOptPermType::PERM_ON, objName, SwitchOnPathMode::ENTER_SPHERE,
                                        42, SwitchOnPathAction::RESET_SIGNAL, TARGET.data(), 0.125, 0.008);
    },
    [](const core::IContainer& values) {
      const auto* const record = SwitchOnPathParsList::safeCast(&values);
      if (record == nullptr || record->get().size() != 1) {
        return false;
      }
      const SwitchOnPathPars& pars = *record->get().front();
      return pars.mode == SwitchOnPathMode::ENTER_SPHERE && pars.signalId == 42 &&
             pars.action == SwitchOnPathAction::RESET_SIGNAL && pars.targetPos == TARGET && pars.radius == 0.125 &&
             pars.preTriggerTime == 0.008 && !pars.reached;
    }};

class OptionFunctionTest : public ImplTest {
 protected:
  OptionFunctionTest() {
    ExtDepMgr::getInstance().setMotionExtIF(&m_host.ext);
    m_host.objMgr.addAxis("X");
    m_host.objMgr.addKinematics("Robot");
    m_host.objMgr.addEncoder("Encoder");
    forget();
  }
  ~OptionFunctionTest() override { ExtDepMgr::getInstance().setMotionExtIF(nullptr); }

  core::dia::CmdSourceInfo m_source{"a client", "a program", 12};
};

class EachOptionFunctionTest : public OptionFunctionTest, public testing::WithParamInterface<OptionFunctionCase> {
 protected:
  [[nodiscard]] FctResult issue(const char* name) { return GetParam().issue(&m_host.cmdContext, m_source, name); }
  [[nodiscard]] std::string failureTrace(const std::string& text) const {
    return "Error motion_kavo_cmd " + GetParam().name + ": getObjectType failed with " + text;
  }
};

TEST_P(EachOptionFunctionTest, HandsTheOptionToTheContext) {
  bool isRight = false;
  m_host.cmdContext.m_onValues = [&](const core::IContainer& values) { isRight = GetParam().isRight(values); };
  EXPECT_EQ(core::toCode(issue("Robot")), 0x00100000U);
  EXPECT_THAT(m_host.calls.of({"context."}), ElementsAre(GetParam().call));
  EXPECT_TRUE(isRight);
  EXPECT_EQ(m_host.cmdContext.m_source, &m_source);
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_P(EachOptionFunctionTest, PassesTheResultOfTheContextOn) {
  for (const std::uint32_t code : {0xF0100013U, 0xF0100001U, 0x00100001U}) {
    m_host.calls.failNothing();
    m_host.calls.fail("context.addCmdOption", code);
    EXPECT_EQ(core::toCode(issue("Robot")), code);
  }
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_P(EachOptionFunctionTest, RefusesToWorkWithoutAContext) {
  EXPECT_EQ(GetParam().issue(nullptr, m_source, "Robot"), NOT_AVAILABLE);
  EXPECT_THAT(m_host.calls.all(), IsEmpty());
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_P(EachOptionFunctionTest, RefusesAnUnknownObjectAndAnEncoder) {
  EXPECT_EQ(core::toCode(issue("Nobody")), 0xF0100004U);
  EXPECT_THAT(traces(), ElementsAre("Error motion_kavo_cmd getObjectType: Can't find motion object Nobody",
                                    failureTrace("requested motion object does not exist")));
  EXPECT_EQ(m_host.traceSink.entries()[1].format, "getObjectType failed with %s");
  EXPECT_EQ(core::toCode(issue("Encoder")), 0xF0100001U);
  EXPECT_EQ(traces().back(), failureTrace("not okay"));
  EXPECT_THAT(m_host.calls.of({"context."}), IsEmpty());
}

TEST_P(EachOptionFunctionTest, RefusesToWorkWithoutAnObjectManager) {
  m_host.parts.objMgr = nullptr;
  EXPECT_EQ(issue("Robot"), NOT_AVAILABLE);
  ASSERT_EQ(traces().size(), 2U);
  EXPECT_EQ(traces()[1], failureTrace("unknown error"));
}

TEST_P(EachOptionFunctionTest, AnswersAnExceptionWithAFailure) {
  m_host.calls.fail("context.addCmdOption", test::FakeCalls::THROW, 1);
  EXPECT_TRUE(core::isFailure(issue("Robot")));
  m_host.calls.fail("objMgr.findObj", test::FakeCalls::THROW, 1);
  EXPECT_TRUE(core::isFailure(issue("Robot")));
}

TEST_P(EachOptionFunctionTest, AnswersEachFailureToAllocateWithAFailure) {
  FctResult result{};
  ASSERT_EQ(issue("Robot"), FctResult::Okay);
  withEachAllocationFailing([&] { result = issue("Robot"); },
                            [&](bool hasFailed) { EXPECT_EQ(core::isFailure(result), hasFailed); });
}

INSTANTIATE_TEST_SUITE_P(All, EachOptionFunctionTest, testing::Values(SET_SIGNAL, SWITCH_ON_PATH),
                         [](const auto& testCase) { return testCase.param.name; });

TEST_F(OptionFunctionTest, SetsSignalsOfAxesToo) {
  EXPECT_EQ(sut::setSignalCmdOpt(&m_host.cmdContext, m_source, "X", 0xFFFFFFFF), FctResult::Okay)
      << "whether the signal exists is not asked here";
  EXPECT_THAT(m_host.calls.of({"context."}), ElementsAre("context.addCmdOption(X, SetSignal, 0)"));
}

class SwitchOnPathFunctionTest : public OptionFunctionTest {
 protected:
  [[nodiscard]] FctResult issue(std::uint32_t permType, const double* target) {
    return sut::kinSwitchOnPathCmdOpt(&m_host.cmdContext, m_source, static_cast<CmdOptPermType>(permType), "Robot",
                                      static_cast<SwitchOnPathMode>(5), 0xFFFFFFFF, static_cast<SwitchOnPathAction>(9),
                                      target, -1.0, -2.0);
  }
};

TEST_F(SwitchOnPathFunctionTest, IsForKinematicsOnly) {
  EXPECT_EQ(core::toCode(SWITCH_ON_PATH.issue(&m_host.cmdContext, m_source, "X")), 0xF010000DU);
  EXPECT_THAT(traces(), ElementsAre("Error motion_kavo_cmd kinSwitchOnPathCmdOpt: kinSwitchOnPathCmdOpt not supported for "
                                    "object type 'Axis'"));
  EXPECT_EQ(m_host.traceSink.entries()[0].format, "kinSwitchOnPathCmdOpt not supported for object type '%s'");
  EXPECT_THAT(m_host.calls.of({"context."}), IsEmpty());
}

TEST_F(SwitchOnPathFunctionTest, AsksForTheObjectBeforeTheTarget) {
  EXPECT_EQ(core::toCode(sut::kinSwitchOnPathCmdOpt(&m_host.cmdContext, m_source, CmdOptPermType::ONCE, "X",
                                                    SwitchOnPathMode::ENTER_SPHERE, 1, SwitchOnPathAction::SET_SIGNAL,
                                                    nullptr, 0, 0)),
            0xF010000DU);
}

TEST_F(SwitchOnPathFunctionTest, PassesThePermanenceAndTheNumbersOnAsTheyAre) {
  for (const std::uint32_t permType : {0U, 1U, 2U, 7U}) {
    forget();
    SwitchOnPathPars given;
    m_host.cmdContext.m_onValues = [&](const core::IContainer& values) {
      given = *SwitchOnPathParsList::safeCast(&values)->get().front();
    };
    EXPECT_EQ(issue(permType, TARGET.data()), FctResult::Okay);
    EXPECT_THAT(m_host.calls.of({"context."}),
                ElementsAre(fmt::format("context.addCmdOption(Robot, SwitchOnPath, {})", permType)));
    EXPECT_EQ(static_cast<std::uint32_t>(given.mode), 5U);
    EXPECT_EQ(given.signalId, 0xFFFFFFFFU);
    EXPECT_EQ(static_cast<std::uint32_t>(given.action), 9U);
    EXPECT_EQ(given.targetPos, TARGET);
    EXPECT_EQ(given.radius, -1.0);
    EXPECT_EQ(given.preTriggerTime, -2.0);
  }
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(SwitchOnPathFunctionTest, NeedsATargetUnlessItSwitchesOff) {
  for (const std::uint32_t permType : {0U, 1U}) {
    forget();
    EXPECT_EQ(issue(permType, nullptr), FctResult::InvalidParameter);
    EXPECT_EQ(traces().size(), 1U);
    EXPECT_THAT(m_host.calls.of({"context."}), IsEmpty());
  }
  std::array<double, 3> target = TARGET;
  m_host.cmdContext.m_onValues = [&](const core::IContainer& values) {
    target = SwitchOnPathParsList::safeCast(&values)->get().front()->targetPos;
  };
  EXPECT_EQ(issue(2, nullptr), FctResult::Okay);
  EXPECT_THAT(target, ElementsAre(0.0, 0.0, 0.0));
}

}  // namespace
}  // namespace motion::kavo
