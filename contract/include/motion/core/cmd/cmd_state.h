// States of a command.
#pragma once

#include <cstdint>

namespace motion::core::cmd {

enum class CmdState : std::uint32_t {
  CREATED = 0,
  BUFFERED = 1,
  PREPARED = 2,
  ACTIVE = 3,
  DONE = 4,
  ABORTED = 5,
  FAILED = 6
};

}  // namespace motion::core::cmd
