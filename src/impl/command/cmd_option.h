// What command options do alike: register, read their permanence, and let a job object check and carry their parameters.
#pragma once

#include <memory>
#include <vector>

#include <flatbuffers/flatbuffers.h>

#include "impl/call_site.h"
#include "motion/core/cmd/cmd_opt_types.h"
#include "motion/core/dia/i_dia.h"
#include "motion/core/i_motion_ext.h"
#include "motion/core/job/job_object_base.h"
#include "motion/core/results.h"

namespace motion::kavo::cmd {

/// The factories of the host that every option needs.
struct OptionFactories {
  core::IObjFactory* objects = nullptr;
  core::cmd::IGenericCmdOptionFactory* options = nullptr;
};

/// NullPointer, with a trace, when one of them is missing. [framework]
[[nodiscard]] core::cmd::CmdResult getOptionFactories(const CallSite& site, const core::IMotionExt& extIf,
                                                      OptionFactories& factories) noexcept;

/// Reads "Once", "PermOn" or "PermOff", to the letter. InvalidParameterData, with a trace, for an absent or any other text;
/// `permType` is then PERM_OFF unless it was absent. [prepare]
[[nodiscard]] core::cmd::CmdResult readPermType(const CallSite& site, const flatbuffers::String* text,
                                                core::cmd::CmdOptPermType& permType) noexcept;

/// Lets a job object of that name look at the parameters. JobCreationFailed or Refused, each with a trace. [prepare]
[[nodiscard]] core::cmd::CmdResult checkByJob(const CallSite& site, core::IObjFactory& factory, const char* jobName,
                                              const core::IContainer& parameters, core::dia::IDia& dia) noexcept;

/// One job object of that name with these parameters, which the host then owns; none, with a trace, when it cannot be made.
/// [prepare]
[[nodiscard]] std::vector<core::job::IJobObject*> makeOptionJob(const CallSite& site, core::IObjFactory& factory,
                                                                const char* jobName,
                                                                const core::IContainer& parameters) noexcept;

}  // namespace motion::kavo::cmd
