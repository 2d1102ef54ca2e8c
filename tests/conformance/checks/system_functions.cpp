// The system functions: published into the host's records, and taken back.
#include <fmt/format.h>

#include "conformance/check.h"
#include "conformance/expect.h"
#include "conformance/inside_call.h"
#include "conformance/service_rows.h"
#include "conformance/subject.h"
#include "conformance/trace_texts.h"

namespace motion::conformance {
namespace {

using core::FctResult;

constexpr std::uint32_t OKAY = 0x00100000;
constexpr std::uint32_t NOT_AVAILABLE = 0xF010000E;
constexpr std::uint32_t DL_FAILED = 0x80000001;

std::uint32_t codeOf(FctResult result) {
  return static_cast<std::uint32_t>(result);
}

/// One of the three functions, called through the pointers of one record.
enum class Function { GET, SET, RESET };

/// The pointers of a record, copied.
struct Functions {
  core::SignalFn reset = nullptr;
  core::SignalFn set = nullptr;
  core::GetSignalFn get = nullptr;

  std::uint32_t call(Function function, unsigned int signalId, bool& value) const {
    switch (function) {
      case Function::GET:
        return codeOf(get(nullptr, signalId, value));
      case Function::SET:
        return codeOf(set(nullptr, signalId));
      case Function::RESET:
        return codeOf(reset(nullptr, signalId));
    }
    return 0;
  }
};

Functions ofOldRecord(const Subject& subject) {
  const auto& record = subject.host.sysIf;
  return {record.resetSignal, record.setSignal, record.getSignal};
}

Functions ofSubRecord(const Subject& subject) {
  const auto& record = subject.host.sysSync;
  return {record.resetSignal, record.setSignal, record.getSignal};
}

std::string nameOf(Function function) {
  return function == Function::GET ? "getSignal" : function == Function::SET ? "setSignal" : "resetSignal";
}

std::uint32_t countNothing(void* /*context*/) {
  return 0;
}
FctResult cycleOfNothing(void* /*context*/, double& /*seconds*/) {
  return FctResult::Okay;
}
FctResult abortNothing(void* /*context*/, const char* /*objName*/) {
  return FctResult::Okay;
}

void bothRecords(const Bundle& bundle, Functions (*functionsOf)(const Subject&)) {
  Subject subject(bundle);
  subject.start();
  const auto functions = functionsOf(subject);
  bool value = true;
  subject.in(7) = 40;
  subject.out(7) = 40;
  expectEqual("result of get", functions.call(Function::GET, 7, value), OKAY);
  expectFalse("the signal at first", value);
  expectEqual("result of set", functions.call(Function::SET, 7, value), OKAY);
  expectEqual("counter after set", subject.out(7), std::uint8_t{41});
  expectEqual("result of get", functions.call(Function::GET, 7, value), OKAY);
  expectTrue("the signal after set", value);
  expectEqual("result of reset", functions.call(Function::RESET, 7, value), OKAY);
  expectEqual("counter after reset", subject.out(7), std::uint8_t{40});
  expectEqual("traces", subject.traces(), Texts{});
}

void sameFunctions(const Bundle& bundle) {
  Subject subject(bundle);
  subject.start();
  const auto old = ofOldRecord(subject);
  const auto current = ofSubRecord(subject);
  expectTrue("resetSignal is the same in both records", old.reset == current.reset);
  expectTrue("setSignal is the same in both records", old.set == current.set);
  expectTrue("getSignal is the same in both records", old.get == current.get);
  expectTrue("setSignal is not resetSignal", old.set != old.reset);
}

void contextIsIgnored(const Bundle& bundle) {
  Subject subject(bundle);
  subject.start();
  int something = 0;
  bool value = false;
  for (void* const context : {static_cast<void*>(nullptr), static_cast<void*>(&something)}) {
    expectEqual("result of set", codeOf(subject.host.sysIf.setSignal(context, 3)), OKAY);
    expectEqual("result of get", codeOf(subject.host.sysIf.getSignal(context, 3, value)), OKAY);
    expectTrue("the signal", value);
    expectEqual("result of reset", codeOf(subject.host.sysIf.resetSignal(context, 3)), OKAY);
  }
}

void neighbours(const Bundle& bundle) {
  Subject subject(bundle);
  auto& host = subject.host;
  host.sysIf.context = &host;
  host.sysIf.getObjCount = &countNothing;
  host.sysIf.getCycleTime = &cycleOfNothing;
  host.sysIf.abortCmds = &abortNothing;
  host.sysIf2.context = &host;
  host.sysGeneral = {&countNothing, &cycleOfNothing, &abortNothing};
  const auto expectUntouched = [&host] {
    expectTrue("context of the older record", host.sysIf.context == &host);
    expectTrue("getObjCount of the older record", host.sysIf.getObjCount == &countNothing);
    expectTrue("getCycleTime of the older record", host.sysIf.getCycleTime == &cycleOfNothing);
    expectTrue("abortCmds of the older record", host.sysIf.abortCmds == &abortNothing);
    expectTrue("context of the record", host.sysIf2.context == &host);
    expectTrue("pointers to sub-records", host.sysIf2.general == &host.sysGeneral && host.sysIf2.sync == &host.sysSync);
    expectTrue("getObjCount of the sub-record", host.sysGeneral.getObjCount == &countNothing);
    expectTrue("getCycleTime of the sub-record", host.sysGeneral.getCycleTime == &cycleOfNothing);
    expectTrue("abortCmds of the sub-record", host.sysGeneral.abortCmds == &abortNothing);
  };
  subject.start();
  expectUntouched();
  subject.component().stop();
  expectUntouched();
}

void publishedBeforeTheProvider(const Bundle& bundle) {
  InsideCall inside;
  Subject subject(bundle);
  subject.giveEverything();
  int providers = 0;
  const auto creating = subject.host.calls.onCall("dataLayer.createProvider", [&] {
    inside.look([&] {
      const bool isOwn = ++providers == 2;
      expectEqual("setSignal is published when a provider is made", subject.host.sysIf.setSignal != nullptr, isOwn);
      expectEqual("getSignal of the sub-record is published when a provider is made",
                  subject.host.sysSync.getSignal != nullptr, isOwn);
      expectEqual("open memories when a provider is made", subject.host.dataLayer.m_openUsers, isOwn ? 2 : 0);
    });
  });
  expectEqual("status of start", subject.component().start(), 0);
  expectEqual("providers made", providers, 2);
  inside.expectFine();
}

void takenBack(const Bundle& bundle) {
  Subject subject(bundle);
  subject.start();
  subject.component().stop();
  expectSystemFunctions(subject, false);
  subject.component().stop();
  expectSystemFunctions(subject, false);
}

void replacedFieldsAreCleared(const Bundle& bundle) {
  Subject subject(bundle);
  subject.start();
  const core::SignalFn other = [](void*, unsigned int) { return FctResult::Okay; };
  subject.host.sysIf.setSignal = other;
  subject.host.sysSync.resetSignal = other;
  subject.component().stop();
  expectSystemFunctions(subject, false);
}

void providerGoesFirst(const Bundle& bundle) {
  InsideCall inside;
  Subject subject(bundle);
  subject.start();
  bool isDestroyed = false;
  const auto unregistering = subject.host.calls.onCall("provider.unregisterType", [&] {
    inside.look([&] {
      expectSystemFunctions(subject, true);
      isDestroyed = true;
    });
  });
  const auto closing = subject.host.calls.onCall("dataLayer.closeMemory", [&] {
    inside.look([&] {
      expectTrue("the provider is gone when the store closes", isDestroyed);
      expectNull("setSignal when the store closes", subject.host.sysIf.setSignal == nullptr);
      expectNull("getSignal of the sub-record when the store closes", subject.host.sysSync.getSignal == nullptr);
    });
  });
  subject.remove(Service::MOTION_SYS);
  expectEqual("order of the teardown", subject.host.calls.all(),
              Texts{"provider.unregisterType(scopes/motion)", "provider.destroyed()", "dataLayer.closeMemory(signals_out)",
                    "dataLayer.closeMemory(signals_in)"});
  inside.expectFine();
}

void invalidIdIsPassedOn(const Bundle& bundle, Function function) {
  Subject subject(bundle);
  subject.start();
  bool value = true;
  expectEqual("result", ofOldRecord(subject).call(function, 100, value), 0xF010000CU);
  expectTrue("the value stays", value);
}

void failureIsPassedOn(const Bundle& bundle, Function function) {
  Subject subject(bundle);
  subject.start();
  subject.host.calls.fail("memory.beginAccess signals_out", DL_FAILED);
  bool value = true;
  expectEqual("result", ofSubRecord(subject).call(function, 1, value), 0xF0100001U);
  expectTrue("the value stays", value);
}

void oldPointer(const Bundle& bundle, Function function) {
  Subject subject(bundle);
  subject.start();
  const auto functions = ofOldRecord(subject);
  subject.component().stop();
  subject.forget();
  bool value = true;
  expectEqual("result", functions.call(function, 1, value), NOT_AVAILABLE);
  expectTrue("the value stays", value);
  expectEqual("traces", subject.traces(),
              Texts{errorOf("motion_kavo_sys", nameOf(function), "g_signals is null! MotionKavoSys not initialized?")});
  expectEqual("calls into the host", subject.host.calls.all(), Texts{});
}

void providerDoesNotRun(const Bundle& bundle) {
  Subject subject(bundle);
  subject.host.calls.fail("provider.start", DL_FAILED, 2);
  subject.giveEverything();
  subject.forget();
  expectEqual("status of start", subject.component().start(), 70001);
  expectEqual("traces of the system functions", subject.tracesOf("motion_kavo_sys"), Texts{});
  Texts own = {errorOf("motion_kavo_cmp", "bundleStart", "MotionKavoSys::initialize() failed"),
               errorOf("motion_kavo_cmp", "bundleStart", "Call bundleStop as to cleanup after error"),
               errorOf("motion_kavo_cmp", "start", "Motion.Kavo failed to start - return with error code")};
  expectEqual("errors", subject.traces("Error"), own);
  subject.expectNothingLeft();
}

void commandsGoDownWithThem(const Bundle& bundle) {
  Subject subject(bundle);
  subject.host.calls.fail("provider.start", DL_FAILED, 2);
  subject.giveEverything();
  expectEqual("status of start", subject.component().start(), 70001);
  Texts after;
  bool isAfter = false;
  for (const auto& trace : subject.traces()) {
    isAfter = isAfter || trace.find("MotionKavoSys::initialize() failed") != std::string::npos;
    if (isAfter) {
      after.push_back(trace);
    }
  }
  Texts expected = {errorOf("motion_kavo_cmp", "bundleStart", "MotionKavoSys::initialize() failed")};
  const auto unregistered = commandTerminationTraces();
  expected.insert(expected.end(), unregistered.begin(), unregistered.end());
  expected.push_back(errorOf("motion_kavo_cmp", "bundleStart", "Call bundleStop as to cleanup after error"));
  expected.push_back(errorOf("motion_kavo_cmp", "start", "Motion.Kavo failed to start - return with error code"));
  expectEqual("traces from the failure on", after, expected);
}

Checks functionChecks() {
  struct Kind {
    const char* name;
    const char* sentence;
    void (*run)(const Bundle&, Function);
  };
  static constexpr Kind KINDS[] = {
      {"invalid-id", "answers 0xF010000C for a signal that does not exist", invalidIdIsPassedOn},
      {"failure", "answers 0xF0100001 when a memory cannot be accessed", failureIsPassedOn},
      {"old-pointer", "called through a pointer kept over a stop answers 0xF010000E with its trace", oldPointer},
  };
  Checks checks;
  for (const auto function : {Function::GET, Function::SET, Function::RESET}) {
    for (const auto& kind : KINDS) {
      checks.push_back({fmt::format("system-functions.{}-{}", kind.name, nameOf(function)),
                        fmt::format("{} {}", nameOf(function), kind.sentence),
                        [run = kind.run, function](const Bundle& bundle) { run(bundle, function); }});
    }
  }
  return checks;
}

}  // namespace

Checks systemFunctionChecks() {
  const Checks own = {
      {"system-functions.older-record", "reset, set and get work through the older record",
       [](const Bundle& bundle) { bothRecords(bundle, ofOldRecord); }},
      {"system-functions.sub-record", "reset, set and get work through the record's sub-record",
       [](const Bundle& bundle) { bothRecords(bundle, ofSubRecord); }},
      {"system-functions.same-in-both", "both records hold the same three functions", sameFunctions},
      {"system-functions.context", "the context makes no difference", contextIsIgnored},
      {"system-functions.neighbours", "no other field of the records is touched", neighbours},
      {"system-functions.before-the-provider",
       "the store is open and the functions are published before the provider is made", publishedBeforeTheProvider},
      {"system-functions.taken-back", "after a stop the records hold null, and after another one, too", takenBack},
      {"system-functions.fields-cleared", "a field is cleared whatever stands in it", replacedFieldsAreCleared},
      {"system-functions.provider-goes-first", "the provider goes down first, then the functions, then the store",
       providerGoesFirst},
      {"system-functions.provider-does-not-run", "a provider that does not run fails the start and leaves nothing",
       providerDoesNotRun},
      {"system-functions.commands-go-down", "when they fail to start, the commands go down before the general clean-up",
       commandsGoDownWithThem},
  };
  return together({own, functionChecks()});
}

}  // namespace motion::conformance
