// Opening a join: the last member is prepared, while other joins are open.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "bench/bench_host.h"
#include "bench/floors.h"
#include "bench/host_fakes.h"
#include "host/motion/job_data_handler.h"
#include "host/motion/motion_ext.h"
#include "host/motion/runtime.h"
#include "host/motion/section_mgr.h"
#include "impl/debug_trace.h"
#include "impl/ext_dep/ext_dep_mgr.h"
#include "impl/join/job_obj_join.h"
#include "impl/join/join_cmd_global_context.h"

namespace motion::bench {
namespace {

using core::cmd::CmdState;
using core::job::JobResult;
using kavo::job::JoinCmdGlobalContext;
using kavo::job::JoinGroup;

/// As many objects as the largest group and the largest number of other groups need.
constexpr std::size_t OBJECTS = 2'002;

/// Axes of the host that have been in use for a while: they remember commands that have ended.
class UsedAxes {
 public:
  static UsedAxes& instance() {
    static UsedAxes axes;
    return axes;
  }

  [[nodiscard]] host::MotionObject& axis(std::size_t index) { return *m_runtime.objMgr().objects()[index]; }
  [[nodiscard]] host::Runtime& runtime() noexcept { return m_runtime; }
  /// Issues a command that stays prepared. Its ID.
  std::uint64_t issue(std::size_t index) {
    axis(index).noteCmdState(++m_lastID, CmdState::BUFFERED);
    axis(index).noteCmdState(m_lastID, CmdState::PREPARED);
    return m_lastID;
  }

