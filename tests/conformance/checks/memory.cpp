// The real-time memories: how they are made, described, cleared and taken back.
#include <fmt/format.h>

#include <memory>

#include "conformance/check.h"
#include "conformance/checks/frame_parts.h"
#include "conformance/expect.h"
#include "conformance/subject.h"
#include "conformance/trace_texts.h"
#include "schemas/datalayer/memory_map_generated.h"

namespace motion::conformance {
namespace {

using comm::datalayer::MemoryMap;
using comm::datalayer::Variable;

void creationOrder(const Bundle& bundle) {
  Subject subject(bundle);
  subject.giveEverything();
  subject.forget();
  expectEqual("status of start", subject.component().start(), 0);
  const auto calls = subject.host.calls.of({"dataLayer.", "memory.", "provider.start"});
  const Texts expected = {"dataLayer.createProvider(inproc:///tmp/datalayer/backend)",
                          fmt::format("dataLayer.createMemorySync({}, 100, 1)", SIGNALS_IN),
                          fmt::format("dataLayer.createMemorySync({}, 100, 2)", SIGNALS_OUT),
                          "memory.setMemoryMap signals_in()",
                          "memory.setMemoryMap signals_out()",
                          "memory.beginAccess signals_in(0)",
                          "memory.endAccess signals_in()",
                          "provider.start()"};
  expectTrue("there are as many calls", calls.size() >= expected.size());
  expectEqual("calls", Texts(calls.begin(), calls.begin() + static_cast<std::ptrdiff_t>(expected.size())), expected);
  expectEqual("traces", subject.tracesOf("rt_signals"), Texts{});
}

void ownProvider(const Bundle& bundle) {
  Subject subject(bundle);
  const test::FakeProvider* first = nullptr;
  const auto mapping =
      subject.host.calls.onCall("memory.setMemoryMap signals_out", [&] { first = subject.host.dataLayer.m_lastProvider; });
  subject.start();
  expectTrue("the memories belong to the provider made for them", subject.host.dataLayer.m_memoryProvider == first);
  expectTrue("the nodes have another provider", subject.host.dataLayer.m_lastProvider != first);
  expectTrue("the provider of the memories is started", first->isStarted());
}

void cleared(const Bundle& bundle) {
  Subject subject(bundle);
  subject.host.dataLayer.m_initialByte = 0xAB;
  subject.start();
  expectTrue("signals_in is all zero", subject.bytes(SIGNALS_IN) == std::vector<std::uint8_t>(NUMBER_OF_SIGNALS, 0));
  expectTrue("signals_out is as it was made",
             subject.bytes(SIGNALS_OUT) == std::vector<std::uint8_t>(NUMBER_OF_SIGNALS, 0xAB));
}

void allResetAtFirst(const Bundle& bundle) {
  Subject subject(bundle);
  subject.start();
  for (std::uint32_t i = 0; i < NUMBER_OF_SIGNALS; ++i) {
    expectFalse(fmt::format("signal {} after the start", i), subject.isSet(i));
  }
}

/// The bytes of a memory's map.
std::vector<std::uint8_t> mapOf(const Subject& subject, const char* address) {
  const auto& map = subject.host.dataLayer.m_memories.at(address)->map;
  expectEqual("variant type of the map", static_cast<std::uint32_t>(map.getType()), 26U);
  const auto buffer = map.getFlatBuffer();
  return {buffer.begin(), buffer.end()};
}

/// The verified map in these bytes.
const MemoryMap& verified(const std::vector<std::uint8_t>& bytes) {
  flatbuffers::Verifier verifier(bytes.data(), bytes.size());
  expectTrue("the map is a valid buffer", comm::datalayer::VerifyMemoryMapBuffer(verifier));
  return *comm::datalayer::GetMemoryMap(bytes.data());
}

void mapContent(const Bundle& bundle) {
  Subject subject(bundle);
  subject.start();
  const auto bytes = mapOf(subject, SIGNALS_IN);
  const auto& map = verified(bytes);
  expectNotNull("list of variables", map.variables() != nullptr);
  expectEqual("number of variables", map.variables()->size(), NUMBER_OF_SIGNALS);
  for (std::uint32_t i = 0; i < NUMBER_OF_SIGNALS; ++i) {
    const auto* const variable = map.variables()->Get(i);
    const auto name = fmt::format("signal_{:02}", i);
    expectEqual("name", variable->name()->str(), name);
    expectEqual("bit offset of " + name, variable->bitoffset(), 8 * i);
    expectEqual("bit size of " + name, variable->bitsize(), 8U);
    expectEqual("type of " + name, variable->type()->str(), "types/datalayer/uint8");
    expectTrue("the variable is found by its name", map.variables()->LookupByKey(name.c_str()) == variable);
  }
}

void mapWithoutDefaults(const Bundle& bundle) {
  Subject subject(bundle);
  subject.start();
  const auto isStored = [](const auto& table, flatbuffers::voffset_t field) {
    return reinterpret_cast<const flatbuffers::Table*>(&table)->GetOptionalFieldOffset(field) != 0;
  };
  const auto bytes = mapOf(subject, SIGNALS_IN);
  const auto& map = verified(bytes);
  expectEqual("revision", map.revision(), 0U);
  expectFalse("the revision is stored", isStored(map, MemoryMap::VT_REVISION));
  expectFalse("the bit offset of signal 0 is stored", isStored(*map.variables()->Get(0), Variable::VT_BITOFFSET));
  expectTrue("the bit offset of signal 1 is stored", isStored(*map.variables()->Get(1), Variable::VT_BITOFFSET));
}

void sameMap(const Bundle& bundle) {
  Subject subject(bundle);
  subject.start();
  expectTrue("both memories have the same map", mapOf(subject, SIGNALS_IN) == mapOf(subject, SIGNALS_OUT));
}

void secondInitialisation(const Bundle& bundle) {
  Subject subject(bundle);
  subject.start();
  subject.in(3) = 77;
  const auto& host = subject.host;
  const std::unique_ptr<core::framework::IMotionComponent> other(bundle.makeComponent());
  other->setMotionExtIF(&host.extension);
  other->setMotionSysIF(&host.sysIf);
  other->setDataLayerFactory(&subject.host.dataLayer);
  other->setMotionCmdIF(&host.cmdIf);
  other->setMotionCmdIF(&host.cmdIf2);
  other->setMotionSysIF(&host.sysIf2);
  other->setMotionDataIF(&host.dataIf);
  subject.forget();
  std::uint8_t seen = 0;
  const auto cleaningUp = subject.host.calls.onCall("dataLayer.deleteMemorySync", [&] {
    if (host.dataLayer.m_memories.contains(SIGNALS_IN)) {
      seen = subject.in(3);
    }
  });
  expectEqual("status of the second component's start", other->start(), 70001);
  expectEqual("traces", subject.tracesOf("rt_signals"), Texts{errorOf("rt_signals", "initialize", "Already initialized")});
  expectEqual("memories made", subject.host.calls.count("dataLayer.createMemorySync"), 0);
  expectEqual("providers made", subject.host.calls.count("dataLayer.createProvider"), 0);
  expectEqual("accesses", subject.host.calls.of({"memory."}), Texts{});
  expectEqual("a counter until the clean-up", seen, std::uint8_t{77});
}

void terminationOrder(const Bundle& bundle) {
  Subject subject(bundle);
  subject.start();
  subject.remove(Service::MOTION_CMD2);
  expectEqual("calls", subject.host.calls.of({"dataLayer.", "provider.", "memory."}),
              Texts{"dataLayer.deleteMemorySync(signals_out)", "dataLayer.deleteMemorySync(signals_in)", "provider.stop()",
                    "provider.destroyed()"});
  expectEqual("traces", subject.tracesOf("rt_signals"), Texts{});
  subject.forget();
  subject.remove(Service::MOTION_CMD2);
  expectEqual("calls of a second termination", subject.host.calls.of({"dataLayer.", "provider.", "memory."}), Texts{});
}

}  // namespace

Checks memoryChecks() {
  const Checks own = {
      {"memory.creation-order", "the memories are made, described and cleared, and then their provider is started",
       creationOrder},
      {"memory.own-provider", "the memories have a provider of their own", ownProvider},
      {"memory.cleared", "signals_in is cleared, signals_out is not written", cleared},
      {"memory.all-reset-at-first", "after the start every signal is reset", allResetAtFirst},
      {"memory.map", "the map names a counter of 8 bits for each signal, sorted by name", mapContent},
      {"memory.map-without-defaults", "the map does not store what is zero", mapWithoutDefaults},
      {"memory.same-map", "both memories have the same map", sameMap},
      {"memory.already-initialised", "a second component in the process cannot make the memories and does not touch them",
       secondInitialisation},
      {"memory.termination-order",
       "the memories are deleted, signals_out first, then the provider stops and is deleted; once", terminationOrder},
  };
  return together({own, memoryFailureChecks()});
}

}  // namespace motion::conformance
