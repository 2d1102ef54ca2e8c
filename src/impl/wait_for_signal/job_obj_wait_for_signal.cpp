// The job of the command WaitForSignal.
#include "impl/wait_for_signal/job_obj_wait_for_signal.h"

#include <cstdio>

namespace motion::kavo::job {

void JobObjWaitForSignal::describe(const WaitForSignalJobParsT& parameters, std::span<char> text) noexcept {
  std::snprintf(text.data(), text.size(), "waitForSignal(signalId=%d,autoReset=%d)", parameters.signalId,
                parameters.autoReset);
}

template class WaitJobObject<JobObjWaitForSignal, core::NamedType<WaitForSignalJobParsT, WaitForSignalJobPars___t>>;

}  // namespace motion::kavo::job
