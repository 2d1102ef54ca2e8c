// Addresses of single signals in the data layer.
#pragma once

#include <fmt/format.h>

#include <cstdint>
#include <string>

#include "motion/kavo/signal_nodes.h"

namespace motion::host::observe {

/// Throws std::bad_alloc. [any]
[[nodiscard]] inline std::string signalAddress(std::uint32_t signal) {
  return fmt::format("{}/{:02}", kavo::SIGNALS_FOLDER_ADDRESS, signal);
}

}  // namespace motion::host::observe
