// The allocator that fails on demand, within the program that relies on it.
#include "support/fake_allocation.h"

#include <gtest/gtest.h>

#include <memory>
#include <new>

namespace motion::test {
namespace {

TEST(FakeAllocationTest, FailsTheChosenAllocation) {
  for (const int nth : {1, 2, 3}) {
    std::unique_ptr<int> first;
    std::unique_ptr<int> second;
    bool hasThrown = false;
    const bool hasFailed = failsDuring(nth, [&] {
      try {
        first = std::make_unique<int>(1);
        second = std::make_unique<int>(2);
      } catch (const std::bad_alloc&) {
        hasThrown = true;
      }
    });
    EXPECT_EQ(hasFailed, nth < 3) << nth;
    EXPECT_EQ(hasThrown, nth < 3) << nth;
    EXPECT_EQ(first != nullptr, nth > 1) << nth;
    EXPECT_EQ(second != nullptr, nth > 2) << nth;
  }
}

}  // namespace
}  // namespace motion::test
