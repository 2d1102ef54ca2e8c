// Counts what a real-time operation must not do: allocate, free, lock, or call the system. And makes allocations fail.
#pragma once

namespace motion::host::test {

/// What one thread did during an action.
struct Violations {
  int allocations = 0;
  int frees = 0;
  int locks = 0;
  int systemCalls = 0;  ///< 0 or 1: counting ends with the first one; always 0 when they are not counted

  friend bool operator==(const Violations&, const Violations&) = default;
};

/// False under a sanitizer, whose own system calls cannot be told apart, and on a kernel that does not report them.
[[nodiscard]] bool countsSystemCalls();

void beginGuard();
[[nodiscard]] Violations endGuard();

/// Runs the action on this thread and tells what it did.
template <typename Action>
[[nodiscard]] Violations violationsOf(const Action& action) {
  beginGuard();
  action();
  return endGuard();
}

void beginFailing(int number);
/// False when the allocation was never asked for.
[[nodiscard]] bool endFailing();

/// Runs the action on this thread; allocation number `number` (from 0) through operator new throws std::bad_alloc. Returns
/// whether it was asked for. The action must not let an exception out, nor assert, which allocates too.
template <typename Action>
[[nodiscard]] bool failsDuring(int number, const Action& action) {
  beginFailing(number);
  action();
  return endFailing();
}

}  // namespace motion::host::test
