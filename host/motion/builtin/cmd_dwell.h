// Dwell of an axis or a kinematics.
#pragma once

#include <cmath>

#include "host/motion/builtin/builtin_cmds.h"
#include "host/motion/builtin/diagnosis.h"
#include "host/motion/builtin/dwell_job.h"
#include "host/motion/section_mgr.h"
#include "host/motion/unit_helper.h"
#include "motion/core/cmd/cmd_generic.h"
#include "motion/core/job/i_job_data_handler.h"

namespace motion::host::builtin {

template <core::ObjectType TYPE>
class CmdDwell : public core::cmd::CmdGeneric<TYPE> {
 public:
  using CmdResult = core::cmd::CmdResult;

  explicit CmdDwell(core::IObjFactory& factory) : core::cmd::CmdGeneric<TYPE>(staticName(), true, factory) {}

  [[nodiscard]] static const char* staticName() { return "Dwell"; }

  [[nodiscard]] const std::vector<std::string>& getJobNames() const override {
    static const std::vector<std::string> names{DwellJob::NAME};
    return names;
  }

  CmdResult onSetCmdValues(const core::IContainer* cmdValues, const core::dia::CmdSourceInfo& /*source*/, core::IObj* obj,
                           bool /*flag*/) override {
    const auto* container = DwellPars::safeCast(cmdValues);
    if (container == nullptr || obj == nullptr) {
      return container == nullptr ? CmdResult::WrongContainer : CmdResult::NullPointer;
    }
    m_pars.set({UnitHelper().toInternal(obj->getUnitSettings(), core::UnitEntry::TIME, container->get().time)});
    return CmdResult::Okay;
  }

  [[nodiscard]] std::uint32_t onGetCmdType() const override { return 3; }

  CmdResult onRegisterJobListsInputs(core::job::IJobDataHandler& handler) override {
    const auto result = handler.registerPublish(DwellJobPars::getMyID(), SectionMgr::CMD_DATA, "CmdDwell", &m_pars);
    return core::isFailure(result) ? CmdResult::JobRegistrationFailed : CmdResult::Okay;
  }

  CmdResult onValidate(const core::dia::CmdSourceInfo& source, core::dia::IDia* dia) override {
    const double time = m_pars.get().time;
    if (!std::isfinite(time) || time < 0.0 || time > LONGEST) {
      return refuse(dia, source, "'time' must be a number of seconds from 0 to 1e9");
    }
    return CmdResult::Okay;
  }

 private:
  static constexpr double LONGEST = 1e9;  ///< [s]

  DwellJobPars m_pars;
};

}  // namespace motion::host::builtin
