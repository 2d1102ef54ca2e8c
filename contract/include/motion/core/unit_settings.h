// Units in which the user of a motion object speaks, and their conversion.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "motion/core/i_am_creatable.h"

namespace motion::core {

/// Entries of UnitSettings.
enum class UnitEntry : std::uint32_t {
  LENGTH = 0,
  ANGLE = 1,
  VELOCITY = 2,
  ACCELERATION = 3,
  JERK = 4,
  ANGULAR_VELOCITY = 5,
  TIME = 6,
};
inline constexpr std::size_t UNIT_ENTRY_COUNT = 7;

/// One unit: internal value = user value * factor. Internal units are SI: [m] [rad] [s].
struct Unit {
  const char* name = "";
  double factor = 1.0;
};

struct UnitSettings {
  std::array<Unit, UNIT_ENTRY_COUNT> entries{};
};

/// Name under which the object factory hands out the unit helper.
inline constexpr const char* UNITHELPER_T_ID = "motion::core::UnitHelperT";

/// Converts between user units and internal units.
class UnitHelperT : public IAmCreatable {
 public:
  [[nodiscard]] virtual double toInternal(const UnitSettings& settings, UnitEntry entry,
                                          double userValue) const = 0;  ///< [any]
  [[nodiscard]] virtual double toUser(const UnitSettings& settings, UnitEntry entry,
                                      double internalValue) const = 0;  ///< [any]
};

}  // namespace motion::core
