// Names of the data that jobs exchange.
#pragma once

#include <map>
#include <mutex>
#include <string>

#include "motion/core/job/i_job_data_id_mgr.h"

namespace motion::host {

/// Thread-safe. Names live as long as this object.
class JobDataIDMgr : public core::job::IJobDataIDMgr {
 public:
  /// False also without a name or without memory; nothing changes then. [framework]
  bool addID(core::DataID id, const char* name) noexcept override;
  [[nodiscard]] const char* getName(core::DataID id) const noexcept override;
  /// Of several identifiers with the same name the first one. [any]
  [[nodiscard]] core::DataID getID(const char* name) const noexcept override;

 private:
  mutable std::mutex m_mutex;
  std::map<core::DataID, std::string> m_names;
  std::map<std::string, core::DataID, std::less<>> m_ids;
};

}  // namespace motion::host
