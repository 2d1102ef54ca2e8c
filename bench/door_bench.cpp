// A command through the local socket: from a client's bytes to the signal and back, beside the same bytes that only bounce.
#include <benchmark/benchmark.h>
#include <fmt/format.h>
#include <unistd.h>

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>

#include "bench/bench_host.h"
#include "bench/local_exchange.h"
#include "host/door/door.h"
#include "host/door/door_limits.h"

namespace motion::bench {
namespace {

constexpr const char* READ_REQUEST = "GET /v1/signals/3 HTTP/1.1\r\nHost: kavo\r\n\r\n";

std::string pathOf(const char* what) {
  return fmt::format("/tmp/kavo-bench-{}-{}.sock", getpid(), what);
}

std::string writeRequest(bool value) {
  const std::string body = value ? R"({"value":true} )" : R"({"value":false})";  // of the same length
  return fmt::format(
      "PUT /v1/signals/3 HTTP/1.1\r\nHost: kavo\r\nContent-Type: application/json\r\nContent-Length: {}\r\n\r\n{}",
      body.size(), body);
}

/// A door into the host of the benchmarks, where no cycle runs. Its clock runs so fast that the rate of requests has no
/// limit.
class DoorBench {
 public:
  DoorBench() : m_door({"kavo_bench", {"motion.operate"}, [this] { return m_now += std::chrono::seconds(1); }}) {
    host::run::Watch watch;
    m_door.follow(watch);
    std::string problem;
    m_isReady = m_door.open(PATH, problem) && watch.onStart(BenchHost::instance().session(), m_scenario).empty();
  }

  [[nodiscard]] bool isReady() const noexcept { return m_isReady; }

  static inline const std::string PATH = pathOf("door");

 private:
  host::scenario::Scenario m_scenario;
  std::chrono::steady_clock::time_point m_now;  ///< the door asks for it one request after the other
  host::door::Door m_door;
  bool m_isReady = false;
};

/// How many bytes the door answers; 0 when it does not.
std::size_t answerSizeOf(const std::string& request) {
  std::string answer;
  LocalConnection connection(DoorBench::PATH);
  const bool isFine = connection.isOpen() && connection.exchange(request, answer) && answer.starts_with("HTTP/1.1 200 ");
  return isFine ? answer.size() : 0;
}

/// Exchanges the requests in turns, on one connection for as long as the door serves it, or each on a new one.
void exchange(benchmark::State& state, const std::string& path, const std::string (&requests)[2], std::size_t answerSize,
              bool isKept) {
  // Beside the request, an answer tells how many are left on its connection, in as many digits; the last ones are not used.
  constexpr std::size_t LAST = host::door::MAX_REQUESTS / 2;
  std::unique_ptr<LocalConnection> connection;
  std::string answer;
  bool isFine = answerSize != 0;
  std::size_t number = 0;
  for (auto _ : state) {
    if (!isFine) {
      break;
    }
    if (connection == nullptr || !isKept || number % LAST == 0) {
      connection = std::make_unique<LocalConnection>(path);
    }
    const std::string& request = requests[number++ % 2];
    isFine = connection->isOpen() &&
             (path == DoorBench::PATH ? connection->exchange(request, answer) : connection->exchange(request, answerSize));
  }
  if (!isFine) {
    state.SkipWithError("a request was not answered");
  }
}

const std::string READS[2]{READ_REQUEST, READ_REQUEST};
const std::string WRITES[2]{writeRequest(true), writeRequest(false)};

void door(benchmark::State& state, const std::string (&requests)[2], bool isKept) {
  const DoorBench bench;
  exchange(state, DoorBench::PATH, requests, bench.isReady() ? answerSizeOf(requests[0]) : 0, isKept);
}

void bounce(benchmark::State& state, const std::string (&requests)[2], bool isKept) {
  std::size_t answerSize = 0;
  {
    const DoorBench bench;
    answerSize = bench.isReady() ? answerSizeOf(requests[0]) : 0;
  }
  const BounceServer server(pathOf("bounce"), requests[0].size(), answerSize);
  exchange(state, pathOf("bounce"), requests, answerSize, isKept);
}

// Time of the clock: others do the work.
BENCHMARK_CAPTURE(door, read, READS, true)->Name("door_read")->UseRealTime();
BENCHMARK_CAPTURE(door, write, WRITES, true)->Name("door_write")->UseRealTime();
BENCHMARK_CAPTURE(door, command, WRITES, false)->Name("door_command")->UseRealTime();
BENCHMARK_CAPTURE(bounce, read, READS, true)->Name("floor_door_read")->UseRealTime();
BENCHMARK_CAPTURE(bounce, write, WRITES, true)->Name("floor_door_write")->UseRealTime();
BENCHMARK_CAPTURE(bounce, command, WRITES, false)->Name("floor_door_command")->UseRealTime();

}  // namespace
}  // namespace motion::bench
