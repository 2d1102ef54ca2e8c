#include "host/motion/runtime.h"

#include <fmt/format.h>

#include <new>

#include "host/motion/builtin/builtin_cmds.h"
#include "host/motion/diag_collector.h"
#include "host/motion/motion_ext.h"
#include "host/motion/unit_helper.h"
#include "host/support/guarded.h"

namespace motion::host {

using core::FctResult;
using core::cmd::CmdResult;

Runtime::Runtime(const RuntimeConfig& config)
    : m_config(config),
      m_cmdFactory(m_complaints),
      m_cmdOptionFactory(m_complaints),
      m_cycle(m_objMgr.objects()),
      m_preparation(m_objFactory, m_cmdFactory, m_cmdOptionFactory, m_retired, m_cycle.begunCounter()) {
  fillRecords();
  std::unique_ptr<core::IAmCreatable> unitHelper = std::make_unique<UnitHelper>();
  if (core::isFailure(m_objFactory.registerObj(unitHelper, 0))) {
    throw std::bad_alloc();  // a new factory refuses for no other reason
  }
  builtin::registerCmds(m_cmdFactory, m_objFactory, m_jobDataIDMgr);
}

Runtime::~Runtime() {
  stopThreads();
  stopCommands();
}

MotionObject* Runtime::addObject(const std::string& name, core::ObjectType type, const Point& start,
                                 const core::UnitSettings& units) {
  MotionObject* object = m_objMgr.add({name, type, start, m_config.cycleTime, m_config.bufferSize, 0, units}, m_retired);
  m_cycle.setObjects(m_objMgr.objects());
  return object;
}

FctResult Runtime::addCmd(const core::dia::CmdSourceInfo& source, const char* objName, const std::string& cmdType,
                          const core::IContainer& values, std::uint32_t count, unsigned long* cmdId) noexcept {
  if (cmdId == nullptr || count != 1) {
    return FctResult::InvalidParameter;
  }
  MotionObject* object = m_objMgr.find(objName);
  if (object == nullptr) {
    return FctResult::ObjectNotFound;
  }
  std::string problem;
  return m_preparation.add(*object, {cmdType, values, source}, *cmdId, problem);
}

FctResult Runtime::addCmdOption(const core::dia::CmdSourceInfo& source, const char* objName, const std::string& cmdType,
                                core::cmd::CmdOptPermType permType, core::IContainer& values) noexcept {
  MotionObject* object = m_objMgr.find(objName);
  if (object == nullptr) {
    return FctResult::ObjectNotFound;
  }
  std::string problem;
  return m_preparation.addOption(*object, {cmdType, permType, values, source}, problem);
}

namespace {

FctResult notDecoded(CmdResult result, const std::string& what, const MotionObject& object, std::string& problem) {
  problem =
      fmt::format("the parameters of {} of '{}' could not be decoded (0x{:08X})", what, object.name(), core::toCode(result));
  return result == CmdResult::OutOfMemory ? FctResult::OutOfMemory : FctResult::InvalidParameter;
}

/// Calls a marshalling function. A component has no right to throw across the contract; what it was given counts as
/// undecodable then.
template <typename MARSHAL>
CmdResult decode(core::IContainer*& container, const MARSHAL& marshal) {
  return guarded(CmdResult::OutOfMemory, CmdResult::InvalidParameterData, [&] {
    core::IContainer* made = nullptr;
    const CmdResult result = marshal(made);
    container = made;
    return result;
  });
}

}  // namespace

Runtime::Parameters Runtime::marshal(const MotionObject& object, const EncodedCmd& command, FctResult& result,
                                     std::string& problem) {
  const auto entry = m_cmdFactory.find({object.type(), command.name});
  if (entry == nullptr) {
    result = FctResult::NotSupportedByObject;
    problem = fmt::format("'{}' is not a command of '{}'", command.name, object.name());
    return nullptr;
  }
  core::IContainer* container = nullptr;
  bool owned = false;
  const CmdResult marshalled =
      decode(container, [&](core::IContainer*& made) { return entry->marshal(&command.parameters, made, owned); });
  Parameters values(container, ParametersDeleter(owned));
  if (core::isFailure(marshalled) || values == nullptr) {
    result = notDecoded(marshalled, fmt::format("'{}'", command.name), object, problem);
    return nullptr;
  }
  return values;
}

Runtime::DecodedOption Runtime::marshal(const MotionObject& object, const EncodedOption& option, DiaLog& dia,
                                        FctResult& result, std::string& problem) {
  const auto entry = m_cmdOptionFactory.find({object.type(), option.name});
  if (entry == nullptr) {
    result = FctResult::OptionNotSupported;
    problem = fmt::format("'{}' is not an option of '{}'", option.name, object.name());
    return {};
  }
  const std::uint64_t diagnoses = dia.count();
  DiagCollector collector(dia, option.source);
  core::IContainer* container = nullptr;
  auto permType = core::cmd::CmdOptPermType::ONCE;
  const CmdResult marshalled = decode(
      container, [&](core::IContainer*& made) { return entry->marshal(&option.parameters, made, permType, collector); });
  Parameters values(container, ParametersDeleter(true));
  if (core::isFailure(marshalled) || values == nullptr) {
    result = notDecoded(marshalled, fmt::format("option '{}'", option.name), object, problem);
    if (dia.count() > diagnoses) {
      problem += ": " + dia.latestWithCodes();
    }
    return {};
  }
  return {std::move(values), permType};
}

class Runtime::Decoded {
 public:
  /// False with `result` and `problem` when something cannot be decoded; diagnoses go to `dia`.
  [[nodiscard]] bool decode(Runtime& runtime, const MotionObject& object, const EncodedCmd& command, DiaLog& dia,
                            FctResult& result, std::string& problem) {
    m_values = runtime.marshal(object, command, result, problem);
    if (m_values == nullptr) {
      return false;
    }
    for (const EncodedOption& option : command.options) {
      m_options.push_back(runtime.marshal(object, option, dia, result, problem));
      if (m_options.back().values == nullptr) {
        return false;
      }
      m_requests.push_back({option.name, m_options.back().permType, *m_options.back().values, option.source});
    }
    return true;
  }
  [[nodiscard]] CmdRequest request(const EncodedCmd& command) const {
    return {command.name, *m_values, command.source, m_requests};
  }

