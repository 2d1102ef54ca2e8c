// Conversion between the units of users and internal units.
#pragma once

#include <array>
#include <new>
#include <string_view>

#include "motion/core/unit_settings.h"

namespace motion::host {

/// The units that a user of a motion object may choose, and their names.
enum class LengthUnit { MILLIMETRE, METRE, INCH };
enum class TimeUnit { SECOND, MILLISECOND };
inline constexpr std::array<std::string_view, 3> LENGTH_UNITS{"mm", "m", "in"};
inline constexpr std::array<std::string_view, 2> TIME_UNITS{"s", "ms"};

class UnitHelper : public core::UnitHelperT {
 public:
  /// Millimetres, degrees and seconds, and what derives from them.
  [[nodiscard]] static const core::UnitSettings& defaultSettings() noexcept;
  /// Settings with these units; velocities and what derives from them are lengths per second, whatever the unit of time.
  /// [any]
  [[nodiscard]] static core::UnitSettings settings(LengthUnit length, TimeUnit time) noexcept;

  [[nodiscard]] core::IAmCreatable* createNew() const noexcept override { return new (std::nothrow) UnitHelper; }
  [[nodiscard]] const char* getID() const noexcept override { return core::UNITHELPER_T_ID; }
  [[nodiscard]] std::uint32_t getType() const noexcept override {
    return static_cast<std::uint32_t>(core::CreatableType::HELPER);
  }
  /// Not a number for an entry that units do not have. [any]
  [[nodiscard]] double toInternal(const core::UnitSettings& settings, core::UnitEntry entry,
                                  double userValue) const noexcept override;
  /// As toInternal. [any]
  [[nodiscard]] double toUser(const core::UnitSettings& settings, core::UnitEntry entry,
                              double internalValue) const noexcept override;
};

}  // namespace motion::host
