// Where a command came from.
#pragma once

#include <cstdint>
#include <string>

namespace motion::core::dia {

/// Who issued a command, for diagnoses that a person reads. Empty when nobody said.
struct CmdSourceInfo {
  std::string client;      ///< program or connection
  std::string file;        ///< program file
  std::uint32_t line = 0;  ///< line in it, from 1; 0 = unknown
};

}  // namespace motion::core::dia
