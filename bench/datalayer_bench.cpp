// The data layer: nodes from client to signal and back beside the bare hand-over, and the check of scopes.
#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "bench/bench_host.h"
#include "bench/datalayer_floors.h"
#include "host/datalayer/access_rights.h"
#include "impl/provider/node_signal.h"
#include "impl/provider/provider_mgr.h"

namespace motion::bench {
namespace {

using comm::datalayer::IProviderNode;
using comm::datalayer::Variant;
using host::datalayer::AccessRights;
using host::datalayer::Right;

const std::string SIGNALS = "motion/state/functions/kavo/signals";
const std::string SIGNAL = SIGNALS + "/03";
static_assert(TOGGLED == 3);
/// As deep in the tree as the signals, so that finding it costs the same.
const std::string CONSTANTS = "motion/state/functions/bench/signals";
const std::string CONSTANT = CONSTANTS + "/03";

enum class Operation { READ, WRITE, BROWSE, METADATA };

/// A client with rights that it was granted, and a node of constants that costs next to nothing by itself.
class NodeBench {
 public:
  NodeBench()
      : m_dataLayer(BenchHost::instance().dataLayer()),
        m_client(m_dataLayer.connect({"motion.manage"})),
        m_provider(m_dataLayer.createProvider(std::string(host::datalayer::DataLayer::PROVIDER_ENDPOINT))) {
    Variant names;
    Variant metadata;
    m_isReady = !isFailure(m_client->browseSync(SIGNALS, &names)) && !isFailure(m_client->metadataSync(SIGNAL, &metadata));
    m_node = makeConstantNode(Variant(true), std::move(names), std::move(metadata));
    m_isReady =
        m_isReady && !isFailure(m_provider->registerNode(CONSTANTS + "/*", m_node.get())) && !isFailure(m_provider->start());
  }

  [[nodiscard]] bool isReady() const noexcept { return m_isReady; }
  /// False when it failed.
  [[nodiscard]] bool run(Operation operation, const std::string& node, const std::string& folder) {
    switch (operation) {
      case Operation::READ:
        return !isFailure(m_client->readSync(node, &m_data));
      case Operation::WRITE:
        m_data = Variant(m_value = !m_value);
        return !isFailure(m_client->writeSync(node, &m_data));
      case Operation::BROWSE:
        return !isFailure(m_client->browseSync(folder, &m_data));
      case Operation::METADATA:
        return !isFailure(m_client->metadataSync(node, &m_data));
    }
    return false;
  }

