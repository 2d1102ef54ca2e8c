// The commands SetSignal and ResetSignal.
#include "impl/send_signal/cmd_send_signal.h"

#include <type_traits>

#include "impl/command/cmd_data.h"
#include "impl/command/cmd_groups.h"
#include "impl/command/diagnosis.h"
#include "impl/command/registration.h"
#include "impl/command/unmarshalling.h"
#include "impl/rt_signals.h"
#include "impl/send_signal/job_obj_send_signal.h"
#include "schemas/command/cmdResetSignal_generated.h"
#include "schemas/command/cmdSetSignal_generated.h"

namespace motion::kavo::cmd {

using core::ObjectType;
using core::cmd::CmdResult;

namespace {

using CmdJob = job::JobObjSendSignal<job::JobObjSendSignalUser::COMMAND>;

constexpr JobPrototype JOBS[] = {{CmdJob::JOB_NAME, &makePrototype<CmdJob>}};

constexpr RegistrationTexts REGISTRATION = {
    .objFactoryMissing = "objFactory is null",
    .cmdFactoryMissing = "cmdFactory is null",
    .jobRefused =
        [](const CallSite& site, core::ObjFactoryResult result) noexcept {
          KAVO_TRACE_AT(site, Error, "objFactory->registerObj failed: [0x%08X].", core::toCode(result));
        },
};

constexpr UnmarshalTexts UNMARSHALLING = {
    .wrongType = &traceIsNotFlatbuffers,
    .invalidBuffer = "Invalid FlatBuffer description",
};

constexpr CmdDescription DESCRIPTIONS[] = {
    {.schemaFile = "cmdSetSignal.bfbs", .description = "Set a signal", .jobs = JOBS, .texts = REGISTRATION},
    {.schemaFile = "cmdResetSignal.bfbs", .description = "Reset a signal", .jobs = JOBS, .texts = REGISTRATION},
};

constexpr const CmdDescription& descriptionOf(SignalAction action) noexcept {
  return DESCRIPTIONS[static_cast<std::size_t>(action)];
}

template <SignalAction ACTION>
using TableOf = std::conditional_t<ACTION == SignalAction::SET, fbs::CmdSetSignal, fbs::CmdResetSignal>;

}  // namespace

template <ObjectType OBJECT_TYPE, SignalAction ACTION>
CmdSendSignal<OBJECT_TYPE, ACTION>::CmdSendSignal(core::IObjFactory& objFactory)
    : KavoCmd<OBJECT_TYPE>(getStaticName(), objFactory) {}

template <ObjectType OBJECT_TYPE, SignalAction ACTION>
CmdResult CmdSendSignal<OBJECT_TYPE, ACTION>::registerCmd(const core::IMotionExt& extIf, const std::string& schemaDir) {
  static constexpr const char* groups[] = {GROUP_SEND_SIGNAL, nonMotionGroup(OBJECT_TYPE)};
  const CmdRegistration<OBJECT_TYPE> registration = {
      .getCmdId = &getCmdId,
      .groups = groups,
      .onCreate = &onCreate,
      .onMarshal = &onMarshal,
  };
  return registerCommand(KAVO_HERE, descriptionOf(ACTION), registration, extIf, schemaDir);
}

template <ObjectType OBJECT_TYPE, SignalAction ACTION>
CmdResult CmdSendSignal<OBJECT_TYPE, ACTION>::unregisterCmd(const core::IMotionExt& extIf) {
  return unregisterCommand(KAVO_HERE, descriptionOf(ACTION), &getCmdId, extIf);
}

template <ObjectType OBJECT_TYPE, SignalAction ACTION>
CmdResult CmdSendSignal<OBJECT_TYPE, ACTION>::onCreate(core::IObjFactory& factory, bool buffered,
                                                       core::cmd::CmdGeneric<OBJECT_TYPE>*& cmd, std::string& errText) {
  return createCommand<CmdSendSignal>(KAVO_HERE, factory, buffered, cmd, errText);
}

template <ObjectType OBJECT_TYPE, SignalAction ACTION>
CmdResult CmdSendSignal<OBJECT_TYPE, ACTION>::onMarshal(const comm::datalayer::Variant* data, core::IContainer*& container,
                                                        bool& owned) {
  return unmarshal<TableOf<ACTION>, CmdSendSignalPars>(
      KAVO_HERE, UNMARSHALLING, data, container, owned,
      [](const TableOf<ACTION>& table) { return CmdSendSignalParsT{.signalId = table.signalId()}; });
}

template <ObjectType OBJECT_TYPE, SignalAction ACTION>
const core::cmd::CmdId& CmdSendSignal<OBJECT_TYPE, ACTION>::getCmdId() {
  static const core::cmd::CmdId id = {OBJECT_TYPE, getStaticName()};
  return id;
}

template <ObjectType OBJECT_TYPE, SignalAction ACTION>
const char* CmdSendSignal<OBJECT_TYPE, ACTION>::getStaticName() noexcept {
  return ACTION == SignalAction::SET ? "SetSignal" : "ResetSignal";
}

template <ObjectType OBJECT_TYPE, SignalAction ACTION>
std::vector<std::string> CmdSendSignal<OBJECT_TYPE, ACTION>::getJobNames() const {
  return jobNamesOf(JOBS);
}

template <ObjectType OBJECT_TYPE, SignalAction ACTION>
CmdResult CmdSendSignal<OBJECT_TYPE, ACTION>::onSetCmdValues(const core::IContainer* cmdValues,
                                                             const core::dia::CmdSourceInfo& /*source*/, core::IObj* /*obj*/,
                                                             bool /*flag*/) {
  if (cmdValues == nullptr) {
    KAVO_TRACE_TEXT(Error, "cmdValues==nullptr");
    return CmdResult::NullPointer;
  }
  const auto* values = CmdSendSignalPars::safeCast(cmdValues);
  if (values == nullptr) {
    KAVO_TRACE_TEXT(Error, "SendSignalJobUser::safeCast(cmdValues) failed");
    return CmdResult::WrongContainer;
  }
  m_cmdValues.set({.signalId = values->get().signalId, .reset = ACTION == SignalAction::RESET});
  return CmdResult::Okay;
}

template <ObjectType OBJECT_TYPE, SignalAction ACTION>
CmdResult CmdSendSignal<OBJECT_TYPE, ACTION>::onRegisterJobListsInputs(core::job::IJobDataHandler& handler) {
  const auto result = publishCmdData(handler, m_cmdValues);
  if (core::isFailure(result)) {
    KAVO_TRACE(Error, "registerPublish failed with %d", core::toCode(result));
    return CmdResult::Refused;
  }
  return CmdResult::Okay;
}

template <ObjectType OBJECT_TYPE, SignalAction ACTION>
CmdResult CmdSendSignal<OBJECT_TYPE, ACTION>::onValidate(const core::dia::CmdSourceInfo& source, core::dia::IDia* dia) {
  const std::uint32_t signalId = m_cmdValues.get().signalId;
  if (rt_data::RtSignals::isValidId(signalId)) {
    return CmdResult::Okay;
  }
  KAVO_TRACE(Error, "%d is not a valid signal ID", signalId);
  if (dia != nullptr) {
    reportInvalidParameter(KAVO_HERE, *dia, source, "Invalid signal ID");
  }
  return CmdResult::Refused;
}

template class CmdSendSignal<ObjectType::AXIS, SignalAction::SET>;
template class CmdSendSignal<ObjectType::KINEMATICS, SignalAction::SET>;
template class CmdSendSignal<ObjectType::AXIS, SignalAction::RESET>;
template class CmdSendSignal<ObjectType::KINEMATICS, SignalAction::RESET>;

}  // namespace motion::kavo::cmd
