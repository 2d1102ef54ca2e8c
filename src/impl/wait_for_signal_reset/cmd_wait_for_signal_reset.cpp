// The command WaitForSignalReset.
#include "impl/wait_for_signal_reset/cmd_wait_for_signal_reset.h"

#include "impl/command/cmd_data.h"
#include "impl/command/cmd_groups.h"
#include "impl/command/registration.h"
#include "impl/command/unmarshalling.h"
#include "impl/wait_for_signal_reset/job_obj_wait_for_signal_reset.h"
#include "schemas/command/cmdWaitForSignalReset_generated.h"

namespace motion::kavo::cmd {

using core::ObjectType;
using core::cmd::CmdResult;

namespace {

constexpr JobPrototype JOBS[] = {{job::JobObjWaitForSignalReset::JOB_NAME, &makePrototype<job::JobObjWaitForSignalReset>}};

constexpr CmdDescription DESCRIPTION = {.schemaFile = "cmdWaitForSignalReset.bfbs",
                                        .description = "Wait for a signal is reset",
                                        .jobs = JOBS,
                                        .texts = REGISTRATION_TEXTS};

}  // namespace

template <ObjectType OBJECT_TYPE>
CmdWaitForSignalReset<OBJECT_TYPE>::CmdWaitForSignalReset(core::IObjFactory& objFactory)
    : KavoCmd<OBJECT_TYPE>(getStaticName(), objFactory) {}

template <ObjectType OBJECT_TYPE>
CmdResult CmdWaitForSignalReset<OBJECT_TYPE>::registerCmd(const core::IMotionExt& extIf, const std::string& schemaDir) {
  static constexpr const char* groups[] = {GROUP_SYNC_ON_SIGNAL, nonMotionGroup(OBJECT_TYPE)};
  const CmdRegistration<OBJECT_TYPE> registration = {
      .getCmdId = &getCmdId,
      .groups = groups,
      .onCreate = &onCreate,
      .onMarshal = &onMarshall,
  };
  return registerCommand(KAVO_HERE, DESCRIPTION, registration, extIf, schemaDir);
}

template <ObjectType OBJECT_TYPE>
CmdResult CmdWaitForSignalReset<OBJECT_TYPE>::unregisterCmd(const core::IMotionExt& extIf) {
  return unregisterCommand(KAVO_HERE, DESCRIPTION, &getCmdId, extIf);
}

template <ObjectType OBJECT_TYPE>
CmdResult CmdWaitForSignalReset<OBJECT_TYPE>::onCreate(core::IObjFactory& factory, bool buffered,
                                                       core::cmd::CmdGeneric<OBJECT_TYPE>*& cmd, std::string& errText) {
  return createCommand<CmdWaitForSignalReset>(KAVO_HERE, factory, buffered, cmd, errText);
}

template <ObjectType OBJECT_TYPE>
CmdResult CmdWaitForSignalReset<OBJECT_TYPE>::onMarshall(const comm::datalayer::Variant* data, core::IContainer*& container,
                                                         bool& owned) {
  return unmarshal<fbs::CmdWaitForSignalReset, job::WaitForSignalResetJobPars>(
      KAVO_HERE, UNMARSHAL_TEXTS, data, container, owned,
      [](const fbs::CmdWaitForSignalReset& table) { return job::WaitForSignalResetJobParsT{.signalId = table.signalId()}; });
}

template <ObjectType OBJECT_TYPE>
const core::cmd::CmdId& CmdWaitForSignalReset<OBJECT_TYPE>::getCmdId() {
  static const core::cmd::CmdId id = {OBJECT_TYPE, getStaticName()};
  return id;
}

template <ObjectType OBJECT_TYPE>
const char* CmdWaitForSignalReset<OBJECT_TYPE>::getStaticName() noexcept {
  return "WaitForSignalReset";
}

template <ObjectType OBJECT_TYPE>
std::vector<std::string> CmdWaitForSignalReset<OBJECT_TYPE>::getJobNames() const {
  return jobNamesOf(JOBS);
}

template <ObjectType OBJECT_TYPE>
CmdResult CmdWaitForSignalReset<OBJECT_TYPE>::onSetCmdValues(const core::IContainer* cmdValues,
                                                             const core::dia::CmdSourceInfo& /*source*/, core::IObj* /*obj*/,
                                                             bool /*flag*/) {
  return takeParameters(KAVO_HERE, cmdValues, m_cmdValues, "CmdWaitForSignalResetPars::safeCast(cmdValues) failed");
}

template <ObjectType OBJECT_TYPE>
CmdResult CmdWaitForSignalReset<OBJECT_TYPE>::onRegisterJobListsInputs(core::job::IJobDataHandler& handler) {
  const auto result = publishCmdData(handler, m_cmdValues);
  if (core::isFailure(result)) {
    KAVO_TRACE(Error, "CmdWaitForSignalResetPars::registerPublish() failed: %d", core::toCode(result));
    return CmdResult::Refused;
  }
  return CmdResult::Okay;
}

template <ObjectType OBJECT_TYPE>
CmdResult CmdWaitForSignalReset<OBJECT_TYPE>::onValidate(const core::dia::CmdSourceInfo& /*source*/,
                                                         core::dia::IDia* /*dia*/) {
  return validateSignalId(KAVO_HERE, m_cmdValues.get().signalId);
}

template class CmdWaitForSignalReset<ObjectType::AXIS>;
template class CmdWaitForSignalReset<ObjectType::KINEMATICS>;

}  // namespace motion::kavo::cmd