 private:
  host::datalayer::DataLayer& m_dataLayer;
  std::unique_ptr<host::datalayer::Client> m_client;
  std::unique_ptr<IProviderNode> m_node;  // before the provider, which uses it
  std::unique_ptr<comm::datalayer::IProvider> m_provider;
  Variant m_data;
  bool m_value = false;
  bool m_isReady = false;
};

void atNode(benchmark::State& state, Operation operation, const std::string& node, const std::string& folder) {
  NodeBench bench;
  bool isFine = bench.isReady();
  for (auto _ : state) {
    isFine = bench.run(operation, node, folder) && isFine;
  }
  if (!isFine) {
    state.SkipWithError("an operation failed");
  }
}

void node(benchmark::State& state, Operation operation) {
  atNode(state, operation, SIGNAL, SIGNALS);
}

void handOver(benchmark::State& state, Operation operation) {
  atNode(state, operation, CONSTANT, CONSTANTS);
}

/// The component's node alone, on its way to the signals of the bundle, called as a provider calls it.
void callback(benchmark::State& state, Operation operation) {
  BenchHost& host = BenchHost::instance();
  const kavo::ProviderMgr manager(host.runtime().records().sys, host.dataLayer());
  kavo::NodeSignal sut(manager);
  bool isFine = true;
  const IProviderNode::ResponseCallback answer = [&isFine](comm::datalayer::DlResult result, const Variant* data) {
    isFine = isFine && !isFailure(result);
    benchmark::DoNotOptimize(data);
  };
  bool value = false;
  for (auto _ : state) {
    if (operation == Operation::READ) {
      sut.onRead(SIGNAL, nullptr, answer);
    } else {
      const Variant data(value = !value);
      sut.onWrite(SIGNAL, &data, answer);
    }
  }
  if (!isFine) {
    state.SkipWithError("an operation failed");
  }
}

/// The direct call that writing a node comes down to: set and reset in turns.
void direct(benchmark::State& state) {
  const core::MotionSysIf2T& record = BenchHost::instance().runtime().records().sys2;
  bool value = false;
  core::FctResult result = core::FctResult::Okay;
  for (auto _ : state) {
    value = !value;
    const core::SignalFn function = value ? record.sync->setSignal : record.sync->resetSignal;
    benchmark::DoNotOptimize(result = function(record.context, TOGGLED));
  }
  if (core::isFailure(result)) {
    state.SkipWithError("an operation failed");
  }
}

std::string addressOf(std::size_t levels, std::size_t number) {
  std::string address;
  for (std::size_t level = 0; level < levels; ++level) {
    address += fmt::format("{}level{}_{}", level == 0 ? "" : "/", level, level + 1 == levels ? number : 0);
  }
  return address;
}

/// The same with the wildcard in the place of one level or of the last.
std::string patternOf(std::size_t levels, std::size_t number) {
  const std::string address = addressOf(levels, number);
  const std::size_t slash = address.rfind('/');
  return number % 2 == 0 ? address.substr(0, slash + 1) + "**" : "*/" + address.substr(address.find('/') + 1);
}

void checkScopes(benchmark::State& state, bool isExact) {
  const auto patterns = static_cast<std::size_t>(state.range(0));
  const auto levels = static_cast<std::size_t>(state.range(1));
  AccessRights sut;
  for (std::size_t number = 0; number < patterns; ++number) {
    sut.grant(isExact ? addressOf(levels, number) : patternOf(levels, number),
              static_cast<host::datalayer::Rights>(Right::READ));
  }
  const std::string address = addressOf(levels, patterns - 1);
  bool isAllowed = false;
  for (auto _ : state) {
    benchmark::DoNotOptimize(isAllowed = sut.allows(Right::READ, address));
  }
  if (!isAllowed || sut.allows(Right::WRITE, address)) {
    state.SkipWithError("the rights are not those that were granted");
  }
}

void floorScopes(benchmark::State& state) {
  const auto patterns = static_cast<std::size_t>(state.range(0));
  const auto levels = static_cast<std::size_t>(state.range(1));
  LevelsFloor floor;
  for (std::size_t number = 0; number < patterns; ++number) {
    floor.add(addressOf(levels, number));
  }
  const std::string address = addressOf(levels, patterns - 1);
  std::size_t found = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(found = floor.countKnown(address));
  }
  if (found != levels) {
    state.SkipWithError("the floor did not find all levels");
  }
}

const std::vector<std::vector<std::int64_t>> PATTERNS_AND_LEVELS{{3, 300}, {1, 4, 8, 16}};

// Time of the clock: what providers do on their threads is part of it.
BENCHMARK_CAPTURE(node, read, Operation::READ)->Name("node_read")->UseRealTime();
BENCHMARK_CAPTURE(node, write, Operation::WRITE)->Name("node_write")->UseRealTime();
BENCHMARK_CAPTURE(node, browse, Operation::BROWSE)->Name("node_browse")->UseRealTime();
BENCHMARK_CAPTURE(node, metadata, Operation::METADATA)->Name("node_metadata")->UseRealTime();
BENCHMARK_CAPTURE(handOver, read, Operation::READ)->Name("floor_node_read")->UseRealTime();
BENCHMARK_CAPTURE(handOver, write, Operation::WRITE)->Name("floor_node_write")->UseRealTime();
BENCHMARK_CAPTURE(handOver, browse, Operation::BROWSE)->Name("floor_node_browse")->UseRealTime();
BENCHMARK_CAPTURE(handOver, metadata, Operation::METADATA)->Name("floor_node_metadata")->UseRealTime();
BENCHMARK_CAPTURE(callback, read, Operation::READ)->Name("node_on_read");
BENCHMARK_CAPTURE(callback, write, Operation::WRITE)->Name("node_on_write");
BENCHMARK(direct)->Name("sys_write");
BENCHMARK_CAPTURE(checkScopes, exact, true)->Name("scope_exact")->ArgsProduct(PATTERNS_AND_LEVELS);
BENCHMARK_CAPTURE(checkScopes, wildcards, false)->Name("scope_wildcards")->Args({3, 8})->Args({300, 8});
BENCHMARK(floorScopes)->Name("floor_scope")->ArgsProduct(PATTERNS_AND_LEVELS);

}  // namespace
}  // namespace motion::bench
