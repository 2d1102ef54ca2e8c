// Looks the host's memory sections up.
#include "impl/ext_dep/ext_dep_mgr.h"

#include "impl/debug_trace.h"
#include "impl/guarded.h"

namespace motion::kavo {

ExtDepMgr::~ExtDepMgr() {
  deinitSectionPointers();
}

ExtDepMgr& ExtDepMgr::getInstance() {
  static ExtDepMgr instance;
  return instance;
}

void ExtDepMgr::setMotionExtIF(const core::IMotionExt* motionExtIF) {
  m_motionExtIF = motionExtIF;
  deinitSectionPointers();
  if (m_motionExtIF != nullptr) {
    getRequiredSectionPointers();
  }
}

void ExtDepMgr::getRequiredSectionPointers() {
  constexpr const char* notSet = "get of required sections failed, because %s is not set";
  if (m_motionExtIF == nullptr) {
    KAVO_TRACE(Error, notSet, "motion extension interface");
    return;
  }
  core::ISectionMgr* const sectionMgr =
      guarded<core::ISectionMgr*>(nullptr, [this] { return m_motionExtIF->getSectionMgr(); });
  if (sectionMgr == nullptr) {
    KAVO_TRACE(Error, notSet, "section manager");
    return;
  }
  for (const auto& [id, name] : REQUIRED_SECTIONS) {
    void* const address = guarded<void*>(nullptr, [sectionMgr, name = name] { return sectionMgr->getSection(name); });
    if (address == nullptr) {
      KAVO_TRACE(Error, "section %s could not be found!", name);
      return;
    }
    m_sections[static_cast<std::size_t>(id)] = address;
  }
}

void ExtDepMgr::deinitSectionPointers() noexcept {
  m_sections.fill(nullptr);
}

core::SectionValue ExtDepMgr::getSectionValue(SectionID id) const noexcept {
  const void* const address = getSection(id);
  return address != nullptr ? *static_cast<const core::SectionValue*>(address) : core::section::INVALID;
}

core::IObjMgr* getObjMgr(const CallSite& site) noexcept {
  const core::IMotionExt* const ext = ExtDepMgr::getInstance().getMotionExtIF();
  if (ext == nullptr) {
    KAVO_TRACE_AT(site, Error, "%s", "Invalid motion extended interface");
    return nullptr;
  }
  core::IObjMgr* const objMgr = guarded<core::IObjMgr*>(nullptr, [ext] { return ext->getObjMgr(); });
  if (objMgr == nullptr) {
    KAVO_TRACE_AT(site, Error, "%s", "Invalid object manager");
  }
  return objMgr;
}

}  // namespace motion::kavo
