// The command option SetSignal: sets a signal when a command that it accompanies starts to run.
#pragma once

#include <string>
#include <vector>

#include "comm/datalayer/variant.h"
#include "impl/send_signal/send_signal_pars.h"
#include "motion/core/cmd/cmd_id.h"
#include "motion/core/cmd/generic_cmd_option.h"
#include "motion/core/dia/i_dia.h"
#include "motion/core/i_motion_ext.h"

namespace motion::kavo::cmd {

class CmdOptionSetSignal : public core::cmd::GenericCmdOption {
 public:
  /// Registers the job and the option, for axes and then for kinematics. NullPointer without a factory,
  /// JobRegistrationFailed, OutOfMemory, else the result of the option factory. [framework]
  [[nodiscard]] static core::cmd::CmdResult registerCmdOption(const core::IMotionExt& extIf, const std::string& schemaDir);
  /// The reverse; the result is that of the second type of object. [framework]
  [[nodiscard]] static core::cmd::CmdResult unregisterCmdOption(const core::IMotionExt& extIf);
  /// What the host's option factory calls. [prepare]
  static core::cmd::CmdResult onCreate(core::cmd::GenericCmdOption*& option, std::string& errText);
  static core::cmd::CmdResult onMarshall(const comm::datalayer::Variant* data, core::IContainer*& container,
                                         core::cmd::CmdOptPermType& permType,
                                         core::dia::IDiagCollector& collector);  ///< [prepare]
  /// May throw std::bad_alloc. [framework] [prepare]
  [[nodiscard]] static core::cmd::CmdId getCmdId(core::ObjectType objectType);
  [[nodiscard]] static const char* getJobName() noexcept;  ///< [any]

  core::cmd::CmdResult setParameter(const core::IContainer* cmdOptValues, core::IObjFactory& jobObjFactory,
                                    const core::IObj& obj, core::dia::IDia& dia) override;
  [[nodiscard]] std::vector<core::job::IJobObject*> createJobs(core::IObjFactory& jobObjFactory) const override;

 private:
  /// What was checked and accepted; its job never resets.
  job::SendSignalJobPars m_jobPars;
};

}  // namespace motion::kavo::cmd
