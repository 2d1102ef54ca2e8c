// The host with the real bundle and many waiting axes, shared by the benchmarks.
#include "bench/bench_host.h"

#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>

namespace motion::bench {

using core::FctResult;

namespace {

std::unique_ptr<BenchHost> g_host;

void require(bool isFine, const std::string& what) {
  if (!isFine) {
    std::fprintf(stderr, "kavo_bench: %s\n", what.c_str());
    std::exit(3);
  }
}

}  // namespace

BenchHost& BenchHost::instance() {
  if (g_host == nullptr) {
    g_host.reset(new BenchHost);
  }
  return *g_host;
}

void BenchHost::close() {
  g_host.reset();
}

BenchHost::BenchHost()
    : m_session({KAVO_BENCH_BUNDLE_DIR, {0.001, 4}, host::framework::ComponentLifecycle::DEFAULT_TIME_LIMIT, false}) {
  std::string problem;
  require(m_session.open(problem), problem);
  const core::MotionCmdIf2T& functions = runtime().records().cmd2;
  for (std::size_t i = 0; i < AXES; ++i) {
    const std::string name = "Axis" + std::to_string(i);
    require(runtime().addObject(name, core::ObjectType::AXIS, {}) != nullptr, "no axis " + name);
    unsigned long id = 0;
    require(functions.general->waitForSignalCmd(&runtime(), {}, name.c_str(), NEVER_SET, false, id) == FctResult::Okay,
            "no wait of " + name);
  }
  const core::MotionSysIf2T& sys = runtime().records().sys2;
  require(sys.sync->setSignal(sys.context, ALWAYS_SET) == FctResult::Okay, "setSignal was refused");
  runtime().step();
  runtime().step();
  for (const auto& axis : runtime().objMgr().objects()) {
    require(axis->getCurrentCmdID() != 0, axis->name() + " does not wait");
  }
}

std::span<const std::unique_ptr<host::MotionObject>> BenchHost::waitingAxes(std::size_t count) {
  return runtime().objMgr().objects().first(count);
}

}  // namespace motion::bench