 private:
  UsedAxes() : m_runtime({}) {
    constexpr std::size_t remembered = 80;  // as many as a host keeps with its usual buffer
    for (std::size_t i = 0; i < OBJECTS; ++i) {
      m_runtime.addObject("Join" + std::to_string(10'000 + i), core::ObjectType::AXIS, {});
      // The next command's place among those that are remembered differs from axis to axis.
      for (std::size_t ended = 0; ended < remembered + i * 7 % remembered; ++ended) {
        axis(i).noteCmdState(issue(i), CmdState::DONE);
      }
    }
  }

  host::Runtime m_runtime;
  std::uint64_t m_lastID = 0;
};

/// The job of a member, whose object and command can be exchanged.
class Member {
 public:
  explicit Member(JoinGroup group) : m_pars({std::move(group), false}) {
    const host::MotionExt extension(UsedAxes::instance().runtime());
    kavo::ExtDepMgr::getInstance().setMotionExtIF(&extension);
    become(0, 0);
    host::JobDataHandler data;
    m_isFine = data.registerPublish(m_obj.getID(), host::SectionMgr::OBJ_DATA, "bench", &m_obj) == JobResult::NoEffect &&
               data.registerPublish(m_cmd.getID(), host::SectionMgr::CMD_DATA, "bench", &m_cmd) == JobResult::NoEffect &&
               data.registerPublish(m_pars.getID(), host::SectionMgr::CMD_DATA, "bench", &m_pars) == JobResult::NoEffect &&
               m_job.registerInputs(&data) == JobResult::NoEffect;
    kavo::ExtDepMgr::getInstance().setMotionExtIF(nullptr);
  }
  Member(const Member&) = delete;
  Member& operator=(const Member&) = delete;

  void become(std::size_t axis, std::uint64_t cmdID) {
    m_obj.set(&UsedAxes::instance().axis(axis));
    m_number.id = cmdID;
  }
  [[nodiscard]] kavo::job::JobObjJoin& job() noexcept { return m_job; }
  [[nodiscard]] bool isFine() const noexcept { return m_isFine; }

 private:
  NumberedCmd m_number;
  core::IObjPtr m_obj;
  core::cmd::ICmdPtr m_cmd{&m_number};
  kavo::job::JoinJobPars m_pars;
  kavo::job::JobObjJoin m_job;
  bool m_isFine = false;
};

/// A join that only its last member misses, opened before the others; each of those has as many members, one of them linked.
class OpenJoins {
 public:
  OpenJoins(std::size_t members, std::size_t others)
      : m_lastAxis(members - 1), m_lastID(UsedAxes::instance().issue(m_lastAxis)), m_last(axes(0, members)) {
    Member linker({});
    open(axes(0, members));
    for (std::size_t i = 0; i + 1 < members; ++i) {
      link(linker, i);
    }
    for (std::size_t i = 1; i <= others; ++i) {
      // Half of the others begin with the same axes and end with one of their own, half are shifted. That axis is linked.
      JoinGroup group = i % 2 == 0 ? axes(i, members) : axes(0, members);
      const std::size_t own = i % 2 == 0 ? i : m_lastAxis + i;
      if (i % 2 != 0) {
        group.back() = &UsedAxes::instance().axis(own);
      }
      open(group);
      link(linker, own);
    }
  }

  /// As if the last member had not been prepared yet.
  void restore() {
    m_last.become(m_lastAxis, 0);
    m_contexts.front()->linkJobObject(m_last.job());
    m_last.become(m_lastAxis, m_lastID);
    JoinCmdGlobalContext::reset();
    for (const auto& context : m_contexts) {
      JoinCmdGlobalContext::appendToLinkedList(context);
    }
  }
  /// The same occurrences with the same members linked. After restore.
  [[nodiscard]] std::unique_ptr<JoinWalkFloor> makeFloor() const {
    auto floor = std::make_unique<JoinWalkFloor>();
    for (const auto& context : m_contexts) {
      std::vector<std::pair<const core::IObj*, std::uint64_t>> members;
      for (const auto& info : context->groupMap().m_infos) {
        members.emplace_back(info.motionObj, info.cmdId);
      }
      floor->add(members);
    }
    return floor;
  }
  JobResult prepareLast() noexcept { return m_last.job().registerForJoin(); }
  /// The last member has completed the join and nothing else has changed.
  [[nodiscard]] bool isDone() {
    return m_last.isFine() && m_last.job().getContext() == m_contexts.front().get() &&
           m_contexts.front()->isAllObjLinked() && JoinCmdGlobalContext::listSize() == m_contexts.size() - 1;
  }

 private:
  [[nodiscard]] static JoinGroup axes(std::size_t first, std::size_t count) {
    JoinGroup group;
    for (std::size_t i = first; i < first + count; ++i) {
      group.push_back(&UsedAxes::instance().axis(i));
    }
    return group;
  }
  void open(const JoinGroup& group) { m_contexts.push_back(std::make_shared<JoinCmdGlobalContext>(group)); }
  void link(Member& linker, std::size_t axis) {
    linker.become(axis, UsedAxes::instance().issue(axis));
    m_contexts.back()->linkJobObject(linker.job());
  }

  std::size_t m_lastAxis;
  std::uint64_t m_lastID;
  std::vector<std::shared_ptr<JoinCmdGlobalContext>> m_contexts;  ///< oldest first
  Member m_last;
};

using Clock = std::chrono::steady_clock;

double seconds(Clock::duration duration) {
  return std::chrono::duration<double>(duration).count();
}

/// What taking the time adds to what is timed [s].
double clockCost() {
  std::array<double, 1'001> costs{};
  for (double& cost : costs) {
    const auto begin = Clock::now();
    cost = seconds(Clock::now() - begin);
  }
  std::ranges::nth_element(costs, costs.begin() + costs.size() / 2);
  return costs[costs.size() / 2];
}

/// Made once for each size: setting up takes longer than measuring.
template <typename MADE, typename MAKE>
MADE& once(const benchmark::State& state, const MAKE& make) {
  static std::map<std::pair<std::int64_t, std::int64_t>, std::unique_ptr<MADE>> all;
  auto& made = all[{state.range(0), state.range(1)}];
  if (made == nullptr) {
    made = make(static_cast<std::size_t>(state.range(0)), static_cast<std::size_t>(state.range(1)));
  }
  return *made;
}

OpenJoins& openJoins(const benchmark::State& state) {
  return once<OpenJoins>(
      state, [](std::size_t members, std::size_t others) { return std::make_unique<OpenJoins>(members, others); });
}

/// Information is not traced, as a trace into the sink would cost more than small joins do.
void joinOpen(benchmark::State& state) {
  // Its threads make counting references as dear as it is in a host.
  static_cast<void>(BenchHost::instance());
  auto& joins = openJoins(state);
  kavo::DebugTrace::setTraceEnablingState({.info = false, .warning = true, .error = true});
  const double overhead = clockCost();
  JobResult result = JobResult::NoEffect;
  for (auto _ : state) {
    joins.restore();
    const auto begin = Clock::now();
    benchmark::DoNotOptimize(result = joins.prepareLast());
    state.SetIterationTime(std::max(0.0, seconds(Clock::now() - begin) - overhead));
  }
  if (result != JobResult::NoEffect || !joins.isDone()) {
    state.SkipWithError("the last member did not complete the join");
  }
  JoinCmdGlobalContext::reset();
  kavo::DebugTrace::setTraceEnablingState({});
}

void floorJoinOpen(benchmark::State& state) {
  const auto& joins = once<JoinWalkFloor>(state, [](std::size_t members, std::size_t others) {
    auto made = std::make_unique<JoinWalkFloor>();
    for (std::size_t i = 0; i <= others; ++i) {
      made->add(members);
    }
    return made;
  });
  std::uint64_t linked = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(linked = joins.visit(nullptr));
  }
  if (linked != static_cast<std::uint64_t>(state.range(1)) + 1) {
    state.SkipWithError("not every occurrence was visited");
  }
}

/// The visit, and on top of it what any implementation of the meeting has to do: one mutex, and one question to the object
/// of each linked member. The objects, commands and numbers of linked members are those of join_open.
void floorJoinRequired(benchmark::State& state) {
  static_cast<void>(BenchHost::instance());
  auto& floor = once<JoinWalkFloor>(state, [&state](std::size_t /*members*/, std::size_t /*others*/) {
    auto& joins = openJoins(state);
    joins.restore();
    JoinCmdGlobalContext::reset();
    return joins.makeFloor();
  });
  std::uint64_t going = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(going = floor.ask());
  }
  if (going != static_cast<std::uint64_t>(state.range(0) - 1 + state.range(1))) {
    state.SkipWithError("not every linked member was asked for");
  }
}

void floorJoinMutex(benchmark::State& state) {
  static_cast<void>(BenchHost::instance());
  RecursiveLockFloor lock;
  for (auto _ : state) {
    benchmark::DoNotOptimize(lock.lockOnce());
  }
}

BENCHMARK(floorJoinMutex)->Name("floor_join_mutex");
BENCHMARK(floorJoinRequired)->Name("floor_join_required")->ArgsProduct({{2, 10, 100, 1'000}, {0, 10, 1'000}});
BENCHMARK(joinOpen)->Name("join_open")->ArgsProduct({{2, 10, 100, 1'000}, {0, 10, 1'000}})->UseManualTime();
BENCHMARK(floorJoinOpen)->Name("floor_join_open")->ArgsProduct({{2, 10, 100, 1'000}, {0, 10, 1'000}});

}  // namespace
}  // namespace motion::bench
