// The switching conditions of the option SwitchOnPath, as its job and a host that shows them share them.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

#include "motion/core/named_type.h"
#include "motion/kavo/switch_on_path_types.h"

namespace motion::kavo {

/// One condition. Lengths and times are in internal units, [m] and [s], once the option has converted them.
struct SwitchOnPathPars {
  SwitchOnPathMode mode = SwitchOnPathMode::ENTER_SPHERE;      ///< what has to happen
  std::uint32_t signalId = 0;                                  ///< which signal is switched, below SIGNAL_COUNT
  SwitchOnPathAction action = SwitchOnPathAction::SET_SIGNAL;  ///< how it is switched
  std::array<double, 3> targetPos{};  ///< centre of the sphere: x, y, z in the kinematics' base frame
  double radius = 0.0;                ///< of the sphere around targetPos; its surface belongs to it
  double preTriggerTime = 0.0;        ///< how long before the tool is there; 0 = no look-ahead
  bool reached = false;               ///< set once, by the cycle, when the condition fires; through std::atomic_ref

  /// True once the condition has fired; it never fires again. [any & real-time]
  [[nodiscard]] bool isReached() const noexcept {
    // Reading through atomic_ref changes nothing; no condition is a constant.
    return std::atomic_ref<bool>(const_cast<bool&>(reached)).load(std::memory_order_acquire);
  }
  /// Called by the job just before it switches the signal, so that a condition fires at most once. [cyclic & real-time]
  void setReached() noexcept { std::atomic_ref<bool>(reached).store(true, std::memory_order_release); }
};

/// Conditions are shared: one that is carried into the list of the next command is the same object, with the same flag.
using SwitchOnPathParsListT = std::vector<std::shared_ptr<SwitchOnPathPars>>;
struct SwitchOnPathParsList___t;
/// The list as the option publishes it for its job and a host finds it through getParameter of the option.
using SwitchOnPathParsList = core::job::JobNamedType<SwitchOnPathParsListT, SwitchOnPathParsList___t>;

}  // namespace motion::kavo
