// The system functions: read, set and reset a signal from anywhere in the host.
#pragma once

#include <memory>

#include "comm/datalayer/i_data_layer_factory.h"
#include "impl/provider/provider_mgr.h"
#include "impl/signals.h"
#include "motion/core/records/motion_sys_if.h"

namespace motion::kavo {

/// Publishes the functions into the host's records and owns what stands behind them.
class MotionKavoSys {
 public:
  MotionKavoSys() = delete;

  /// Makes the signal store, publishes the functions and brings the data-layer nodes up; false when that fails, and nothing
  /// is left then. Waits up to ten seconds until the nodes are visible. [framework]
  [[nodiscard]] static bool initialize(core::MotionSysIfT& sysIf, core::MotionSysIf2T& sysIf2,
                                       comm::datalayer::IDataLayerFactory& factory) noexcept;
  /// Takes everything back; may be called in any state. [framework]
  static void terminate() noexcept;

  /// The published functions. NotAvailable while not initialised, else the result of Signals. The context is ignored. [any]
  static core::FctResult getSignal(void* context, unsigned int signalId, bool& value) noexcept;
  static core::FctResult setSignal(void* context, unsigned int signalId) noexcept;    ///< [any]
  static core::FctResult resetSignal(void* context, unsigned int signalId) noexcept;  ///< [any]

  static inline std::unique_ptr<Signals> g_signals;           ///< null while not initialised
  static inline std::unique_ptr<ProviderMgr> g_providerMgr;   ///< null while not initialised
  static inline core::MotionSysIfT* g_motionSysIf = nullptr;  ///< the records written to, null while not initialised
  static inline core::MotionSysIf2T* g_motionSysIf2 = nullptr;
};

}  // namespace motion::kavo
