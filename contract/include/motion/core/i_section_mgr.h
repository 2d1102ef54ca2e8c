// Named memory sections of the host.
#pragma once

#include <cstdint>

namespace motion::core {

/// What a section's address leads to: the value that identifies the section towards job lists and job data.
using SectionValue = std::uint32_t;

/// Names of the sections that every host has, in stage order except the first two, which hold data.
namespace section {
inline constexpr const char* OBJ_DATA = "OBJ_DATA";              ///< data of the motion object, there as long as it
inline constexpr const char* CMD_DATA = "CMD_DATA";              ///< data of one command, there as long as it
inline constexpr const char* PREEXEC_OPMODE = "PREEXEC_OPMODE";  ///< first stage: modes of operation
inline constexpr const char* PREEXEC = "PREEXEC";                ///< commands wait and meet here, before anything moves
inline constexpr const char* EXEC_DYNAMICS = "EXEC_DYNAMICS";    ///< set-points are computed
inline constexpr const char* GEOMETRY_TOOL_OFFSET = "GEOMETRY_TOOL_OFFSET";  ///< KinPose is published and renewed
inline constexpr const char* EXEC_FINAL = "EXEC_FINAL";                      ///< last stage: the pose of this cycle is known
/// A value that no section has: job lists and job data refuse it.
inline constexpr SectionValue INVALID = 0xFFFFFFFFU;
}  // namespace section

/// Translates names of sections into the numbers that this host gave them.
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
