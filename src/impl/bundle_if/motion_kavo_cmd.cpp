// Registers what the component offers and issues its commands for the host's program interfaces.
#include "impl/bundle_if/motion_kavo_cmd.h"

#include <algorithm>
#include <array>
#include <memory>
#include <utility>

#include "impl/bundle_if/fct_result_text.h"
#include "impl/debug_trace.h"
#include "impl/ext_dep/ext_dep_mgr.h"
#include "impl/guarded.h"
#include "impl/join/cmd_join.h"
#include "impl/join/join_cmd_global_context.h"
#include "impl/rt_signals.h"
#include "impl/send_signal/cmd_option_set_signal.h"
#include "impl/send_signal/cmd_send_signal.h"
#include "impl/send_signal/option_set_signal_pars.h"
#include "impl/switch_on_path/cmd_option_switch_on_path.h"
#include "impl/wait_for_signal/cmd_wait_for_signal.h"
#include "impl/wait_for_signal_reset/cmd_wait_for_signal_reset.h"
#include "motion/core/i_obj.h"

namespace motion::kavo {

namespace {

using cmd::CmdJoin;
using cmd::CmdOptionSetSignal;
using cmd::CmdOptionSwitchOnPath;
using cmd::CmdSendSignal;
using cmd::CmdWaitForSignal;
using cmd::CmdWaitForSignalReset;
using cmd::SignalAction;
using core::FctResult;
using core::ObjectType;
using core::cmd::CmdOptPermType;
using core::cmd::CmdResult;

/// A command or option that the component offers.
struct Registration {
  const char* name;
  CmdResult (*registerIt)(const core::IMotionExt& ext, const std::string& schemaDir);
  CmdResult (*unregisterIt)(const core::IMotionExt& ext);
};

template <typename COMMAND>
constexpr Registration registrationOf(const char* name) {
  return {name, &COMMAND::registerCmd, &COMMAND::unregisterCmd};
}

template <typename OPTION>
constexpr Registration optionRegistrationOf(const char* name) {
  return {name, &OPTION::registerCmdOption, &OPTION::unregisterCmdOption};
}

constexpr Registration REGISTRATIONS[] = {
    registrationOf<CmdWaitForSignal<ObjectType::AXIS>>("WaitForSignal"),
    registrationOf<CmdWaitForSignal<ObjectType::KINEMATICS>>("WaitForSignal"),
    registrationOf<CmdWaitForSignalReset<ObjectType::AXIS>>("WaitForSignalReset"),
    registrationOf<CmdWaitForSignalReset<ObjectType::KINEMATICS>>("WaitForSignalReset"),
    registrationOf<CmdSendSignal<ObjectType::AXIS, SignalAction::SET>>("SetSignal"),
    registrationOf<CmdSendSignal<ObjectType::KINEMATICS, SignalAction::SET>>("SetSignal"),
    registrationOf<CmdSendSignal<ObjectType::AXIS, SignalAction::RESET>>("ResetSignal"),
    registrationOf<CmdSendSignal<ObjectType::KINEMATICS, SignalAction::RESET>>("ResetSignal"),
    optionRegistrationOf<CmdOptionSetSignal>("SetSignal"),
    registrationOf<CmdJoin<ObjectType::AXIS>>("Join"),
    registrationOf<CmdJoin<ObjectType::KINEMATICS>>("Join"),
    optionRegistrationOf<CmdOptionSwitchOnPath>("SwitchOnPath"),
};

/// The records of the commands, in the order in which they are announced.
constexpr void (*DATA_TYPES[])(core::job::IJobDataIDMgr&) = {
    &cmd::registerJoinDataTypes,          &cmd::registerOptionSetSignalDataTypes, &cmd::registerSendSignalDataTypes,
    &job::registerSendSignalDataTypes,    &job::registerWaitForSignalDataTypes,   &job::registerWaitForSignalResetDataTypes,
    &registerOptionSwitchOnPathDataTypes,
};

/// Resolves the object for a published function.
FctResult resolveObjectType(const CallSite& site, const core::cmd::ICmdContext* context, const char* objName,
                            ObjectType& type) noexcept {
  if (context == nullptr) {
    return FctResult::NotAvailable;
  }
  const FctResult result = guarded(FctResult::OutOfMemory, [&] { return MotionKavoCmd::getObjectType(objName, type); });
  if (core::isFailure(result)) {
    KAVO_TRACE_AT(site, Error, "getObjectType failed with %s", getResultText(result));
  }
  return result;
}

/// Joins that other lives of the component left open are none of this one's.
void forgetOpenJoins() noexcept {
  guarded([] { job::JoinCmdGlobalContext::reset(); });
}

/// Who asks for a command, of which object.
struct Request {
  core::cmd::ICmdContext* context;
  const core::dia::CmdSourceInfo& source;
  const char* objName;
};

/// Hands a command to the context, with the parameters that `makeValues` makes: AXIS_CMD or KIN_CMD, whatever the object is.
template <typename AXIS_CMD, typename KIN_CMD, typename MAKE_VALUES>
FctResult addCommand(const CallSite& site, const Request& request, unsigned long& cmdId, MAKE_VALUES makeValues) noexcept {
  auto type = ObjectType::UNDEFINED;
  if (const FctResult result = resolveObjectType(site, request.context, request.objName, type); core::isFailure(result)) {
    return result;
  }
  return guarded(FctResult::OutOfMemory, [&] {
    const core::cmd::CmdId& id = type == ObjectType::AXIS ? AXIS_CMD::getCmdId() : KIN_CMD::getCmdId();
    const auto values = makeValues();
    return request.context->addCmd(request.source, request.objName, id.name, values, 1, &cmdId);
  });
}

}  // namespace

bool MotionKavoCmd::initialize(core::MotionCmdIfT& cmdIf, core::MotionCmdIf2T& cmdIf2, core::IMotionExt& ext,
                               comm::datalayer::IDataLayerFactory& factory, const std::string& schemaDir) noexcept {
  forgetOpenJoins();
  if (!rt_data::RtSignals::getInstance().initialize(factory)) {
    KAVO_TRACE_TEXT(Error, "RtSignals::initialize() failed");
    return false;
  }
  core::job::IJobDataIDMgr* const idMgr =
      guarded<core::job::IJobDataIDMgr*>(nullptr, [&ext] { return ext.getJobDataIDMgr(); });
  if (idMgr == nullptr) {
    KAVO_TRACE_TEXT(Error, "Failed to retrieve the jobDataIdMgr from motionExtIf");
    return false;
  }
  for (const auto registerDataTypes : DATA_TYPES) {
    registerDataTypes(*idMgr);
  }
  for (const auto& [name, registerIt, unregisterIt] : REGISTRATIONS) {
    if (core::isFailure(registerIt(ext, schemaDir))) {
      KAVO_TRACE(Error, "Registration of %s failed", name);
      rt_data::RtSignals::getInstance().terminate();
      return false;
    }
    KAVO_TRACE(Info, "Registration of %s succeeded", name);
  }

  g_motionCmdIf = &cmdIf;
  cmdIf.resetSignalCmd = &resetSignalCmd;
  cmdIf.setSignalCmd = &setSignalCmd;
  cmdIf.setSignalCmdOpt = &setSignalCmdOpt;
  cmdIf.waitForSignalCmd = &waitForSignalCmd;
  cmdIf.joinCmd = &joinCmd;
  g_motionCmdIf2 = &cmdIf2;
  cmdIf2.general->resetSignalCmd = &resetSignalCmd;
  cmdIf2.general->setSignalCmd = &setSignalCmd;
  cmdIf2.general->setSignalCmdOpt = &setSignalCmdOpt;
  cmdIf2.general->waitForSignalCmd = &waitForSignalCmd;
  cmdIf2.general->joinCmd = &joinCmd;
  cmdIf2.general->waitForSignalResetCmd = &waitForSignalResetCmd;
  cmdIf2.kin->kinSwitchOnPathCmdOpt = &kinSwitchOnPathCmdOpt;
  return true;
}

void MotionKavoCmd::terminate(core::IMotionExt* ext) noexcept {
  if (ext != nullptr) {
    for (const auto& [name, registerIt, unregisterIt] : REGISTRATIONS) {
      if (!core::isFailure(unregisterIt(*ext))) {
        KAVO_TRACE(Info, "Unregistration of %s succeeded", name);
      }
    }
  }
  // The fields of this component are cleared whether or not something was published in them.
  if (core::MotionCmdIfT* const cmdIf = std::exchange(g_motionCmdIf, nullptr); cmdIf != nullptr) {
    cmdIf->resetSignalCmd = nullptr;
    cmdIf->setSignalCmd = nullptr;
    cmdIf->setSignalCmdOpt = nullptr;
    cmdIf->waitForSignalCmd = nullptr;
    cmdIf->joinCmd = nullptr;
  }
  if (core::MotionCmdIf2T* const cmdIf2 = std::exchange(g_motionCmdIf2, nullptr); cmdIf2 != nullptr) {
    core::MotionCmdGeneralFctT& general = *cmdIf2->general;
    general.resetSignalCmd = nullptr;
    general.setSignalCmd = nullptr;
    general.setSignalCmdOpt = nullptr;
    general.waitForSignalCmd = nullptr;
    general.joinCmd = nullptr;
    general.waitForSignalResetCmd = nullptr;
    cmdIf2->kin->kinSwitchOnPathCmdOpt = nullptr;
  }
  rt_data::RtSignals::getInstance().terminate();
  forgetOpenJoins();
}

FctResult MotionKavoCmd::getObjectType(const char* name, ObjectType& type) {
  core::IObjMgr* const objMgr = getObjMgr(KAVO_HERE);
  if (objMgr == nullptr) {
    return FctResult::NotAvailable;
  }
  const core::IObj* const obj = objMgr->findObj(name, 0);
  if (obj == nullptr) {
    KAVO_TRACE(Error, "Can't find motion object %s", name);
    return FctResult::ObjectNotFound;
  }
  if (obj->isAxis()) {
    type = ObjectType::AXIS;
    return FctResult::Okay;
  }
  if (obj->isKinematics()) {
    type = ObjectType::KINEMATICS;
    return FctResult::Okay;
  }
  KAVO_TRACE(Error, "%s has an invalid motion object type (must be an axis or kinematic)", name);
  return FctResult::NotOkay;
}

FctResult MotionKavoCmd::setSignalCmd(core::cmd::ICmdContext* context, const core::dia::CmdSourceInfo& source,
                                      const char* objName, unsigned int signalId, unsigned long& cmdId) noexcept {
  return addCommand<CmdSendSignal<ObjectType::AXIS, SignalAction::SET>,
                    CmdSendSignal<ObjectType::KINEMATICS, SignalAction::SET>>(
      KAVO_HERE, {context, source, objName}, cmdId, [&] { return cmd::CmdSendSignalPars({.signalId = signalId}); });
}

FctResult MotionKavoCmd::resetSignalCmd(core::cmd::ICmdContext* context, const core::dia::CmdSourceInfo& source,
                                        const char* objName, unsigned int signalId, unsigned long& cmdId) noexcept {
  return addCommand<CmdSendSignal<ObjectType::AXIS, SignalAction::RESET>,
                    CmdSendSignal<ObjectType::KINEMATICS, SignalAction::RESET>>(
      KAVO_HERE, {context, source, objName}, cmdId, [&] { return cmd::CmdSendSignalPars({.signalId = signalId}); });
}

FctResult MotionKavoCmd::setSignalCmdOpt(core::cmd::ICmdContext* context, const core::dia::CmdSourceInfo& source,
                                         const char* objName, unsigned int signalId) noexcept {
  auto type = ObjectType::UNDEFINED;
  if (const FctResult result = resolveObjectType(KAVO_HERE, context, objName, type); core::isFailure(result)) {
    return result;
  }
  return guarded(FctResult::OutOfMemory, [&] {
    cmd::CmdOptionSetSignalPars values({.signalId = signalId});
    return context->addCmdOption(source, objName, CmdOptionSetSignal::getCmdId(type).name, CmdOptPermType::ONCE, values);
  });
}

FctResult MotionKavoCmd::waitForSignalCmd(core::cmd::ICmdContext* context, const core::dia::CmdSourceInfo& source,
                                          const char* objName, unsigned int signalId, bool autoReset,
                                          unsigned long& cmdId) noexcept {
  return addCommand<CmdWaitForSignal<ObjectType::AXIS>, CmdWaitForSignal<ObjectType::KINEMATICS>>(
      KAVO_HERE, {context, source, objName}, cmdId,
      [&] { return job::WaitForSignalJobPars({.signalId = signalId, .autoReset = autoReset}); });
}

FctResult MotionKavoCmd::waitForSignalResetCmd(core::cmd::ICmdContext* context, const core::dia::CmdSourceInfo& source,
                                               const char* objName, unsigned int signalId, unsigned long& cmdId) noexcept {
  return addCommand<CmdWaitForSignalReset<ObjectType::AXIS>, CmdWaitForSignalReset<ObjectType::KINEMATICS>>(
      KAVO_HERE, {context, source, objName}, cmdId, [&] { return job::WaitForSignalResetJobPars({.signalId = signalId}); });
}

FctResult MotionKavoCmd::joinCmd(core::cmd::ICmdContext* context, const core::dia::CmdSourceInfo& source,
                                 const char* objName, const std::vector<std::string>& group, bool syncStartNextCmd,
                                 unsigned long& cmdId) noexcept {
  return addCommand<CmdJoin<ObjectType::AXIS>, CmdJoin<ObjectType::KINEMATICS>>(
      KAVO_HERE, {context, source, objName}, cmdId,
      [&] { return cmd::CmdJoinPars({.group = group, .syncStartNextCmd = syncStartNextCmd}); });
}

FctResult MotionKavoCmd::kinSwitchOnPathCmdOpt(core::cmd::ICmdContext* context, const core::dia::CmdSourceInfo& source,
                                               CmdOptPermType permType, const char* objName, SwitchOnPathMode mode,
                                               unsigned int signalId, SwitchOnPathAction action, const double* targetPos,
                                               double radius, double preTriggerTime) noexcept {
  auto type = ObjectType::UNDEFINED;
  if (const FctResult result = resolveObjectType(KAVO_HERE, context, objName, type); core::isFailure(result)) {
    return result;
  }
  if (type != ObjectType::KINEMATICS) {
    KAVO_TRACE(Error, "kinSwitchOnPathCmdOpt not supported for object type '%s'",
               type == ObjectType::AXIS ? "Axis" : "Undefined");
    return FctResult::OptionNotSupported;
  }
  // Switching off has no target.
  std::array<double, 3> target{};
  if (targetPos != nullptr) {
    std::copy_n(targetPos, target.size(), target.begin());
  } else if (permType != CmdOptPermType::PERM_OFF) {
    KAVO_TRACE_TEXT(Error, "targetPos is NULL");
    return FctResult::InvalidParameter;
  }
  return guarded(FctResult::OutOfMemory, [&] {
    SwitchOnPathParsList values({std::make_shared<SwitchOnPathPars>(SwitchOnPathPars{
        .mode = mode,
        .signalId = signalId,
        .action = action,
        .targetPos = target,
        .radius = radius,
        .preTriggerTime = preTriggerTime,
    })});
    return context->addCmdOption(source, objName, CmdOptionSwitchOnPath::getCmdId(type).name, permType, values);
  });
}

}  // namespace motion::kavo
