// MoveLin and MoveCirc of a kinematics.
#pragma once

#include <memory>

#include "host/motion/builtin/builtin_cmds.h"
#include "host/motion/builtin/kin_path_job.h"
#include "host/motion/i_path_cmd.h"
#include "motion/core/cmd/cmd_generic.h"

namespace motion::host {
class MotionObject;
}

namespace motion::host::builtin {

enum class PathKind { LINEAR, CIRCULAR };

/// Calculates its path when it is validated, from where the command before it ends.
class CmdKinMove : public core::cmd::CmdGeneric<core::ObjectType::KINEMATICS>, public IPathCmd {
 public:
  CmdKinMove(PathKind kind, core::IObjFactory& factory);

  [[nodiscard]] static const char* staticName(PathKind kind) { return kind == PathKind::LINEAR ? "MoveLin" : "MoveCirc"; }

  [[nodiscard]] const std::vector<std::string>& getJobNames() const override {
    static const std::vector<std::string> names{KinPathJob::NAME};
    return names;
  }
  core::cmd::CmdResult onSetCmdValues(const core::IContainer* cmdValues, const core::dia::CmdSourceInfo& source,
                                      core::IObj* obj, bool flag) override;
  [[nodiscard]] std::uint32_t onGetCmdType() const override;
  core::cmd::CmdResult onRegisterJobListsInputs(core::job::IJobDataHandler& handler) override;
  core::cmd::CmdResult onValidate(const core::dia::CmdSourceInfo& source, core::dia::IDia* dia) override;
  [[nodiscard]] const Point& plannedEnd() const noexcept override { return m_path->end(); }

 private:
  /// Why the parameters are not valid; empty when they are.
  [[nodiscard]] std::string problemOfNumbers() const;
  [[nodiscard]] std::string plan();

  PathKind m_kind;
  const MotionObject* m_object = nullptr;
  KinMoveParsT m_values;  ///< in internal units
  std::unique_ptr<KinPath> m_path;
  KinPathPars m_pars;
};

}  // namespace motion::host::builtin
