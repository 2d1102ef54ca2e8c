// The command WaitForSignalReset: taking over and checking its parameters.
#include "impl/wait_for_signal_reset/cmd_wait_for_signal_reset.h"

#include "impl/send_signal/send_signal_pars.h"
#include "impl/wait_for_signal/wait_for_signal_pars.h"
#include "impl_fixture.h"

namespace motion::kavo::cmd {
namespace {

using core::ObjectType;
using core::cmd::CmdResult;
using testing::ElementsAre;
using testing::IsEmpty;

template <typename COMMAND>
class CmdWaitForSignalResetTest : public CommandTest {
 protected:
  [[nodiscard]] CmdResult setValues(const core::IContainer* values) {
    return m_sut.onSetCmdValues(values, m_source, nullptr, false);
  }
  [[nodiscard]] CmdResult set(std::uint32_t signalId) {
    const job::WaitForSignalResetJobPars values(job::WaitForSignalResetJobParsT{signalId});
    return setValues(&values);
  }
  /// What the command offers its job.
  [[nodiscard]] job::WaitForSignalResetJobParsT offered() {
    m_handler.m_published.clear();
    EXPECT_EQ(m_sut.onRegisterJobListsInputs(m_handler), CmdResult::Okay);
    const core::IContainer* const container =
        m_handler.m_published.at({job::WaitForSignalResetJobPars::getMyID(), cmdDataSection()});
    const auto* const record = job::WaitForSignalResetJobPars::safeCast(container);
    return record != nullptr ? record->get() : job::WaitForSignalResetJobParsT{0xFFFFFFFF};
  }

  COMMAND m_sut{m_host.objFactory};
};

using Commands = testing::Types<CmdWaitForSignalReset<ObjectType::AXIS>, CmdWaitForSignalReset<ObjectType::KINEMATICS>>;
TYPED_TEST_SUITE(CmdWaitForSignalResetTest, Commands);

TYPED_TEST(CmdWaitForSignalResetTest, OffersEmptyParametersAtFirst) {
  EXPECT_EQ(this->offered().signalId, 0U);
}

TYPED_TEST(CmdWaitForSignalResetTest, TakesItsParametersOver) {
  EXPECT_EQ(this->set(42), CmdResult::Okay);
  EXPECT_EQ(this->offered().signalId, 42U);
  EXPECT_THAT(this->traces(), IsEmpty());
}

TYPED_TEST(CmdWaitForSignalResetTest, RefusesNoParametersAndThoseOfAnotherType) {
  ASSERT_EQ(this->set(42), CmdResult::Okay);
  const job::WaitForSignalJobPars other(job::WaitForSignalJobParsT{1, false});
  const CmdSendSignalPars sendPars(CmdSendSignalParsT{1});
  EXPECT_EQ(core::toCode(this->setValues(nullptr)), 0xF011000EU);
  EXPECT_EQ(core::toCode(this->setValues(&other)), 0xF011000EU);
  EXPECT_EQ(core::toCode(this->setValues(&sendPars)), 0xF011000EU);
  const std::string expected =
      "Error cmd_wait_for_signal_reset onSetCmdValues: CmdWaitForSignalResetPars::safeCast(cmdValues) failed";
  EXPECT_THAT(this->traces(), ElementsAre(expected, expected, expected));
  EXPECT_EQ(this->m_host.traceSink.entries()[0].format, "%s");
  EXPECT_EQ(this->offered().signalId, 42U);
}

TYPED_TEST(CmdWaitForSignalResetTest, AcceptsASignalThatExists) {
  for (const std::uint32_t id : {0U, 99U}) {
    ASSERT_EQ(this->set(id), CmdResult::Okay);
    EXPECT_EQ(this->m_sut.onValidate(this->m_source, &this->m_dia), CmdResult::Okay);
  }
  EXPECT_THAT(this->m_dia.m_reports, IsEmpty());
  EXPECT_THAT(this->traces(), IsEmpty());
}

TYPED_TEST(CmdWaitForSignalResetTest, RefusesASignalThatDoesNotExist) {
  ASSERT_EQ(this->set(100), CmdResult::Okay);
  EXPECT_EQ(core::toCode(this->m_sut.onValidate(this->m_source, &this->m_dia)), 0xF011001DU);
  EXPECT_EQ(core::toCode(this->m_sut.onValidate(this->m_source, nullptr)), 0xF011001DU);
  const std::string expected = "Error cmd_wait_for_signal_reset onValidate: m_cmdValues.signalId (=100) is not valid";
  EXPECT_THAT(this->traces(), ElementsAre(expected, expected));
  EXPECT_EQ(this->m_host.traceSink.entries()[0].format, "m_cmdValues.signalId (=%d) is not valid");
  EXPECT_THAT(this->m_dia.m_reports, IsEmpty()) << "the diagnosis is not used";
}

}  // namespace
}  // namespace motion::kavo::cmd
