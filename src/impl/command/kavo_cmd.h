// Base of the component's commands, and how one is created.
#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "impl/call_site.h"
#include "impl/debug_trace.h"
#include "impl/guarded.h"
#include "motion/core/cmd/cmd_generic.h"
#include "motion/core/i_obj_factory.h"

namespace motion::kavo::cmd {

/// Numbers by which the host sorts commands, and under which PLC function blocks know them.
inline constexpr std::uint32_t AXIS_CMD_TYPE = 35;
inline constexpr std::uint32_t KIN_CMD_TYPE = 18;
inline constexpr std::uint32_t AXIS_PLC_OPEN_CMD_TYPE = 39;
inline constexpr std::uint32_t KIN_PLC_OPEN_CMD_TYPE = 4108;

/// Every command of the component has the same numbers towards the host.
template <core::ObjectType OBJECT_TYPE>
class KavoCmd : public core::cmd::CmdGeneric<OBJECT_TYPE> {
 public:
  [[nodiscard]] std::uint32_t onGetCmdType() const override { return IS_AXIS ? AXIS_CMD_TYPE : KIN_CMD_TYPE; }
  [[nodiscard]] std::uint32_t onGetPlcOpenCmdType() const override {
    return IS_AXIS ? AXIS_PLC_OPEN_CMD_TYPE : KIN_PLC_OPEN_CMD_TYPE;
  }

 protected:
  /// The component's commands are for the buffer only.
  KavoCmd(std::string name, core::IObjFactory& objFactory)
      : core::cmd::CmdGeneric<OBJECT_TYPE>(std::move(name), true, objFactory) {}

 private:
  static constexpr bool IS_AXIS = OBJECT_TYPE == core::ObjectType::AXIS;
};

/// Creates a COMMAND, which the host then owns. Refused, with a text and a trace, for use outside of the buffer;
/// OutOfMemory. [prepare]
template <typename COMMAND, core::ObjectType OBJECT_TYPE>
[[nodiscard]] core::cmd::CmdResult createCommand(const CallSite& site, core::IObjFactory& factory, bool buffered,
                                                 core::cmd::CmdGeneric<OBJECT_TYPE>*& cmd, std::string& errText) noexcept {
  if (!buffered) {
    constexpr const char* refusal = "this command can not be used as a non - buffered command";
    guarded([&errText] { errText = refusal; });
    KAVO_TRACE_AT(site, Error, "%s", refusal);
    return core::cmd::CmdResult::Refused;
  }
  return guarded(core::cmd::CmdResult::OutOfMemory, [&] {
    cmd = new COMMAND(factory);
    errText.clear();
    return core::cmd::CmdResult::Okay;
  });
}

}  // namespace motion::kavo::cmd
