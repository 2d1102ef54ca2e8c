// Replaces the allocator of the whole test program: counts what a thread allocates and what the program holds, and makes one
// allocation fail.
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

/// Blocks that the whole program holds at present, whoever allocated them.
[[nodiscard]] long liveAllocations() noexcept;

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

/// Runs the action on this thread with its allocation number `nth` (from 1) failing; was it reached? The action must not let
/// an exception out, nor assert, which allocates too.
template <typename Action>
[[nodiscard]] bool failsDuring(int nth, const Action& action) {
  const AllocationFailure failure(nth);
  action();
  return failure.happened();
}

/// What the fakes themselves allocate neither counts nor fails.
class AllocationPause {
 public:
  AllocationPause();
  ~AllocationPause();
  AllocationPause(const AllocationPause&) = delete;
  AllocationPause& operator=(const AllocationPause&) = delete;
};

/// Within a pause: what is allocated while it exists counts and fails again.
class AllocationResume {
 public:
  AllocationResume();
  ~AllocationResume();
  AllocationResume(const AllocationResume&) = delete;
  AllocationResume& operator=(const AllocationResume&) = delete;

 private:
  int m_pauses;
};

}  // namespace motion::test
