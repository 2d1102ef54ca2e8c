#include "host/motion/job_data_handler.h"

#include "host/motion/section_mgr.h"
#include "host/support/guarded.h"

namespace motion::host {

using core::job::JobResult;

JobResult JobDataHandler::registerPublish(core::DataID id, core::SectionValue section, const char* /*who*/,
                                          core::IContainer* data) noexcept {
  return guarded(JobResult::OutOfMemory, JobResult::InvalidJobData, [&] {
    if (!SectionMgr::isKnown(section)) {
      return JobResult::UnknownSection;
    }
    if (data == nullptr || data->getID() != id) {
      return JobResult::InvalidJobData;
    }
    if (find(id, section) != nullptr) {
      return JobResult::DataAlreadyPublished;
    }
    m_entries.push_back({id, section, data});
    return JobResult::NoEffect;
  });
}

JobResult JobDataHandler::registerRead(core::DataID id, core::SectionValue section, std::uint32_t mode, const char* /*who*/,
                                       core::IContainer*& out) noexcept {
  if (!SectionMgr::isKnown(section)) {
    return JobResult::UnknownSection;
  }
  if (mode != core::job::READ_ONE) {
    return JobResult::InvalidJobData;
  }
  core::IContainer* data = find(id, section);
  if (data == nullptr) {
    return JobResult::DataNotPublished;
  }
  out = data;
  return JobResult::NoEffect;
}

core::IContainer* JobDataHandler::find(core::DataID id, core::SectionValue section) const noexcept {
  for (const Entry& entry : m_entries) {
    if (entry.id == id && entry.section == section) {
      return entry.data;
    }
  }
  return m_parent != nullptr ? m_parent->find(id, section) : nullptr;
}

}  // namespace motion::host
