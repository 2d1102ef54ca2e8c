// Identity of a command or a command option.
#pragma once

#include <compare>
#include <string>

#include "motion/core/object_type.h"

namespace motion::core::cmd {

struct CmdId {
  ObjectType objectType = ObjectType::UNDEFINED;
  std::string name;

  friend auto operator<=>(const CmdId&, const CmdId&) = default;
};

}  // namespace motion::core::cmd
