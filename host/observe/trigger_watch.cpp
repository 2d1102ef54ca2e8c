#include "host/observe/trigger_watch.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>

#include "host/motion/section_mgr.h"
#include "host/support/guarded.h"
#include "motion/core/obj/kin_pose.h"
#include "motion/kavo/switch_on_path_pars.h"

namespace motion::host::observe {

using core::job::JobResult;
using kavo::SwitchOnPathPars;
using kavo::SwitchOnPathParsList;
using Look = TriggerRecord::Look;
using Pass = TriggerRecord::Pass;

namespace {

Point between(const Point& from, const Point& to, double share) noexcept {
  Point point;
  for (std::size_t i = 0; i < point.size(); ++i) {
    point[i] = std::fma(share, to[i] - from[i], from[i]);
  }
  return point;
}

/// From a point to the straight line between two others.
double distanceToSegment(const Point& point, const Point& from, const Point& to) noexcept {
  double length2 = 0.0;
  double along = 0.0;
  for (std::size_t i = 0; i < point.size(); ++i) {
    length2 += (to[i] - from[i]) * (to[i] - from[i]);
    along += (point[i] - from[i]) * (to[i] - from[i]);
  }
  const double share = length2 > 0.0 ? std::clamp(along / length2, 0.0, 1.0) : 0.0;
  return distance(point, between(from, to, share));
}

/// The conditions in a container; none when it holds something else.
kavo::SwitchOnPathParsListT conditionsIn(const core::IContainer* data) {
  const auto* const list = SwitchOnPathParsList::safeCast(data);
  return list != nullptr ? list->get() : kavo::SwitchOnPathParsListT();
}

/// Where the tool is in a cycle.
struct ToolState {
  std::uint64_t cycle = 0;
  std::uint64_t cmdID = 0;
  double cycleTime = 0.0;  ///< [s]
  Point position{};
  Point before{};         ///< one cycle ago
  bool hasMoved = false;  ///< `before` is known
};

}  // namespace

/// A condition. What it was made of is written by preparation, all the rest by the cycle.
class TriggerWatch::Watched {
 public:
  Watched(std::shared_ptr<const SwitchOnPathPars> condition, std::uint32_t object, std::size_t line)
      : m_condition(std::move(condition)) {
    m_record.object = object;
    m_record.line = line;
    m_record.signal = m_condition->signalId;
    m_record.sets = m_condition->action == kavo::SwitchOnPathAction::SET_SIGNAL;
    m_record.target = m_condition->targetPos;
    m_record.radius = m_condition->radius;
    m_record.preTriggerTime = m_condition->preTriggerTime;
  }

  [[nodiscard]] const SwitchOnPathPars* condition() const noexcept { return m_condition.get(); }

  /// [cyclic & real-time]
  void look(const ToolState& tool) noexcept {
    if (m_record.entered) {
      return;  // nothing is left to be found out
    }
    const double ahead = tool.hasMoved ? m_record.preTriggerTime / tool.cycleTime : 0.0;
    const Point point = ahead != 0.0 ? between(tool.before, tool.position, 1.0 + ahead) : tool.position;
    const Look now{tool.cycle, tool.cmdID, tool.position, distance(point, m_record.target),
                   distance(tool.position, m_record.target)};
    if (!m_record.fired) {
      lookBeforeFiring(now, point, tool);
    }
    // What fires without looking ahead is in the sphere, even if the last digit of this distance says otherwise.
    const bool isEntering = m_record.fired && m_record.fired->cycle == tool.cycle && ahead == 0.0;
    if (m_record.fired && (isEntering || now.toolDistance <= m_record.radius)) {
      m_record.entered = now;
    }
    m_lastPoint = point;
    m_lastCycle = tool.cycle;
    m_lastLookedAhead = tool.hasMoved;
  }

  /// The looks name commands by their IDs. [player]
  [[nodiscard]] TriggerRecord record() const {
    TriggerRecord record = m_record;
    record.isSpent = !record.fired && m_condition->isReached();
    return record;
  }

 private:
  void lookBeforeFiring(const Look& now, const Point& point, const ToolState& tool) noexcept {
    if (m_condition->isReached()) {
      m_record.fired = now;
    }
    if (!m_record.nearest || now.distance < m_record.nearest->distance) {
      m_record.nearest = now;
    }
    // Without the step before it, the point of a command's first cycle does not lie ahead, and is no next point of the path.
    const bool isNextPoint =
        m_lastCycle != 0 && m_lastCycle + 1 == tool.cycle && (tool.hasMoved || m_record.preTriggerTime == 0.0);
    if (isNextPoint) {
      const double passed = distanceToSegment(m_record.target, m_lastPoint, point);
      if (!m_record.nearestPass || passed < m_record.nearestPass->distance) {
        const double step = distance(tool.hasMoved ? tool.before : m_lastPoint, tool.position);
        const bool isLeap = m_record.preTriggerTime != 0.0 && !m_lastLookedAhead;
        m_record.nearestPass = Pass{tool.cycle, passed, step / tool.cycleTime, isLeap};
      }
    }
  }

