// The command option SwitchOnPath.
#include "impl/switch_on_path/cmd_option_switch_on_path.h"

#include <cstdio>
#include <cstring>
#include <utility>

#include "impl/command/cmd_option.h"
#include "impl/command/registration.h"
#include "impl/command/unmarshalling.h"
#include "impl/diagnosis_codes.h"
#include "impl/switch_on_path/job_obj_switch_on_path.h"
#include "motion/core/cmd/cmd_groups.h"
#include "motion/core/cmd/i_cmd_opt_handler.h"
#include "motion/kavo/cmd_options.h"
#include "schemas/command/cmdOptionSwitchOnPath_generated.h"

namespace motion::kavo::cmd {

using core::ObjectType;
using core::cmd::CmdOptPermType;
using core::cmd::CmdResult;

namespace {

using OptionJob = job::JobObjSwitchOnPath;

constexpr const char* NAME = OPTION_SWITCH_ON_PATH;
constexpr std::size_t COORDINATES = std::tuple_size_v<decltype(SwitchOnPathPars::targetPos)>;

/// The prototypes of the job; their name is that of the job object.
std::span<const JobPrototype> jobs() noexcept {
  static const JobPrototype prototypes[] = {{OptionJob::getStaticInfo().name, &makePrototype<OptionJob>}};
  return prototypes;
}

/// Tells whether the table holds a target, and why not. NullPointer, InvalidParameterData, each with a trace.
CmdResult checkTarget(const CallSite& site, const flatbuffers::Vector<double>* target,
                      core::dia::IDiagCollector& diag) noexcept {
  if (target == nullptr) {
    KAVO_TRACE_IN(site, Error, "%s", "cmdDataIn->targetPosition==nullptr");
    return CmdResult::NullPointer;
  }
  if (target->size() != COORDINATES) {
    std::array<char, 128> text{};
    std::snprintf(text.data(), text.size(), "require %u double values for the \"targetPosition\" field, but found %u",
                  static_cast<unsigned int>(COORDINATES), target->size());
    guarded([&] { diag.add(diagnosis::MAIN_OPTION_PARAMETER, diagnosis::DETAIL_INVALID_PARAMETER, text.data()); });
    KAVO_TRACE_IN(site, Error, "%s",
                  "cmdDataIn->targetPosition()->size() != sizeof(::motion::kavo::SwitchOnPathPars::targetPos) / "
                  "sizeof(double)");
    return CmdResult::InvalidParameterData;
  }
  return CmdResult::Okay;
}

/// The coordinates of a target that was checked. The verifier knows where the elements of a vector end, not whether they lie
/// where a double may be read, so that they are copied byte by byte.
std::array<double, COORDINATES> coordinatesOf(const flatbuffers::Vector<double>& target) noexcept {
  static_assert(FLATBUFFERS_LITTLEENDIAN, "buffers are little endian");
  std::array<double, COORDINATES> coordinates{};
  std::memcpy(coordinates.data(), target.Data(), sizeof(coordinates));
  return coordinates;
}

/// Reports to the object why conditions could not be carried over. What becomes of the report changes no result.
template <typename... ARGUMENTS>
void reportNotStacked(const CallSite& site, core::IObj& obj, const core::dia::CmdSourceInfo& source,
                      std::uint32_t detailCode, const char* format, ARGUMENTS... arguments) noexcept {
  guarded([&] {
    core::dia::IDia& dia = obj.getDia();
    dia.report(diagnosis::MAIN_OPTION_ERROR, detailCode, source, {site.unit, site.function, site.line}, format, NAME,
               arguments...);
    dia.close();
  });
}

void appendArmed(const SwitchOnPathParsListT& active, SwitchOnPathParsListT& conditions) {
  conditions.reserve(conditions.size() + active.size());
  for (const auto& condition : active) {
    if (!condition->isReached()) {
      conditions.push_back(condition);
    }
  }
}

}  // namespace

const core::UnitHelperT* CmdOptionSwitchOnPath::m_unitHelper = nullptr;
const std::array<double, 3> CmdOptionSwitchOnPath::unusedTargetPosition{};

CmdResult CmdOptionSwitchOnPath::registerCmdOption(const core::IMotionExt& extIf, const std::string& schemaDir) {
  const CallSite site = KAVO_HERE;
  OptionFactories factories;
  if (const CmdResult result = getOptionFactories(site, extIf, factories); core::isFailure(result)) {
    return result;
  }
  core::IAmCreatable* const helper =
      guarded<core::IAmCreatable*>(nullptr, [&factories] { return factories.objects->getHelper(core::UNITHELPER_T_ID); });
  if (helper == nullptr) {
    KAVO_TRACE_IN(site, Error, "%s", "Failed to get UNITHELPER_T_ID from objFactory");
    return CmdResult::NullPointer;
  }
  m_unitHelper = static_cast<const core::UnitHelperT*>(helper);
  return guarded(CmdResult::OutOfMemory, [&] {
    if (const CmdResult result = registerJobs(site, REGISTRATION_TEXTS, jobs(), *factories.objects);
        core::isFailure(result)) {
      return result;
    }
    return factories.options->registerCmdOption(
        getCmdId(ObjectType::KINEMATICS), &onCreate, &onMarshall, {core::cmd::kin::GROUP_MOTION_COMMANDS},
        schemaDir + "cmdOptionSwitchOnPath.bfbs", "Trigger a signal when the target position is reached.", "");
  });
}

CmdResult CmdOptionSwitchOnPath::unregisterCmdOption(const core::IMotionExt& extIf) {
  OptionFactories factories;
  if (const CmdResult result = getOptionFactories(KAVO_HERE, extIf, factories); core::isFailure(result)) {
    return result;
  }
  unregisterJobs(jobs(), *factories.objects);
  return guarded(CmdResult::OutOfMemory,
                 [&] { return factories.options->unregisterCmdOption(getCmdId(ObjectType::KINEMATICS)); });
}

CmdResult CmdOptionSwitchOnPath::onCreate(core::cmd::GenericCmdOption*& option, std::string& errText) {
  return guarded(CmdResult::OptionCreationFailed, [&] {
    option = new CmdOptionSwitchOnPath;
    errText.clear();
    return CmdResult::Okay;
  });
}

CmdResult CmdOptionSwitchOnPath::onMarshall(const comm::datalayer::Variant* data, core::IContainer*& values,
                                            CmdOptPermType& permType, core::dia::IDiagCollector& diag) {
  const CallSite site = KAVO_HERE;
  std::span<const std::uint8_t> buffer;
  if (const CmdResult result =
          getVerifiedBuffer(site, UNMARSHAL_TEXTS, data, &isBufferOf<fbs::CmdOptionSwitchOnPath>, buffer);
      core::isFailure(result)) {
    return result;
  }
  const auto& table = *flatbuffers::GetRoot<fbs::CmdOptionSwitchOnPath>(buffer.data());
  if (const CmdResult result = readPermType(site, table.permType(), permType); core::isFailure(result)) {
    return result;
  }
  std::array<double, COORDINATES> target = unusedTargetPosition;
  if (permType != CmdOptPermType::PERM_OFF) {
    if (const CmdResult result = checkTarget(site, table.targetPosition(), diag); core::isFailure(result)) {
      return result;
    }
    target = coordinatesOf(*table.targetPosition());
  }
  bool owned = false;
  return makeContainer<SwitchOnPathParsList>(values, owned, [&] {
    return SwitchOnPathParsListT{std::make_shared<SwitchOnPathPars>(SwitchOnPathPars{
        .mode = static_cast<SwitchOnPathMode>(table.mode()),
        .signalId = table.signalId(),
        .action = static_cast<SwitchOnPathAction>(table.action()),
        .targetPos = target,
        .radius = table.radius(),
        .preTriggerTime = table.preTriggerTime(),
    })};
  });
}

core::cmd::CmdId CmdOptionSwitchOnPath::getCmdId(ObjectType objectType) {
  return {objectType, NAME};
}

void CmdOptionSwitchOnPath::toInternalUnits(const core::UnitSettings& units, SwitchOnPathPars& condition) {
  const auto length = [&units](double value) { return m_unitHelper->toInternal(units, core::UnitEntry::LENGTH, value); };
  condition.radius = length(condition.radius);
  for (double& coordinate : condition.targetPos) {
    coordinate = length(coordinate);
  }
  condition.preTriggerTime = m_unitHelper->toInternal(units, core::UnitEntry::TIME, condition.preTriggerTime);
}

CmdResult CmdOptionSwitchOnPath::prepareStackableCmdOption(core::IObj& obj, const core::cmd::ICmdOptHandler& handler,
                                                           core::IContainer* values, CmdOptPermType& permType,
                                                           const core::dia::CmdSourceInfo& source) const {
  const CallSite site = KAVO_HERE;
  auto* const list = SwitchOnPathParsList::safeCast(values);
  if (list == nullptr) {
    KAVO_TRACE_IN(site, Error, "%s", "Invalid cmdOptValues");
    return CmdResult::Refused;
  }
  return guarded(CmdResult::OutOfMemory, [&] {
    SwitchOnPathParsListT& conditions = list->getRef();
    if (!conditions.empty()) {
      if (m_unitHelper == nullptr) {
        return CmdResult::NullPointer;
      }
      toInternalUnits(obj.getUnitSettings(), *conditions.front());
    }
    const core::IContainer* data = nullptr;
    const CmdResult result = handler.getDataOfOption(getCmdId(ObjectType::KINEMATICS), data);
    if (result == CmdResult::NoOptionData) {
      return CmdResult::Okay;
    }
    if (core::isFailure(result)) {
      reportNotStacked(site, obj, source, diagnosis::DETAIL_NO_OPTION_DATA,
                       "failed to prepare stackable settings for cmd option %s. getDataOfOption returned %d",
                       core::toCode(result));
      return result;
    }
    const auto* const active = SwitchOnPathParsList::safeCast(data);
    if (active == nullptr) {
      reportNotStacked(site, obj, source, diagnosis::DETAIL_INVALID_OPTION_DATA,
                       "failed to prepare stackable settings for cmd option %s. getDataOfOption returned invalid data");
      return CmdResult::JobCreationFailed;
    }
    if (permType <= CmdOptPermType::PERM_ON) {
      appendArmed(active->get(), conditions);
    }
    return CmdResult::Okay;
  });
}

CmdResult CmdOptionSwitchOnPath::setParameter(const core::IContainer* values, core::IObjFactory& factory,
                                              const core::IObj& /*obj*/, core::dia::IDia& dia) {
  const auto* const list = SwitchOnPathParsList::safeCast(values);
  if (list == nullptr) {
    KAVO_TRACE_TEXT(Error, "CmdOptionSwitchOnPathPars::safeCast(cmdOptValues) failed");
    return CmdResult::WrongContainer;
  }
  if (const CmdResult result = checkByJob(KAVO_HERE, factory, OptionJob::getStaticInfo().name, *list, dia);
      core::isFailure(result)) {
    return result;
  }
  return guarded(CmdResult::OutOfMemory, [&] {
    m_conditions.set(list->get());
    return CmdResult::Okay;
  });
}

CmdResult CmdOptionSwitchOnPath::getParameter(const core::IContainer*& values) {
  values = &m_conditions;
  return CmdResult::Okay;
}

std::vector<core::job::IJobObject*> CmdOptionSwitchOnPath::createJobs(core::IObjFactory& factory) const {
  return makeOptionJob(KAVO_HERE, factory, OptionJob::getStaticInfo().name, m_conditions);
}

}  // namespace motion::kavo::cmd