 private:
  Parameters m_values;
  std::vector<DecodedOption> m_options;
  std::vector<OptionRequest> m_requests;
};

FctResult Runtime::issue(MotionObject& object, const EncodedCmd& command, unsigned long& cmdId, std::string& problem) {
  FctResult result = FctResult::NotOkay;
  Decoded decoded;
  return decoded.decode(*this, object, command, object.diaLog(), result, problem)
             ? m_preparation.add(object, decoded.request(command), cmdId, problem)
             : result;
}

FctResult Runtime::tryOut(MotionObject& object, const EncodedCmd& command, std::string& problem) {
  FctResult result = FctResult::NotOkay;
  DiaLog dia;
  Decoded decoded;
  return decoded.decode(*this, object, command, dia, result, problem)
             ? m_preparation.tryOut(object, decoded.request(command), problem)
             : result;
}

void Runtime::step() {
  m_preparation.prepareAll();
  m_cycle.run();
}

void Runtime::startThreads(IPacer& pacer, const std::function<void(const std::string& warning)>& onStarted) {
  m_stopCycles = false;
  m_preparation.startThread();
  m_cyclicThread = std::thread([this, &pacer, onStarted] { runCyclicThread(pacer, onStarted); });
}

void Runtime::runCyclicThread(IPacer& pacer, const std::function<void(const std::string&)>& onStarted) noexcept {
  onStarted(requestRealTime());
  while (!m_stopCycles.load(std::memory_order_relaxed)) {
    pacer.waitForCycle();
    m_cycle.run();
  }
}

void Runtime::stopThreads() {
  m_stopCycles = true;
  if (m_cyclicThread.joinable()) {
    m_cyclicThread.join();
  }
  m_preparation.stopThread();
}

void Runtime::stopCommands() {
  for (const auto& object : m_objMgr.objects()) {
    object->clear();
  }
  m_preparation.clear();
  for (const auto& object : m_objMgr.objects()) {
    object->options().clear();  // they are code of the component
  }
}

namespace {

// A component calls these: nothing may throw.

Runtime& runtimeOf(void* context) noexcept {
  return *static_cast<Runtime*>(context);
}

FctResult abortCmds(void* context, const char* objName) noexcept {
  MotionObject* object = runtimeOf(context).objMgr().find(objName);
  if (object == nullptr) {
    return FctResult::ObjectNotFound;
  }
  object->abortAll();
  return FctResult::Okay;
}

FctResult getCycleTime(void* context, double& seconds) noexcept {
  seconds = runtimeOf(context).cycleTime();
  return FctResult::Okay;
}

std::uint32_t getObjCount(void* context) noexcept {
  return runtimeOf(context).objMgr().getObjCount();
}

FctResult abortCmd(core::cmd::ICmdContext* context, const core::dia::CmdSourceInfo& /*source*/,
                   const char* objName) noexcept {
  return context == nullptr ? FctResult::NotAvailable : abortCmds(static_cast<Runtime*>(context), objName);
}

FctResult dwellCmd(core::cmd::ICmdContext* context, const core::dia::CmdSourceInfo& source, const char* objName,
                   double duration, unsigned long& cmdId) noexcept {
  if (context == nullptr) {
    return FctResult::NotAvailable;
  }
  return guarded(FctResult::OutOfMemory, FctResult::NotOkay, [&] {
    const builtin::DwellPars values(builtin::DwellParsT{duration});
    return context->addCmd(source, objName, "Dwell", values, 1, &cmdId);
  });
}

template <double (MotionObject::*QUERY)() const noexcept>
FctResult getAxisValue(void* context, const char* objName, double& value) noexcept {
  const MotionObject* object = runtimeOf(context).objMgr().find(objName);
  if (object == nullptr) {
    return FctResult::ObjectNotFound;
  }
  if (!object->isAxis()) {
    return FctResult::NotSupportedByObject;
  }
  value = (object->*QUERY)();
  return FctResult::Okay;
}

FctResult createExtIfObj(void* context, const core::ComponentVersionAdd* version, core::IMotionExt** ext) noexcept {
  if (version == nullptr || ext == nullptr) {
    return FctResult::InvalidParameter;
  }
  return guarded(FctResult::OutOfMemory, [&] {
    *ext = new MotionExt(runtimeOf(context));
    return FctResult::Okay;
  });
}

std::uint32_t getInterfaceVersion(void* /*context*/) noexcept {
  return 1;
}

}  // namespace

void Runtime::fillRecords() {
  m_records.extension = {this, createExtIfObj, getInterfaceVersion};
  m_records.sys.context = this;
  m_records.sys.getObjCount = getObjCount;
  m_records.sys.getCycleTime = getCycleTime;
  m_records.sys.abortCmds = abortCmds;
  m_records.sysGeneral = {getObjCount, getCycleTime, abortCmds};
  m_records.sys2 = {this, &m_records.sysGeneral, &m_records.sysSync};
  m_records.cmd.abortCmd = abortCmd;
  m_records.cmd.dwellCmd = dwellCmd;
  m_records.cmdGeneral.abortCmd = abortCmd;
  m_records.cmdGeneral.dwellCmd = dwellCmd;
  m_records.cmdKin.abortCmd = abortCmd;
  m_records.cmd2.general = &m_records.cmdGeneral;
  m_records.cmd2.kin = &m_records.cmdKin;
  m_records.data = {this, getAxisValue<&MotionObject::position>, getAxisValue<&MotionObject::velocity>};
}

}  // namespace motion::host
