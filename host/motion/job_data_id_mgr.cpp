#include "host/motion/job_data_id_mgr.h"

#include "host/support/guarded.h"

namespace motion::host {

bool JobDataIDMgr::addID(core::DataID id, const char* name) noexcept {
  return guarded(false, [&] {
    const std::scoped_lock lock(m_mutex);
    if (name == nullptr || m_names.contains(id)) {
      return false;
    }
    std::map<core::DataID, std::string> entry;
    entry.emplace(id, name);
    m_ids.emplace(name, id);
    m_names.merge(entry);  // needs no memory, so that both directions come together
    return true;
  });
}

const char* JobDataIDMgr::getName(core::DataID id) const noexcept {
  const std::scoped_lock lock(m_mutex);
  const auto found = m_names.find(id);
  return found != m_names.end() ? found->second.c_str() : nullptr;
}

core::DataID JobDataIDMgr::getID(const char* name) const noexcept {
  const std::scoped_lock lock(m_mutex);
  const auto found = name != nullptr ? m_ids.find(name) : m_ids.end();
  return found != m_ids.end() ? found->second : 0;
}

}  // namespace motion::host
