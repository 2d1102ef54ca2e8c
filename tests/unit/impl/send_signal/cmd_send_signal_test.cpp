// The commands SetSignal and ResetSignal: taking over and checking their parameters.
#include "impl/send_signal/cmd_send_signal.h"

#include "command/cmd_values_fixture.h"
#include "impl/wait_for_signal/wait_for_signal_pars.h"

namespace motion::kavo::cmd {
namespace {

using core::ObjectType;
using core::cmd::CmdResult;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(SignalActionTest, HasItsNumbers) {
  EXPECT_EQ(static_cast<std::uint32_t>(SignalAction::SET), 0U);
  EXPECT_EQ(static_cast<std::uint32_t>(SignalAction::RESET), 1U);
}

template <typename COMMAND>
struct ActionOf;
template <ObjectType OBJECT_TYPE, SignalAction ACTION>
struct ActionOf<CmdSendSignal<OBJECT_TYPE, ACTION>> {
  static constexpr bool IS_RESET = ACTION == SignalAction::RESET;
};

template <typename COMMAND>
class CmdSendSignalTest : public CmdValuesTest<COMMAND, CmdSendSignalPars, job::SendSignalJobPars> {};

using Commands = testing::Types<
    CmdSendSignal<ObjectType::AXIS, SignalAction::SET>, CmdSendSignal<ObjectType::KINEMATICS, SignalAction::SET>,
    CmdSendSignal<ObjectType::AXIS, SignalAction::RESET>, CmdSendSignal<ObjectType::KINEMATICS, SignalAction::RESET>>;
TYPED_TEST_SUITE(CmdSendSignalTest, Commands);

TYPED_TEST(CmdSendSignalTest, OffersEmptyParametersAtFirst) {
  const auto record = this->offered();
  EXPECT_EQ(record.signalId, 0U);
  EXPECT_FALSE(record.reset);
}

TYPED_TEST(CmdSendSignalTest, TakesTheSignalAndAddsItsAction) {
  EXPECT_EQ(this->set(42), CmdResult::Okay);
  const auto record = this->offered();
  EXPECT_EQ(record.signalId, 42U);
  EXPECT_EQ(record.reset, ActionOf<TypeParam>::IS_RESET);
  EXPECT_THAT(this->traces(), IsEmpty());
}

TYPED_TEST(CmdSendSignalTest, RefusesNoParameters) {
  ASSERT_EQ(this->set(42), CmdResult::Okay);
  EXPECT_EQ(core::toCode(this->set(nullptr)), 0xF0110011U);
  EXPECT_THAT(this->traces(), ElementsAre("Error cmd_send_signal onSetCmdValues: cmdValues==nullptr"));
  EXPECT_EQ(this->m_host.traceSink.entries()[0].format, "%s");
  EXPECT_EQ(this->offered().signalId, 42U);
}

TYPED_TEST(CmdSendSignalTest, RefusesParametersOfAnotherType) {
  const job::SendSignalJobPars jobPars(job::SendSignalJobParsT{1, false});
  const job::WaitForSignalJobPars waitPars(job::WaitForSignalJobParsT{1, false});
  this->expectRefused({&jobPars, &waitPars},
                      "Error cmd_send_signal onSetCmdValues: SendSignalJobUser::safeCast(cmdValues) failed");
}

TYPED_TEST(CmdSendSignalTest, AcceptsASignalThatExists) {
  this->expectSignalsThatExistAccepted();
}

TYPED_TEST(CmdSendSignalTest, ReportsASignalThatDoesNotExist) {
  ASSERT_EQ(this->set(100), CmdResult::Okay);
  EXPECT_EQ(core::toCode(this->m_sut.onValidate(this->m_source, &this->m_dia)), 0xF011001DU);
  EXPECT_THAT(this->traces(), ElementsAre("Error cmd_send_signal onValidate: 100 is not a valid signal ID"));
  EXPECT_EQ(this->m_host.traceSink.entries()[0].format, "%d is not a valid signal ID");
  ASSERT_EQ(this->m_dia.m_reports.size(), 1U);
  const auto& report = this->m_dia.m_reports[0];
  EXPECT_EQ(report.mainCode, 0x090F0FFFU);
  EXPECT_EQ(report.detailCode, 0x0C570101U);
  EXPECT_EQ(report.source.client, "a client");
  EXPECT_EQ(report.source.file, "a program");
  EXPECT_EQ(report.source.line, 12U);
  EXPECT_THAT(report.file, testing::HasSubstr("cmd_send_signal"));
  EXPECT_EQ(report.function, "onValidate");
  EXPECT_EQ(report.text, "Invalid signal ID");
  EXPECT_TRUE(report.isClosed);
  EXPECT_EQ(this->m_host.calls.count("dia.close"), 1);
}

TYPED_TEST(CmdSendSignalTest, RefusesASignalThatDoesNotExistWithoutADiagnosisToo) {
  ASSERT_EQ(this->set(0xFFFFFFFF), CmdResult::Okay);
  EXPECT_EQ(core::toCode(this->m_sut.onValidate(this->m_source, nullptr)), 0xF011001DU);
  EXPECT_EQ(this->traces().size(), 1U);
}

TYPED_TEST(CmdSendSignalTest, AnswersAnExceptionOfTheHostWithAFailure) {
  ASSERT_EQ(this->set(100), CmdResult::Okay);
  this->m_host.calls.fail("dia.report", test::FakeCalls::THROW);
  EXPECT_TRUE(core::isFailure(this->m_sut.onValidate(this->m_source, &this->m_dia)));
}

}  // namespace
}  // namespace motion::kavo::cmd
