// The host's factory of command options.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "comm/datalayer/variant.h"
#include "motion/core/cmd/cmd_id.h"
#include "motion/core/cmd/cmd_opt_types.h"
#include "motion/core/cmd/generic_cmd_option.h"
#include "motion/core/dia/i_dia.h"
#include "motion/core/named_type.h"
#include "motion/core/results.h"

namespace motion::core::cmd {

/// Makes one option; on success the host owns `option`. [prepare]
using CmdOptionCreateFn = std::function<CmdResult(GenericCmdOption*& option, std::string& errText)>;

/// Turns a FlatBuffers value into a parameter container, which the host then owns. [prepare]
using CmdOptionMarshalFn = std::function<CmdResult(const comm::datalayer::Variant* data, IContainer*& container,
                                                   CmdOptPermType& permType, dia::IDiagCollector& collector)>;

/// Knows the command options of all components. Failures as with IGenericCmdFactory.
class IGenericCmdOptionFactory {
 public:
  virtual ~IGenericCmdOptionFactory() = default;

  /// Registers an option that accompanies the commands of `groups`. [framework]
  virtual CmdResult registerCmdOption(const CmdId& id, const CmdOptionCreateFn& onCreate,
                                      const CmdOptionMarshalFn& onMarshal, const std::vector<std::string>& groups,
                                      const std::string& schemaPath, const std::string& description,
                                      const std::string& helpUrl) = 0;
  /// As above, with the list of run-time slots in which the option's jobs may run. [framework]
  virtual CmdResult registerCmdOptionWithSlots(const CmdId& id, const CmdOptionCreateFn& onCreate,
                                               const CmdOptionMarshalFn& onMarshal, const std::vector<std::string>& groups,
                                               const std::string& schemaPath, const std::string& description,
                                               const std::string& helpUrl, const std::vector<std::uint32_t>& slots) = 0;
  /// Forgets an option; NotRegistered when it is unknown. [framework]
  virtual CmdResult unregisterCmdOption(const CmdId& id) = 0;

 protected:
  IGenericCmdOptionFactory() = default;
  IGenericCmdOptionFactory(const IGenericCmdOptionFactory&) = default;
  IGenericCmdOptionFactory& operator=(const IGenericCmdOptionFactory&) = default;
};

}  // namespace motion::core::cmd
