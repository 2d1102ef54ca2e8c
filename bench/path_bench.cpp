// Switching on the path: the cyclic step over many conditions, and one cycle of a kinematics that moves.
#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <vector>

#include "bench/bench_host.h"
#include "bench/host_fakes.h"
#include "bench/path_floors.h"
#include "host/motion/builtin/builtin_cmds.h"
#include "host/motion/job_data_handler.h"
#include "host/motion/section_mgr.h"
#include "motion/core/job/job_object_base.h"
#include "motion/core/obj/kin_pose.h"
#include "motion/kavo/switch_on_path_pars.h"

namespace motion::bench {
namespace {

using core::job::JobResult;
using kavo::SwitchOnPathAction;
using kavo::SwitchOnPathPars;
using kavo::SwitchOnPathParsList;
using kavo::SwitchOnPathParsListT;

constexpr std::size_t MOST = 10'000;
/// What the tool covers in one cycle [m].
constexpr double STEP = 1e-4;

enum class Conditions { ARMED, LOOKING_AHEAD, FIRED };

/// Conditions around the tool that none of the measured cycles reaches, or that all have fired before.
SwitchOnPathParsListT makeConditions(std::size_t count, Conditions kind) {
  SwitchOnPathParsListT list;
  for (std::size_t i = 0; i < count; ++i) {
    auto condition = std::make_shared<SwitchOnPathPars>();
    condition->signalId = SET_ANEW;
    condition->action = SwitchOnPathAction::RESET_SIGNAL;
    condition->targetPos = {1.0 + 1e-4 * static_cast<double>(i), 2.0, 3.0};
    condition->radius = kind == Conditions::FIRED ? 10.0 : 0.001;
    condition->preTriggerTime = kind == Conditions::LOOKING_AHEAD ? 0.008 : 0.0;
    list.push_back(std::move(condition));
  }
  return list;
}

/// The job of the option as the bundle makes it, on an object of the host.
class PathJob {
 public:
  PathJob(std::size_t count, Conditions kind) {
    host::Runtime& runtime = BenchHost::instance().runtime();
    m_obj.set(runtime.objMgr().objects().front().get());
    core::job::IJobObject* made = nullptr;
    runtime.objFactory().createObj("JobObjSwitchOnPath", 0, made);
    m_job.reset(made);
    const SwitchOnPathParsList list(makeConditions(count, kind));
    const bool isFine =
        m_job != nullptr && m_job->setJobData(&list) == JobResult::NoEffect &&
        m_data.registerPublish(m_obj.getID(), host::SectionMgr::OBJ_DATA, "bench", &m_obj) == JobResult::NoEffect &&
        m_data.registerPublish(m_pose.getID(), host::SectionMgr::GEOMETRY_TOOL_OFFSET, "bench", &m_pose) ==
            JobResult::NoEffect &&
        m_job->registerInputs(&m_data) == JobResult::NoEffect;
    if (isFine) {
      m_job->addJobsToJoblist(&m_catcher, core::job::JobListTypes::CYCLIC_EXECUTION);
    }
    if (m_catcher.job()) {
      m_catcher.job()();  // from the second cycle on, the step of the tool is known
      m_count = count;
      m_hasFired = kind == Conditions::FIRED;
      m_conditions = list.get();
    }
  }

  [[nodiscard]] JobResult run() {
    core::KinPoseT& pose = m_pose.getRef();
    m_step = -m_step;
    pose.x += m_step;
    return m_catcher.job()();
  }
  [[nodiscard]] bool isReady() const {
    bool isReady = m_count != 0;
    for (const auto& condition : m_conditions) {
      isReady = isReady && condition->isReached() == m_hasFired;
    }
    return isReady;
  }

