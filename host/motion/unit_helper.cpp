#include "host/motion/unit_helper.h"

#include <limits>
#include <numbers>

namespace motion::host {

namespace {

double factorOf(const core::UnitSettings& settings, core::UnitEntry entry) noexcept {
  const auto index = static_cast<std::size_t>(entry);
  return index < settings.entries.size() ? settings.entries[index].factor : std::numeric_limits<double>::quiet_NaN();
}

}  // namespace

const core::UnitSettings& UnitHelper::defaultSettings() noexcept {
  constexpr double degree = std::numbers::pi / 180.0;
  static const core::UnitSettings settings{
      {{{"mm", 1e-3}, {"deg", degree}, {"mm/s", 1e-3}, {"mm/s^2", 1e-3}, {"mm/s^3", 1e-3}, {"deg/s", degree}, {"s", 1.0}}}};
  return settings;
}

double UnitHelper::toInternal(const core::UnitSettings& settings, core::UnitEntry entry, double userValue) const noexcept {
  return userValue * factorOf(settings, entry);
}

double UnitHelper::toUser(const core::UnitSettings& settings, core::UnitEntry entry, double internalValue) const noexcept {
  return internalValue / factorOf(settings, entry);
}

}  // namespace motion::host
