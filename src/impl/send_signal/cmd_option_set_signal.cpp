// The command option SetSignal.
#include "impl/send_signal/cmd_option_set_signal.h"

#include "impl/command/cmd_option.h"
#include "impl/command/registration.h"
#include "impl/command/unmarshalling.h"
#include "impl/send_signal/job_obj_send_signal.h"
#include "impl/send_signal/option_set_signal_pars.h"
#include "motion/core/cmd/cmd_groups.h"
#include "motion/kavo/cmd_options.h"
#include "schemas/command/cmdOptionSetSignal_generated.h"

namespace motion::kavo::cmd {

using core::ObjectType;
using core::cmd::CmdOptPermType;
using core::cmd::CmdResult;

namespace {

using OptionJob = job::JobObjSendSignal<job::JobObjSendSignalUser::COMMAND_OPTION>;

constexpr JobPrototype JOBS[] = {{OptionJob::JOB_NAME, &makePrototype<OptionJob>}};
/// The only slot of run time in which the option's job may run.
constexpr std::uint32_t SLOT = 0;

CmdResult registerFor(core::cmd::IGenericCmdOptionFactory& factory, ObjectType objectType, const char* group,
                      const std::string& schemaDir) {
  return factory.registerCmdOptionWithSlots(CmdOptionSetSignal::getCmdId(objectType), &CmdOptionSetSignal::onCreate,
                                            &CmdOptionSetSignal::onMarshall, {group}, schemaDir + "cmdOptionSetSignal.bfbs",
                                            "Set a signal", "", {SLOT});
}

}  // namespace

CmdResult CmdOptionSetSignal::registerCmdOption(const core::IMotionExt& extIf, const std::string& schemaDir) {
  const CallSite site = KAVO_HERE;
  OptionFactories factories;
  if (const CmdResult result = getOptionFactories(site, extIf, factories); core::isFailure(result)) {
    return result;
  }
  return guarded(CmdResult::OutOfMemory, [&] {
    if (const CmdResult result = registerJobs(site, REGISTRATION_TEXTS, JOBS, *factories.objects); core::isFailure(result)) {
      return result;
    }
    const CmdResult forAxes =
        registerFor(*factories.options, ObjectType::AXIS, core::cmd::axs::GROUP_ALL_COMMANDS, schemaDir);
    return core::isFailure(forAxes)
               ? forAxes
               : registerFor(*factories.options, ObjectType::KINEMATICS, core::cmd::kin::GROUP_ALL_COMMANDS, schemaDir);
  });
}

CmdResult CmdOptionSetSignal::unregisterCmdOption(const core::IMotionExt& extIf) {
  OptionFactories factories;
  if (const CmdResult result = getOptionFactories(KAVO_HERE, extIf, factories); core::isFailure(result)) {
    return result;
  }
  unregisterJobs(JOBS, *factories.objects);
  guarded([&] { (void)factories.options->unregisterCmdOption(getCmdId(ObjectType::AXIS)); });
  return guarded(CmdResult::OutOfMemory,
                 [&] { return factories.options->unregisterCmdOption(getCmdId(ObjectType::KINEMATICS)); });
}

CmdResult CmdOptionSetSignal::onCreate(core::cmd::GenericCmdOption*& option, std::string& errText) {
  return guarded(CmdResult::OptionCreationFailed, [&] {
    option = new CmdOptionSetSignal;
    errText.clear();
    return CmdResult::Okay;
  });
}

CmdResult CmdOptionSetSignal::onMarshall(const comm::datalayer::Variant* data, core::IContainer*& container,
                                         CmdOptPermType& permType, core::dia::IDiagCollector& /*collector*/) {
  const CallSite site = KAVO_HERE;
  std::span<const std::uint8_t> buffer;
  if (const CmdResult result = getVerifiedBuffer(site, UNMARSHAL_TEXTS, data, &isBufferOf<fbs::CmdOptionSetSignal>, buffer);
      core::isFailure(result)) {
    return result;
  }
  const auto& table = *flatbuffers::GetRoot<fbs::CmdOptionSetSignal>(buffer.data());
  if (const CmdResult result = readPermType(site, table.permType(), permType); core::isFailure(result)) {
    return result;
  }
  bool owned = false;
  return makeContainer<CmdOptionSetSignalPars>(container, owned,
                                               [&table] { return CmdOptionSetSignalParsT{.signalId = table.signalId()}; });
}

core::cmd::CmdId CmdOptionSetSignal::getCmdId(ObjectType objectType) {
  return {objectType, OPTION_SET_SIGNAL};
}

const char* CmdOptionSetSignal::getJobName() noexcept {
  return OptionJob::JOB_NAME;
}

CmdResult CmdOptionSetSignal::setParameter(const core::IContainer* cmdOptValues, core::IObjFactory& jobObjFactory,
                                           const core::IObj& /*obj*/, core::dia::IDia& dia) {
  const auto* const values = CmdOptionSetSignalPars::safeCast(cmdOptValues);
  if (values == nullptr) {
    // Names the record of the job, though it is that of the option which is missing; the text is kept to the letter.
    KAVO_TRACE_TEXT(Error, "SendSignalJobPars::safeCast(cmdOptValues) failed");
    return CmdResult::WrongContainer;
  }
  const job::SendSignalJobPars jobPars({.signalId = values->get().signalId, .reset = false});
  const CmdResult result = checkByJob(KAVO_HERE, jobObjFactory, getJobName(), jobPars, dia);
  if (!core::isFailure(result)) {
    m_jobPars.set(jobPars.get());
  }
  return result;
}

std::vector<core::job::IJobObject*> CmdOptionSetSignal::createJobs(core::IObjFactory& jobObjFactory) const {
  return makeOptionJob(KAVO_HERE, jobObjFactory, getJobName(), m_jobPars);
}

}  // namespace motion::kavo::cmd
