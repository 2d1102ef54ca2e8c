#include "host/motion/section_mgr.h"

#include <string_view>

namespace motion::host {

void* SectionMgr::getSection(const char* name) noexcept {
  static constexpr std::array<std::string_view, COUNT> names{
      core::section::OBJ_DATA,  core::section::CMD_DATA,      core::section::PREEXEC_OPMODE,
      core::section::PREEXEC,   core::section::EXEC_DYNAMICS, core::section::GEOMETRY_TOOL_OFFSET,
      core::section::EXEC_FINAL};
  for (std::size_t i = 0; name != nullptr && i < COUNT; ++i) {
    if (names[i] == name) {
      return &m_values[i];
    }
  }
  return nullptr;
}

}  // namespace motion::host
