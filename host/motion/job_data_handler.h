// Exchange of data within one command: what the object, the command and the jobs publish, and what they read.
#pragma once

#include <vector>

#include "motion/core/job/i_job_data_handler.h"

namespace motion::host {

/// One command's data; what is not found here is looked up at the motion object. [prepare]
class JobDataHandler : public core::job::IJobDataHandler {
 public:
  /// `parent` holds the object's data and outlives this handler; null for the object's own.
  explicit JobDataHandler(JobDataHandler* parent = nullptr) : m_parent(parent) {}

  /// OutOfMemory offers nothing. [prepare]
  core::job::JobResult registerPublish(core::DataID id, core::SectionValue section, const char* who,
                                       core::IContainer* data) noexcept override;
  core::job::JobResult registerRead(core::DataID id, core::SectionValue section, std::uint32_t mode, const char* who,
                                    core::IContainer*& out) noexcept override;

 private:
  struct Entry {
    core::DataID id;
    core::SectionValue section;
    core::IContainer* data;
  };

  [[nodiscard]] core::IContainer* find(core::DataID id, core::SectionValue section) const noexcept;

  JobDataHandler* m_parent;
  std::vector<Entry> m_entries;
};

}  // namespace motion::host
