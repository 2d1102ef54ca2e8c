// The door through which program interfaces hand commands to motion objects.
#pragma once

#include <cstdint>
#include <string>

#include "motion/core/cmd/cmd_opt_types.h"
#include "motion/core/dia/cmd_source_info.h"
#include "motion/core/named_type.h"
#include "motion/core/results.h"

namespace motion::core::cmd {

/// One issuer of commands. Parameter records are borrowed for the duration of the call. Slot order is fixed.
class ICmdContext {
 public:
  virtual ~ICmdContext() = default;

  /// Appends a command to the object's buffer; `cmdType` is the name of the command for that type of object, `count` is 1.
  /// On success `*cmdId` is the command's ID; on failure it stays and nothing was buffered. TooManyCommands when the
  /// buffer is full. [prepare]
  virtual FctResult addCmd(const dia::CmdSourceInfo& source, const char* objName, const std::string& cmdType,
                           const IContainer& values, std::uint32_t count, unsigned long* cmdId) = 0;
  /// Adds an option that accompanies following commands of the object. [prepare]
  virtual FctResult addCmdOption(const dia::CmdSourceInfo& source, const char* objName, const std::string& cmdType,
                                 CmdOptPermType permType, IContainer& values) = 0;

 protected:
  ICmdContext() = default;
  ICmdContext(const ICmdContext&) = default;
  ICmdContext& operator=(const ICmdContext&) = default;
};

}  // namespace motion::core::cmd
