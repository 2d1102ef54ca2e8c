// MoveAbs and MoveRel of an axis.
#pragma once

#include "host/motion/builtin/builtin_cmds.h"
#include "host/motion/builtin/profile_job.h"
#include "motion/core/cmd/cmd_generic.h"

namespace motion::host::builtin {

enum class MoveKind { ABSOLUTE, RELATIVE };

class CmdAxisMove : public core::cmd::CmdGeneric<core::ObjectType::AXIS> {
 public:
  CmdAxisMove(MoveKind kind, core::IObjFactory& factory);

  [[nodiscard]] static const char* staticName(MoveKind kind) { return kind == MoveKind::ABSOLUTE ? "MoveAbs" : "MoveRel"; }

  [[nodiscard]] const std::vector<std::string>& getJobNames() const override {
    static const std::vector<std::string> names{ProfileJob::NAME};
    return names;
  }
  core::cmd::CmdResult onSetCmdValues(const core::IContainer* cmdValues, const core::dia::CmdSourceInfo& source,
                                      core::IObj* obj, bool flag) override;
  [[nodiscard]] std::uint32_t onGetCmdType() const override;
  core::cmd::CmdResult onRegisterJobListsInputs(core::job::IJobDataHandler& handler) override;
  core::cmd::CmdResult onValidate(const core::dia::CmdSourceInfo& source, core::dia::IDia* dia) override;

 private:
  MoveKind m_kind;
  ProfilePars m_pars;
};

}  // namespace motion::host::builtin