 private:
  double m_step = STEP;
  std::size_t m_count = 0;
  bool m_hasFired = false;
  SwitchOnPathParsListT m_conditions;
  core::IObjPtr m_obj;
  core::KinPose m_pose;
  host::JobDataHandler m_data;
  std::unique_ptr<core::job::IJobObject> m_job;
  JobCatcher m_catcher;
};

void path(benchmark::State& state, Conditions kind) {
  PathJob sut(static_cast<std::size_t>(state.range(0)), kind);
  if (!sut.isReady()) {
    state.SkipWithError("the conditions are not in the state that is to be measured");
    return;
  }
  JobResult result = JobResult::NoEffect;
  for (auto _ : state) {
    benchmark::DoNotOptimize(result = sut.run());
  }
  if (result != JobResult::NoEffect || !sut.isReady()) {
    state.SkipWithError("the job did something else than what was to be measured");
  }
}

void floorPath(benchmark::State& state, Conditions kind) {
  const auto floor = makePathFloor(makeConditions(static_cast<std::size_t>(state.range(0)), kind));
  if (kind == Conditions::FIRED) {
    floor->markAll();
  }
  double x = 0.0;
  double step = STEP;
  std::size_t inside = 0;
  for (auto _ : state) {
    step = -step;
    x += step;
    benchmark::DoNotOptimize(inside = kind == Conditions::FIRED ? floor->countArmed() : floor->countInside(x, 0.0, 0.0));
  }
  if (inside != 0) {
    state.SkipWithError("the floor found something");
  }
}

/// A kinematics of the host on its way, slowly enough that it does not arrive.
class Mover {
 public:
  explicit Mover(bool onArc) : m_runtime({}) {
    m_robot = m_runtime.addObject("Robot", core::ObjectType::KINEMATICS, {});
    using host::builtin::KinMovePars;
    unsigned long id = 0;
    // [mm] and [mm/s]
    const KinMovePars pars({{0.0, 2'000.0, 0.0}, {1'000.0, 1'000.0, 0.0}, 0.0, SLOW, 1'000.0});
    const KinMovePars line({{1'000.0, 0.0, 0.0}, {}, 0.0, SLOW, 1'000.0});
    const auto result = m_runtime.addCmd({}, "Robot", onArc ? "MoveCirc" : "MoveLin", onArc ? pars : line, 1, &id);
    if (result == core::FctResult::Okay) {
      m_runtime.step();
      m_runtime.step();
    }
  }

  void run() { m_robot->runCycle(++m_cycle); }
  [[nodiscard]] bool isMoving() const { return m_robot->getCurrentCmdID() != 0 && m_robot->velocity() > 0.0; }

 private:
  static constexpr double SLOW = 1e-3;

  host::Runtime m_runtime;
  host::MotionObject* m_robot = nullptr;
  std::uint64_t m_cycle = 2;
};

void kinCycle(benchmark::State& state, bool onArc) {
  Mover sut(onArc);
  for (auto _ : state) {
    sut.run();
  }
  if (!sut.isMoving()) {
    state.SkipWithError("the kinematics does not move");
  }
}

void floorKinCycle(benchmark::State& state, bool onArc) {
  const auto floor = makeKinFloor(onArc);
  double time = 0.0;
  for (auto _ : state) {
    time += 1e-3;
    benchmark::DoNotOptimize(floor->at(time));
  }
}

BENCHMARK_CAPTURE(kinCycle, line, false)->Name("kin_cycle_line");
BENCHMARK_CAPTURE(kinCycle, arc, true)->Name("kin_cycle_arc");
BENCHMARK_CAPTURE(floorKinCycle, line, false)->Name("floor_kin_cycle_line");
BENCHMARK_CAPTURE(floorKinCycle, arc, true)->Name("floor_kin_cycle_arc");
BENCHMARK_CAPTURE(path, armed, Conditions::ARMED)->Name("path_armed")->Arg(1)->Arg(10)->Arg(1'000)->Arg(MOST);
BENCHMARK_CAPTURE(path, ahead, Conditions::LOOKING_AHEAD)->Name("path_ahead")->Arg(1)->Arg(10)->Arg(1'000)->Arg(MOST);
BENCHMARK_CAPTURE(path, fired, Conditions::FIRED)->Name("path_fired")->Arg(1)->Arg(10)->Arg(1'000)->Arg(MOST);
BENCHMARK_CAPTURE(floorPath, armed, Conditions::ARMED)->Name("floor_path")->Arg(1)->Arg(10)->Arg(1'000)->Arg(MOST);
BENCHMARK_CAPTURE(floorPath, fired, Conditions::FIRED)->Name("floor_path_fired")->Arg(1)->Arg(10)->Arg(1'000)->Arg(MOST);

}  // namespace
}  // namespace motion::bench
