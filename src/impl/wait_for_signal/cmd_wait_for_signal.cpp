// The command WaitForSignal.
#include "impl/wait_for_signal/cmd_wait_for_signal.h"

#include "impl/command/unmarshalling.h"
#include "impl/wait_for_signal/job_obj_wait_for_signal.h"
#include "schemas/command/cmdWaitForSignal_generated.h"

namespace motion::kavo::cmd {

using core::ObjectType;
using core::cmd::CmdResult;

namespace {

constexpr JobPrototype JOBS[] = {{job::JobObjWaitForSignal::JOB_NAME, &makePrototype<job::JobObjWaitForSignal>}};

constexpr CmdDefinition DEFINITION = {
    .site = KAVO_SITE,
    .name = "WaitForSignal",
    .description = {.schemaFile = "cmdWaitForSignal.bfbs",
                    .description = "Wait for a signal",
                    .jobs = JOBS,
                    .texts = REGISTRATION_TEXTS},
    .publishRefused =
        [](const CallSite& site, core::job::JobResult result) noexcept {
          KAVO_TRACE_AT(site, Error, "CmdWaitForSignalPars::registerPublish() failed: %d", core::toCode(result));
        },
};

}  // namespace

template <ObjectType OBJECT_TYPE>
const CmdDefinition& CmdWaitForSignal<OBJECT_TYPE>::define() noexcept {
  return DEFINITION;
}

template <ObjectType OBJECT_TYPE>
CmdResult CmdWaitForSignal<OBJECT_TYPE>::onMarshall(const comm::datalayer::Variant* data, core::IContainer*& container,
                                                    bool& owned) {
  return unmarshal<fbs::CmdWaitForSignal, job::WaitForSignalJobPars>(
      KAVO_HERE, UNMARSHAL_TEXTS, data, container, owned, [](const fbs::CmdWaitForSignal& table) {
        return job::WaitForSignalJobParsT{.signalId = table.signalId(), .autoReset = table.autoReset()};
      });
}

template class CmdWaitForSignal<ObjectType::AXIS>;
template class CmdWaitForSignal<ObjectType::KINEMATICS>;

}  // namespace motion::kavo::cmd
