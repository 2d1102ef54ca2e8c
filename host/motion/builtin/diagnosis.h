// Refusal of a built-in command, with its reason for the user.
#pragma once

#include "motion/core/dia/i_dia.h"
#include "motion/core/results.h"

namespace motion::host::builtin {

/// Main and detailed diagnosis codes of a built-in command with invalid parameters.
inline constexpr std::uint32_t DIA_INVALID_COMMAND = 0x090F1000;
inline constexpr std::uint32_t DIA_INVALID_PARAMETER = 0x0C561000;

/// Reports `text` to `dia`, which may be null, and gives the result of a refused command.
[[nodiscard]] inline core::cmd::CmdResult refuse(core::dia::IDia* dia, const core::dia::CmdSourceInfo& source,
                                                 const char* text) {
  if (dia != nullptr) {
    dia->report(DIA_INVALID_COMMAND, DIA_INVALID_PARAMETER, source, {__FILE__, __func__, __LINE__}, "%s", text);
    dia->close();
  }
  return core::cmd::CmdResult::Refused;
}

}  // namespace motion::host::builtin
