#include "host/motion/obj_mgr.h"

namespace motion::host {

MotionObject* ObjMgr::add(ObjectConfig config, RetiredCmds& retired) {
  if (m_byName.contains(config.name)) {
    return nullptr;
  }
  config.index = static_cast<std::uint32_t>(m_objects.size());
  auto object = std::make_unique<MotionObject>(std::move(config), retired);
  MotionObject* added = object.get();
  m_objects.push_back(std::move(object));
  try {
    m_byAddress.emplace(added, added);
    m_byName.emplace(added->name(), added);
  } catch (...) {
    m_byAddress.erase(added);
    m_objects.pop_back();
    throw;
  }
  return added;
}

const char* ObjMgr::getObjName(const core::IObj* obj) const noexcept {
  const auto found = m_byAddress.find(obj);
  return found != m_byAddress.end() ? found->second->name().c_str() : nullptr;
}

MotionObject* ObjMgr::find(const char* name, std::uint32_t /*flags*/) const noexcept {
  const auto found = name != nullptr ? m_byName.find(std::string_view(name)) : m_byName.end();
  return found != m_byName.end() ? found->second : nullptr;
}

}  // namespace motion::host
