// The command WaitForSignal.
#include "impl/wait_for_signal/cmd_wait_for_signal.h"

#include "impl/command/cmd_data.h"
#include "impl/command/cmd_groups.h"
#include "impl/command/registration.h"
#include "impl/command/unmarshalling.h"
#include "impl/wait_for_signal/job_obj_wait_for_signal.h"
#include "schemas/command/cmdWaitForSignal_generated.h"

namespace motion::kavo::cmd {

using core::ObjectType;
using core::cmd::CmdResult;

namespace {

constexpr JobPrototype JOBS[] = {{job::JobObjWaitForSignal::JOB_NAME, &makePrototype<job::JobObjWaitForSignal>}};

constexpr CmdDescription DESCRIPTION = {
    .schemaFile = "cmdWaitForSignal.bfbs", .description = "Wait for a signal", .jobs = JOBS, .texts = REGISTRATION_TEXTS};

}  // namespace

template <ObjectType OBJECT_TYPE>
CmdWaitForSignal<OBJECT_TYPE>::CmdWaitForSignal(core::IObjFactory& objFactory)
    : KavoCmd<OBJECT_TYPE>(getStaticName(), objFactory) {}

template <ObjectType OBJECT_TYPE>
CmdResult CmdWaitForSignal<OBJECT_TYPE>::registerCmd(const core::IMotionExt& extIf, const std::string& schemaDir) {
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
CmdResult CmdWaitForSignal<OBJECT_TYPE>::unregisterCmd(const core::IMotionExt& extIf) {
  return unregisterCommand(KAVO_HERE, DESCRIPTION, &getCmdId, extIf);
}

template <ObjectType OBJECT_TYPE>
CmdResult CmdWaitForSignal<OBJECT_TYPE>::onCreate(core::IObjFactory& factory, bool buffered,
                                                  core::cmd::CmdGeneric<OBJECT_TYPE>*& cmd, std::string& errText) {
  return createCommand<CmdWaitForSignal>(KAVO_HERE, factory, buffered, cmd, errText);
}

template <ObjectType OBJECT_TYPE>
CmdResult CmdWaitForSignal<OBJECT_TYPE>::onMarshall(const comm::datalayer::Variant* data, core::IContainer*& container,
                                                    bool& owned) {
  return unmarshal<fbs::CmdWaitForSignal, job::WaitForSignalJobPars>(
      KAVO_HERE, UNMARSHAL_TEXTS, data, container, owned, [](const fbs::CmdWaitForSignal& table) {
        return job::WaitForSignalJobParsT{.signalId = table.signalId(), .autoReset = table.autoReset()};
      });
}

template <ObjectType OBJECT_TYPE>
const core::cmd::CmdId& CmdWaitForSignal<OBJECT_TYPE>::getCmdId() {
  static const core::cmd::CmdId id = {OBJECT_TYPE, getStaticName()};
  return id;
}

template <ObjectType OBJECT_TYPE>
const char* CmdWaitForSignal<OBJECT_TYPE>::getStaticName() noexcept {
  return "WaitForSignal";
}

template <ObjectType OBJECT_TYPE>
std::vector<std::string> CmdWaitForSignal<OBJECT_TYPE>::getJobNames() const {
  return jobNamesOf(JOBS);
}

template <ObjectType OBJECT_TYPE>
CmdResult CmdWaitForSignal<OBJECT_TYPE>::onSetCmdValues(const core::IContainer* cmdValues,
                                                        const core::dia::CmdSourceInfo& /*source*/, core::IObj* /*obj*/,
                                                        bool /*flag*/) {
  return takeParameters(KAVO_HERE, cmdValues, m_cmdValues, "CmdWaitForSignalPars::safeCast(cmdValues) failed");
}

template <ObjectType OBJECT_TYPE>
CmdResult CmdWaitForSignal<OBJECT_TYPE>::onRegisterJobListsInputs(core::job::IJobDataHandler& handler) {
  const auto result = publishCmdData(handler, m_cmdValues);
  if (core::isFailure(result)) {
    KAVO_TRACE(Error, "CmdWaitForSignalPars::registerPublish() failed: %d", core::toCode(result));
    return CmdResult::Refused;
  }
  return CmdResult::Okay;
}

template <ObjectType OBJECT_TYPE>
CmdResult CmdWaitForSignal<OBJECT_TYPE>::onValidate(const core::dia::CmdSourceInfo& /*source*/, core::dia::IDia* /*dia*/) {
  return validateSignalId(KAVO_HERE, m_cmdValues.get().signalId);
}

template class CmdWaitForSignal<ObjectType::AXIS>;
template class CmdWaitForSignal<ObjectType::KINEMATICS>;

}  // namespace motion::kavo::cmd
