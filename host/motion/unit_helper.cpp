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
  static const core::UnitSettings settings = UnitHelper::settings(LengthUnit::MILLIMETRE, TimeUnit::SECOND);
  return settings;
}

core::UnitSettings UnitHelper::settings(LengthUnit length, TimeUnit time) noexcept {
  struct Lengths {
    const char* length;
    const char* velocity;
    const char* acceleration;
    const char* jerk;
    double factor;  ///< [m]
  };
  static constexpr std::array<Lengths, LENGTH_UNITS.size()> lengths{{{"mm", "mm/s", "mm/s^2", "mm/s^3", 1e-3},
                                                                     {"m", "m/s", "m/s^2", "m/s^3", 1.0},
                                                                     {"in", "in/s", "in/s^2", "in/s^3", 0.0254}}};
  static constexpr std::array<core::Unit, TIME_UNITS.size()> times{{{"s", 1.0}, {"ms", 1e-3}}};
  constexpr double degree = std::numbers::pi / 180.0;
  const Lengths& chosen = lengths[static_cast<std::size_t>(length)];
  return {{{{chosen.length, chosen.factor},
            {"deg", degree},
            {chosen.velocity, chosen.factor},
            {chosen.acceleration, chosen.factor},
            {chosen.jerk, chosen.factor},
            {"deg/s", degree},
            times[static_cast<std::size_t>(time)]}}};
}

double UnitHelper::toInternal(const core::UnitSettings& settings, core::UnitEntry entry, double userValue) const noexcept {
  return userValue * factorOf(settings, entry);
}

double UnitHelper::toUser(const core::UnitSettings& settings, core::UnitEntry entry, double internalValue) const noexcept {
  return internalValue / factorOf(settings, entry);
}

}  // namespace motion::host
