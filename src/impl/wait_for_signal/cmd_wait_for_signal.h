// The command WaitForSignal: holds an object's command buffer until a signal is set.
#pragma once

#include <string>
#include <vector>

#include "comm/datalayer/variant.h"
#include "impl/command/kavo_cmd.h"
#include "impl/wait_for_signal/wait_for_signal_pars.h"
#include "motion/core/cmd/cmd_id.h"
#include "motion/core/i_motion_ext.h"

namespace motion::kavo::cmd {

template <core::ObjectType OBJECT_TYPE>
class CmdWaitForSignal : public KavoCmd<OBJECT_TYPE> {
 public:
  explicit CmdWaitForSignal(core::IObjFactory& objFactory);

  /// Registers and unregisters the job and the command; see registerCommand. [framework]
  [[nodiscard]] static core::cmd::CmdResult registerCmd(const core::IMotionExt& extIf, const std::string& schemaDir);
  [[nodiscard]] static core::cmd::CmdResult unregisterCmd(const core::IMotionExt& extIf);  ///< [framework]
  /// What the host's command factory calls. [prepare]
  static core::cmd::CmdResult onCreate(core::IObjFactory& factory, bool buffered, core::cmd::CmdGeneric<OBJECT_TYPE>*& cmd,
                                       std::string& errText);
  static core::cmd::CmdResult onMarshall(const comm::datalayer::Variant* data, core::IContainer*& container,
                                         bool& owned);  ///< [prepare]
  /// The first call, at registration, may throw std::bad_alloc. [framework] [prepare]
  [[nodiscard]] static const core::cmd::CmdId& getCmdId();
  [[nodiscard]] static const char* getStaticName() noexcept;  ///< [any]

  [[nodiscard]] std::vector<std::string> getJobNames() const override;
  core::cmd::CmdResult onSetCmdValues(const core::IContainer* cmdValues, const core::dia::CmdSourceInfo& source,
                                      core::IObj* obj, bool flag) override;
  core::cmd::CmdResult onRegisterJobListsInputs(core::job::IJobDataHandler& handler) override;
  core::cmd::CmdResult onValidate(const core::dia::CmdSourceInfo& source, core::dia::IDia* dia) override;

 private:
  job::WaitForSignalJobPars m_cmdValues;
};

extern template class CmdWaitForSignal<core::ObjectType::AXIS>;
extern template class CmdWaitForSignal<core::ObjectType::KINEMATICS>;

}  // namespace motion::kavo::cmd
