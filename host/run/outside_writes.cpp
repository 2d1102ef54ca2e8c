#include "host/run/outside_writes.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <string_view>
#include <utility>

#include "host/datalayer/node_walk.h"
#include "host/observe/signal_nodes.h"
#include "host/scenario/problem_collector.h"

namespace motion::host::run {

using comm::datalayer::DlResult;
using comm::datalayer::Variant;
using scenario::OutsideEvent;

namespace {

std::vector<std::string> scopesOf(const OutsideEvent& event) {
  std::vector<std::string> scopes;
  for (const scenario::ScopeName& scope : event.scopes) {
    scopes.push_back(scope.name);
  }
  return scopes;
}

/// "a client with the scopes motion.view, motion.operate"
std::string clientText(const OutsideEvent& event) {
  const auto scopes = scopesOf(event);
  return scopes.empty()
             ? "a client without scopes"
             : fmt::format("a client with the scope{} {}", scopes.size() == 1 ? "" : "s", fmt::join(scopes, ", "));
}

const char* deed(const OutsideEvent& event) {
  return event.value ? "set" : "reset";
}

/// Names the scopes that nobody has registered. True when all are known.
bool checkNames(const OutsideEvent& event, const std::vector<std::string>& known, scenario::ProblemCollector& problems) {
  const std::vector<std::string_view> right(known.begin(), known.end());
  bool isFine = true;
  for (const scenario::ScopeName& scope : event.scopes) {
    if (std::ranges::find(known, scope.name) == known.end()) {
      // The one that is taken when none is named has no place of its own.
      problems.unknownWord(scope.mark.line != 0 ? scope.mark : event.mark,
                           fmt::format("scopes: unknown scope '{}'", scope.name), scope.name, right);
      isFine = false;
    }
  }
  return isFine;
}

}  // namespace

std::string OutsideWrites::carryOut(const OutsideEvent& event, const observe::RunRecord& record) {
  Variant data(event.value);
  const DlResult result = clientOf(event).writeSync(observe::signalAddress(event.signal), &data);
  const bool isRefused = result == comm::datalayer::DL_SEC_UNAUTHORIZED;
  if (isRefused == event.refused && (isRefused || !isFailure(result))) {
    return "";
  }
  const std::string signal = observe::signalText(record, event.signal);
  if (!isFailure(result)) {
    return fmt::format("line {}: {} was {} by {}, though a refusal was expected", event.mark.line, signal, deed(event),
                       clientText(event));
  }
  return fmt::format("line {}: {} could not be {} by {}: {}{}", event.mark.line, signal, deed(event), clientText(event),
                     datalayer::errorOf(result, data).toString(), event.refused ? "; a refusal was expected" : "");
}

datalayer::Client& OutsideWrites::clientOf(const OutsideEvent& event) {
  auto scopes = scopesOf(event);
  std::unique_ptr<datalayer::Client>& client = m_clients[scopes];
  if (client == nullptr) {
    client = m_dataLayer.connect(std::move(scopes));
  }
  return *client;
}

scenario::Problems checkOutsideWrites(const scenario::Scenario& scenario, const datalayer::ScopeRegister& scopes) {
  scenario::ProblemCollector problems(scenario.file);
  const std::vector<std::string> known = scopes.identifiers();
  for (const OutsideEvent& event : scenario.outside) {
    if (event.kind != OutsideEvent::Kind::SIGNAL || !checkNames(event, known, problems)) {
      continue;
    }
    const bool isAllowed =
        scopes.rightsOf(scopesOf(event)).allows(datalayer::Right::WRITE, observe::signalAddress(event.signal));
    if (!isAllowed && !event.refused) {
      problems.warning(
          event.mark, fmt::format("signal {} cannot be {} by {}", event.signal, deed(event), clientText(event)),
          "name a scope that grants writing, as in 'scopes: [motion.operate]', or expect it with 'refused: true'");
    } else if (isAllowed && event.refused) {
      problems.warning(event.mark,
                       fmt::format("signal {} will be {} by {}, no matter that a refusal is expected", event.signal,
                                   deed(event), clientText(event)),
                       "leave 'refused' out, or name scopes that grant no writing, as in 'scopes: [motion.view]'");
    }
  }
  return problems.take();
}

}  // namespace motion::host::run
