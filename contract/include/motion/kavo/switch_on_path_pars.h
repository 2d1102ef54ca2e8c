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
  SwitchOnPathMode mode = SwitchOnPathMode::ENTER_SPHERE;
  std::uint32_t signalId = 0;
  SwitchOnPathAction action = SwitchOnPathAction::SET_SIGNAL;
  std::array<double, 3> targetPos{};  ///< x, y, z
  double radius = 0.0;
  double preTriggerTime = 0.0;  ///< 0 = no look-ahead
  bool reached = false;         ///< set once, by the cycle, when the condition fires; through std::atomic_ref

  [[nodiscard]] bool isReached() const noexcept {
    // Reading through atomic_ref changes nothing; no condition is a constant.
    return std::atomic_ref<bool>(const_cast<bool&>(reached)).load(std::memory_order_acquire);
  }
  void setReached() noexcept { std::atomic_ref<bool>(reached).store(true, std::memory_order_release); }
};

/// Conditions are shared: one that is carried into the list of the next command is the same object, with the same flag.
using SwitchOnPathParsListT = std::vector<std::shared_ptr<SwitchOnPathPars>>;
struct SwitchOnPathParsList___t;
using SwitchOnPathParsList = core::job::JobNamedType<SwitchOnPathParsListT, SwitchOnPathParsList___t>;

}  // namespace motion::kavo
