#include "host/door/door.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <unistd.h>

#include <algorithm>
#include <exception>

namespace motion::host::door {

namespace {

RunFacts factsOf(const scenario::Scenario& scenario) {
  RunFacts facts{scenario.file, scenario.cycleTime, std::vector<std::string>(kavo::SIGNAL_COUNT)};
  for (const scenario::SignalName& named : scenario.signals) {
    facts.signalNames.at(named.id) = named.name;
  }
  return facts;
}

/// A warning about scopes that nobody has registered; empty when there are none.
std::string unknownScopes(const std::vector<std::string>& granted, const std::vector<std::string>& registered) {
  std::vector<std::string> unknown;
  std::ranges::copy_if(granted, std::back_inserter(unknown),
                       [&](const std::string& scope) { return std::ranges::find(registered, scope) == registered.end(); });
  return unknown.empty() ? ""
                         : fmt::format("the door grants {}, which is no scope here; there are: {}", fmt::join(unknown, ", "),
                                       fmt::join(registered, ", "));
}

}  // namespace

bool Door::openDefault(std::string& problem) {
  const std::filesystem::path directory = defaultDirectory();
  if (!prepareDirectory(directory, problem)) {
    return false;
  }
  sweep(directory);
  return open(directory / fmt::format("{}.sock", getpid()), problem);
}

void Door::follow(run::Watch& watch) {
  watch.onStart = [this](run::Session& session, const scenario::Scenario& scenario) { return begin(session, scenario); };
  watch.onLook = [this](const observe::RunRecord& record, std::uint64_t cycle) { m_run.look(record, cycle); };
  watch.onEnd = [this] { close(); };
}

std::string Door::begin(run::Session& session, const scenario::Scenario& scenario) {
  m_run.begin(factsOf(scenario));
  m_api =
      std::make_unique<Api>(session.dataLayer(), m_run, ApiConfig{m_config.program, m_config.grantedScopes, m_config.clock});
  std::string problem;
  try {
    m_server = std::make_unique<HttpServer>([this](const Request& request) { return m_api->answer(request); });
    if (!m_server->start(m_socket.release(), problem)) {
      m_server.reset();
    }
  } catch (const std::exception& error) {
    problem = error.what();
  }
  if (!problem.empty()) {
    m_socket.close();
    return fmt::format("the door does not open: {}", problem);
  }
  return unknownScopes(m_config.grantedScopes, session.dataLayer().scopes().identifiers());
}

void Door::close() noexcept {
  m_run.end();
  if (m_server != nullptr) {
    m_server->stop();
  }
  m_server.reset();
  m_api.reset();
  m_socket.close();
}

}  // namespace motion::host::door
