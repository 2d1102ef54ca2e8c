// Keeps exceptions inside the component.
#pragma once

#include <utility>

namespace motion::kavo {

/// Does the work and returns its result, or `onException` when the work throws, whatever it throws. Every operation that the
/// host calls and that could throw (it allocates, locks or calls the host) goes through here. Traces belong outside of the
/// work, where the name of the function is known.
/// Always inlined: within the cycle a call of its own would cost more than the work it guards.
template <typename RESULT, typename WORK>
[[nodiscard, gnu::always_inline]] inline RESULT guarded(RESULT onException, WORK&& work) noexcept {
  try {
    return std::forward<WORK>(work)();
  } catch (...) {
    return onException;
  }
}

/// The same for work without a result. False when the work threw.
template <typename WORK>
[[gnu::always_inline]] inline bool guarded(WORK&& work) noexcept {
  return guarded(false, [&work] {
    std::forward<WORK>(work)();
    return true;
  });
}

}  // namespace motion::kavo
