// The members of a join in their cycles, waiting and ending, as the bundle adds their jobs to the host's job lists.
#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "bench/bench_host.h"
#include "bench/floors.h"
#include "bench/host_fakes.h"
#include "host/motion/cycle.h"
#include "host/motion/job_data_handler.h"
#include "host/motion/section_mgr.h"
#include "impl/join/join_pars.h"
#include "motion/core/job/job_object_base.h"

namespace motion::bench {
namespace {

using core::job::JobListTypes;
using core::job::JobResult;

/// A command Join of the bundle that is prepared.
class Member {
 public:
  Member(const kavo::cmd::CmdJoinPars& pars, host::MotionObject& axis, std::uint64_t cmdID)
      : m_data(&axis.data()), m_numberPtr(&m_number) {
    m_number.id = cmdID;
    host::Runtime& runtime = BenchHost::instance().runtime();
    const auto entry = runtime.cmdFactory().find({core::ObjectType::AXIS, "Join"});
    std::string error;
    if (entry == nullptr || core::isFailure(entry->create(runtime.objFactory(), true, m_command, error)) ||
        core::isFailure(m_command->onSetCmdValues(&pars, {}, &axis, false)) ||
        core::isFailure(m_command->onValidate({}, nullptr)) ||
        core::isFailure(m_command->onRegisterJobListsInputs(m_data)) ||
        m_data.registerPublish(m_numberPtr.getID(), host::SectionMgr::CMD_DATA, "bench", &m_numberPtr) !=
            JobResult::NoEffect) {
      return;
    }
    core::job::IJobObject* made = nullptr;
    runtime.objFactory().createObj("kavo_job_join", 0, made);
    m_object.reset(made);
    JobCatcher prepared;
    if (m_object == nullptr || m_object->registerInputs(&m_data) != JobResult::NoEffect ||
        m_object->addJobsToJoblist(&prepared, JobListTypes::COMMAND_PREPARED) != JobResult::NoEffect ||
        prepared.job()() != JobResult::NoEffect) {
      return;
    }
    m_object->addJobsToJoblist(&m_cyclic, JobListTypes::CYCLIC_EXECUTION);
  }
  Member(const Member&) = delete;
  Member& operator=(const Member&) = delete;

  /// Empty when the bundle refused.
  [[nodiscard]] const core::job::Job& job() const noexcept { return m_cyclic.job(); }

 private:
  host::JobDataHandler m_data;
  NumberedCmd m_number;
  core::cmd::ICmdPtr m_numberPtr;
  std::unique_ptr<core::cmd::ICmdGeneric> m_command;
  std::unique_ptr<core::job::IJobObject> m_object;
  JobCatcher m_cyclic;
};

/// Information of the bundle is not traced meanwhile.
class InfoOff {
 public:
  InfoOff() { setInfo(false); }
  InfoOff(const InfoOff&) = delete;
  InfoOff& operator=(const InfoOff&) = delete;
  ~InfoOff() { setInfo(true); }

 private:
  static void setInfo(bool isEnabled) {
    BenchHost::instance().traceService().setLevels("motion.kavo", {.info = isEnabled, .warning = true, .error = true});
  }
};

/// Commands Join on the first axes of the host, all of them prepared.
class JoinOfBundle {
 public:
  explicit JoinOfBundle(std::size_t count) {
    const auto axes = BenchHost::instance().waitingAxes(count);
    kavo::cmd::CmdJoinPars pars;
    for (const auto& axis : axes) {
      pars.getRef().group.push_back(axis->name());
    }
    for (const auto& axis : axes) {
      m_members.push_back(std::make_unique<Member>(pars, *axis, ++s_lastID));
    }
  }
  JoinOfBundle(const JoinOfBundle&) = delete;
  JoinOfBundle& operator=(const JoinOfBundle&) = delete;

