// The commands and command options of the component, as they present themselves to a host.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "motion/core/cmd/cmd_id.h"

namespace motion::conformance {

/// One command for one type of object.
struct ExpectedCommand {
  core::cmd::CmdId id;
  std::string label;  ///< in the names of checks, such as "set-signal-axis"
  std::string schemaFile;
  std::string description;
  std::vector<std::string> groups;
  std::string job;

  std::string unit;     ///< where it traces
  std::string marshal;  ///< name of its marshalling function in traces
  std::string missingObjFactory;
  std::string missingCmdFactory;
  std::string wrongContainer;  ///< traced by onSetCmdValues
  std::string failedPublish;   ///< begins the trace of a refused record; how the result is written follows

  [[nodiscard]] bool isAxis() const { return id.objectType == core::ObjectType::AXIS; }
  [[nodiscard]] bool isSend() const { return unit == "cmd_send_signal"; }
  [[nodiscard]] bool isJoin() const { return id.name == "Join"; }
};

/// One command option for one type of object.
struct ExpectedOption {
  core::cmd::CmdId id;
  std::string label;
  std::string schemaFile;
  std::string description;
  std::vector<std::string> groups;
  std::string job;
  std::optional<std::vector<std::uint32_t>> slots;
  std::string unit;
};

/// What is registered, and traced, as one.
struct ExpectedRow {
  std::string name;   ///< as traces name it
  std::string label;  ///< in the names of checks
  std::string job;
  std::string unit;
  std::string function;           ///< its register function in traces
  std::string unregister;         ///< its unregister function in traces
  std::string missingObjFactory;  ///< traced without an object factory
  std::string missingFactory;     ///< traced without the factory of commands or options
  std::string refusedJob;         ///< traced when a job is refused with REFUSED_JOB
  std::vector<core::cmd::CmdId> ids;
  bool isOption = false;
};

/// A result of the object factory that refuses a job, and how a trace shows it.
inline constexpr std::uint32_t REFUSED_JOB = 0xF0150002;

/// In the order in which they are registered.
[[nodiscard]] const std::vector<ExpectedCommand>& expectedCommands();
[[nodiscard]] const std::vector<ExpectedOption>& expectedOptions();
[[nodiscard]] const std::vector<ExpectedRow>& expectedRows();

}  // namespace motion::conformance
