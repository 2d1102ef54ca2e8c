// The job of the command WaitForSignal.
#pragma once

#include <span>

#include "impl/call_site.h"
#include "impl/command/wait_job.h"
#include "impl/wait_for_signal/wait_for_signal_pars.h"

namespace motion::kavo::job {

class JobObjWaitForSignal
    : public WaitJobObject<JobObjWaitForSignal, core::NamedType<WaitForSignalJobParsT, WaitForSignalJobPars___t>> {
 public:
  static constexpr CallSite SITE = KAVO_SITE;
  static constexpr const char* JOB_NAME = "ext_job_obj_wait_for_signal";
  static constexpr bool AWAITED = true;

  [[nodiscard]] static constexpr bool consumes(const WaitForSignalJobParsT& parameters) noexcept {
    return parameters.autoReset;
  }
  static void describe(const WaitForSignalJobParsT& parameters, std::span<char> text) noexcept;
};

extern template class WaitJobObject<JobObjWaitForSignal, core::NamedType<WaitForSignalJobParsT, WaitForSignalJobPars___t>>;

}  // namespace motion::kavo::job
