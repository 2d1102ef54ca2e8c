// The provider of the component's nodes: how it comes up, waits and goes down, and what each failure leads to.
#include <fmt/format.h>

#include <chrono>

#include "conformance/check.h"
#include "conformance/expect.h"
#include "conformance/node_answer.h"
#include "conformance/subject.h"
#include "conformance/trace_texts.h"

namespace motion::conformance {
namespace {

using comm::datalayer::Variant;
using Clock = std::chrono::steady_clock;

constexpr std::uint32_t TIMEOUT = 0x8001000F;
const std::string NODE_LIST = "datalayer/nodes";
const Texts START_CALLS = {"dataLayer.createProvider(inproc:///tmp/datalayer/backend)",
                           "provider.registerNode(" + SIGNALS_FOLDER + ")",
                           "provider.registerNode(" + SIGNAL_NODE + ")",
                           "provider.registerType(scopes/motion)",
                           "provider.start()",
                           "dataLayer.createClient(inproc:///tmp/datalayer/frontend)",
                           "client.readSync(datalayer/nodes)",
                           "client.destroyed()"};
const Texts GIVEN_UP = {"provider.unregisterType(scopes/motion)", "provider.destroyed()"};
const std::string SCOPES_MADE =
    infoOf("provider_mgr", "registerScopes", "Creation of scopes at datalayer/security/scopes succeeded");
const std::string SCOPES_DELETED = infoOf("provider_mgr", "unregisterScopes", "Deletion of scopes succeeded");

/// The calls that belong to the provider of the nodes: those between the opening of the memories and their closing.
Texts ownCalls(const Subject& subject) {
  Texts calls;
  bool isInside = false;
  for (const auto& call : subject.host.calls.of({"dataLayer.", "provider.", "client."})) {
    if (call.starts_with("dataLayer.openMemory")) {
      isInside = true;
    } else if (call.starts_with("dataLayer.closeMemory")) {
      isInside = false;
    } else if (isInside) {
      calls.push_back(call);
    }
  }
  return calls;
}

Texts joined(Texts first, const Texts& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

Texts startCalls(std::size_t count) {
  return {START_CALLS.begin(), START_CALLS.begin() + static_cast<std::ptrdiff_t>(count)};
}

void startOrder(const Bundle& bundle) {
  Subject subject(bundle);
  subject.giveEverything();
  expectEqual("status of start", subject.component().start(), 0);
  expectEqual("calls", ownCalls(subject), START_CALLS);
  expectEqual("traces", subject.tracesOf("provider_mgr"), Texts{SCOPES_MADE});
  expectTrue("the provider is started", subject.host.dataLayer.m_lastProvider->isStarted());
}

void nodes(const Bundle& bundle) {
  Subject subject(bundle);
  subject.start();
  expectEqual("number of nodes", subject.host.dataLayer.m_lastProvider->m_nodes.size(), 2U);
  expectTrue("folder and signals have nodes of their own",
             &nodeOf(subject, SIGNALS_FOLDER) != &nodeOf(subject, SIGNAL_NODE));
}

void stopOrder(const Bundle& bundle) {
  Subject subject(bundle);
  subject.start();
  subject.remove(Service::MOTION_DATA);
  expectEqual("calls", subject.host.calls.of({"provider."}), GIVEN_UP);
  expectEqual("traces", subject.tracesOf("provider_mgr"), Texts{SCOPES_DELETED});
}

/// Starts in vain; then starts with success.
void expectFailure(Subject& subject, const Texts& calls, const Texts& traces) {
  subject.giveEverything();
  subject.forget();
  expectEqual("status of start", subject.component().start(), 70001);
  expectEqual("calls", ownCalls(subject), calls);
  expectEqual("traces", subject.tracesOf("provider_mgr"), traces);
  subject.expectNothingLeft();
  subject.host.calls.failNothing();
  subject.host.listNodes();
  expectEqual("status of the next start", subject.component().start(), 0);
}

void noProvider(const Bundle& bundle) {
  Subject subject(bundle);
  subject.host.calls.fail("dataLayer.createProvider", TIMEOUT, 2);
  expectFailure(subject, startCalls(1), {errorOf("provider_mgr", "run", "DlFactory does not provide a provider")});
}

void nodeRefused(const Bundle& bundle, int nth, const std::string& address) {
  Subject subject(bundle);
  subject.host.calls.fail("provider.registerNode", TIMEOUT, nth);
  const auto text = fmt::format("Failed to register the node address {} with error DL_TIMEOUT", address);
  expectFailure(subject, joined(startCalls(static_cast<std::size_t>(nth) + 1), GIVEN_UP),
                {errorOf("provider_mgr", "run", text), SCOPES_DELETED});
}

void startRefused(const Bundle& bundle) {
  Subject subject(bundle);
  subject.host.calls.fail("provider.start", TIMEOUT, 2);
  expectFailure(subject, joined(startCalls(5), GIVEN_UP), {SCOPES_MADE, SCOPES_DELETED});
}

void noClient(const Bundle& bundle) {
  Subject subject(bundle);
  subject.host.calls.fail("dataLayer.createClient", TIMEOUT);
  expectFailure(subject, joined(startCalls(6), GIVEN_UP), {SCOPES_MADE, SCOPES_DELETED});
}

void readFails(const Bundle& bundle) {
  Subject subject(bundle);
  subject.host.calls.fail("client.readSync", TIMEOUT);
  expectFailure(subject, joined(START_CALLS, GIVEN_UP), {SCOPES_MADE, SCOPES_DELETED});
}

void noListOfTexts(const Bundle& bundle, const Variant& value) {
  Subject subject(bundle);
  subject.host.dataLayer.m_clientValues[NODE_LIST] = value;
  expectFailure(subject, joined(START_CALLS, GIVEN_UP), {SCOPES_MADE, SCOPES_DELETED});
}

/// The first answer does not list the nodes, the second does.
void asksAgain(const Bundle& bundle, const Variant::Strings& first) {
  Subject subject(bundle);
  subject.host.dataLayer.m_clientValues[NODE_LIST] = Variant(first);
  int reads = 0;
  const auto reading = subject.host.calls.onCall("client.readSync", [&] {
    if (++reads == 2) {
      subject.host.listNodes();
    }
  });
  subject.giveEverything();
  const auto begin = Clock::now();
  expectEqual("status of start", subject.component().start(), 0);
  expectEqual("reads of the list", reads, 2);
  expectTrue("50 ms lie between the reads", Clock::now() - begin >= std::chrono::milliseconds(50));
  expectEqual("clients made", subject.host.calls.count("dataLayer.createClient"), 1);
}

void listedAmongOthers(const Bundle& bundle) {
  Subject subject(bundle);
  subject.host.dataLayer.m_clientValues[NODE_LIST] =
      Variant(Variant::Strings{"z", SIGNAL_NODE, "a", SIGNALS_FOLDER, SIGNAL_NODE, "motion/state"});
  subject.giveEverything();
  expectEqual("status of start", subject.component().start(), 0);
  expectEqual("reads of the list", subject.host.calls.count("client.readSync"), 1);
}

void failsWhileWaiting(const Bundle& bundle) {
  Subject subject(bundle);
  subject.host.dataLayer.m_clientValues[NODE_LIST] = Variant(Variant::Strings{SIGNALS_FOLDER});
  subject.host.calls.fail("client.readSync", TIMEOUT, 3);
  subject.giveEverything();
  expectEqual("status of start", subject.component().start(), 70001);
  expectEqual("reads of the list", subject.host.calls.count("client.readSync"), 3);
}

void waitsTenSeconds(const Bundle& bundle) {
  Subject subject(bundle);
  subject.host.dataLayer.m_clientValues[NODE_LIST] = Variant(Variant::Strings{SIGNALS_FOLDER});
  subject.giveEverything();
  const auto begin = Clock::now();
  expectEqual("status of start", subject.component().start(), 70001);
  const auto duration = Clock::now() - begin;
  expectEqual("reads of the list", subject.host.calls.count("client.readSync"), 200);
  expectTrue("the reads are 50 ms apart", duration >= 200 * std::chrono::milliseconds(50));
  auto expected = startCalls(6);
  expected.insert(expected.end(), 200, START_CALLS[6]);
  expected.push_back(START_CALLS[7]);
  expectEqual("calls", ownCalls(subject), joined(expected, GIVEN_UP));
  expectEqual("traces", subject.tracesOf("provider_mgr"), Texts{SCOPES_MADE, SCOPES_DELETED});
  subject.expectNothingLeft();
}

}  // namespace

Checks providerChecks() {
  constexpr std::chrono::seconds LONG{60};
  const auto refused = [](int nth, const std::string& address) {
    return [=](const Bundle& bundle) { nodeRefused(bundle, nth, address); };
  };
  const auto noList = [](const Variant& value) { return [value](const Bundle& bundle) { noListOfTexts(bundle, value); }; };
  const auto again = [](const Variant::Strings& first) {
    return [first](const Bundle& bundle) { asksAgain(bundle, first); };
  };
  return {
      {"provider.start-order", "nodes and scopes are registered, the provider is started, and the list of nodes is read",
       startOrder},
      {"provider.nodes", "there are a node for the folder and one for all signals", nodes},
      {"provider.stop-order",
       "the scopes are withdrawn and the provider is deleted; it is not stopped, no node is unregistered", stopOrder},
      {"provider.no-provider", "without a provider the start fails with its text", noProvider},
      {"provider.folder-refused", "a refused folder ends the start with its text, and no other node is tried",
       refused(1, SIGNALS_FOLDER)},
      {"provider.signals-refused", "a refused node of the signals ends the start with its text", refused(2, SIGNAL_NODE)},
      {"provider.start-refused", "a provider that does not start is given up without waiting", startRefused},
      {"provider.no-client", "without a client for the list of nodes the start fails", noClient},
      {"provider.read-fails", "a list of nodes that cannot be read ends the waiting", readFails},
      {"provider.list-is-a-text", "a list of nodes that is one text ends the waiting", noList(Variant("a text"))},
      {"provider.list-is-empty", "a list of nodes without a value ends the waiting", noList(Variant())},
      {"provider.asks-again", "a list without the node of the signals is read again 50 ms later", again({SIGNALS_FOLDER})},
      {"provider.folder-not-listed", "a list without the folder is read again", again({SIGNAL_NODE})},
      {"provider.case-matters", "addresses in other letters are others",
       again({SIGNALS_FOLDER, "Motion/state/functions/kavo/signals/*"})},
      {"provider.wildcard-as-written", "the address with the wildcard has to be listed as it is",
       again({SIGNALS_FOLDER, SIGNALS_FOLDER + "/00", SIGNALS_FOLDER + "/99"})},
      {"provider.nothing-listed", "an empty list is read again", again({})},
      {"provider.listed-among-others", "order and other nodes make no difference", listedAmongOthers},
      {"provider.fails-while-waiting", "a read that fails later ends the waiting, too", failsWhileWaiting, LONG},
      {"provider.waits-ten-seconds", "nodes that never appear are waited for in 200 reads, 50 ms apart", waitsTenSeconds,
       LONG},
  };
}

}  // namespace motion::conformance
