// The command WaitForSignal: taking over and checking its parameters.
#include "impl/wait_for_signal/cmd_wait_for_signal.h"

#include "command/wait_cmd_tests.h"
#include "impl/wait_for_signal_reset/wait_for_signal_reset_pars.h"

namespace motion::kavo::cmd {
namespace {

using core::ObjectType;
using core::cmd::CmdResult;

template <ObjectType OBJECT_TYPE>
struct WaitForSignalCase {
  using Command = CmdWaitForSignal<OBJECT_TYPE>;
  using Record = job::WaitForSignalJobPars;
  using OtherRecord = job::WaitForSignalResetJobPars;
  static constexpr const char* WRONG_PARAMETERS =
      "Error cmd_wait_for_signal onSetCmdValues: CmdWaitForSignalPars::safeCast(cmdValues) failed";
  static constexpr const char* INVALID_SIGNAL =
      "Error cmd_wait_for_signal onValidate: m_cmdValues.signalId (=100) is not valid";
};

using Cases = testing::Types<WaitForSignalCase<ObjectType::AXIS>, WaitForSignalCase<ObjectType::KINEMATICS>>;
INSTANTIATE_TYPED_TEST_SUITE_P(WaitForSignal, WaitCmdTest, Cases);

template <typename CASE>
class CmdWaitForSignalTest : public WaitCmdTest<CASE> {};
TYPED_TEST_SUITE(CmdWaitForSignalTest, Cases);

TYPED_TEST(CmdWaitForSignalTest, ConsumesNothingAtFirst) {
  EXPECT_FALSE(this->offered().autoReset);
}

TYPED_TEST(CmdWaitForSignalTest, TakesAllItsParametersOver) {
  for (const bool autoReset : {true, false}) {
    const job::WaitForSignalJobPars values(job::WaitForSignalJobParsT{42, autoReset});
    EXPECT_EQ(this->set(&values), CmdResult::Okay);
    EXPECT_EQ(this->offered().signalId, 42U);
    EXPECT_EQ(this->offered().autoReset, autoReset);
  }
}

}  // namespace
}  // namespace motion::kavo::cmd
