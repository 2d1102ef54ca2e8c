// A command in a motion object's buffer, as components see it.
#pragma once

#include <cstdint>

#include "motion/core/cmd/cmd_state.h"
#include "motion/core/named_type.h"

namespace motion::core::job {

class IJobObject;

/// The job objects that the host made for one command.
class IJobHandler {
 public:
  virtual ~IJobHandler() = default;
  /// The command's job object of that name, null when it has none. [any]
  [[nodiscard]] virtual IJobObject* findJobObject(const char* name) const = 0;

 protected:
  IJobHandler() = default;
  IJobHandler(const IJobHandler&) = default;
  IJobHandler& operator=(const IJobHandler&) = default;
};

}  // namespace motion::core::job

namespace motion::core::cmd {

/// What the host knows of a command.
class ICmd {
 public:
  virtual ~ICmd() = default;
  /// The host's ID of the command, unique in a run, never 0. [any & real-time]
  [[nodiscard]] virtual std::uint64_t getCmdID() const = 0;

 protected:
  ICmd() = default;
  ICmd(const ICmd&) = default;
  ICmd& operator=(const ICmd&) = default;
};

/// The frame in which the host keeps a command.
class ICmdFrame : public ICmd {
 public:
  /// The state that was set last; onCmdStateChanged is called after it is set. [any & real-time]
  [[nodiscard]] virtual CmdState getCmdState() const = 0;
  /// The job objects of this command, its options included; they live as long as the frame. [any]
  [[nodiscard]] virtual const job::IJobHandler& getJobHandler() const = 0;
};

struct ICmdPtr___t;
/// The command that a job belongs to, published by the host in section "CMD_DATA".
using ICmdPtr = NamedType<ICmd*, ICmdPtr___t>;

}  // namespace motion::core::cmd
