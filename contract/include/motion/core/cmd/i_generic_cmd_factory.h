// The host's factory of buffered commands.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "comm/datalayer/variant.h"
#include "motion/core/cmd/cmd_generic.h"
#include "motion/core/cmd/cmd_id.h"
#include "motion/core/named_type.h"
#include "motion/core/object_type.h"
#include "motion/core/results.h"

namespace motion::core::cmd {

/// Makes one command; on success the host owns `cmd`. `buffered` says whether the command goes into a buffer. [prepare]
template <ObjectType OBJECT_TYPE>
using CmdCreateFn =
    std::function<CmdResult(IObjFactory& factory, bool buffered, CmdGeneric<OBJECT_TYPE>*& cmd, std::string& errText)>;

/// Turns a FlatBuffers value into a parameter container; `owned` tells whether the host deletes it. [prepare]
using CmdMarshalFn = std::function<CmdResult(const comm::datalayer::Variant* data, IContainer*& container, bool& owned)>;

/// Knows the commands of all components. Registering fails with AlreadyRegistered for a known CmdId and with
/// SchemaNotReadable when the binary schema cannot be read; nothing is kept then.
class IGenericCmdFactory {
 public:
  virtual ~IGenericCmdFactory() = default;

  /// Registers a command for axes. `visible` offers it to users; `schemaPath` is a binary FlatBuffers schema whose root
  /// table describes the parameters; `helpUrl` may be empty. [framework]
  virtual CmdResult registerCmd(const CmdId& id, const CmdCreateFn<ObjectType::AXIS>& onCreate,
                                const CmdMarshalFn& onMarshal, bool visible, const std::vector<std::string>& groups,
                                const std::string& schemaPath, const std::string& description,
                                const std::string& helpUrl) = 0;
  /// As above, for kinematics. [framework]
  virtual CmdResult registerCmd(const CmdId& id, const CmdCreateFn<ObjectType::KINEMATICS>& onCreate,
                                const CmdMarshalFn& onMarshal, bool visible, const std::vector<std::string>& groups,
                                const std::string& schemaPath, const std::string& description,
                                const std::string& helpUrl) = 0;
  /// Forgets a command; NotRegistered when it is unknown. [framework]
  virtual CmdResult unregisterCmd(const CmdId& id) = 0;

 protected:
  IGenericCmdFactory() = default;
  IGenericCmdFactory(const IGenericCmdFactory&) = default;
  IGenericCmdFactory& operator=(const IGenericCmdFactory&) = default;
};

}  // namespace motion::core::cmd
