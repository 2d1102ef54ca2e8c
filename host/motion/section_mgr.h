// The host's sections and the order of the stages in a cycle.
#pragma once

#include <array>
#include <cstddef>

#include "motion/core/i_section_mgr.h"

namespace motion::host {

/// Sections with their values; the values ascend in the order in which a cycle runs the stages.
class SectionMgr : public core::ISectionMgr {
 public:
  static constexpr std::size_t COUNT = 7;
  static constexpr core::SectionValue OBJ_DATA = 0;
  static constexpr core::SectionValue CMD_DATA = 1;
  static constexpr core::SectionValue EXEC_DYNAMICS = 4;
  static constexpr core::SectionValue GEOMETRY_TOOL_OFFSET = 5;
  static constexpr core::SectionValue EXEC_FINAL = 6;

  [[nodiscard]] void* getSection(const char* name) noexcept override;
  /// True for a value that one of the sections has.
  [[nodiscard]] static bool isKnown(core::SectionValue value) noexcept { return value < COUNT; }

 private:
  std::array<core::SectionValue, COUNT> m_values{0, 1, 2, 3, 4, 5, 6};
};

}  // namespace motion::host
