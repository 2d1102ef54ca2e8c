#include "host/motion/unit_helper.h"

#include <numbers>

namespace motion::host {

const core::UnitSettings& UnitHelper::defaultSettings() {
  constexpr double degree = std::numbers::pi / 180.0;
  static const core::UnitSettings settings{{{{"mm", 1e-3},
                                             {"deg", degree},
                                             {"mm/s", 1e-3},
                                             {"mm/s^2", 1e-3},
                                             {"mm/s^3", 1e-3},
                                             {"deg/s", degree},
                                             {"s", 1.0}}}};
  return settings;
}

double UnitHelper::toInternal(const core::UnitSettings& settings, core::UnitEntry entry, double userValue) const {
  return userValue * settings.entries.at(static_cast<std::size_t>(entry)).factor;
}

double UnitHelper::toUser(const core::UnitSettings& settings, core::UnitEntry entry, double internalValue) const {
  return internalValue / settings.entries.at(static_cast<std::size_t>(entry)).factor;
}

}  // namespace motion::host
