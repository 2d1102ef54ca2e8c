// The commands SetSignal and ResetSignal.
#include "impl/send_signal/cmd_send_signal.h"

#include <type_traits>

#include "impl/command/diagnosis.h"
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

constexpr CmdDefinition defineAs(const char* name, const char* schemaFile, const char* description) noexcept {
  return {
      .site = KAVO_SITE,
      .name = name,
      .description = {.schemaFile = schemaFile, .description = description, .jobs = JOBS, .texts = REGISTRATION},
      .publishRefused =
          [](const CallSite& site, core::job::JobResult result) noexcept {
            KAVO_TRACE_AT(site, Error, "registerPublish failed with %d", core::toCode(result));
          },
  };
}

constexpr CmdDefinition DEFINITIONS[] = {
    defineAs("SetSignal", "cmdSetSignal.bfbs", "Set a signal"),
    defineAs("ResetSignal", "cmdResetSignal.bfbs", "Reset a signal"),
};

template <SignalAction ACTION>
using TableOf = std::conditional_t<ACTION == SignalAction::SET, fbs::CmdSetSignal, fbs::CmdResetSignal>;

}  // namespace

template <ObjectType OBJECT_TYPE, SignalAction ACTION>
const CmdDefinition& CmdSendSignal<OBJECT_TYPE, ACTION>::define() noexcept {
  return DEFINITIONS[static_cast<std::size_t>(ACTION)];
}

template <ObjectType OBJECT_TYPE, SignalAction ACTION>
CmdResult CmdSendSignal<OBJECT_TYPE, ACTION>::onMarshal(const comm::datalayer::Variant* data, core::IContainer*& container,
                                                        bool& owned) {
  return unmarshal<TableOf<ACTION>, CmdSendSignalPars>(
      KAVO_HERE, UNMARSHALLING, data, container, owned,
      [](const TableOf<ACTION>& table) { return CmdSendSignalParsT{.signalId = table.signalId()}; });
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
  this->m_cmdValues.set({.signalId = values->get().signalId, .reset = ACTION == SignalAction::RESET});
  return CmdResult::Okay;
}

template <ObjectType OBJECT_TYPE, SignalAction ACTION>
CmdResult CmdSendSignal<OBJECT_TYPE, ACTION>::onValidate(const core::dia::CmdSourceInfo& source, core::dia::IDia* dia) {
  const std::uint32_t signalId = this->m_cmdValues.get().signalId;
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
