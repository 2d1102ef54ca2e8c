// The command WaitForSignalReset: holds an object's command buffer until a signal is reset.
#pragma once

#include "comm/datalayer/variant.h"
#include "impl/command/wait_cmd.h"
#include "impl/wait_for_signal_reset/wait_for_signal_reset_pars.h"

namespace motion::kavo::cmd {

template <core::ObjectType OBJECT_TYPE>
class CmdWaitForSignalReset
    : public WaitCmd<CmdWaitForSignalReset<OBJECT_TYPE>, job::WaitForSignalResetJobPars, OBJECT_TYPE> {
 public:
  using WaitCmd<CmdWaitForSignalReset, job::WaitForSignalResetJobPars, OBJECT_TYPE>::WaitCmd;

  /// What the host's command factory calls. [prepare]
  static core::cmd::CmdResult onMarshall(const comm::datalayer::Variant* data, core::IContainer*& container, bool& owned);

  [[nodiscard]] static const CmdDefinition& define() noexcept;  ///< [any]
  static constexpr auto MARSHAL = &onMarshall;
  static constexpr const char* WRONG_PARAMETERS = "CmdWaitForSignalResetPars::safeCast(cmdValues) failed";
};

extern template class CmdWaitForSignalReset<core::ObjectType::AXIS>;
extern template class CmdWaitForSignalReset<core::ObjectType::KINEMATICS>;

}  // namespace motion::kavo::cmd
