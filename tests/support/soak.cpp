// A long real-time run: cells of objects that are given random valid programs for ever, clients at the signals, and aborts.
#include "support/soak.h"

#include <fmt/format.h>
#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <random>
#include <stdexcept>
#include <thread>

#include "host/motion/pacer.h"
#include "host/run/session.h"
#include "support/fake_allocation.h"
#include "support/signal_load_client.h"
#include "support/soak_cell.h"

namespace motion::test {
namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

constexpr std::uint32_t BUFFER = 16;
constexpr std::size_t EVENTS = 1U << 16U;
constexpr milliseconds PATIENCE{60'000};
constexpr milliseconds LOOK_AGAIN{1};
constexpr std::uint32_t FIRST_OF_CLIENTS = MAX_CELLS * SoakCell::SIGNALS;
static_assert(FIRST_OF_CLIENTS < kavo::SIGNAL_COUNT);

/// Sets, resets and reads signals that nobody else writes, and expects to read what it wrote.
class SoakClient {
 public:
  SoakClient(std::unique_ptr<host::datalayer::Client> client, std::uint32_t first, std::uint32_t count, std::uint32_t seed)
      : m_access(std::move(client)), m_first(first), m_values(count), m_random(seed) {
    m_thread = std::thread([this] { run(); });
  }
  SoakClient(const SoakClient&) = delete;
  SoakClient& operator=(const SoakClient&) = delete;
  ~SoakClient() {
    m_stop = true;
    m_thread.join();
  }

  void pause(bool isPaused) {
    m_isPaused = isPaused;
    while (isPaused && !m_rests) {
      std::this_thread::sleep_for(LOOK_AGAIN);
    }
  }
  void addTo(SoakReport& report, SoakErrors& errors) {
    report.clientReads += m_reads.exchange(0);
    report.clientWrites += m_writes.exchange(0);
    for (auto wrong = m_wrong.exchange(0); wrong > 0; --wrong) {
      errors.add("a client was refused, or did not read what it had written");
    }
  }

 private:
  void run() {
    while (!m_stop) {
      m_rests = m_isPaused.load();
      if (!m_rests) {
        writeAndRead();
      }
      std::this_thread::sleep_for(LOOK_AGAIN);
    }
  }

  void writeAndRead() {
    const auto place = std::uniform_int_distribution<std::size_t>(0, m_values.size() - 1)(m_random);
    const auto id = m_first + static_cast<std::uint32_t>(place);
    m_values[place] = !m_values[place];
    bool value = !m_values[place];
    const bool isFine = m_access.write(id, m_values[place]) && m_access.read(id, value) && value == m_values[place];
    ++m_writes;
    ++m_reads;
    m_wrong += isFine ? 0 : 1;
  }

  NodeAccess m_access;
  std::uint32_t m_first;
  std::vector<bool> m_values;
  std::mt19937 m_random;
  std::atomic<bool> m_stop{false};
  std::atomic<bool> m_isPaused{true};
  std::atomic<bool> m_rests{false};
  std::atomic<std::uint64_t> m_reads{0};
  std::atomic<std::uint64_t> m_writes{0};
  std::atomic<std::uint64_t> m_wrong{0};
  std::thread m_thread;
};

/// Commands that end before the cycle gets them.
class DropListener : public host::ICmdListener {
 public:
  void onBuffered(const host::CmdFrame& /*frame*/, std::uint64_t /*cycle*/) noexcept override {}
  void onPrepared(const host::CmdFrame& /*frame*/, std::uint64_t /*cycle*/) noexcept override {}
  void onDropped(const host::CmdFrame& frame, std::uint64_t cycle) noexcept override {
    const std::scoped_lock lock(m_mutex);
    if (m_count < m_dropped.size()) {
      m_dropped[m_count++] = {cycle, host::EventKind::CMD_ABORTED, host::OUTSIDE, frame.getCmdID(), 0};
    }
  }
  void onRetired(const host::CmdFrame& /*frame*/) noexcept override {}

  void takeAll(const std::function<void(const host::Event&)>& take) {
    const std::scoped_lock lock(m_mutex);
    std::for_each_n(m_dropped.begin(), m_count, take);
    m_count = 0;
  }

 private:
  std::mutex m_mutex;
  std::size_t m_count = 0;
  std::vector<host::Event> m_dropped = std::vector<host::Event>(EVENTS);
};

class Soak {
 public:
  explicit Soak(const SoakConfig& config)
      : m_config(config),
        m_session({config.bundleDir, {std::chrono::duration<double>(config.cycle).count(), BUFFER}, PATIENCE, false}),
        m_pacer(std::chrono::duration<double>(config.cycle).count()) {
    std::string problem;
    if (config.cells == 0 || config.cells > MAX_CELLS || config.clients == 0 || config.clients > 8) {
      throw std::runtime_error("no such soak: too many or no cells or clients");
    }
    if (!m_session.open(problem)) {
      throw std::runtime_error(problem);
    }
    for (std::uint32_t number = 0; number < config.cells; ++number) {
      m_cells.push_back(std::make_unique<SoakCell>(runtime(), number, config.seed, m_report, m_errors));
    }
    for (const auto& object : runtime().objMgr().objects()) {
      object->setEvents(&m_events);
    }
    runtime().preparation().setListener(&m_drops);
  }
  Soak(const Soak&) = delete;
  Soak& operator=(const Soak&) = delete;
  ~Soak() { runtime().stopThreads(); }

  SoakReport run() {
    runtime().startThreads(m_pacer, [this](const std::string& warning) { m_report.warning = warning; });
    makeClients();
    work(m_config.warmUp);
    rest();
    m_report.atStart = memory();
    work(m_config.duration);
    rest();
    m_report.atEnd = memory();
    finish();
    return std::move(m_report);
  }

 private:
  [[nodiscard]] host::Runtime& runtime() noexcept { return m_session.runtime(); }

  void makeClients() {
    const auto each = (kavo::SIGNAL_COUNT - FIRST_OF_CLIENTS) / m_config.clients;
    for (std::uint32_t i = 0; i < m_config.clients; ++i) {
      m_clients.push_back(std::make_unique<SoakClient>(m_session.dataLayer().connect({"motion.operate"}, PATIENCE),
                                                       FIRST_OF_CLIENTS + i * each, each, m_config.seed + i));
    }
  }

  void work(milliseconds duration) {
    for (const auto& client : m_clients) {
      client->pause(false);
    }
    const auto end = Clock::now() + duration;
    for (auto now = Clock::now(); now < end; now = Clock::now()) {
      takeEvents();
      for (const auto& cell : m_cells) {
        cell->feed(now);
        cell->checkProgress(now);
      }
      std::this_thread::sleep_for(LOOK_AGAIN);
    }
  }

  /// Lets everything come to its end, so that what is held then is what is always held.
  void rest() {
    for (const auto& client : m_clients) {
      client->pause(true);
    }
    awaitIdle();
    for (const auto& cell : m_cells) {
      cell->endOptions();
    }
    awaitIdle();
  }

  void awaitIdle() {
    const auto limit = Clock::now() + PATIENCE;
    const auto isIdle = [](const auto& cell) { return cell->isIdle(); };
    while (!std::ranges::all_of(m_cells, isIdle) || runtime().preparation().alive() > 0) {
      if (Clock::now() > limit) {
        m_errors.add("the cells did not come to rest");
        return;
      }
      takeEvents();
      for (const auto& cell : m_cells) {
        cell->settle(Clock::now());
      }
      std::this_thread::sleep_for(LOOK_AGAIN);
    }
    takeEvents();
  }

  void takeEvents() {
    const auto give = [this](const host::Event& event) {
      std::ranges::any_of(m_cells, [&event](const auto& cell) { return cell->take(event); });
    };
    for (host::Event event; m_events.read(event);) {
      give(event);
    }
    m_drops.takeAll(give);
    for (const auto& message : m_session.takeMessages()) {
      // Joins tell of aborts; that there was one is no secret.
      if (!message.ends_with(": ABORTED")) {
        m_errors.add("the component says: " + message);
      }
    }
    for (const auto& client : m_clients) {
      client->addTo(m_report, m_errors);
    }
  }

  [[nodiscard]] static MemoryFigures memory() {
    const auto info = mallinfo2();
    return {liveAllocations(), info.uordblks + info.hblkhd};
  }

  void finish() {
    m_clients.clear();
    runtime().stopThreads();
    takeEvents();
    const auto punctuality = m_pacer.punctuality();
    m_report.cycles = punctuality.cycles;
    m_report.overruns = punctuality.overruns;
    if (m_events.lost() > 0) {
      m_errors.add(fmt::format("{} events were lost", m_events.lost()));
    }
    std::string problem;
    if (!m_session.close(problem)) {
      m_errors.add(problem);
    }
    m_report.errors = m_errors.count();
    m_report.findings = m_errors.texts();
  }

  SoakConfig m_config;
  SoakReport m_report;
  SoakErrors m_errors;
  host::EventRing m_events{EVENTS};
  DropListener m_drops;
  host::run::Session m_session;
  host::RealTimePacer m_pacer;
  std::vector<std::unique_ptr<SoakCell>> m_cells;
  std::vector<std::unique_ptr<SoakClient>> m_clients;
};

}  // namespace

SoakReport runSoak(const SoakConfig& config) {
  mallopt(M_ARENA_MAX, 1);  // one arena, so that its figures are those of the process
  return Soak(config).run();
}

}  // namespace motion::test
