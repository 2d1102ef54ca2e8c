// The signals as the system functions see and change them.
#include <fmt/format.h>

#include <algorithm>
#include <thread>

#include "conformance/check.h"
#include "conformance/expect.h"
#include "conformance/subject.h"
#include "conformance/trace_texts.h"

namespace motion::conformance {
namespace {

constexpr std::uint32_t OKAY = 0x00100000;
constexpr std::uint32_t NOT_OKAY = 0xF0100001;
constexpr std::uint32_t INVALID = 0xF010000C;
constexpr std::uint32_t TIMEOUT = 0x8001000F;
const std::string RT_DATA = "motion/state/functions/kavo/rt-data/";
const Texts ACCESS = {"memory.beginAccess signals_out(0)", "memory.beginAccess signals_in(0)",
                      "memory.endAccess signals_in()", "memory.endAccess signals_out()"};

std::uint32_t get(Subject& subject, unsigned int signalId, bool& value) {
  return static_cast<std::uint32_t>(subject.host.sysIf.getSignal(nullptr, signalId, value));
}
std::uint32_t set(Subject& subject, unsigned int signalId) {
  return static_cast<std::uint32_t>(subject.host.sysIf.setSignal(nullptr, signalId));
}
std::uint32_t reset(Subject& subject, unsigned int signalId) {
  return static_cast<std::uint32_t>(subject.host.sysIf.resetSignal(nullptr, signalId));
}

/// A function in a form in which all three are alike.
struct Function {
  const char* name;
  std::uint32_t (*call)(Subject& subject, unsigned int signalId, bool& value);
};
constexpr Function FUNCTIONS[] = {
    {"get", [](Subject& subject, unsigned int signalId, bool& value) { return get(subject, signalId, value); }},
    {"set", [](Subject& subject, unsigned int signalId, bool& /*value*/) { return set(subject, signalId); }},
    {"reset", [](Subject& subject, unsigned int signalId, bool& /*value*/) { return reset(subject, signalId); }},
};

std::string error(const std::string& function, const std::string& text) {
  return errorOf("signals", function, text);
}

/// Throws a Mismatch unless every byte but that of one signal is as in the copy.
void expectOthersUntouched(Subject& subject, std::uint32_t signalId, const std::vector<std::uint8_t>& in,
                           const std::vector<std::uint8_t>& out) {
  expectTrue("signals_in is untouched", subject.bytes(SIGNALS_IN) == in);
  for (std::uint32_t i = 0; i < NUMBER_OF_SIGNALS; ++i) {
    if (i != signalId) {
      expectEqual(fmt::format("output counter of signal {}", i), subject.out(i), out[i]);
    }
  }
}

void opensBoth(const Bundle& bundle) {
  Subject subject(bundle);
  subject.giveEverything();
  expectEqual("status of start", subject.component().start(), 0);
  expectEqual("memories opened", subject.host.calls.of({"dataLayer.openMemory"}),
              Texts{"dataLayer.openMemory(" + RT_DATA + "signals_out)", "dataLayer.openMemory(" + RT_DATA + "signals_in)"});
  subject.forget();
  subject.component().stop();
  expectEqual("memories closed", subject.host.calls.of({"dataLayer.closeMemory"}),
              Texts{"dataLayer.closeMemory(signals_out)", "dataLayer.closeMemory(signals_in)"});
}

void openFails(const Bundle& bundle, int nth) {
  Subject subject(bundle);
  subject.host.calls.fail("dataLayer.openMemory", TIMEOUT, nth);
  subject.giveEverything();
  subject.forget();
  expectEqual("status of start", subject.component().start(), 0);
  expectEqual("traces", subject.tracesOf("signals"), Texts{error("Signals", "Failed to open memory to real-time signals")});
  expectEqual("memories that were tried", subject.host.calls.count("dataLayer.openMemory"), nth);
  subject.forget();
  subject.component().stop();
  expectEqual("memories closed", subject.host.calls.count("dataLayer.closeMemory"), nth - 1);
}

void notOpen(const Bundle& bundle, const Function& function) {
  for (const int nth : {1, 2}) {
    Subject subject(bundle);
    subject.host.calls.fail("dataLayer.openMemory", TIMEOUT, nth);
    subject.start();
    bool value = true;
    expectEqual("result", function.call(subject, 100, value), NOT_OKAY);
    expectTrue("the value stays", value);
    expectEqual("traces", subject.traces(),
                Texts{error("beginAccess", "Failed to open rt-dataLayer memory during construction")});
    expectEqual("calls", subject.host.calls.all(), Texts{});
  }
}

void wrongId(const Bundle& bundle, const Function& function, unsigned int signalId, const std::string& text) {
  Subject subject(bundle);
  subject.start();
  bool value = true;
  expectEqual("result", function.call(subject, signalId, value), INVALID);
  expectTrue("the value stays", value);
  expectEqual("traces", subject.traces(), Texts{error("beginAccess", text)});
  expectEqual("calls", subject.host.calls.all(), Texts{});
}

void lastId(const Bundle& bundle, const Function& function) {
  Subject subject(bundle);
  subject.start();
  bool value = false;
  for (const unsigned int signalId : {0U, 99U}) {
    expectEqual("result", function.call(subject, signalId, value), OKAY);
  }
  expectEqual("traces", subject.traces(), Texts{});
}

void accessOrder(const Bundle& bundle, const Function& function) {
  Subject subject(bundle);
  subject.start();
  bool value = false;
  expectEqual("result", function.call(subject, 5, value), OKAY);
  expectEqual("accesses", subject.host.calls.all(), ACCESS);
}

/// The accesses that a function makes when that operation fails, and what it answers and traces then.
struct AccessFailure {
  const char* name;
  const char* sentence;
  const char* operation;
  std::uint32_t result;
  Texts accesses;
  std::string trace;
};

const std::vector<AccessFailure>& accessFailures() {
  static const std::vector<AccessFailure> all = {
      {"begin-out-fails",
       "an access to signals_out that cannot begin fails it and is traced",
       "memory.beginAccess signals_out",
       NOT_OKAY,
       {ACCESS[0]},
       "Failed to access " + RT_DATA + "signals_out: Error(DL_TIMEOUT)"},
      {"begin-in-fails",
       "an access to signals_in that cannot begin fails it, is traced, and ends the other one",
       "memory.beginAccess signals_in",
       NOT_OKAY,
       {ACCESS[0], ACCESS[1], ACCESS[3]},
       "Failed to access " + RT_DATA + "signals_in: Error(DL_TIMEOUT)"},
      {"end-in-fails",
       "an access to signals_in that cannot end leaves the other one open and counts as success",
       "memory.endAccess signals_in",
       OKAY,
       {ACCESS[0], ACCESS[1], ACCESS[2]},
       ""},
      {"end-out-fails", "an access to signals_out that cannot end counts as success", "memory.endAccess signals_out", OKAY,
       ACCESS, ""},
  };
  return all;
}

void accessFails(const Bundle& bundle, const Function& function, const AccessFailure& failure) {
  Subject subject(bundle);
  subject.start();
  subject.host.calls.fail(failure.operation, TIMEOUT, 1);
  bool value = true;
  subject.in(5) = 9;
  subject.out(5) = 10;
  expectEqual("result", function.call(subject, 5, value), failure.result);
  expectEqual("accesses", subject.host.calls.all(), failure.accesses);
  expectEqual("traces", subject.traces(), failure.trace.empty() ? Texts{} : Texts{error("beginAccess", failure.trace)});
  if (failure.result == NOT_OKAY) {
    expectEqual("output counter", subject.out(5), std::uint8_t{10});
    expectTrue("the value stays", value);
  }
  expectEqual("result of the next call, which needs the lock", function.call(subject, 5, value), OKAY);
}

/// What a function makes of the counters of a signal; it changes nothing else.
void step(const Bundle& bundle, std::uint32_t (*function)(Subject&, std::uint32_t), std::uint8_t in, std::uint8_t out,
          std::uint8_t expected, const Texts& traces) {
  Subject subject(bundle);
  subject.start();
  subject.in(5) = in;
  subject.out(5) = out;
  const auto inBefore = subject.bytes(SIGNALS_IN);
  const auto outBefore = subject.bytes(SIGNALS_OUT);
  expectEqual("result", function(subject, 5), OKAY);
  expectEqual("output counter", subject.out(5), expected);
  expectOthersUntouched(subject, 5, inBefore, outBefore);
  expectEqual("traces", subject.traces(), traces);
}

void setStep(const Bundle& bundle, std::uint8_t in, std::uint8_t out, std::uint8_t expected, bool warns) {
  const auto warning = warningOf("signals", "set",
                                 "Signal(5) might be set by both the system function SetSignal as well as the command "
                                 "SetSignal");
  step(bundle, &set, in, out, expected, warns ? Texts{warning} : Texts{});
}

void resetStep(const Bundle& bundle, std::uint8_t in, std::uint8_t out) {
  step(bundle, &reset, in, out, in, {});
}

void getStep(const Bundle& bundle, std::uint8_t in, std::uint8_t out, bool expected) {
  Subject subject(bundle);
  subject.start();
  subject.in(5) = in;
  subject.out(5) = out;
  bool value = !expected;
  expectEqual("result", get(subject, 5, value), OKAY);
  expectEqual("the signal", value, expected);
  expectEqual("input counter", subject.in(5), in);
  expectEqual("output counter", subject.out(5), out);
}

void setTwice(const Bundle& bundle) {
  Subject subject(bundle);
  subject.start();
  for (int i = 1; i <= 600; ++i) {
    expectEqual("result", set(subject, 99), OKAY);
    expectTrue(fmt::format("the signal after {} sets", i), subject.isSet(99));
  }
  expectEqual("warnings, one for each time around", subject.traces("Warning").size(), 2U);
}

void closeFails(const Bundle& bundle) {
  Subject subject(bundle);
  subject.start();
  subject.host.calls.fail("dataLayer.closeMemory", TIMEOUT);
  subject.component().stop();
  expectEqual("traces", subject.tracesOf("signals"),
              Texts{error("~Signals", "Failed to close  " + RT_DATA + "signals_out: Error(DL_OK)"),
                    error("~Signals", "Failed to close  " + RT_DATA + "ignals_in: Error(DL_OK)")});
}

void oneAtATime(const Bundle& bundle) {
  Subject subject(bundle);
  subject.start();
  constexpr int THREADS = 4;
  constexpr int ROUNDS = 200;
  std::vector<std::thread> threads;
  for (int i = 0; i < THREADS; ++i) {
    threads.emplace_back([&subject] {
      bool value = false;
      for (int round = 0; round < ROUNDS; ++round) {
        for (const auto& function : FUNCTIONS) {
          function.call(subject, 5, value);
        }
      }
    });
  }
  std::ranges::for_each(threads, &std::thread::join);
  const auto calls = subject.host.calls.all();
  expectEqual("number of accesses", calls.size(), ACCESS.size() * THREADS * ROUNDS * 3);
  for (std::size_t i = 0; i < calls.size(); ++i) {
    expectEqual(fmt::format("access {} of calls from several threads", i), calls[i], ACCESS[i % ACCESS.size()]);
  }
}

Checks functionChecks() {
  Checks checks;
  for (const auto& function : FUNCTIONS) {
    const auto add = [&checks, &function](const std::string& name, const std::string& sentence, auto run) {
      checks.push_back({fmt::format("signal-store.{}-{}", function.name, name),
                        fmt::format("{}: {}", function.name, sentence),
                        [run, function](const Bundle& bundle) { run(bundle, function); }});
    };
    add("not-open", "without both memories it answers 0xF0100001, whatever the signal", notOpen);
    add("wrong-id", "signal 100 does not exist",
        [](const Bundle& bundle, const Function& which) { wrongId(bundle, which, 100, "wrong id 100"); });
    add("greatest-id", "the greatest number is no signal",
        [](const Bundle& bundle, const Function& which) { wrongId(bundle, which, 0xFFFFFFFF, "wrong id -1"); });
    add("last-id", "signals 0 and 99 exist", lastId);
    add("access-order", "it accesses signals_out and then signals_in, with revision 0, and ends in reverse", accessOrder);
    for (const auto& failure : accessFailures()) {
      add(failure.name, failure.sentence,
          [failure](const Bundle& bundle, const Function& which) { accessFails(bundle, which, failure); });
    }
  }
  return checks;
}

Checks counterChecks() {
  const auto setTo = [](std::uint8_t in, std::uint8_t out, std::uint8_t expected, bool warns) {
    return [=](const Bundle& bundle) { setStep(bundle, in, out, expected, warns); };
  };
  const auto resetFrom = [](std::uint8_t in, std::uint8_t out) {
    return [=](const Bundle& bundle) { resetStep(bundle, in, out); };
  };
  const auto getOf = [](std::uint8_t in, std::uint8_t out, bool expected) {
    return [=](const Bundle& bundle) { getStep(bundle, in, out, expected); };
  };
  return {
      {"signal-store.set-one-up", "set moves the output counter by one and nothing else", setTo(7, 7, 8, false)},
      {"signal-store.set-of-set", "set of a set signal keeps it set", setTo(7, 8, 9, false)},
      {"signal-store.set-wraps", "set wraps from 255 to 0", setTo(255, 255, 0, false)},
      {"signal-store.set-passes-other-side", "set that would meet the other counter warns and moves by two",
       setTo(8, 7, 9, true)},
      {"signal-store.set-passes-at-255", "passing the other counter wraps, too", setTo(255, 254, 0, true)},
      {"signal-store.set-passes-at-0", "a wrap onto the other counter is passed", setTo(0, 255, 1, true)},
      {"signal-store.set-again-and-again", "a signal that is set stays set however often it is set again", setTwice},
      {"signal-store.reset-of-set", "reset copies the input counter", resetFrom(7, 8)},
      {"signal-store.reset-over-wrap", "reset copies the input counter whatever it is", resetFrom(255, 3)},
      {"signal-store.reset-of-reset", "reset of a reset signal changes nothing", resetFrom(7, 7)},
      {"signal-store.get-set", "a signal is set when its counters differ", getOf(7, 8, true)},
      {"signal-store.get-set-either-way", "it does not matter which counter is greater", getOf(255, 0, true)},
      {"signal-store.get-reset", "a signal is reset when its counters are equal", getOf(200, 200, false)},
  };
}

}  // namespace

Checks signalStoreChecks() {
  const Checks own = {
      {"signal-store.opens-both", "the store opens signals_out and then signals_in, and closes them in this order",
       opensBoth},
      {"signal-store.open-out-fails", "when signals_out cannot be opened signals_in is not tried, and the start goes on",
       [](const Bundle& bundle) { openFails(bundle, 1); }},
      {"signal-store.open-in-fails", "when signals_in cannot be opened the start goes on, and signals_out is closed",
       [](const Bundle& bundle) { openFails(bundle, 2); }},
      {"signal-store.close-fails", "refused closes are traced with the texts known to readers", closeFails},
      {"signal-store.one-at-a-time", "calls from several threads access the memories one after the other", oneAtATime},
  };
  return together({own, counterChecks(), functionChecks()});
}

}  // namespace motion::conformance
