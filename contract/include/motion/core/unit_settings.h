// Units in which the user of a motion object speaks, and their conversion.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "motion/core/i_am_creatable.h"

namespace motion::core {

/// Entries of UnitSettings.
enum class UnitEntry : std::uint32_t {
  LENGTH = 0,            ///< internally [m]
  ANGLE = 1,             ///< internally [rad]
  VELOCITY = 2,          ///< internally [m/s]
  ACCELERATION = 3,      ///< internally [m/s^2]
  JERK = 4,              ///< internally [m/s^3]
  ANGULAR_VELOCITY = 5,  ///< internally [rad/s]
  TIME = 6,              ///< internally [s]
};
/// One more than the last UnitEntry.
inline constexpr std::size_t UNIT_ENTRY_COUNT = 7;

/// One unit: internal value = user value * factor. Internal units are SI: [m] [rad] [s].
struct Unit {
  const char* name = "";  ///< as people write it, such as "mm/s"; static storage
  double factor = 1.0;    ///< one user unit in internal units, such as 0.001 for mm
};

/// The units of one motion object, chosen when it is made. Velocities are per second whatever the unit of time is.
struct UnitSettings {
  std::array<Unit, UNIT_ENTRY_COUNT> entries{};  ///< indexed by UnitEntry
};

/// Name under which the object factory hands out the unit helper.
inline constexpr const char* UNITHELPER_T_ID = "motion::core::UnitHelperT";

/// Converts between user units and internal units.
class UnitHelperT : public IAmCreatable {
 public:
  /// From what a user wrote to SI; not-a-number for an entry that does not exist. [any]
  [[nodiscard]] virtual double toInternal(const UnitSettings& settings, UnitEntry entry, double userValue) const = 0;
  /// From SI to what a user reads; not-a-number for an entry that does not exist. [any]
  [[nodiscard]] virtual double toUser(const UnitSettings& settings, UnitEntry entry, double internalValue) const = 0;
};

}  // namespace motion::core
