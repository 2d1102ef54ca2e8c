#include "host/motion/builtin/cmd_axis_move.h"

#include <cmath>

#include "host/motion/builtin/diagnosis.h"
#include "host/motion/section_mgr.h"
#include "host/motion/unit_helper.h"
#include "motion/core/job/i_job_data_handler.h"

namespace motion::host::builtin {

using core::UnitEntry;
using core::cmd::CmdResult;

CmdAxisMove::CmdAxisMove(MoveKind kind, core::IObjFactory& factory)
    : CmdGeneric(staticName(kind), true, factory), m_kind(kind) {}

CmdResult CmdAxisMove::onSetCmdValues(const core::IContainer* cmdValues, const core::dia::CmdSourceInfo& /*source*/,
                                      core::IObj* obj, bool /*flag*/) {
  const auto* container = AxisMovePars::safeCast(cmdValues);
  if (container == nullptr) {
    return CmdResult::WrongContainer;
  }
  if (obj == nullptr) {
    return CmdResult::NullPointer;
  }
  const AxisMoveParsT values = container->get();
  const core::UnitSettings& units = obj->getUnitSettings();
  const UnitHelper helper;
  m_pars.set({m_kind == MoveKind::RELATIVE, helper.toInternal(units, UnitEntry::LENGTH, values.target),
              helper.toInternal(units, UnitEntry::VELOCITY, values.velocity),
              helper.toInternal(units, UnitEntry::ACCELERATION, values.acceleration)});
  return CmdResult::Okay;
}

std::uint32_t CmdAxisMove::onGetCmdType() const {
  return m_kind == MoveKind::ABSOLUTE ? 1 : 2;
}

CmdResult CmdAxisMove::onRegisterJobListsInputs(core::job::IJobDataHandler& handler) {
  const auto result = handler.registerPublish(ProfilePars::getMyID(), SectionMgr::CMD_DATA, "CmdAxisMove", &m_pars);
  return core::isFailure(result) ? CmdResult::JobRegistrationFailed : CmdResult::Okay;
}

CmdResult CmdAxisMove::onValidate(const core::dia::CmdSourceInfo& source, core::dia::IDia* dia) {
  const ProfileParsT pars = m_pars.get();
  if (!std::isfinite(pars.target)) {
    return refuse(dia, source,
                  m_kind == MoveKind::ABSOLUTE ? "'to' must be a finite number" : "'by' must be a finite number");
  }
  if (!std::isfinite(pars.velocity) || pars.velocity <= 0.0) {
    return refuse(dia, source, "'velocity' must be above 0");
  }
  if (!std::isfinite(pars.acceleration) || pars.acceleration <= 0.0) {
    return refuse(dia, source, "'acceleration' must be above 0");
  }
  return CmdResult::Okay;
}

}  // namespace motion::host::builtin
