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
  AbortCmdFn abortCmd = nullptr;
  DwellCmdFn dwellCmd = nullptr;

  SignalCmdFn resetSignalCmd = nullptr;
  SignalCmdFn setSignalCmd = nullptr;
  SignalCmdOptFn setSignalCmdOpt = nullptr;
  WaitForSignalCmdFn waitForSignalCmd = nullptr;
  JoinCmdFn joinCmd = nullptr;
};

/// Functions for axes and kinematics alike.
struct MotionCmdGeneralFctT {
  AbortCmdFn abortCmd = nullptr;
  DwellCmdFn dwellCmd = nullptr;

  SignalCmdFn resetSignalCmd = nullptr;
  SignalCmdFn setSignalCmd = nullptr;
  SignalCmdOptFn setSignalCmdOpt = nullptr;
  WaitForSignalCmdFn waitForSignalCmd = nullptr;
  JoinCmdFn joinCmd = nullptr;
  SignalCmdFn waitForSignalResetCmd = nullptr;
};

/// Functions for kinematics only.
struct MotionCmdKinFctT {
  AbortCmdFn abortCmd = nullptr;
  KinSwitchOnPathCmdOptFn kinSwitchOnPathCmdOpt = nullptr;
};

/// The current record: sub-records by topic. No sub-record pointer is null.
struct MotionCmdIf2T {
  std::uint32_t version = 2;
  MotionCmdGeneralFctT* general = nullptr;
  MotionCmdKinFctT* kin = nullptr;
};

}  // namespace motion::core
