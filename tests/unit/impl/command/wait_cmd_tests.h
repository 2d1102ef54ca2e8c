// What holds for each command that waits for a signal. Each command's own test says its texts and instantiates these.
#pragma once

#include "command/cmd_values_fixture.h"
#include "impl/send_signal/send_signal_pars.h"

namespace motion::kavo::cmd {

/// CASE says of a command: `Command`, its `Record`, the `OtherRecord` of a similar command, and the traces
/// `WRONG_PARAMETERS` and `INVALID_SIGNAL` (for signal 100).
template <typename CASE>
class WaitCmdTest : public CmdValuesTest<typename CASE::Command, typename CASE::Record, typename CASE::Record> {};
TYPED_TEST_SUITE_P(WaitCmdTest);

TYPED_TEST_P(WaitCmdTest, OffersEmptyParametersAtFirst) {
  EXPECT_EQ(this->offered().signalId, 0U);
}

TYPED_TEST_P(WaitCmdTest, TakesItsSignalOver) {
  EXPECT_EQ(this->set(42), core::cmd::CmdResult::Okay);
  EXPECT_EQ(this->offered().signalId, 42U);
  EXPECT_THAT(this->traces(), testing::IsEmpty());
}

TYPED_TEST_P(WaitCmdTest, RefusesNoParametersAndThoseOfAnotherType) {
  const typename TypeParam::OtherRecord other({1});
  const CmdSendSignalPars sendPars(CmdSendSignalParsT{1});
  this->expectRefused({nullptr, &other, &sendPars}, TypeParam::WRONG_PARAMETERS);
}

TYPED_TEST_P(WaitCmdTest, AcceptsASignalThatExists) {
  this->expectSignalsThatExistAccepted();
}

TYPED_TEST_P(WaitCmdTest, RefusesASignalThatDoesNotExist) {
  ASSERT_EQ(this->set(100), core::cmd::CmdResult::Okay);
  EXPECT_EQ(core::toCode(this->m_sut.onValidate(this->m_source, &this->m_dia)), 0xF011001DU);
  EXPECT_EQ(core::toCode(this->m_sut.onValidate(this->m_source, nullptr)), 0xF011001DU);
  EXPECT_THAT(this->traces(), testing::ElementsAre(TypeParam::INVALID_SIGNAL, TypeParam::INVALID_SIGNAL));
  EXPECT_EQ(this->m_host.traceSink.entries()[0].format, "m_cmdValues.signalId (=%d) is not valid");
  EXPECT_THAT(this->m_dia.m_reports, testing::IsEmpty()) << "the diagnosis is not used";
}

REGISTER_TYPED_TEST_SUITE_P(WaitCmdTest, OffersEmptyParametersAtFirst, TakesItsSignalOver,
                            RefusesNoParametersAndThoseOfAnotherType, AcceptsASignalThatExists,
                            RefusesASignalThatDoesNotExist);

}  // namespace motion::kavo::cmd
