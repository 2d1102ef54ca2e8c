// Base of every command option.
#pragma once

#include <cstdint>
#include <vector>

#include "motion/core/cmd/cmd_opt_types.h"
#include "motion/core/dia/cmd_source_info.h"
#include "motion/core/named_type.h"
#include "motion/core/results.h"

namespace motion::core {
class IObj;
class IObjFactory;
}  // namespace motion::core

namespace motion::core::dia {
class IDia;
}

namespace motion::core::job {
class IJobObject;
}

namespace motion::core::cmd {

class ICmdOptHandler;

/// An option that accompanies commands. Slot order is fixed.
/// The host calls, in this order: prepareStackableCmdOption, setParameter, and createJobs once per accompanied command.
class GenericCmdOption {
 public:
  GenericCmdOption() = default;
  GenericCmdOption(const GenericCmdOption&) = delete;
  GenericCmdOption& operator=(const GenericCmdOption&) = delete;
  virtual ~GenericCmdOption() = default;

  /// How long the option lasts for a permanence. [prepare]
  virtual CmdResult getDuration(CmdOptPermType permType, CmdOptDuration& duration) const {
    switch (permType) {
      case CmdOptPermType::ONCE:
        duration = CmdOptDuration::ONE_COMMAND;
        return CmdResult::Okay;
      case CmdOptPermType::PERM_ON:
        duration = CmdOptDuration::PERMANENT;
        return CmdResult::Okay;
      case CmdOptPermType::PERM_OFF:
        duration = CmdOptDuration::NONE;
        return CmdResult::Okay;
    }
    return CmdResult::UnknownPermType;
  }
  /// Completes new parameters from those that are active on the object. [prepare]
  virtual CmdResult prepareStackableCmdOption(IObj& /*obj*/, const ICmdOptHandler& /*handler*/, IContainer* /*values*/,
                                              CmdOptPermType& /*permType*/, const dia::CmdSourceInfo& /*source*/) const {
    return CmdResult::Okay;
  }
  /// Checks the parameters and keeps them. [prepare]
  virtual CmdResult setParameter(const IContainer* values, IObjFactory& jobObjFactory, const IObj& obj, dia::IDia& dia) = 0;
  /// The parameters that the option keeps; not owned. [prepare]
  virtual CmdResult getParameter(const IContainer*& /*values*/) { return CmdResult::UnknownPermType; }
  /// Job objects for one accompanied command, owned by the host. An empty list means that they could not be made. [prepare]
  virtual std::vector<job::IJobObject*> createJobs(IObjFactory& jobObjFactory) const = 0;
  /// A record that the option keeps on the object beyond the commands; null when it keeps none. Not every host asks.
  /// [prepare]
  virtual IContainer* getEternalContainer(IObj& /*obj*/) { return nullptr; }
  /// What becomes of the option when its command is aborted; 0 leaves it to the host. Not every host asks.
  /// [prepare]
  virtual std::uint32_t getCmdOptExitStrategy() { return 0; }
};

}  // namespace motion::core::cmd
