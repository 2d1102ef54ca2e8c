// Brings the component's commands up in the host and publishes the functions that issue them by object name.
#pragma once

#include <string>
#include <vector>

#include "comm/datalayer/i_data_layer_factory.h"
#include "motion/core/i_motion_ext.h"
#include "motion/core/object_type.h"
#include "motion/core/records/motion_cmd_if.h"
#include "motion/core/results.h"

namespace motion::kavo {

class MotionKavoCmd {
 public:
  MotionKavoCmd() = delete;

  /// Initialises the real-time signals, registers data types and commands and publishes the functions. `schemaDir` ends with
  /// a separator. After a failure, which is traced, `terminate` takes back what was done. [framework]
  [[nodiscard]] static bool initialize(core::MotionCmdIfT& cmdIf, core::MotionCmdIf2T& cmdIf2, core::IMotionExt& ext,
                                       comm::datalayer::IDataLayerFactory& factory, const std::string& schemaDir) noexcept;
  /// Takes everything back; may be called in any state. Without `ext` the commands stay registered. [framework]
  static void terminate(core::IMotionExt* ext) noexcept;

  /// The type of a motion object. NotAvailable while not started, ObjectNotFound, NotOkay when it is neither axis nor
  /// kinematics; each with a trace. [prepare]
  [[nodiscard]] static core::FctResult getObjectType(const char* name, core::ObjectType& type);

  /// The published functions. NotAvailable without a context, else the result of getObjectType or of the context. [prepare]
  static core::FctResult setSignalCmd(core::cmd::ICmdContext* context, const core::dia::CmdSourceInfo& source,
                                      const char* objName, unsigned int signalId, unsigned long& cmdId) noexcept;
  static core::FctResult resetSignalCmd(core::cmd::ICmdContext* context, const core::dia::CmdSourceInfo& source,
                                        const char* objName, unsigned int signalId, unsigned long& cmdId) noexcept;
  static core::FctResult setSignalCmdOpt(core::cmd::ICmdContext* context, const core::dia::CmdSourceInfo& source,
                                         const char* objName, unsigned int signalId) noexcept;
  static core::FctResult waitForSignalCmd(core::cmd::ICmdContext* context, const core::dia::CmdSourceInfo& source,
                                          const char* objName, unsigned int signalId, bool autoReset,
                                          unsigned long& cmdId) noexcept;
  static core::FctResult waitForSignalResetCmd(core::cmd::ICmdContext* context, const core::dia::CmdSourceInfo& source,
                                               const char* objName, unsigned int signalId, unsigned long& cmdId) noexcept;
  static core::FctResult joinCmd(core::cmd::ICmdContext* context, const core::dia::CmdSourceInfo& source,
                                 const char* objName, const std::vector<std::string>& group, bool syncStartNextCmd,
                                 unsigned long& cmdId) noexcept;
  /// OptionNotSupported when the object is no kinematics; InvalidParameter without a target, unless the option is switched
  /// off. Each with a trace.
  static core::FctResult kinSwitchOnPathCmdOpt(core::cmd::ICmdContext* context, const core::dia::CmdSourceInfo& source,
                                               core::cmd::CmdOptPermType permType, const char* objName,
                                               SwitchOnPathMode mode, unsigned int signalId, SwitchOnPathAction action,
                                               const double* targetPos, double radius, double preTriggerTime) noexcept;

  static inline core::MotionCmdIfT* g_motionCmdIf = nullptr;  ///< the records written to, null while not initialised
  static inline core::MotionCmdIf2T* g_motionCmdIf2 = nullptr;
};

}  // namespace motion::kavo
