// The command option SwitchOnPath: switches a signal when the path of a kinematics enters a sphere.
#pragma once

#include <string>
#include <vector>

#include "comm/datalayer/variant.h"
#include "impl/switch_on_path/job_data_switch_on_path.h"
#include "motion/core/cmd/cmd_id.h"
#include "motion/core/cmd/generic_cmd_option.h"
#include "motion/core/dia/i_dia.h"
#include "motion/core/i_motion_ext.h"
#include "motion/core/unit_settings.h"

namespace motion::kavo::cmd {

class CmdOptionSwitchOnPath : public core::cmd::GenericCmdOption {
 public:
  /// Registers the job and the option, for kinematics, and keeps the host's unit helper. NullPointer without a factory or
  /// the helper, JobRegistrationFailed, OutOfMemory, else the result of the option factory. [framework]
  [[nodiscard]] static core::cmd::CmdResult registerCmdOption(const core::IMotionExt& extIf, const std::string& schemaDir);
  [[nodiscard]] static core::cmd::CmdResult unregisterCmdOption(const core::IMotionExt& extIf);  ///< [framework]
  /// What the host's option factory calls. [prepare]
  static core::cmd::CmdResult onCreate(core::cmd::GenericCmdOption*& option, std::string& errText);
  static core::cmd::CmdResult onMarshall(const comm::datalayer::Variant* data, core::IContainer*& values,
                                         core::cmd::CmdOptPermType& permType,
                                         core::dia::IDiagCollector& diag);  ///< [prepare]
  /// May throw std::bad_alloc. [framework] [prepare]
  [[nodiscard]] static core::cmd::CmdId getCmdId(core::ObjectType objectType);

  /// Converts the new condition into internal units and appends those of the active option that have not fired.
  core::cmd::CmdResult prepareStackableCmdOption(core::IObj& obj, const core::cmd::ICmdOptHandler& handler,
                                                 core::IContainer* values, core::cmd::CmdOptPermType& permType,
                                                 const core::dia::CmdSourceInfo& source) const override;
  core::cmd::CmdResult setParameter(const core::IContainer* values, core::IObjFactory& factory, const core::IObj& obj,
                                    core::dia::IDia& dia) override;
  core::cmd::CmdResult getParameter(const core::IContainer*& values) override;
  [[nodiscard]] std::vector<core::job::IJobObject*> createJobs(core::IObjFactory& factory) const override;

 private:
  /// The new condition, which the user has written in his own units.
  static void toInternalUnits(const core::UnitSettings& units, SwitchOnPathPars& condition);

  SwitchOnPathParsList m_conditions;

  static const core::UnitHelperT* m_unitHelper;
  /// Stands for the target that switching off does not need.
  static const std::array<double, 3> unusedTargetPosition;
};

}  // namespace motion::kavo::cmd
