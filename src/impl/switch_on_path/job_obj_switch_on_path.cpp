// The job of the option SwitchOnPath. Built without contraction: the order of its arithmetic is part of its behaviour.
#include "impl/switch_on_path/job_obj_switch_on_path.h"

#include <cmath>

#include "impl/command/cmd_data.h"
#include "impl/debug_trace.h"
#include "impl/diagnosis_codes.h"
#include "impl/guarded.h"
#include "motion/core/dia/i_dia.h"
#include "motion/core/job/i_job_data_handler.h"

namespace motion::kavo::job {

using core::job::JobListTypes;
using core::job::JobResult;

namespace {

/// The operation as which the job traces: whoever reads the journal need not know that there are two ways to compute it.
constexpr CallSite EXECUTE = KAVO_SITE.as("execute");

/// Why a list of conditions is refused, null when it is not. What is wrong with mode or action does not end the search; what
/// is wrong with a number does, and is told instead.
const char* whatIsWrong(const SwitchOnPathParsListT& conditions) noexcept {
  const char* wrong = nullptr;
  for (const auto& condition : conditions) {
    if (condition->radius < 0.0) {
      return "invalid 'radius': should be >= 0";
    }
    if (condition->preTriggerTime < 0.0) {
      return "invalid 'preTriggerTime': should be >= 0";
    }
    if (condition->mode != SwitchOnPathMode::ENTER_SPHERE) {
      wrong = "invalid 'mode': only ENTER_SPHERE is currently supported";
    } else if (condition->action > SwitchOnPathAction::RESET_SIGNAL) {
      wrong = "invalid 'action': should be SET_SIGNAL or RESET_SIGNAL";
    }
    if (!rt_data::RtSignals::isValidId(condition->signalId)) {
      return "invalid 'signalId': should be in range [0..99]";
    }
  }
  return wrong;
}

}  // namespace

FusedArithmetic availableArithmetic() noexcept {
#ifdef __x86_64__
  static const bool isThere = __builtin_cpu_supports("fma") != 0;
  return isThere ? FusedArithmetic::BY_PROCESSOR : FusedArithmetic::BY_LIBRARY;
#else
  return FusedArithmetic::BY_LIBRARY;
#endif
}

JobObjSwitchOnPath::JobObjSwitchOnPath(FusedArithmetic arithmetic)
    : m_rtSignals(&rt_data::RtSignals::getInstance()), m_arithmetic(arithmetic) {}

const JobObjSwitchOnPath::StaticInfo& JobObjSwitchOnPath::getStaticInfo() noexcept {
  static constexpr StaticInfo info = {"JobObjSwitchOnPath", "JobObjSwitchOnPath::registerInputs()"};
  return info;
}

core::IAmCreatable* JobObjSwitchOnPath::createNew() const {
  return guarded<core::IAmCreatable*>(nullptr, [this] { return new JobObjSwitchOnPath(m_arithmetic); });
}

const char* JobObjSwitchOnPath::getID() const {
  return getStaticInfo().name;
}

JobResult JobObjSwitchOnPath::addJobsToJoblist(core::job::IJobList* list, JobListTypes type) {
  if (list == nullptr) {
    return JobResult::InvalidObject;
  }
  if (type != JobListTypes::CYCLIC_EXECUTION) {
    return JobResult::ListTypeNotServed;
  }
  // Chosen once, not in every cycle.
  const core::job::Job job = m_arithmetic == FusedArithmetic::BY_PROCESSOR
                                 ? core::job::Job([this] { return executeByProcessor(); })
                                 : core::job::Job([this] { return executeByLibrary(); });
  return addJob(*list, job, getID(), SectionID::EXEC_FINAL);
}

JobResult JobObjSwitchOnPath::registerInputs(core::job::IJobDataHandler* handler) {
  if (handler == nullptr) {
    return JobResult::InvalidObject;
  }
  const char* const caller = getStaticInfo().caller;
  const JobResult pose = readData(*handler, SectionID::GEOMETRY_TOOL_OFFSET, caller, m_kinPose);
  const JobResult obj = readData(*handler, SectionID::OBJ_DATA, caller, m_motionObjPtr);
  const JobResult first = core::isFailure(pose) ? pose : obj;
  return core::isFailure(first) ? first : JobResult::NoEffect;
}

JobResult JobObjSwitchOnPath::setJobData(const core::IContainer* data) {
  const auto* const conditions = SwitchOnPathParsList::safeCast(data);
  if (conditions == nullptr) {
    KAVO_TRACE_TEXT(Error, "Invalid jobData");
    return JobResult::InvalidJobData;
  }
  return guarded(JobResult::OutOfMemory, [&] {
    m_jobData.set(conditions->get());
    return JobResult::NoEffect;
  });
}

JobResult JobObjSwitchOnPath::checkParameter(const core::IContainer* data, core::dia::IDia* dia) const {
  const CallSite site = KAVO_HERE;
  const auto* const list = SwitchOnPathParsList::safeCast(data);
  if (list == nullptr) {
    KAVO_TRACE_IN(site, Error, "%s", "jobData is invalid or nullptr");
    return JobResult::ExecutionFailed;
  }
  return guarded(JobResult::OutOfMemory, [&] {
    const SwitchOnPathParsListT conditions = list->get();
    if (conditions.empty()) {
      KAVO_TRACE_IN(site, Error, "%s", "empty parameter container");
      return JobResult::ExecutionFailed;
    }
    const char* const wrong = whatIsWrong(conditions);
    if (wrong == nullptr) {
      return JobResult::NoEffect;
    }
    if (dia == nullptr) {
      KAVO_TRACE_IN(site, Error, "%s", wrong);
    } else {
      guarded([&] {  // the list stays refused, whatever becomes of the report
        dia->report(diagnosis::MAIN_OPTION_ERROR, diagnosis::DETAIL_INVALID_CONDITION, {},
                    {site.unit, site.function, site.line}, "%s", wrong);
        dia->close();
      });
    }
    return JobResult::InvalidJobData;
  });
}

std::string JobObjSwitchOnPath::getJobString() const {
  return guarded(std::string(), [this] { return std::string(getID()); });
}

const core::IContainer* JobObjSwitchOnPath::getJobData() const {
  return &m_jobData;
}

[[gnu::always_inline]] inline JobObjSwitchOnPath::Position JobObjSwitchOnPath::testPoint(const SwitchOnPathPars& condition,
                                                                                         Step& step) const {
  if (condition.preTriggerTime == 0.0 || m_firstCycle) {
    return step.pos;
  }
  if (step.cycleTime == 0.0) {
    step.cycleTime = m_motionObjPtr->getRef()->getCycleTime();
  }
  const double cycles = condition.preTriggerTime / step.cycleTime;
  return {std::fma(cycles, step.displacement.x, step.pos.x), std::fma(cycles, step.displacement.y, step.pos.y),
          std::fma(cycles, step.displacement.z, step.pos.z)};
}

bool JobObjSwitchOnPath::fire(SwitchOnPathPars& condition) const noexcept {
  // First of all, so that a condition fires at most once whatever becomes of its signal.
  condition.setReached();
  switch (condition.action) {
    case SwitchOnPathAction::SET_SIGNAL:
      return m_rtSignals->set(condition.signalId);
    case SwitchOnPathAction::RESET_SIGNAL:
      return m_rtSignals->reset(condition.signalId);
  }
  return false;
}

[[gnu::always_inline]] inline JobResult JobObjSwitchOnPath::walk() {
  if (m_kinPose == nullptr || m_motionObjPtr == nullptr || m_motionObjPtr->getRef() == nullptr) [[unlikely]] {
    return JobResult::InvalidObject;
  }
  const core::KinPoseT& pose = m_kinPose->getRef();
  Step step{.pos = {pose.x, pose.y, pose.z},
            .displacement = {pose.x - m_lastPos.x, pose.y - m_lastPos.y, pose.z - m_lastPos.z}};
  for (const auto& condition : m_jobData.getRef()) {
    if (condition->isReached()) {
      continue;
    }
    const Position p = testPoint(*condition, step);
    const double dx = condition->targetPos[0] - p.x;
    const double dy = condition->targetPos[1] - p.y;
    const double dz = condition->targetPos[2] - p.z;
    const double distance = std::sqrt((dx * dx + dy * dy) + dz * dz);
    if (condition->radius >= distance && !fire(*condition)) [[unlikely]] {
      KAVO_TRACE_IN(EXECUTE, Error, "%s", "signal action failed");
      return JobResult::ExecutionFailed;
    }
  }
  m_lastPos = step.pos;
  m_firstCycle = false;
  return JobResult::NoEffect;
}

JobResult JobObjSwitchOnPath::executeByLibrary() noexcept {
  try {
    return walk();
  } catch (...) {
    return JobResult::ExecutionFailed;
  }
}

#ifdef __x86_64__
[[gnu::target("fma")]]
#endif
JobResult
JobObjSwitchOnPath::executeByProcessor() noexcept {
  try {
    return walk();
  } catch (...) {
    return JobResult::ExecutionFailed;
  }
}

JobResult JobObjSwitchOnPath::execute() noexcept {
  return m_arithmetic == FusedArithmetic::BY_PROCESSOR ? executeByProcessor() : executeByLibrary();
}

}  // namespace motion::kavo::job
