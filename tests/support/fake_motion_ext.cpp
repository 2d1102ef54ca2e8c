// The extension interface of a pretended motion runtime, with its sections and motion objects.
#include "support/fake_motion_ext.h"

namespace motion::test {
namespace {
constexpr core::SectionValue FIRST_SECTION_VALUE = 1001;
}  // namespace

FakeSectionMgr::FakeSectionMgr(FakeCalls& calls) : m_calls(calls) {
  auto value = FIRST_SECTION_VALUE;
  for (const char* name :
       {core::section::OBJ_DATA, core::section::CMD_DATA, core::section::PREEXEC_OPMODE, core::section::PREEXEC,
        core::section::EXEC_DYNAMICS, core::section::EXEC_FINAL, core::section::GEOMETRY_TOOL_OFFSET}) {
    m_sections[name] = std::make_unique<core::SectionValue>(value++);
  }
}

void* FakeSectionMgr::getSection(const char* name) {
  if (m_calls.note("sectionMgr.getSection", name)) {
    return nullptr;
  }
  const auto found = m_sections.find(name);
  return found != m_sections.end() ? found->second.get() : nullptr;
}

core::cmd::CmdState FakeObj::getCmdState(std::uint64_t cmdID) const {
  const auto found = m_cmdStates.find(cmdID);
  return answer(found != m_cmdStates.end() ? found->second : core::cmd::CmdState::DONE);
}

core::IObj* FakeObjMgr::findObj(const char* name, std::uint32_t flags) {
  const AllocationPause pause;
  if (m_calls.note("objMgr.findObj", name, flags)) {
    return nullptr;
  }
  const auto found = m_objects.find(name);
  return found != m_objects.end() ? found->second.get() : nullptr;
}

const char* FakeObjMgr::getObjName(const core::IObj* obj) const {
  for (const auto& [name, candidate] : m_objects) {
    if (candidate.get() == obj) {
      return name.c_str();
    }
  }
  return nullptr;
}

FakeObj& FakeObjMgr::addAxis(const std::string& name) {
  auto& obj = add(name);
  obj.m_isAxis = true;
  return obj;
}

FakeObj& FakeObjMgr::addKinematics(const std::string& name) {
  auto& obj = add(name);
  obj.m_isKinematics = true;
  return obj;
}

FakeObj& FakeObjMgr::addEncoder(const std::string& name) {
  auto& obj = add(name);
  obj.m_isEncoder = true;
  return obj;
}

FakeObj& FakeObjMgr::add(const std::string& name) {
  return *(m_objects[name] = std::make_unique<FakeObj>(m_calls));
}

FakeMotionExt::~FakeMotionExt() {
  m_calls.note("ext.destroyed");
}

template <typename PART>
PART* FakeMotionExt::answer(std::string_view operation, PART* part) const {
  return m_calls.note(operation) ? nullptr : part;
}

core::IObjMgr* FakeMotionExt::getObjMgr() const {
  return answer("ext.getObjMgr", m_parts.objMgr);
}

core::ISectionMgr* FakeMotionExt::getSectionMgr() const {
  return answer("ext.getSectionMgr", m_parts.sectionMgr);
}

core::job::IJobDataIDMgr* FakeMotionExt::getJobDataIDMgr() const {
  return answer("ext.getJobDataIDMgr", m_parts.jobDataIDMgr);
}

core::IObjFactory* FakeMotionExt::getObjFactory() const {
  return answer("ext.getObjFactory", m_parts.objFactory);
}

core::cmd::IGenericCmdFactory* FakeMotionExt::getGenericCmdFactory() const {
  return answer("ext.getGenericCmdFactory", m_parts.genericCmdFactory);
}

core::cmd::IGenericCmdOptionFactory* FakeMotionExt::getGenericCmdOptionFactory() const {
  return answer("ext.getGenericCmdOptionFactory", m_parts.genericCmdOptionFactory);
}

}  // namespace motion::test
