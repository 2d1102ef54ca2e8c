// The commands SetSignal and ResetSignal: buffered commands that finish in the cycle in which they begin.
#pragma once

#include <cstdint>

#include "comm/datalayer/variant.h"
#include "impl/command/cmd_groups.h"
#include "impl/command/generic_buffered_cmd.h"
#include "impl/send_signal/send_signal_pars.h"

namespace motion::kavo::cmd {

enum class SignalAction : std::uint32_t { SET = 0, RESET = 1 };

template <core::ObjectType OBJECT_TYPE, SignalAction ACTION>
class CmdSendSignal : public GenericBufferedCmd<CmdSendSignal<OBJECT_TYPE, ACTION>, job::SendSignalJobPars, OBJECT_TYPE> {
 public:
  using GenericBufferedCmd<CmdSendSignal, job::SendSignalJobPars, OBJECT_TYPE>::GenericBufferedCmd;

  /// What the host's command factory calls. [prepare]
  static core::cmd::CmdResult onMarshal(const comm::datalayer::Variant* data, core::IContainer*& container, bool& owned);

  core::cmd::CmdResult onSetCmdValues(const core::IContainer* cmdValues, const core::dia::CmdSourceInfo& source,
                                      core::IObj* obj, bool flag) override;
  core::cmd::CmdResult onValidate(const core::dia::CmdSourceInfo& source, core::dia::IDia* dia) override;

  [[nodiscard]] static const CmdDefinition& define() noexcept;  ///< [any]
  static constexpr const char* GROUPS[] = {GROUP_SEND_SIGNAL, nonMotionGroup(OBJECT_TYPE)};
  static constexpr auto MARSHAL = &onMarshal;
};

extern template class CmdSendSignal<core::ObjectType::AXIS, SignalAction::SET>;
extern template class CmdSendSignal<core::ObjectType::KINEMATICS, SignalAction::SET>;
extern template class CmdSendSignal<core::ObjectType::AXIS, SignalAction::RESET>;
extern template class CmdSendSignal<core::ObjectType::KINEMATICS, SignalAction::RESET>;

}  // namespace motion::kavo::cmd
