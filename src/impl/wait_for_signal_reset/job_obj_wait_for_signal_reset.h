// The job of the command WaitForSignalReset.
#pragma once

#include <span>

#include "impl/call_site.h"
#include "impl/command/wait_job.h"
#include "impl/wait_for_signal_reset/wait_for_signal_reset_pars.h"

namespace motion::kavo::job {

class JobObjWaitForSignalReset
    : public WaitJobObject<JobObjWaitForSignalReset,
                           core::NamedType<WaitForSignalResetJobParsT, WaitForSignalResetJobPars___t>> {
 public:
  static constexpr CallSite SITE = KAVO_SITE;
  static constexpr const char* JOB_NAME = "ext_job_obj_wait_for_signal_reset";
  static constexpr bool AWAITED = false;

  [[nodiscard]] static constexpr bool consumes(const WaitForSignalResetJobParsT& /*parameters*/) noexcept { return false; }
  static void describe(const WaitForSignalResetJobParsT& parameters, std::span<char> text) noexcept;
};

extern template class WaitJobObject<JobObjWaitForSignalReset,
                                    core::NamedType<WaitForSignalResetJobParsT, WaitForSignalResetJobPars___t>>;

}  // namespace motion::kavo::job
