// Conversion between the units of users and internal units.
#pragma once

#include <new>

#include "motion/core/unit_settings.h"

namespace motion::host {

class UnitHelper : public core::UnitHelperT {
 public:
  /// Millimetres, degrees and seconds, and what derives from them.
  [[nodiscard]] static const core::UnitSettings& defaultSettings() noexcept;

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
