// The job that waits for a time.
#pragma once

#include <cstdint>
#include <new>

#include "motion/core/i_obj.h"
#include "motion/core/job/job_object_base.h"

namespace motion::host::builtin {

struct DwellJobParsT {
  double time = 0.0;  ///< [s]
};
struct DwellJobPars___t;
using DwellJobPars = core::job::JobNamedType<DwellJobParsT, DwellJobPars___t>;

/// Lasts as many cycles as the time needs, rounded up, and at least one.
class DwellJob : public core::job::JobObjectBase {
 public:
  static constexpr const char* NAME = "host_dwell";

  [[nodiscard]] core::IAmCreatable* createNew() const noexcept override { return new (std::nothrow) DwellJob; }
  [[nodiscard]] const char* getID() const override { return NAME; }
  core::job::JobResult registerInputs(core::job::IJobDataHandler* handler) override;
  core::job::JobResult addJobsToJoblist(core::job::IJobList* list, core::job::JobListTypes type) override;
  [[nodiscard]] std::string getJobString() const noexcept override;  ///< empty without memory [prepare]

 private:
  core::job::JobResult wait();

  DwellJobPars* m_pars = nullptr;
  std::uint64_t m_cyclesLeft = 0;
};

}  // namespace motion::host::builtin
