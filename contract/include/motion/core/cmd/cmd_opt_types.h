// How long a command option lasts.
#pragma once

#include <cstdint>

namespace motion::core::cmd {

/// Permanence that a user asks for: "Once", "PermOn", "PermOff".
enum class CmdOptPermType : std::uint32_t {
  ONCE = 0,      ///< for the next command that the option may accompany
  PERM_ON = 1,   ///< for every following one, until PERM_OFF
  PERM_OFF = 2,  ///< ends PERM_ON; an option that waits for its one command stays
};

/// Duration that an option answers with.
enum class CmdOptDuration : std::uint32_t {
  NONE = 0,         ///< accompanies nothing; ends a permanent option
  ONE_COMMAND = 1,  ///< the next command
  PERMANENT = 3,    ///< every following command
};

}  // namespace motion::core::cmd