  /// Calls the jobs of the first `count` members once; false when not all of them had this result.
  [[nodiscard]] bool call(std::size_t count, JobResult expected) const {
    bool isExpected = true;
    for (std::size_t i = 0; i < count; ++i) {
      isExpected &= m_members[i]->job() && m_members[i]->job()() == expected;
    }
    return isExpected;
  }
  /// The jobs of the first `count` members, one after the other in memory.
  [[nodiscard]] std::vector<core::job::Job> jobs(std::size_t count) const {
    std::vector<core::job::Job> result;
    for (std::size_t i = 0; i < count; ++i) {
      result.push_back(m_members[i]->job());
    }
    return result;
  }

 private:
  // No command that the host itself gave an ID has one of these.
  inline static std::uint64_t s_lastID = std::uint64_t{1} << 62U;
  std::vector<std::unique_ptr<Member>> m_members;
};

void callJobs(benchmark::State& state, const JoinOfBundle& join, std::size_t count, JobResult expected) {
  const InfoOff infoOff;
  if (!join.call(count, expected)) {
    state.SkipWithError("the jobs do not do what is to be measured");
    return;
  }
  const std::vector<core::job::Job> jobs = join.jobs(count);
  for (auto _ : state) {
    for (const core::job::Job& job : jobs) {
      benchmark::DoNotOptimize(job());
    }
  }
  if (!join.call(count, expected)) {
    state.SkipWithError("the jobs did something else in the end");
  }
}

/// Made once for each size and purpose: preparing takes much longer than measuring.
const JoinOfBundle& prepared(std::size_t members, bool isComplete) {
  static std::map<std::pair<std::size_t, bool>, const JoinOfBundle*> all;
  const JoinOfBundle*& found = all[{members, isComplete}];
  if (found == nullptr) {
    const InfoOff infoOff;
    const auto made = std::make_shared<JoinOfBundle>(members);
    BenchHost::instance().keep(made);
    found = made.get();
  }
  return *found;
}

/// All members but one have joined and wait for it.
void joinWaiting(benchmark::State& state) {
  const auto members = static_cast<std::size_t>(state.range(0));
  callJobs(state, prepared(members, false), members - 1, JobResult::NoEffect);
}

/// The cycle after the last member has joined: every job says that its command is finished. What the host does then, the
/// end of the commands, is not part of it.
void joinEnding(benchmark::State& state) {
  const auto members = static_cast<std::size_t>(state.range(0));
  const JoinOfBundle& join = prepared(members, true);
  // Each cycle object begins to count anew, so that the second cycle is always the one after that of the last arrival.
  host::Cycle cycle(BenchHost::instance().waitingAxes(members));
  cycle.run();
  // The members join at the first call only; in a later run of this benchmark nothing happens to a join that is complete.
  if (!join.call(members, JobResult::NoEffect)) {
    state.SkipWithError("a member ended in the cycle in which the last one joined");
    return;
  }
  cycle.run();
  callJobs(state, join, members, JobResult::CmdFinished);
}

void floorJoin(benchmark::State& state, bool isComplete) {
  const auto members = makeJoinFloor(static_cast<std::size_t>(state.range(0)), isComplete);
  bool isReleased = !isComplete;
  for (auto _ : state) {
    for (const auto& member : members) {
      benchmark::DoNotOptimize(isReleased = member->isReleased());
    }
  }
  if (isReleased != isComplete) {
    state.SkipWithError("the floor does something else");
  }
}

BENCHMARK(joinWaiting)->Name("join_waiting")->Arg(2)->Arg(10)->Arg(100)->Arg(1'000);
BENCHMARK(joinEnding)->Name("join_ending")->Arg(1'000);
BENCHMARK_CAPTURE(floorJoin, waiting, false)->Name("floor_join_waiting")->Arg(2)->Arg(10)->Arg(100)->Arg(1'000);
BENCHMARK_CAPTURE(floorJoin, ending, true)->Name("floor_join_ending")->Arg(1'000);

}  // namespace
}  // namespace motion::bench
