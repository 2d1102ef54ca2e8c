// The command WaitForSignal: holds an object's command buffer until a signal is set.
#pragma once

#include "comm/datalayer/variant.h"
#include "impl/command/wait_cmd.h"
#include "impl/wait_for_signal/wait_for_signal_pars.h"

namespace motion::kavo::cmd {

template <core::ObjectType OBJECT_TYPE>
class CmdWaitForSignal : public WaitCmd<CmdWaitForSignal<OBJECT_TYPE>, job::WaitForSignalJobPars, OBJECT_TYPE> {
 public:
  using WaitCmd<CmdWaitForSignal, job::WaitForSignalJobPars, OBJECT_TYPE>::WaitCmd;

  /// What the host's command factory calls. [prepare]
  static core::cmd::CmdResult onMarshall(const comm::datalayer::Variant* data, core::IContainer*& container, bool& owned);

  [[nodiscard]] static const CmdDefinition& define() noexcept;  ///< [any]
  static constexpr auto MARSHAL = &onMarshall;
  static constexpr const char* WRONG_PARAMETERS = "CmdWaitForSignalPars::safeCast(cmdValues) failed";
};

extern template class CmdWaitForSignal<core::ObjectType::AXIS>;
extern template class CmdWaitForSignal<core::ObjectType::KINEMATICS>;

}  // namespace motion::kavo::cmd
