// The options that are active on a motion object.
#pragma once

#include "motion/core/cmd/cmd_id.h"
#include "motion/core/named_type.h"
#include "motion/core/results.h"

namespace motion::core::cmd {

/// What an option asks for when it builds upon the one of its name that is in force.
class ICmdOptHandler {
 public:
  virtual ~ICmdOptHandler() = default;
  /// The parameters of the option of that name that is active on the object, not owned. NoOptionData when none is. [prepare]
  virtual CmdResult getDataOfOption(const CmdId& option, const IContainer*& data) const = 0;

 protected:
  ICmdOptHandler() = default;
  ICmdOptHandler(const ICmdOptHandler&) = default;
  ICmdOptHandler& operator=(const ICmdOptHandler&) = default;
};

}  // namespace motion::core::cmd
