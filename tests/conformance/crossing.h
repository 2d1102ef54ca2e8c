// Calls into the component.
#pragma once

#include "conformance/expect.h"
#include "support/fake_allocation.h"

namespace motion::conformance {

/// Every call into the component that may fail for want of memory passes through here: whoever pauses the allocator's plans
/// for the suite's own work has them in force for the component, and an exception that comes back is a Mismatch.
template <typename CALL>
auto crossing(std::string_view what, const CALL& call) {
  try {
    const test::AllocationResume resume;
    return call();
  } catch (const Mismatch&) {
    throw;
  } catch (...) {
    throw Mismatch(std::string(what), "no exception", "an exception");
  }
}

}  // namespace motion::conformance
