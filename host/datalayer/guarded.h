// Turns what an operation throws into a result of the data layer.
#pragma once

#include <new>
#include <utility>

#include "comm/datalayer/dl_result.h"

namespace motion::host::datalayer {

/// Runs an operation of the contract. DL_OUT_OF_MEMORY for a failed allocation, DL_FAILED for any other exception. [any]
template <typename Operation>
[[nodiscard]] comm::datalayer::DlResult guarded(Operation&& operation) noexcept {
  try {
    return std::forward<Operation>(operation)();
  } catch (const std::bad_alloc&) {
    return comm::datalayer::DL_OUT_OF_MEMORY;
  } catch (...) {
    return comm::datalayer::DL_FAILED;
  }
}

}  // namespace motion::host::datalayer
