// The published functions: from an object's name and parameters to a command.
#include <functional>
#include <string>

#include "impl/bundle_if/motion_kavo_cmd.h"
#include "impl/join/join_pars.h"
#include "impl/send_signal/send_signal_pars.h"
#include "impl/wait_for_signal/wait_for_signal_pars.h"
#include "impl/wait_for_signal_reset/wait_for_signal_reset_pars.h"
#include "impl_fixture.h"

namespace motion::kavo {
namespace {

using core::FctResult;
using core::ObjectType;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto NOT_AVAILABLE = static_cast<FctResult>(0xF010000E);
constexpr unsigned long UNTOUCHED = 12345;

class GetObjectTypeTest : public ImplTest {
 protected:
  GetObjectTypeTest() {
    ExtDepMgr::getInstance().setMotionExtIF(&m_host.ext);
    m_host.objMgr.addAxis("X");
    m_host.objMgr.addKinematics("Robot");
    m_host.objMgr.addEncoder("Encoder");
    forget();
  }
  ~GetObjectTypeTest() override { ExtDepMgr::getInstance().setMotionExtIF(nullptr); }
};

TEST_F(GetObjectTypeTest, TellsAxesFromKinematics) {
  const auto sut = &MotionKavoCmd::getObjectType;
  auto type = ObjectType::UNDEFINED;
  EXPECT_EQ(sut("X", type), FctResult::Okay);
  EXPECT_EQ(type, ObjectType::AXIS);
  EXPECT_EQ(sut("Robot", type), FctResult::Okay);
  EXPECT_EQ(type, ObjectType::KINEMATICS);
  EXPECT_THAT(m_host.calls.all(),
              ElementsAre("ext.getObjMgr()", "objMgr.findObj(X, 0)", "ext.getObjMgr()", "objMgr.findObj(Robot, 0)"));
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(GetObjectTypeTest, AsksForAnAxisFirst) {
  const auto sut = &MotionKavoCmd::getObjectType;
  m_host.objMgr.addAxis("Both").m_isKinematics = true;
  auto type = ObjectType::UNDEFINED;
  EXPECT_EQ(sut("Both", type), FctResult::Okay);
  EXPECT_EQ(type, ObjectType::AXIS);
}

TEST_F(GetObjectTypeTest, RefusesAnUnknownObject) {
  const auto sut = &MotionKavoCmd::getObjectType;
  auto type = ObjectType::UNDEFINED;
  EXPECT_EQ(core::toCode(sut("Nobody", type)), 0xF0100004U);
  EXPECT_EQ(type, ObjectType::UNDEFINED);
  EXPECT_THAT(traces(), ElementsAre("Error motion_kavo_cmd getObjectType: Can't find motion object Nobody"));
  EXPECT_EQ(m_host.traceSink.entries()[0].format, "Can't find motion object %s");
}

TEST_F(GetObjectTypeTest, RefusesWhatIsNeitherAxisNorKinematics) {
  const auto sut = &MotionKavoCmd::getObjectType;
  auto type = ObjectType::UNDEFINED;
  EXPECT_EQ(core::toCode(sut("Encoder", type)), 0xF0100001U);
  EXPECT_THAT(traces(),
              ElementsAre("Error motion_kavo_cmd getObjectType: Encoder has an invalid motion object type (must be "
                          "an axis or kinematic)"));
  EXPECT_EQ(m_host.traceSink.entries()[0].format, "%s has an invalid motion object type (must be an axis or kinematic)");
}

TEST_F(GetObjectTypeTest, NeedsAnObjectManager) {
  const auto sut = &MotionKavoCmd::getObjectType;
  m_host.parts.objMgr = nullptr;
  auto type = ObjectType::UNDEFINED;
  EXPECT_EQ(sut("X", type), NOT_AVAILABLE);
  EXPECT_THAT(traces(), ElementsAre("Error motion_kavo_cmd getObjectType: Invalid object manager"));
  EXPECT_EQ(m_host.traceSink.entries()[0].format, "%s");
}

TEST_F(GetObjectTypeTest, NeedsAnExtensionInterface) {
  const auto sut = &MotionKavoCmd::getObjectType;
  ExtDepMgr::getInstance().setMotionExtIF(nullptr);
  auto type = ObjectType::UNDEFINED;
  EXPECT_EQ(sut("X", type), NOT_AVAILABLE);
  EXPECT_THAT(traces(), ElementsAre("Error motion_kavo_cmd getObjectType: Invalid motion extended interface"));
  EXPECT_EQ(m_host.traceSink.entries()[0].format, "%s");
}

struct FunctionCase {
  std::string name;
  std::string cmdType;
  /// Calls the function for signal 42 and, where it takes one, with the flag.
  std::function<FctResult(core::cmd::ICmdContext*, const core::dia::CmdSourceInfo&, const char*, bool, unsigned long&)> call;
  /// Are these the parameters of such a call?
  std::function<bool(const core::IContainer&, bool)> isRight;
};

const FunctionCase SET = {"setSignalCmd", "SetSignal",
                          [](auto* context, const auto& source, const char* name, bool /*flag*/, unsigned long& cmdId) {
                            return MotionKavoCmd::setSignalCmd(context, source, name, 42, cmdId);
                          },
                          [](const core::IContainer& values, bool /*flag*/) {
                            const auto* const record = cmd::CmdSendSignalPars::safeCast(&values);
                            return record != nullptr && record->get().signalId == 42;
                          }};
const FunctionCase RESET = {"resetSignalCmd", "ResetSignal",
                            [](auto* context, const auto& source, const char* name, bool /*flag*/, unsigned long& cmdId) {
                              return MotionKavoCmd::resetSignalCmd(context, source, name, 42, cmdId);
                            },
                            SET.isRight};
const FunctionCase WAIT = {"waitForSignalCmd", "WaitForSignal",
                           [](auto* context, const auto& source, const char* name, bool flag, unsigned long& cmdId) {
                             return MotionKavoCmd::waitForSignalCmd(context, source, name, 42, flag, cmdId);
                           },
                           [](const core::IContainer& values, bool flag) {
                             const auto* const record = job::WaitForSignalJobPars::safeCast(&values);
                             return record != nullptr && record->get().signalId == 42 && record->get().autoReset == flag;
                           }};
const FunctionCase WAIT_RESET = {
    "waitForSignalResetCmd", "WaitForSignalReset",
    [](auto* context, const auto& source, const char* name, bool /*flag*/, unsigned long& cmdId) {
      return MotionKavoCmd::waitForSignalResetCmd(context, source, name, 42, cmdId);
    },
    [](const core::IContainer& values, bool /*flag*/) {
      const auto* const record = job::WaitForSignalResetJobPars::safeCast(&values);
      return record != nullptr && record->get().signalId == 42;
    }};

const std::vector<std::string> JOIN_GROUP = {"X", "no such", ""};
const FunctionCase JOIN = {"joinCmd", "Join",
                           [](auto* context, const auto& source, const char* name, bool flag, unsigned long& cmdId) {
                             return MotionKavoCmd::joinCmd(context, source, name, JOIN_GROUP, flag, cmdId);
                           },
                           [](const core::IContainer& values, bool flag) {
                             const auto* const record = cmd::CmdJoinPars::safeCast(&values);
                             return record != nullptr && record->get().syncStartNextCmd == flag &&
                                    record->get().group == JOIN_GROUP;
                           }};

class PublishedFunctionTest : public GetObjectTypeTest, public testing::WithParamInterface<FunctionCase> {
 protected:
  [[nodiscard]] FctResult call(const char* name, bool flag = false) {
    return GetParam().call(&m_host.cmdContext, m_source, name, flag, m_cmdId);
  }
  [[nodiscard]] std::string failureTrace(const std::string& text) const {
    return "Error motion_kavo_cmd " + GetParam().name + ": getObjectType failed with " + text;
  }

  core::dia::CmdSourceInfo m_source{"a client", "a program", 12};
  unsigned long m_cmdId = UNTOUCHED;
};

TEST_P(PublishedFunctionTest, HandsTheCommandToTheContext) {
  for (const char* name : {"X", "Robot"}) {
    for (const bool flag : {false, true}) {
      forget();
      m_cmdId = UNTOUCHED;
      bool isRight = false;
      m_host.cmdContext.m_onValues = [&](const core::IContainer& values) { isRight = GetParam().isRight(values, flag); };
      EXPECT_EQ(call(name, flag), FctResult::Okay);
      EXPECT_THAT(m_host.calls.of({"context."}),
                  ElementsAre(fmt::format("context.addCmd({}, {}, 1)", name, GetParam().cmdType)));
      EXPECT_TRUE(isRight);
      EXPECT_EQ(m_host.cmdContext.m_source, &m_source);
      EXPECT_EQ(m_host.cmdContext.m_cmdIdAddress, &m_cmdId);
      EXPECT_EQ(m_cmdId, m_host.cmdContext.m_nextCmdId);
      EXPECT_THAT(traces(), IsEmpty());
    }
  }
}

TEST_P(PublishedFunctionTest, PassesTheResultOfTheContextOn) {
  for (const std::uint32_t code : {0xF0100013U, 0xF0100001U, 0x00100001U}) {
    m_host.calls.failNothing();
    m_host.calls.fail("context.addCmd", code);
    EXPECT_EQ(core::toCode(call("X")), code);
  }
  EXPECT_EQ(m_cmdId, UNTOUCHED);
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_P(PublishedFunctionTest, RefusesToWorkWithoutAContext) {
  EXPECT_EQ(GetParam().call(nullptr, m_source, "X", false, m_cmdId), NOT_AVAILABLE);
  EXPECT_THAT(m_host.calls.all(), IsEmpty());
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_P(PublishedFunctionTest, RefusesAnUnknownObject) {
  EXPECT_EQ(core::toCode(call("Nobody")), 0xF0100004U);
  EXPECT_THAT(traces(), ElementsAre("Error motion_kavo_cmd getObjectType: Can't find motion object Nobody",
                                    failureTrace("requested motion object does not exist")));
  EXPECT_EQ(m_host.traceSink.entries()[1].format, "getObjectType failed with %s");
  EXPECT_THAT(m_host.calls.of({"context."}), IsEmpty());
  EXPECT_EQ(m_cmdId, UNTOUCHED);
}

TEST_P(PublishedFunctionTest, RefusesAnEncoder) {
  EXPECT_EQ(core::toCode(call("Encoder")), 0xF0100001U);
  ASSERT_EQ(traces().size(), 2U);
  EXPECT_EQ(traces()[1], failureTrace("not okay"));
}

TEST_P(PublishedFunctionTest, RefusesToWorkWithoutAnObjectManager) {
  m_host.parts.objMgr = nullptr;
  EXPECT_EQ(call("X"), NOT_AVAILABLE);
  ASSERT_EQ(traces().size(), 2U);
  EXPECT_EQ(traces()[1], failureTrace("unknown error"));
}

TEST_P(PublishedFunctionTest, AnswersAnExceptionWithAFailure) {
  m_host.calls.fail("context.addCmd", test::FakeCalls::THROW, 1);
  EXPECT_TRUE(core::isFailure(call("X")));
  m_host.calls.fail("objMgr.findObj", test::FakeCalls::THROW, 1);
  EXPECT_TRUE(core::isFailure(call("X")));
}

TEST_P(PublishedFunctionTest, AnswersEachFailureToAllocateWithAFailure) {
  FctResult result{};
  EXPECT_EQ(call("X"), FctResult::Okay);  // the command's identity is made once
  withEachAllocationFailing(
      [&] {
        m_cmdId = UNTOUCHED;
        result = call("X");
      },
      [&](bool hasFailed) {
        EXPECT_EQ(core::isFailure(result), hasFailed);
        EXPECT_EQ(m_cmdId == UNTOUCHED, hasFailed);
      });
}

INSTANTIATE_TEST_SUITE_P(All, PublishedFunctionTest, testing::Values(SET, RESET, WAIT, WAIT_RESET, JOIN),
                         [](const auto& testCase) { return testCase.param.name; });

}  // namespace
}  // namespace motion::kavo
