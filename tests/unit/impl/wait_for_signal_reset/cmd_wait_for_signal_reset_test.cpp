// The command WaitForSignalReset: taking over and checking its parameters.
#include "impl/wait_for_signal_reset/cmd_wait_for_signal_reset.h"

#include "command/wait_cmd_tests.h"
#include "impl/wait_for_signal/wait_for_signal_pars.h"

namespace motion::kavo::cmd {
namespace {

using core::ObjectType;

template <ObjectType OBJECT_TYPE>
struct WaitForSignalResetCase {
  using Command = CmdWaitForSignalReset<OBJECT_TYPE>;
  using Record = job::WaitForSignalResetJobPars;
  using OtherRecord = job::WaitForSignalJobPars;
  static constexpr const char* WRONG_PARAMETERS =
      "Error cmd_wait_for_signal_reset onSetCmdValues: CmdWaitForSignalResetPars::safeCast(cmdValues) failed";
  static constexpr const char* INVALID_SIGNAL =
      "Error cmd_wait_for_signal_reset onValidate: m_cmdValues.signalId (=100) is not valid";
};

using Cases = testing::Types<WaitForSignalResetCase<ObjectType::AXIS>, WaitForSignalResetCase<ObjectType::KINEMATICS>>;
INSTANTIATE_TYPED_TEST_SUITE_P(WaitForSignalReset, WaitCmdTest, Cases);

}  // namespace
}  // namespace motion::kavo::cmd
