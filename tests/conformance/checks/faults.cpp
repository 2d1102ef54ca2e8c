// What becomes of a component whose host fails: each operation once, at each place where it is called, and each allocation
// once.
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <map>
#include <string>
#include <string_view>

#include "conformance/check.h"
#include "conformance/expect.h"
#include "conformance/full_play.h"
#include "conformance/runner.h"
#include "conformance/subject.h"
#include "support/fake_allocation.h"

namespace motion::conformance {
namespace {

constexpr std::int32_t START_FAILED = 70001;
/// A failure in every family of results.
constexpr std::uint32_t SOME_FAILURE = 0xF0100001;

/// Operations without which a start goes on, because the component can do without their success.
constexpr std::array WITHOUT_EFFECT_ON_START = {
    "ext.getSectionMgr",    "sectionMgr.getSection", "idMgr.addID",
    "dataLayer.openMemory", "memory.endAccess",      "provider.registerType",
};
/// Operations whose failure nobody hears of.
constexpr std::array SILENT = {
    "memory.endAccess",                // the access is over in any case
    "memory.beginAccess signals_out",  // a job that cannot read it takes the counter for 0
    "objFactory.unregisterObj",
    "cmdFactory.unregisterCmd",
    "optionFactory.unregisterCmdOption",  // the walk goes on
};

/// Operations by which a stop gives back what was registered; whoever makes them fail keeps it.
constexpr std::array GIVES_BACK = {
    "ext.getObjFactory",        "ext.getGenericCmdFactory", "ext.getGenericCmdOptionFactory",
    "objFactory.unregisterObj", "cmdFactory.unregisterCmd", "optionFactory.unregisterCmdOption",
};

template <typename NAMES>
bool isOneOf(std::string_view call, const NAMES& names) {
  return std::ranges::any_of(names, [call](std::string_view name) { return call.starts_with(name); });
}

/// Destructors cannot fail.
bool canFail(std::string_view call) {
  return call.find(".destroyed(") == std::string_view::npos;
}

std::string describe(const std::string& failed, const PlayReport& report) {
  std::string text = fmt::format("after a failure of {}: status of start {}", failed, report.startStatus);
  for (const auto& refused : report.refused) {
    text += "\n  " + refused;
  }
  return text;
}

/// Another start and the whole program, with nothing failing.
void expectRecovered(const Bundle& bundle, const std::string& after) {
  Subject subject(bundle);
  const auto report = playEverything(subject);
  expectEqual("a second play after a failure of " + after, report.refused, std::vector<std::string>{});
  expectEqual("status of a second start after a failure of " + after, report.startStatus, 0);
}

void failOperation(const Bundle& bundle, int nth, std::size_t callsOfStart) {
  {
    Subject subject(bundle);
    subject.host.calls.failCall(nth, SOME_FAILURE);
    const auto report = playEverything(subject);
    const auto failed = subject.host.calls.failed();
    expectFalse("the play came to its failing call", failed.empty());
    if (canFail(failed)) {
      const bool isInStart = static_cast<std::size_t>(nth) <= callsOfStart;
      const bool mustFail = isInStart && !isOneOf(failed, WITHOUT_EFFECT_ON_START);
      expectEqual("status of a start in which this fails: " + failed, report.startStatus, mustFail ? START_FAILED : 0);
      const bool isHeardOf = report.hasComplained || !report.refused.empty() || report.startStatus != 0;
      expectTrue("a trace or a result tells of a failure of " + failed, isHeardOf || isOneOf(failed, SILENT));
      const bool isKept = static_cast<std::size_t>(nth) > report.callsBeforeStop && isOneOf(failed, GIVES_BACK);
      expectTrue("nothing left by the stop, " + describe(failed, report), report.leftNothing || isKept);
    }
    subject.host.calls.failNothing();
  }
  expectRecovered(bundle, fmt::format("call {}", nth));
}

void failAllocation(const Bundle& bundle, int nth) {
  const long before = test::liveAllocations();
  {
    const test::AllocationPause pause;
    Subject subject(bundle);
    {
      const test::AllocationFailure failure(nth);
      const auto report = playEverything(subject);
      expectTrue("the play came to its failing allocation", failure.happened());
      expectTrue("start answers 0 or 70001", report.startStatus == 0 || report.startStatus == START_FAILED);
      expectTrue("nothing left by the stop, " + describe(fmt::format("allocation {}", nth), report), report.leftNothing);
    }
  }
  expectEqual(fmt::format("blocks held after a play in which allocation {} failed", nth), test::liveAllocations(), before);
  expectRecovered(bundle, fmt::format("allocation {}", nth));
}

/// Runs one fault in a process of its own, which begins where this one stands.
void tryFault(const std::string& name, const Bundle& bundle, const std::function<void(const Bundle&)>& fault) {
  const Check check{name, "", fault, std::chrono::seconds(30)};
  const auto verdict = runCheck(check, bundle.directory());
  if (verdict.outcome != Outcome::PASSED) {
    throw Mismatch(fmt::format("{} {}: {}", name, toString(verdict.outcome), verdict.what),
                   verdict.expected.empty() ? "a pass" : verdict.expected, verdict.found);
  }
}

/// A play without failure, twice: the first also makes what lives until the process ends.
PlayReport rehearse(const Bundle& bundle) {
  PlayReport report;
  for (int round = 0; round < 2; ++round) {
    Subject subject(bundle);
    report = playEverything(subject);
    expectEqual("status of start", report.startStatus, 0);
    expectEqual("steps that did not succeed", report.refused, std::vector<std::string>{});
    expectTrue("nothing left", report.leftNothing);
  }
  return report;
}

void everyOperation(const Bundle& bundle) {
  const auto clean = rehearse(bundle);
  for (std::size_t nth = 1; nth <= clean.calls; ++nth) {
    tryFault(fmt::format("failing call {}", nth), bundle,
             [&](const Bundle& child) { failOperation(child, static_cast<int>(nth), clean.callsOfStart); });
  }
  remark(fmt::format("{} calls of the host tried, {} of them in start", clean.calls, clean.callsOfStart));
}

void everyAllocation(const Bundle& bundle) {
  rehearse(bundle);
  int count = 0;
  {
    const test::AllocationPause pause;
    Subject subject(bundle);
    const test::AllocationCount counter;
    static_cast<void>(playEverything(subject));
    count = counter.get();
  }
  expectTrue("the component allocates", count > 0);
  for (int nth = 1; nth <= count; ++nth) {
    tryFault(fmt::format("failing allocation {}", nth), bundle, [nth](const Bundle& child) { failAllocation(child, nth); });
  }
  remark(fmt::format("{} allocations tried", count));
}

void fullPlay(const Bundle& bundle) {
  rehearse(bundle);
}

}  // namespace

Checks faultChecks() {
  constexpr std::chrono::minutes LONG{10};
  return {
      {"faults.none", "a full play, twice, succeeds in every step and leaves nothing", fullPlay},
      {"faults.operations",
       "whichever call of the host fails, the result is the documented one, nothing is left, and a second start works",
       everyOperation, LONG},
      {"faults.allocations",
       "whichever allocation fails, no exception comes back, nothing is left, and a second start works", everyAllocation,
       LONG},
  };
}

}  // namespace motion::conformance
