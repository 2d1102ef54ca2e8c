// States of a command.
#pragma once

#include <cstdint>

namespace motion::core::cmd {

/// Where a command stands in its life. It goes upwards only; DONE, ABORTED and FAILED are final.
enum class CmdState : std::uint32_t {
  CREATED = 0,   ///< made, but in no buffer yet
  BUFFERED = 1,  ///< accepted into its object's buffer; it has an ID from here on
  PREPARED = 2,  ///< its jobs for preparation have run; it may begin in the next cycle
  ACTIVE = 3,    ///< the current command of its object; its cyclic jobs run
  DONE = 4,      ///< a job has reported CmdFinished
  ABORTED = 5,   ///< ended from outside, or because a command before it failed
  FAILED = 6,    ///< a job or a callback of its own failed
};

}  // namespace motion::core::cmd
