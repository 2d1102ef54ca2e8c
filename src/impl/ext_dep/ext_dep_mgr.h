// What the component uses of the host's extension interface, looked up once: the memory sections.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "impl/call_site.h"
#include "motion/core/i_motion_ext.h"
#include "motion/core/i_section_mgr.h"

namespace motion::kavo {

enum class SectionID : std::uint32_t {
  OBJ_DATA = 0,
  CMD_DATA = 1,
  PREEXEC_OPMODE = 2,
  PREEXEC = 3,
  EXEC_DYNAMICS = 4,
  EXEC_FINAL = 5,
  GEOMETRY_TOOL_OFFSET = 6,
};
inline constexpr std::size_t SECTION_COUNT = 7;

struct RequiredSectionEntry {
  SectionID id;
  const char* name;
};

/// The sections in the order in which they are looked up.
inline const std::vector<RequiredSectionEntry> REQUIRED_SECTIONS = {
    {SectionID::OBJ_DATA, core::section::OBJ_DATA},
    {SectionID::CMD_DATA, core::section::CMD_DATA},
    {SectionID::PREEXEC_OPMODE, core::section::PREEXEC_OPMODE},
    {SectionID::PREEXEC, core::section::PREEXEC},
    {SectionID::EXEC_DYNAMICS, core::section::EXEC_DYNAMICS},
    {SectionID::EXEC_FINAL, core::section::EXEC_FINAL},
    {SectionID::GEOMETRY_TOOL_OFFSET, core::section::GEOMETRY_TOOL_OFFSET},
};

/// Holds the extension interface from start to stop, and the addresses of the sections.
class ExtDepMgr {
 public:
  ExtDepMgr() = default;
  ExtDepMgr(const ExtDepMgr&) = delete;
  ExtDepMgr& operator=(const ExtDepMgr&) = delete;
  virtual ~ExtDepMgr();

  /// The one instance, made on first use. [any]
  [[nodiscard]] static ExtDepMgr& getInstance();

  /// Keeps the interface, which stays the caller's, and looks the sections up; null forgets everything. [framework]
  void setMotionExtIF(const core::IMotionExt* motionExtIF);
  [[nodiscard]] const core::IMotionExt* getMotionExtIF() const noexcept { return m_motionExtIF; }  ///< [any]

  /// Looks the sections up in table order and stops at the first that is missing, with a trace. [framework]
  void getRequiredSectionPointers();
  /// Forgets the addresses. [framework]
  void deinitSectionPointers() noexcept;

  /// The address of a section, null when it is not known. [any & real-time]
  [[nodiscard]] void* getSection(SectionID id) const noexcept { return m_sections[static_cast<std::size_t>(id)]; }
  /// The value to which that address leads, section::INVALID when it is not known. [any & real-time]
  [[nodiscard]] core::SectionValue getSectionValue(SectionID id) const noexcept;

 private:
  const core::IMotionExt* m_motionExtIF = nullptr;
  std::array<void*, SECTION_COUNT> m_sections{};
};

/// The host's object manager. Null, with a trace from `site` of what is missing, without the extension interface or when
/// that has none. [any]
[[nodiscard]] core::IObjMgr* getObjMgr(const CallSite& site) noexcept;

}  // namespace motion::kavo
