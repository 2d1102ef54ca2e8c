// Named memory sections of the host.
#pragma once

#include <cstdint>

namespace motion::core {

/// What a section's address leads to: the value that identifies the section towards job lists and job data.
using SectionValue = std::uint32_t;

/// Names of the sections that every host has, in stage order except the first two, which hold data.
namespace section {
inline constexpr const char* OBJ_DATA = "OBJ_DATA";
inline constexpr const char* CMD_DATA = "CMD_DATA";
inline constexpr const char* PREEXEC_OPMODE = "PREEXEC_OPMODE";
inline constexpr const char* PREEXEC = "PREEXEC";
inline constexpr const char* EXEC_DYNAMICS = "EXEC_DYNAMICS";
inline constexpr const char* GEOMETRY_TOOL_OFFSET = "GEOMETRY_TOOL_OFFSET";
inline constexpr const char* EXEC_FINAL = "EXEC_FINAL";
/// A value that no section has: job lists and job data refuse it.
inline constexpr SectionValue INVALID = 0xFFFFFFFFU;
}  // namespace section

class ISectionMgr {
 public:
  virtual ~ISectionMgr() = default;

  /// Address of a section's SectionValue, null for an unknown name. It stays valid as long as the runtime. [framework]
  [[nodiscard]] virtual void* getSection(const char* name) = 0;

 protected:
  ISectionMgr() = default;
  ISectionMgr(const ISectionMgr&) = default;
  ISectionMgr& operator=(const ISectionMgr&) = default;
};

}  // namespace motion::core
