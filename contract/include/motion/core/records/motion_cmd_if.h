// Records of command functions: each issues one command on a motion object by name.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "motion/core/cmd/cmd_opt_types.h"
#include "motion/core/cmd/i_cmd_context.h"
#include "motion/core/dia/cmd_source_info.h"
#include "motion/core/results.h"
#include "motion/kavo/switch_on_path_types.h"

namespace motion::core {

/// A command with a signal. On success `cmdId` is the command's ID. [prepare]
using SignalCmdFn = FctResult (*)(cmd::ICmdContext* context, const dia::CmdSourceInfo& source, const char* objName,
                                  unsigned int signalId, unsigned long& cmdId);
/// A command option with a signal, for the next command. [prepare]
using SignalCmdOptFn = FctResult (*)(cmd::ICmdContext* context, const dia::CmdSourceInfo& source, const char* objName,
                                     unsigned int signalId);
/// Waits for a signal; `autoReset` consumes it. [prepare]
using WaitForSignalCmdFn = FctResult (*)(cmd::ICmdContext* context, const dia::CmdSourceInfo& source, const char* objName,
                                         unsigned int signalId, bool autoReset, unsigned long& cmdId);
/// Joins the objects of a group. [prepare]
using JoinCmdFn = FctResult (*)(cmd::ICmdContext* context, const dia::CmdSourceInfo& source, const char* objName,
                                const std::vector<std::string>& group, bool syncStartNextCmd, unsigned long& cmdId);
/// Switches a signal on the path of a kinematics; `targetPos` has three coordinates, lengths and times are in the user's
/// units. [prepare]
using KinSwitchOnPathCmdOptFn = FctResult (*)(cmd::ICmdContext* context, const dia::CmdSourceInfo& source,
                                              cmd::CmdOptPermType permType, const char* objName, kavo::SwitchOnPathMode mode,
                                              unsigned int signalId, kavo::SwitchOnPathAction action,
                                              const double* targetPos, double radius, double preTriggerTime);

/// Aborts what an object does and what is buffered behind it. [prepare]
using AbortCmdFn = FctResult (*)(cmd::ICmdContext* context, const dia::CmdSourceInfo& source, const char* objName);
/// Waits for a time [s]. [prepare]
using DwellCmdFn = FctResult (*)(cmd::ICmdContext* context, const dia::CmdSourceInfo& source, const char* objName,
                                 double duration, unsigned long& cmdId);

/// The older record. Written and read as MotionSysIfT.
struct MotionCmdIfT {
  AbortCmdFn abortCmd = nullptr;  ///< empties the object; published by the host
  DwellCmdFn dwellCmd = nullptr;  ///< lets the object rest for a while; published by the host

  SignalCmdFn resetSignalCmd = nullptr;           ///< resets a signal; null while Motion.Kavo is not started
  SignalCmdFn setSignalCmd = nullptr;             ///< sets a signal; as above
  SignalCmdOptFn setSignalCmdOpt = nullptr;       ///< sets a signal when the next command starts; as above
  WaitForSignalCmdFn waitForSignalCmd = nullptr;  ///< holds the object until a signal is set; as above
  JoinCmdFn joinCmd = nullptr;                    ///< holds the object until all of a group are there; as above
};

/// Functions for axes and kinematics alike.
struct MotionCmdGeneralFctT {
  AbortCmdFn abortCmd = nullptr;  ///< empties the object; published by the host
  DwellCmdFn dwellCmd = nullptr;  ///< lets the object rest for a while; published by the host

  SignalCmdFn resetSignalCmd = nullptr;           ///< resets a signal; null while Motion.Kavo is not started
  SignalCmdFn setSignalCmd = nullptr;             ///< sets a signal; as above
  SignalCmdOptFn setSignalCmdOpt = nullptr;       ///< sets a signal when the next command starts; as above
  WaitForSignalCmdFn waitForSignalCmd = nullptr;  ///< holds the object until a signal is set; as above
  JoinCmdFn joinCmd = nullptr;                    ///< holds the object until all of a group are there; as above
  SignalCmdFn waitForSignalResetCmd = nullptr;    ///< holds the object until a signal is reset; as above
};

/// Functions for kinematics only.
struct MotionCmdKinFctT {
  AbortCmdFn abortCmd = nullptr;                            ///< empties the object; published by the host
  KinSwitchOnPathCmdOptFn kinSwitchOnPathCmdOpt = nullptr;  ///< null while Motion.Kavo is not started
};

/// The current record: sub-records by topic. No sub-record pointer is null.
struct MotionCmdIf2T {
  std::uint32_t version = 2;                ///< of this record; the older one has none
  MotionCmdGeneralFctT* general = nullptr;  ///< owned by the host
  MotionCmdKinFctT* kin = nullptr;          ///< owned by the host
};

}  // namespace motion::core
