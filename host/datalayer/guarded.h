// Turns what an operation throws into a result of the data layer.
#pragma once

#include <utility>

#include "comm/datalayer/dl_result.h"
#include "host/support/guarded.h"

namespace motion::host::datalayer {

/// Runs an operation of the contract. DL_OUT_OF_MEMORY for a failed allocation, DL_FAILED for any other exception. [any]
template <typename Operation>
[[nodiscard]] comm::datalayer::DlResult guarded(Operation&& operation) noexcept {
  return host::guarded(comm::datalayer::DL_OUT_OF_MEMORY, comm::datalayer::DL_FAILED, std::forward<Operation>(operation));
}

}  // namespace motion::host::datalayer
