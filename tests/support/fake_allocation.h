// Replaces the allocator of the whole test program: counts what a thread allocates, and makes one allocation fail.
#pragma once

namespace motion::test {

/// Counts this thread's allocations from construction on.
class AllocationCount {
 public:
  AllocationCount();
  [[nodiscard]] int get() const;

 private:
  int m_start;
};

/// While it exists, the n-th allocation of this thread (from 1) throws std::bad_alloc, and no other. One per thread at a
/// time.
class AllocationFailure {
 public:
  explicit AllocationFailure(int nth);
  ~AllocationFailure();
  AllocationFailure(const AllocationFailure&) = delete;
  AllocationFailure& operator=(const AllocationFailure&) = delete;

  /// Has the n-th allocation been reached?
  [[nodiscard]] bool happened() const;
};

/// What the fakes themselves allocate neither counts nor fails.
class AllocationPause {
 public:
  AllocationPause();
  ~AllocationPause();
  AllocationPause(const AllocationPause&) = delete;
  AllocationPause& operator=(const AllocationPause&) = delete;
};

}  // namespace motion::test
