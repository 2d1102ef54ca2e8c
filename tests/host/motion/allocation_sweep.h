// Lets every allocation of a call fail once, in turn.
#pragma once

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include "support/fake_allocation.h"

namespace motion::host::test {

using motion::test::AllocationCount;
using motion::test::AllocationFailure;
using motion::test::liveAllocations;

/// A call that needs memory, and what is expected of it.
template <typename RESULT, typename CALL, typename UNDO>
struct Sweep {
  CALL call;                     ///< must not let an exception out, nor keep memory when it fails
  RESULT success;                ///< without a failure
  std::vector<RESULT> failures;  ///< what it may answer when one of its allocations fails
  UNDO undo;                     ///< takes back what a successful call did, with all its memory
};

/// Runs the call with its first allocation failing, then with its second, and so on until none fails. Each failing call
/// answers with a documented result and holds no memory afterwards, and the next call succeeds. Returns how many allocations
/// there were.
template <typename RESULT, typename CALL, typename UNDO>
int failEachAllocation(const Sweep<RESULT, CALL, UNDO>& sweep) {
  // The first time fills what stays: capacities, and whatever is made once only.
  EXPECT_EQ(sweep.call(), sweep.success);
  sweep.undo();
  for (int nth = 1;; ++nth) {
    SCOPED_TRACE(fmt::format("allocation {}", nth));
    const long before = liveAllocations();
    RESULT result{};
    bool hasFailed = false;
    {
      const AllocationFailure failure(nth);
      result = sweep.call();
      hasFailed = failure.happened();
    }
    const long after = liveAllocations();
    if (!hasFailed) {
      EXPECT_EQ(result, sweep.success);
      sweep.undo();
      return nth - 1;
    }
    EXPECT_EQ(after, before) << "a failure holds memory";
    EXPECT_THAT(sweep.failures, testing::Contains(result));
    EXPECT_EQ(sweep.call(), sweep.success) << "the same call afterwards";
    sweep.undo();
    EXPECT_EQ(liveAllocations(), before) << "not everything was taken back";
    if (testing::Test::HasFailure()) {
      return nth;
    }
  }
}

}  // namespace motion::host::test
