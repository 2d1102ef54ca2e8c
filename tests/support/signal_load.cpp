// A load run: clients against a real-time run whose jobs use the same signals.
#include "support/signal_load.h"

#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <random>
#include <stdexcept>
#include <string_view>
#include <thread>
#include <utility>

#include "host/motion/pacer.h"
#include "host/run/session.h"

namespace motion::test {

namespace {

using core::FctResult;
using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

constexpr std::uint32_t BUFFER = 64;
/// Commands that wait in each buffer, at most; enough for the time between two rounds of feeding.
constexpr std::uint32_t WAITING = 48;
/// For everything that only a fault or a machine without any time could delay.
constexpr milliseconds PATIENCE{60'000};
constexpr milliseconds LOOK_AGAIN{1};
constexpr std::string_view COLLISION = "might be set by both";
constexpr std::string_view DROPPED = "trace entries were dropped";

enum class Action { SET, RESET, WAIT, WAIT_AND_RESET, WAIT_FOR_RESET };

struct Step {
  Action action;
  std::uint32_t signal;
};

/// What an object does over and over.
struct Program {
  host::MotionObject* object = nullptr;
  std::vector<Step> steps;
  std::size_t next = 0;
  std::uint64_t issued = 0;
  std::uint64_t lastID = 0;
};

CycleFigures figuresOf(std::vector<std::uint32_t> times) {
  CycleFigures figures;
  figures.cycles = times.size();
  if (times.empty()) {
    return figures;
  }
  std::ranges::sort(times);
  const auto at = [&times](double share) {
    return static_cast<double>(times[static_cast<std::size_t>(share * static_cast<double>(times.size() - 1))]) / 1e3;
  };
  figures.min = at(0.0);
  figures.median = at(0.5);
  figures.percent99 = at(0.99);
  figures.permille999 = at(0.999);
  figures.max = at(1.0);
  return figures;
}

/// Sets and resets, each of which has to have its effect for the next step to go on.
std::vector<Step> stepsOfJobs(std::uint32_t first, std::uint32_t count) {
  std::vector<Step> steps;
  for (std::uint32_t id = first; id < first + count; ++id) {
    for (const Action action : {Action::SET, Action::WAIT, Action::SET, Action::WAIT, Action::RESET, Action::WAIT_FOR_RESET,
                                Action::SET, Action::WAIT_AND_RESET, Action::WAIT_FOR_RESET}) {
      steps.push_back({action, id});
    }
  }
  return steps;
}

/// Never waits, for a client may always have undone what the jobs did.
std::vector<Step> stepsOfBoth(std::uint32_t first, std::uint32_t count) {
  std::vector<Step> steps;
  std::mt19937 random(first);
  for (int i = 0; i < 100; ++i) {
    steps.push_back({random() % 2 != 0 ? Action::SET : Action::RESET, first + static_cast<std::uint32_t>(random() % count)});
  }
  return steps;
}

/// The other side of LoadClient::takeTurn.
std::vector<Step> stepsOfTurns(std::uint32_t client) {
  const std::uint32_t shared = FIRST_OF_TURNS + SIGNALS_PER_TURN * client;
  const std::uint32_t yourTurn = shared + 1;
  const std::uint32_t goOn = shared + 2;
  return {{Action::SET, shared},  {Action::SET, yourTurn}, {Action::WAIT_AND_RESET, goOn}, {Action::SET, shared},
          {Action::WAIT, shared}, {Action::RESET, shared}, {Action::SET, yourTurn},        {Action::WAIT_AND_RESET, goOn}};
}

class Run {
 public:
  explicit Run(const SignalLoadConfig& config)
      : m_config(config),
        m_session({config.bundleDir, {std::chrono::duration<double>(config.cycle).count(), BUFFER}, PATIENCE, false}),
        m_pacer(std::chrono::duration<double>(config.cycle).count()) {
    std::string problem;
    if (config.clients == 0 || config.clients >= MAX_WRITERS || config.cycle.count() <= 0) {
      throw std::runtime_error("no such load: too many or no clients, or no cycle");
    }
    if (!m_session.open(problem)) {
      throw std::runtime_error(problem);
    }
    m_raw = std::make_unique<RawSignals>(m_session.dataLayer());
    m_watch = std::make_unique<CycleWatch>(m_book, *m_raw, 2 * static_cast<std::size_t>(config.duration / config.cycle) + 1);
  }

  Run(const Run&) = delete;
  Run& operator=(const Run&) = delete;
  ~Run() { runtime().stopThreads(); }

  SignalLoadReport play() {
    addPrograms();
    runtime().cycle().setObserver(m_watch.get());
    runtime().startThreads(m_pacer, [this](const std::string& warning) { m_report.warning = warning; });
    measure(Half::WITHOUT_CLIENTS, m_report.withoutClients, [] { return true; });
    runClients();
    finishPrograms();
    checkThatWritesHaveEffect();
    runtime().stopThreads();
    close();
    return std::move(m_report);
  }

 private:
  [[nodiscard]] host::Runtime& runtime() noexcept { return m_session.runtime(); }
  /// Those of the data layer, and one that calls the system functions.
  [[nodiscard]] std::uint32_t writers() const noexcept { return m_config.clients + 1; }

  void addPrograms() {
    for (std::uint32_t id = FIRST_OF_JOBS; id < FIRST_OF_BOTH; id += 5) {
      add(fmt::format("Jobs{}", id), stepsOfJobs(id, 5), true);
    }
    for (std::uint32_t id = FIRST_OF_BOTH; id < FIRST_OF_TURNS; id += 5) {
      add(fmt::format("Both{}", id), stepsOfBoth(id, 5), true);
    }
    m_loadPrograms = m_programs.size();
    for (std::uint32_t client = 0; client < writers(); ++client) {
      add(fmt::format("Turns{}", client), stepsOfTurns(client), false);
    }
  }

  void add(const std::string& name, std::vector<Step> steps, bool isMeasured) {
    const core::ObjectType type = m_programs.size() % 2 == 0 ? core::ObjectType::AXIS : core::ObjectType::KINEMATICS;
    std::vector<std::uint32_t> signals;
    for (const Step& step : steps) {
      if (std::ranges::find(signals, step.signal) == signals.end()) {
        signals.push_back(step.signal);
      }
    }
    m_watch->watch(std::move(signals), isMeasured);
    m_programs.push_back({runtime().addObject(name, type, {}), std::move(steps)});
  }

  void feed() {
    for (Program& program : m_programs) {
      while (program.object->bufferedCount() < WAITING) {
        issue(program, program.steps[program.next]);
        program.next = (program.next + 1) % program.steps.size();
      }
    }
    countMessages();
  }

  void issue(Program& program, const Step& step) {
    const core::MotionCmdGeneralFctT& functions = *runtime().records().cmd2.general;
    const char* const name = program.object->name().c_str();
    unsigned long id = 0;
    FctResult result = FctResult::NotOkay;
    switch (step.action) {
      case Action::SET:
        result = functions.setSignalCmd(&runtime(), {}, name, step.signal, id);
        break;
      case Action::RESET:
        result = functions.resetSignalCmd(&runtime(), {}, name, step.signal, id);
        break;
      case Action::WAIT:
      case Action::WAIT_AND_RESET:
        result = functions.waitForSignalCmd(&runtime(), {}, name, step.signal, step.action == Action::WAIT_AND_RESET, id);
        break;
      case Action::WAIT_FOR_RESET:
        result = functions.waitForSignalResetCmd(&runtime(), {}, name, step.signal, id);
        break;
    }
    if (result != FctResult::Okay) {
      m_findings.refused(fmt::format("{} was refused a command", name));
      return;
    }
    ++program.issued;
    program.lastID = id;
  }

  void countMessages() {
    for (const std::string& message : m_session.takeMessages()) {
      if (message.find(COLLISION) != std::string::npos) {
        ++m_report.collisions;
      } else if (message.find(DROPPED) == std::string::npos) {
        m_findings.refused("the component says: " + message);
      }
    }
  }

  /// Feeds the programs for half of the run and until `isEnough`.
  void measure(Half half, CycleFigures& figures, const std::function<bool()>& isEnough) {
    feed();
    m_watch->measure(half);
    const std::uint64_t overruns = m_pacer.punctuality().overruns;
    const auto begin = Clock::now();
    while (Clock::now() - begin < m_config.duration / 2 || (!isEnough() && Clock::now() - begin < PATIENCE)) {
      feed();
      std::this_thread::sleep_for(LOOK_AGAIN);
    }
    m_watch->measure(Half::NONE);
    figures.overruns = m_pacer.punctuality().overruns - overruns;
  }

  [[nodiscard]] std::vector<std::unique_ptr<LoadClient>> makeClients() {
    const LoadClient::World world{m_book, *m_raw, runtime().cycle(), m_findings, writers()};
    std::vector<std::unique_ptr<LoadClient>> clients;
    for (std::uint32_t i = 0; i < m_config.clients; ++i) {
      auto access = std::make_unique<NodeAccess>(m_session.dataLayer().connect({"motion.operate"}, PATIENCE));
      clients.push_back(std::make_unique<LoadClient>(world, i, std::move(access), [] {}));
    }
    // Calls without a hand-over to other threads need pauses to leave them some of the machine.
    clients.push_back(std::make_unique<LoadClient>(world, m_config.clients,
                                                   std::make_unique<FunctionAccess>(runtime().records().sys2),
                                                   [] { std::this_thread::sleep_for(std::chrono::microseconds(100)); }));
    return clients;
  }

  void runClients() {
    const auto clients = makeClients();
    RawReader reader(m_book, *m_raw, runtime().cycle(), m_findings);
    std::atomic<bool> stop{false};
    std::vector<std::thread> threads;
    for (const auto& client : clients) {
      threads.emplace_back([&stop, client = client.get()] { client->run(stop); });
    }
    threads.emplace_back([&] { reader.run(stop); });
    measure(Half::WITH_CLIENTS, m_report.withClients,
            [&] { return std::ranges::all_of(clients, [](const auto& client) { return client->turns() > 0; }); });
    stop = true;
    for (std::thread& thread : threads) {
      thread.join();
    }
    for (const auto& client : clients) {
      m_report.clients += client->counts();
      if (client->counts().turns == 0) {
        m_findings.lost("an object and its client wait for each other");
      }
    }
    m_report.outsideLooks = reader.outsideLooks();
    m_report.jobLooks = reader.jobLooks();
  }

  [[nodiscard]] bool waitFor(const Program& program) {
    const auto deadline = Clock::now() + PATIENCE;
    while (program.object->getCmdState(program.lastID) != core::cmd::CmdState::DONE) {
      if (Clock::now() > deadline) {
        m_findings.lost(fmt::format("{} waits for a signal that its own jobs have set or reset", program.object->name()));
        return false;
      }
      std::this_thread::sleep_for(LOOK_AGAIN);
    }
    return true;
  }

  /// Those that take turns with clients are left waiting for them.
  void finishPrograms() {
    for (std::size_t i = 0; i < m_programs.size(); ++i) {
      const bool isDone = i < m_loadPrograms && waitFor(m_programs[i]);
      m_report.commandsDone += m_programs[i].issued - (isDone ? 0 : m_programs[i].object->bufferedCount() + 1);
    }
  }

  /// The one whose jobs move that signal.
  [[nodiscard]] Program& programOf(std::uint32_t id) {
    return *std::ranges::find_if(m_programs, [id](const Program& program) {
      return std::ranges::any_of(program.steps, [id](const Step& step) { return step.signal == id; });
    });
  }

  /// Whatever clients and jobs have made of the counters together: now that all is quiet, the next write of either side
  /// counts.
  void checkThatWritesHaveEffect() {
    NodeAccess nodes(m_session.dataLayer().connect({"motion.operate"}, PATIENCE));
    const auto expect = [&](std::uint32_t id, bool value, const char* who) {
      bool isSet = !value;
      if (!nodes.read(id, isSet) || isSet != value) {
        m_findings.lost(fmt::format("signal {} reads {} after {} has written {}", id, isSet, who, value));
      }
    };
    const auto write = [&](std::uint32_t id, bool value) {
      if (!nodes.write(id, value)) {
        m_findings.refused(fmt::format("signal {} could not be written", id));
      }
      expect(id, value, "a client");
    };
    const auto run = [&](std::uint32_t id, Action action, bool value) {
      Program& program = programOf(id);
      issue(program, {action, id});
      if (waitFor(program)) {
        expect(id, value, "a job");
      }
    };
    for (std::uint32_t id = FIRST_OF_BOTH; id < FIRST_OF_TURNS; ++id) {
      write(id, id % 2 == 0);
      run(id, Action::SET, true);
      write(id, true);
      run(id, Action::SET, true);
      run(id, Action::RESET, false);
      write(id, true);
      run(id, Action::WAIT_AND_RESET, false);
    }
  }

  void close() {
    m_report.withoutClients = complete(Half::WITHOUT_CLIENTS, m_report.withoutClients);
    m_report.withClients = complete(Half::WITH_CLIENTS, m_report.withClients);
    m_watch->report(m_findings);
    m_report.jobChanges = m_watch->changes();
    m_raw.reset();
    std::string problem;
    if (!m_session.close(problem)) {
      m_findings.refused(problem);
    }
    countMessages();
    m_report.refused = m_findings.refusedCount();
    m_report.lost = m_findings.lostCount();
    m_report.torn = m_findings.tornCount();
    m_report.findings = m_findings.texts();
  }

  [[nodiscard]] CycleFigures complete(Half half, const CycleFigures& measured) const {
    CycleFigures figures = figuresOf(m_watch->times(half));
    figures.overruns = measured.overruns;
    return figures;
  }

  SignalLoadConfig m_config;
  SignalLoadReport m_report;
  Findings m_findings;
  SignalBook m_book;
  std::unique_ptr<CycleWatch> m_watch;  // before the session, whose cycles use it
  host::run::Session m_session;
  std::unique_ptr<RawSignals> m_raw;
  host::RealTimePacer m_pacer;
  std::vector<Program> m_programs;
  std::size_t m_loadPrograms = 0;
};

}  // namespace

SignalLoadReport runSignalLoad(const SignalLoadConfig& config) {
  return Run(config).play();
}

}  // namespace motion::test
