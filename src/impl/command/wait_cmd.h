// What the commands that hold an object's command buffer until a signal has some state do alike.
#pragma once

#include "impl/command/cmd_groups.h"
#include "impl/command/generic_buffered_cmd.h"

namespace motion::kavo::cmd {

/// Base of COMMAND, whose jobs read the RECORD that the issuer of the command fills, `signalId` among its fields. Besides
/// what GenericBufferedCmd asks for, but for the groups, COMMAND says by `WRONG_PARAMETERS` what is traced when it is given
/// something else than a RECORD.
template <typename COMMAND, typename RECORD, core::ObjectType OBJECT_TYPE>
class WaitCmd : public GenericBufferedCmd<COMMAND, RECORD, OBJECT_TYPE> {
 public:
  static constexpr const char* GROUPS[] = {GROUP_SYNC_ON_SIGNAL, nonMotionGroup(OBJECT_TYPE)};

  using GenericBufferedCmd<COMMAND, RECORD, OBJECT_TYPE>::GenericBufferedCmd;

  core::cmd::CmdResult onSetCmdValues(const core::IContainer* cmdValues, const core::dia::CmdSourceInfo& /*source*/,
                                      core::IObj* /*obj*/, bool /*flag*/) override {
    return takeParameters(this->siteOf(__func__), cmdValues, this->m_cmdValues, COMMAND::WRONG_PARAMETERS);
  }
  /// The diagnosis is not used.
  core::cmd::CmdResult onValidate(const core::dia::CmdSourceInfo& /*source*/, core::dia::IDia* /*dia*/) override {
    return validateSignalId(this->siteOf(__func__), this->m_cmdValues.get().signalId);
  }
};

}  // namespace motion::kavo::cmd
