// The command WaitForSignalReset.
#include "impl/wait_for_signal_reset/cmd_wait_for_signal_reset.h"

#include "impl/command/unmarshalling.h"
#include "impl/wait_for_signal_reset/job_obj_wait_for_signal_reset.h"
#include "schemas/command/cmdWaitForSignalReset_generated.h"

namespace motion::kavo::cmd {

using core::ObjectType;
using core::cmd::CmdResult;

namespace {

constexpr JobPrototype JOBS[] = {{job::JobObjWaitForSignalReset::JOB_NAME, &makePrototype<job::JobObjWaitForSignalReset>}};

constexpr CmdDefinition DEFINITION = {
    .site = KAVO_SITE,
    .name = "WaitForSignalReset",
    .description = {.schemaFile = "cmdWaitForSignalReset.bfbs",
                    .description = "Wait for a signal is reset",
                    .jobs = JOBS,
                    .texts = REGISTRATION_TEXTS},
    .publishRefused =
        [](const CallSite& site, core::job::JobResult result) noexcept {
          KAVO_TRACE_AT(site, Error, "CmdWaitForSignalResetPars::registerPublish() failed: %d", core::toCode(result));
        },
};

}  // namespace

template <ObjectType OBJECT_TYPE>
const CmdDefinition& CmdWaitForSignalReset<OBJECT_TYPE>::define() noexcept {
  return DEFINITION;
}

template <ObjectType OBJECT_TYPE>
CmdResult CmdWaitForSignalReset<OBJECT_TYPE>::onMarshall(const comm::datalayer::Variant* data, core::IContainer*& container,
                                                         bool& owned) {
  return unmarshal<fbs::CmdWaitForSignalReset, job::WaitForSignalResetJobPars>(
      KAVO_HERE, UNMARSHAL_TEXTS, data, container, owned,
      [](const fbs::CmdWaitForSignalReset& table) { return job::WaitForSignalResetJobParsT{.signalId = table.signalId()}; });
}

template class CmdWaitForSignalReset<ObjectType::AXIS>;
template class CmdWaitForSignalReset<ObjectType::KINEMATICS>;

}  // namespace motion::kavo::cmd