  std::shared_ptr<const SwitchOnPathPars> m_condition;
  TriggerRecord m_record;
  Point m_lastPoint{};             ///< that was looked at in m_lastCycle
  std::uint64_t m_lastCycle = 0;   ///< 0 = nobody has looked yet
  bool m_lastLookedAhead = false;  ///< that point lay ahead of the tool by the pre-trigger time
};

/// The conditions of one command.
class TriggerWatch::Probe {
 public:
  Probe(const CmdFrame& frame, core::KinPose& pose) : m_object(frame.object()), m_pose(pose), m_cmdID(frame.getCmdID()) {}

  void add(Watched& watched) { m_conditions.push_back(&watched); }
  [[nodiscard]] bool isEmpty() const noexcept { return m_conditions.empty(); }
  [[nodiscard]] std::uint64_t cmdID() const noexcept { return m_cmdID; }
  [[nodiscard]] std::uint64_t firstCycle() const noexcept { return m_firstCycle; }
  [[nodiscard]] const std::vector<Watched*>& conditions() const noexcept { return m_conditions; }

  /// [cyclic & real-time]
  void look() noexcept {
    const core::KinPoseT& pose = m_pose.getRef();
    ToolState tool{m_object.getCycleCount(), m_cmdID,        m_object.getCycleTime(),
                   {pose.x, pose.y, pose.z}, m_lastPosition, m_firstCycle != 0};
    for (Watched* const condition : m_conditions) {
      condition->look(tool);
    }
    m_lastPosition = tool.position;
    m_firstCycle = tool.hasMoved ? m_firstCycle : tool.cycle;
  }

 private:
  const MotionObject& m_object;
  core::KinPose& m_pose;
  std::uint64_t m_cmdID;
  std::vector<Watched*> m_conditions;
  std::uint64_t m_firstCycle = 0;
  Point m_lastPosition{};
};

TriggerWatch::TriggerWatch() = default;
TriggerWatch::~TriggerWatch() = default;

TriggerWatch::Watched& TriggerWatch::watched(const Condition& condition, const MotionObject& object, std::size_t line) {
  auto& known = m_byCondition[condition.get()];
  if (known == nullptr) {
    known = m_watched.emplace_back(std::make_unique<Watched>(condition, object.index(), line)).get();
  }
  return *known;
}

void TriggerWatch::onAccepted(const AcceptedOption& option, const MotionObject& object) noexcept {
  static_cast<void>(guarded(false, [&] {
    const std::scoped_lock lock(m_mutex);
    const core::IContainer* data = nullptr;
    if (!core::isFailure(option.option().getParameter(data))) {
      // The first is the option's own; the others it took over.
      const auto conditions = conditionsIn(data);
      if (!conditions.empty()) {
        watched(conditions.front(), object, option.source().line);
      }
    }
    return true;
  }));
}

std::unique_ptr<TriggerWatch::Probe> TriggerWatch::makeProbe(const CmdFrame& frame) {
  core::IContainer* pose = nullptr;
  if (frame.options().empty() ||
      core::isFailure(frame.object().data().registerRead(core::KinPose::getMyID(), SectionMgr::GEOMETRY_TOOL_OFFSET,
                                                         core::job::READ_ONE, "host", pose))) {
    return nullptr;
  }
  auto probe = std::make_unique<Probe>(frame, static_cast<core::KinPose&>(*pose));
  for (const CmdFrame::OptionUse& use : frame.options()) {
    for (const Condition& condition : conditionsIn(use.job->getJobData())) {
      probe->add(watched(condition, frame.object(), use.option->source().line));
    }
  }
  return probe;
}

JobResult TriggerWatch::onBuilt(CmdFrame& frame) noexcept {
  return guarded(JobResult::OutOfMemory, JobResult::InvalidObject, [&] {
    const std::scoped_lock lock(m_mutex);
    std::unique_ptr<Probe> probe = makeProbe(frame);
    if (probe == nullptr || probe->isEmpty()) {
      return JobResult::NoEffect;
    }
    m_probes.push_back(std::move(probe));
    const auto look = [made = m_probes.back().get()] {
      made->look();
      return JobResult::NoEffect;
    };
    const JobResult added = frame.addCyclicJob(look, "host_trigger_watch", SectionMgr::EXEC_FINAL);
    if (core::isFailure(added)) {
      m_probes.pop_back();
    }
    return added;
  });
}

void TriggerWatch::report(RunRecord& record) const {
  const std::scoped_lock lock(m_mutex);
  std::map<std::uint64_t, std::size_t> numbers;
  for (const ObjectRecord& object : record.objects) {
    for (const CmdRecord& command : object.commands) {
      numbers.emplace(command.id, command.number);
    }
  }
  const auto nameCommand = [&numbers](std::optional<Look>& look) {
    if (look) {
      look->number = numbers[look->number];
    }
  };
  std::map<const Watched*, std::vector<TriggerRecord::Carrier>> carriers;
  for (const auto& probe : m_probes) {
    for (const Watched* const condition : probe->conditions()) {
      carriers[condition].push_back({numbers[probe->cmdID()], probe->firstCycle()});
    }
  }
  for (const auto& condition : m_watched) {
    TriggerRecord& trigger = record.triggers.emplace_back(condition->record());
    trigger.carriers = std::move(carriers[condition.get()]);
    nameCommand(trigger.fired);
    nameCommand(trigger.entered);
    nameCommand(trigger.nearest);
  }
}

}  // namespace motion::host::observe
