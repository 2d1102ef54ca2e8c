// Conversion between the units of users and internal units.
#pragma once

#include "motion/core/unit_settings.h"

namespace motion::host {

class UnitHelper : public core::UnitHelperT {
 public:
  /// Millimetres, degrees and seconds, and what derives from them.
  [[nodiscard]] static const core::UnitSettings& defaultSettings();

  [[nodiscard]] core::IAmCreatable* createNew() const override { return new UnitHelper; }
  [[nodiscard]] const char* getID() const override { return core::UNITHELPER_T_ID; }
  [[nodiscard]] std::uint32_t getType() const override { return static_cast<std::uint32_t>(core::CreatableType::HELPER); }
  [[nodiscard]] double toInternal(const core::UnitSettings& settings, core::UnitEntry entry, double userValue) const override;
  [[nodiscard]] double toUser(const core::UnitSettings& settings, core::UnitEntry entry, double internalValue) const override;
};

}  // namespace motion::host
