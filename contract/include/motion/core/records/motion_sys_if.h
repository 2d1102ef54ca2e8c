// Records of system functions: the host publishes some, components publish others.
#pragma once

#include <cstdint>

#include "motion/core/results.h"

namespace motion::core {

/// Sets or resets a signal. `context` is a host context that components ignore. [any]
using SignalFn = FctResult (*)(void* context, unsigned int signalId);
/// Reads a signal; `value` is written only on success. [any]
using GetSignalFn = FctResult (*)(void* context, unsigned int signalId, bool& value);

/// The older record. Components receive records as const: what they call stays as it is, and each component writes only the
/// fields that are its own, at start and stop. Records are therefore never constant objects.
struct MotionSysIfT {
  void* context = nullptr;                                              ///< the host's own; handed back with every call
  std::uint32_t (*getObjCount)(void* context) = nullptr;                ///< number of motion objects [any]
  FctResult (*getCycleTime)(void* context, double& seconds) = nullptr;  ///< length of one cycle [s] [any]

  SignalFn resetSignal = nullptr;   ///< null while Motion.Kavo is not started
  SignalFn setSignal = nullptr;     ///< as above
  GetSignalFn getSignal = nullptr;  ///< as above

  FctResult (*abortCmds)(void* context, const char* objName) = nullptr;  ///< aborts all commands of an object [any]
};

/// Functions of MotionSysIf2T that synchronise motion objects.
struct MotionSysSyncFctT {
  SignalFn resetSignal = nullptr;   ///< null while Motion.Kavo is not started
  SignalFn setSignal = nullptr;     ///< as above
  GetSignalFn getSignal = nullptr;  ///< as above
};

/// Functions of MotionSysIf2T that the host publishes.
struct MotionSysGeneralFctT {
  std::uint32_t (*getObjCount)(void* context) = nullptr;                 ///< number of motion objects [any]
  FctResult (*getCycleTime)(void* context, double& seconds) = nullptr;   ///< length of one cycle [s] [any]
  FctResult (*abortCmds)(void* context, const char* objName) = nullptr;  ///< aborts all commands of an object [any]
};

/// The current record: sub-records by topic. No sub-record pointer is null.
struct MotionSysIf2T {
  void* context = nullptr;                  ///< the host's own; handed back with every call
  MotionSysGeneralFctT* general = nullptr;  ///< owned by the host
  MotionSysSyncFctT* sync = nullptr;        ///< owned by the host; components write its fields
};

}  // namespace motion::core
