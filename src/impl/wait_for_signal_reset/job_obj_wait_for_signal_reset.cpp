// The job of the command WaitForSignalReset.
#include "impl/wait_for_signal_reset/job_obj_wait_for_signal_reset.h"

#include <cstdio>

namespace motion::kavo::job {

void JobObjWaitForSignalReset::describe(const WaitForSignalResetJobParsT& parameters, std::span<char> text) noexcept {
  std::snprintf(text.data(), text.size(), "waitForSignalReset(signalId=%d)", parameters.signalId);
}

template class WaitJobObject<JobObjWaitForSignalReset,
                             core::NamedType<WaitForSignalResetJobParsT, WaitForSignalResetJobPars___t>>;

}  // namespace motion::kavo::job
