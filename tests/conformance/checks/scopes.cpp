// The access scopes, and the names of data-layer results, which their traces show.
#include <fmt/format.h>

#include "conformance/check.h"
#include "conformance/expect.h"
#include "conformance/subject.h"
#include "conformance/trace_texts.h"
#include "schemas/datalayer/scopes_generated.h"
#include "support/named_results.h"

namespace motion::conformance {
namespace {

using comm::datalayer::Scopes;

constexpr std::uint32_t TIMEOUT = 0x8001000F;
constexpr std::uint32_t FIRST_FAILURE = 0x80000000;

struct ExpectedScope {
  std::string identifier;
  std::string name;
  std::string description;
  Texts lists[4];
};

const std::vector<ExpectedScope>& expectedScopes() {
  static const std::vector<ExpectedScope> all = {
      {"motion.view",
       "Motion view",
       "Read access to motion related state and configuration datalayer nodes",
       {{"motion/state/**"}, {}, {}, {}}},
      {"motion.operate",
       "Motion operate",
       "Read access to motion related state and configuration datalayer nodes, execute motion commands with current "
       "configuration",
       {{"motion/state/**"}, {"motion/state/functions/kavo/signals/*"}, {}, {}}},
      {"motion.manage",
       "Motion manage",
       "Full access for motion: Read and write access to all motion related datalayer nodes, execute motion commands",
       {{}, {}, {}, {"motion/**"}}},
  };
  return all;
}

/// The scopes that a started component has registered.
const Scopes& registeredScopes(const Subject& subject) {
  const auto& types = subject.host.dataLayer.m_lastProvider->m_types;
  const auto found = types.find("scopes/motion");
  expectNotNull("what is registered at scopes/motion", found != types.end());
  expectEqual("variant type", static_cast<std::uint32_t>(found->second.getType()), 26U);
  const auto buffer = found->second.getFlatBuffer();
  flatbuffers::Verifier verifier(buffer.data(), buffer.size());
  expectTrue("the scopes are a valid buffer", comm::datalayer::VerifyScopesBuffer(verifier));
  return *comm::datalayer::GetScopes(buffer.data());
}

Texts textsOf(const flatbuffers::Vector<flatbuffers::Offset<flatbuffers::String>>* list) {
  Texts texts;
  if (list != nullptr) {
    for (const auto* const text : *list) {
      texts.push_back(text->str());
    }
  }
  return texts;
}

void scope(const Bundle& bundle, std::size_t index) {
  Subject subject(bundle);
  subject.start();
  const auto& scopes = registeredScopes(subject);
  expectTrue("there are enough scopes", scopes.scopes() != nullptr && scopes.scopes()->size() > index);
  const auto& found = *scopes.scopes()->Get(static_cast<flatbuffers::uoffset_t>(index));
  const auto& expected = expectedScopes()[index];
  expectEqual("identifier", found.identifier()->str(), expected.identifier);
  expectEqual("name", found.name()->str(), expected.name);
  expectEqual("description", found.description()->str(), expected.description);
  expectEqual("addresses that may be read", textsOf(found.permissionsR()), expected.lists[0]);
  expectEqual("addresses that may be read and written", textsOf(found.permissionsRW()), expected.lists[1]);
  expectEqual("addresses that may be used", textsOf(found.permissionsX()), expected.lists[2]);
  expectEqual("addresses with full access", textsOf(found.permissionsRWX()), expected.lists[3]);
}

void three(const Bundle& bundle) {
  Subject subject(bundle);
  subject.start();
  expectEqual("number of scopes", registeredScopes(subject).scopes()->size(), 3U);
  expectEqual("number of things registered", subject.host.dataLayer.m_lastProvider->m_types.size(), 1U);
}

void betweenNodesAndStart(const Bundle& bundle) {
  Subject subject(bundle);
  bool wasStarted = true;
  std::size_t nodes = 0;
  const auto registering = subject.host.calls.onCall("provider.registerType", [&] {
    wasStarted = subject.host.dataLayer.m_lastProvider->isStarted();
    nodes = subject.host.dataLayer.m_lastProvider->m_nodes.size();
  });
  subject.start();
  expectEqual("nodes registered before the scopes", nodes, 2U);
  expectFalse("the provider is started before the scopes", wasStarted);
}

void traced(const Bundle& bundle) {
  Subject subject(bundle);
  subject.giveEverything();
  expectEqual("status of start", subject.component().start(), 0);
  expectEqual("traces of the start", subject.tracesOf("provider_mgr"),
              Texts{infoOf("provider_mgr", "registerScopes", "Creation of scopes at datalayer/security/scopes succeeded")});
  subject.forget();
  subject.component().stop();
  expectEqual("traces of the stop", subject.tracesOf("provider_mgr"),
              Texts{infoOf("provider_mgr", "unregisterScopes", "Deletion of scopes succeeded")});
}

void refused(const Bundle& bundle, std::uint32_t code, const std::string& name) {
  Subject subject(bundle);
  subject.host.calls.fail("provider.registerType", code);
  subject.giveEverything();
  expectEqual("status of start", subject.component().start(), 0);
  const auto text = fmt::format("Creation of scopes at datalayer/security/scopes failed : '{}'", name);
  expectEqual("traces", subject.tracesOf("provider_mgr"), Texts{errorOf("provider_mgr", "registerScopes", text)});
}

void refusedAndGone(const Bundle& bundle) {
  Subject subject(bundle);
  subject.host.calls.fail("provider.registerType", TIMEOUT);
  subject.start();
  expectTrue("the provider goes on", subject.host.dataLayer.m_lastProvider->isStarted());
  subject.component().stop();
  expectEqual("withdrawals", subject.host.calls.count("provider.unregisterType"), 1);
}

void notWithdrawn(const Bundle& bundle, std::uint32_t code, const std::string& name) {
  Subject subject(bundle);
  subject.start();
  subject.host.calls.fail("provider.unregisterType", code);
  expectEqual("status of stop", subject.component().stop(), 0);
  const auto text = fmt::format("Deletion of scopes failed: '{}'", name);
  expectEqual("traces", subject.tracesOf("provider_mgr"), Texts{errorOf("provider_mgr", "unregisterScopes", text)});
  subject.expectNothingLeft();
}

/// Around those that have a name.
constexpr std::uint32_t RESULTS_WITHOUT_NAME[] = {0x80010008, 0x8001001C, 0x80050001, 0x80000000};

}  // namespace

Checks scopeChecks() {
  Checks checks = {
      {"scopes.three", "three scopes are registered in one piece at scopes/motion", three},
      {"scopes.between-nodes-and-start", "the scopes are registered after the nodes and before the provider is started",
       betweenNodesAndStart},
      {"scopes.traced", "creation and deletion of the scopes are traced", traced},
      {"scopes.refused", "a provider that refuses the scopes is traced, and goes on until the stop", refusedAndGone},
      {"scopes.not-withdrawn", "scopes that cannot be withdrawn are traced, and the stop goes on",
       [](const Bundle& bundle) { notWithdrawn(bundle, TIMEOUT, "DL_TIMEOUT"); }},
      {"scopes.other-success-created", "a result that is no failure counts as success",
       [](const Bundle& bundle) {
         Subject subject(bundle);
         subject.host.calls.fail("provider.registerType", 0x00000002);
         subject.giveEverything();
         expectEqual("status of start", subject.component().start(), 0);
         expectEqual("errors", subject.traces("Error"), Texts{});
       }},
  };
  for (std::size_t i = 0; i < expectedScopes().size(); ++i) {
    checks.push_back({"scopes." + expectedScopes()[i].identifier,
                      "the scope has its name, its description and its addresses in their lists",
                      [i](const Bundle& bundle) { scope(bundle, i); }});
  }
  const auto add = [&checks](std::uint32_t code, const std::string& name) {
    checks.push_back({fmt::format("scopes.result-{:08X}", code),
                      fmt::format("traces call the data-layer result 0x{:08X} {}", code, name),
                      [code, name](const Bundle& bundle) { refused(bundle, code, name); }});
  };
  for (const auto& result : test::NAMED_RESULTS) {
    if (result.code >= FIRST_FAILURE) {  // traces show no others
      add(result.code, result.name);
    }
  }
  for (const std::uint32_t code : RESULTS_WITHOUT_NAME) {
    add(code, "unknown");
  }
  return checks;
}

}  // namespace motion::conformance
