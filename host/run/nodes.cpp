#include "host/run/nodes.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <memory>
#include <set>

#include "host/observe/signal_nodes.h"

namespace motion::host::run {

using comm::datalayer::Variant;

namespace {

/// The first levels of all addresses.
std::vector<std::string> topLevels(comm::datalayer::IClient& host) {
  Variant nodes;
  std::set<std::string> levels;
  if (!isFailure(host.readSync("datalayer/nodes", &nodes)) && nodes.getStrings() != nullptr) {
    for (const std::string& address : *nodes.getStrings()) {
      levels.insert(address.substr(0, address.find('/')));
    }
  }
  return {levels.begin(), levels.end()};
}

/// In words, when one of the scopes is not registered.
std::string findUnknown(const observe::NodesSeen& seen) {
  for (const std::string& scope : seen.scopes) {
    if (std::ranges::find(seen.knownScopes, scope) == seen.knownScopes.end()) {
      return fmt::format("there is no scope '{}'; known here: {}", scope, fmt::join(seen.knownScopes, ", "));
    }
  }
  return "";
}

void look(datalayer::DataLayer& dataLayer, observe::NodesSeen& seen) {
  const std::unique_ptr<comm::datalayer::IClient> host(
      dataLayer.createClient(std::string(datalayer::DataLayer::CLIENT_ENDPOINT)));
  const std::unique_ptr<datalayer::Client> client = dataLayer.connect(seen.scopes);
  comm::datalayer::IClient& asking = seen.isUnrestricted ? *host : *client;
  std::vector<std::string> roots =
      seen.isUnrestricted ? std::vector<std::string>{""} : dataLayer.scopes().readableRootsOf(seen.scopes);
  if (roots == std::vector<std::string>{""}) {
    roots = topLevels(*host);
  }
  for (const std::string& root : roots) {
    seen.roots.push_back(datalayer::walkNodes(asking, root));
  }
}

}  // namespace

NodesResult lookAtNodes(const NodesOptions& options) {
  std::optional<observe::NodesSeen> seen;
  PlayResult play =
      playInSession(options.play, [&](Session& session, const scenario::Scenario& scenario, PlayResult& result) {
        addObjects(session.runtime(), scenario);
        observe::NodesSeen view;
        view.file = scenario.file;
        view.isUnrestricted = !options.scopes;
        view.scopes = options.scopes.value_or(std::vector<std::string>());
        view.knownScopes = session.dataLayer().scopes().identifiers();
        view.rights = session.dataLayer().scopes().rightsOf(view.scopes);
        for (const scenario::SignalName& named : scenario.signals) {
          view.names[observe::signalAddress(named.id)] = named.name;
        }
        if (result.failure = findUnknown(view); !result.failure.empty()) {
          result.outcome = Outcome::BAD_INPUT;
          return;
        }
        look(session.dataLayer(), view);
        seen = std::move(view);
      });
  return {std::move(play), std::move(seen)};
}

}  // namespace motion::host::run
