// The jobs of the wait commands, idle and releasing, as the bundle adds them to a job list.
#include <benchmark/benchmark.h>

#include <memory>
#include <string>

#include "bench/bench_host.h"
#include "bench/floors.h"
#include "bench/host_fakes.h"
#include "host/motion/job_data_handler.h"
#include "impl/wait_for_signal/wait_for_signal_pars.h"
#include "impl/wait_for_signal_reset/wait_for_signal_reset_pars.h"
#include "motion/core/job/job_object_base.h"
#include "motion/kavo/signal_memory.h"

namespace motion::bench {
namespace {

using core::job::JobResult;

/// A command of the bundle with its job object.
class WaitJob {
 public:
  WaitJob(const char* command, const char* job, const core::IContainer& pars) {
    host::Runtime& runtime = BenchHost::instance().runtime();
    const auto entry = runtime.cmdFactory().find({core::ObjectType::AXIS, command});
    std::string error;
    if (entry == nullptr || core::isFailure(entry->create(runtime.objFactory(), true, m_command, error)) ||
        core::isFailure(m_command->onSetCmdValues(&pars, {}, runtime.objMgr().find("Axis0"), false)) ||
        core::isFailure(m_command->onRegisterJobListsInputs(m_data))) {
      return;
    }
    core::job::IJobObject* made = nullptr;
    runtime.objFactory().createObj(job, 0, made);
    m_object.reset(made);
    if (m_object != nullptr && m_object->registerInputs(&m_data) == JobResult::NoEffect) {
      m_object->addJobsToJoblist(&m_catcher, core::job::JobListTypes::CYCLIC_EXECUTION);
    }
  }

  /// Empty when the bundle refused.
  [[nodiscard]] const core::job::Job& job() const noexcept { return m_catcher.job(); }

 private:
  host::JobDataHandler m_data;
  std::unique_ptr<core::cmd::ICmdGeneric> m_command;
  std::unique_ptr<core::job::IJobObject> m_object;
  JobCatcher m_catcher;
};

/// Calls the job over and over; each call must have the result that is expected.
void callJob(benchmark::State& state, const core::job::Job& job, JobResult expected) {
  if (!job || job() != expected) {
    state.SkipWithError("the job does not do what is to be measured");
    return;
  }
  for (auto _ : state) {
    benchmark::DoNotOptimize(job());
  }
}

void waitForSignal(benchmark::State& state, unsigned int signal, JobResult expected) {
  const WaitJob wait("WaitForSignal", "ext_job_obj_wait_for_signal", kavo::job::WaitForSignalJobPars({signal, false}));
  callJob(state, wait.job(), expected);
}

void waitForSignalReset(benchmark::State& state, unsigned int signal, JobResult expected) {
  const WaitJob wait("WaitForSignalReset", "ext_job_obj_wait_for_signal_reset",
                     kavo::job::WaitForSignalResetJobPars({signal}));
  callJob(state, wait.job(), expected);
}

/// Consumes a signal that is set anew before each call, by one byte of the memory that the system functions move.
void waitForSignalAutoReset(benchmark::State& state) {
  const WaitJob wait("WaitForSignal", "ext_job_obj_wait_for_signal", kavo::job::WaitForSignalJobPars({SET_ANEW, true}));
  std::shared_ptr<comm::datalayer::IMemoryUser> memory;
  std::uint8_t* out = nullptr;
  if (isFailure(BenchHost::instance().dataLayer().openMemory(memory, kavo::SIGNALS_OUT_ADDRESS)) ||
      isFailure(memory->beginAccess(out, 0)) || !wait.job()) {
    state.SkipWithError("the signals of the bundle cannot be reached");
    return;
  }
  JobResult result = JobResult::CmdFinished;
  for (auto _ : state) {
    ++out[SET_ANEW];
    benchmark::ClobberMemory();
    benchmark::DoNotOptimize(result = wait.job()());
  }
  if (result != JobResult::CmdFinished) {
    state.SkipWithError("the job was not released");
  }
  memory->endAccess();
  BenchHost::instance().dataLayer().closeMemory(memory);
}

BENCHMARK_CAPTURE(waitForSignal, idle, NEVER_SET, JobResult::Busy)->Name("wait_idle");
BENCHMARK_CAPTURE(waitForSignal, releasing, ALWAYS_SET, JobResult::CmdFinished)->Name("wait_releasing");
BENCHMARK(waitForSignalAutoReset)->Name("wait_releasing_auto_reset");
BENCHMARK_CAPTURE(waitForSignalReset, idle, ALWAYS_SET, JobResult::Busy)->Name("wait_reset_idle");
BENCHMARK_CAPTURE(waitForSignalReset, releasing, NEVER_SET, JobResult::CmdFinished)->Name("wait_reset_releasing");

}  // namespace
}  // namespace motion::bench
