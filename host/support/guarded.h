// Keeps exceptions inside the host: what its work throws becomes a result of the operation's own family.
#pragma once

#include <new>
#include <utility>

namespace motion::host {

/// Does the work and returns its result; `noMemory` when an allocation failed, `otherwise` when anything else was thrown.
/// Every operation of the contract whose work may throw (it allocates, or calls foreign code) goes through here. The work
/// itself changes nothing before the last of its steps that may throw.
template <typename RESULT, typename WORK>
[[nodiscard]] RESULT guarded(RESULT noMemory, RESULT otherwise, WORK&& work) noexcept {
  try {
    return std::forward<WORK>(work)();
  } catch (const std::bad_alloc&) {
    return noMemory;
  } catch (...) {
    return otherwise;
  }
}

/// The same for a family that does not tell the two apart.
template <typename RESULT, typename WORK>
[[nodiscard]] RESULT guarded(RESULT onException, WORK&& work) noexcept {
  return guarded(onException, onException, std::forward<WORK>(work));
}

}  // namespace motion::host
