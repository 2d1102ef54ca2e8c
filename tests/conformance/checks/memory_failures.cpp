// What each failure of the real-time memories leads to.
#include <fmt/format.h>

#include "conformance/buffered_cmd.h"
#include "conformance/checks/frame_parts.h"
#include "conformance/expect.h"
#include "conformance/subject.h"
#include "conformance/trace_texts.h"

namespace motion::conformance {
namespace {

constexpr std::uint32_t TIMEOUT = 0x8001000F;
constexpr std::uint32_t DL_FAILED = 0x80000001;

/// A step of the initialisation, made to fail.
struct Step {
  const char* name;
  const char* operation;
  int nth;
  std::uint32_t code;
  const char* trace;
  std::vector<std::string> deleted;  ///< memories that are taken back
};

const std::vector<Step>& steps() {
  const std::string in = "dataLayer.deleteMemorySync(signals_in)";
  const std::string out = "dataLayer.deleteMemorySync(signals_out)";
  static const std::vector<Step> all = {
      {"create-in", "dataLayer.createMemorySync", 1, TIMEOUT, "createMemorySync failed with: DL_TIMEOUT", {}},
      {"create-out", "dataLayer.createMemorySync", 2, 0x80010010, "createMemorySync failed with: DL_ALREADY_EXISTS", {in}},
      {"map-in",
       "memory.setMemoryMap signals_in",
       1,
       0x80060006,
       "setMemoryMap failed with: DL_RT_INVALIDMEMORYMAP",
       {out, in}},
      {"map-out", "memory.setMemoryMap signals_out", 1, TIMEOUT, "setMemoryMap failed with: DL_TIMEOUT", {out, in}},
      {"clear", "memory.beginAccess signals_in", 1, 0x80060005, "fill memory failed with: DL_RT_MEMORYLOCKED", {out, in}},
      {"start", "provider.start", 1, 0x80010008, "Starting provider failed with: unknown", {out, in}},
  };
  return all;
}

void stepFails(const Bundle& bundle, const Step& step) {
  Subject subject(bundle);
  subject.host.calls.fail(step.operation, step.code, step.nth);
  subject.giveEverything();
  subject.forget();
  expectEqual("status of start", subject.component().start(), 70001);
  // The recording host's provider refuses to stop as long as it has not been started.
  expectEqual("traces", subject.tracesOf("rt_signals"),
              Texts{errorOf("rt_signals", "initialize", step.trace),
                    errorOf("rt_signals", "terminate", "Stopping provider failed with: DL_FAILED")});
  auto expected = step.deleted;
  expected.insert(expected.end(), {"provider.stop()", "provider.destroyed()"});
  expectEqual("what is taken back",
              subject.host.calls.of({"dataLayer.deleteMemorySync", "provider.stop", "provider.destroyed"}), expected);
  expectEqual("data types announced", subject.host.calls.count("idMgr.addID"), 0);
  subject.expectNothingLeft();
  subject.host.calls.failNothing();
  expectEqual("status of the next start", subject.component().start(), 0);
}

void noProvider(const Bundle& bundle) {
  Subject subject(bundle);
  subject.host.calls.fail("dataLayer.createProvider", DL_FAILED, 1);
  subject.giveEverything();
  subject.forget();
  expectEqual("status of start", subject.component().start(), 70001);
  expectEqual("traces", subject.tracesOf("rt_signals"),
              Texts{errorOf("rt_signals", "initialize", "Failed to create a provider")});
  expectEqual("calls", subject.host.calls.of({"dataLayer.", "provider.", "memory."}),
              Texts{"dataLayer.createProvider(inproc:///tmp/datalayer/backend)"});
}

void terminationFails(const Bundle& bundle, const std::string& operation, int nth, const std::vector<std::string>& texts) {
  Subject subject(bundle);
  subject.start();
  subject.host.calls.fail(operation, TIMEOUT, nth);
  subject.component().stop();
  Texts expected;
  for (const auto& text : texts) {
    expected.push_back(errorOf("rt_signals", "terminate", text));
  }
  expectEqual("traces", subject.tracesOf("rt_signals"), expected);
  subject.expectNothingLeft();
}

/// Ends of accesses are not looked at.
void endOfClearFails(const Bundle& bundle) {
  Subject subject(bundle);
  subject.host.calls.fail("memory.endAccess signals_in", TIMEOUT, 1);
  subject.giveEverything();
  expectEqual("status of start", subject.component().start(), 0);
  expectEqual("traces", subject.tracesOf("rt_signals"), Texts{});
}

/// A command of an axis with signal 5, ready to be run.
class SignalCmd {
 public:
  SignalCmd(Subject& subject, const std::string& name)
      : m_cmd(subject, subject.host.objMgr.addAxis("X"), 7, name,
              name == "WaitForSignal" ? waitParameters(5, true) : signalParameters(5)) {
    m_cmd.prepareWithJobs();
    subject.forget();
  }

  core::job::JobResult cycle() { return m_cmd.cycle(); }

 private:
  BufferedCmd m_cmd;
};

/// What a job makes of the input counter of signal 5.
void jobMoves(const Bundle& bundle, const std::string& command, std::uint8_t in, std::uint8_t out, std::uint8_t expected,
              bool warns) {
  Subject subject(bundle);
  subject.start();
  SignalCmd cmd(subject, command);
  subject.in(5) = in;
  subject.out(5) = out;
  (void)cmd.cycle();
  expectEqual("input counter", subject.in(5), expected);
  expectEqual("output counter", subject.out(5), out);
  expectEqual("accesses", subject.host.calls.of({"memory."}),
              Texts{"memory.beginAccess signals_out(0)", "memory.endAccess signals_out()",
                    "memory.beginAccess signals_in(0)", "memory.endAccess signals_in()"});
  expectEqual("traces", subject.traces(),
              warns ? Texts{warningOf("rt_signals", "set",
                                      "Signal(5) might be set by both the system function SetSignal as well as the command "
                                      "SetSignal")}
                    : Texts{});
}

void outUnreadable(const Bundle& bundle) {
  Subject subject(bundle);
  subject.start();
  SignalCmd cmd(subject, "ResetSignal");
  subject.in(5) = 9;
  subject.out(5) = 200;
  subject.host.calls.fail("memory.beginAccess signals_out", TIMEOUT);
  (void)cmd.cycle();
  expectEqual("input counter", subject.in(5), std::uint8_t{0});
  expectEqual("traces", subject.tracesOf("rt_signals"), Texts{});
}

void inUnreadable(const Bundle& bundle, const std::string& command) {
  Subject subject(bundle);
  subject.start();
  SignalCmd cmd(subject, command);
  subject.in(5) = 9;
  subject.host.calls.fail("memory.beginAccess signals_in", TIMEOUT);
  (void)cmd.cycle();
  expectEqual("input counter", subject.in(5), std::uint8_t{9});
  expectEqual("traces", subject.tracesOf("rt_signals"), Texts{});
}

void notInitialised(const Bundle& bundle) {
  Subject subject(bundle);
  subject.start();
  SignalCmd cmd(subject, "SetSignal");
  subject.component().stop();
  subject.forget();
  (void)cmd.cycle();
  expectEqual("traces", subject.tracesOf("rt_signals"),
              Texts{errorOf("rt_signals", "getOutCounter", "RtSignals::initialize() not called!")});
}

Checks jobChecks() {
  const auto moves = [](const std::string& command, std::uint8_t in, std::uint8_t out, std::uint8_t expected, bool warns) {
    return [=](const Bundle& bundle) { jobMoves(bundle, command, in, out, expected, warns); };
  };
  const auto unreadable = [](const std::string& command) {
    return [command](const Bundle& bundle) { inUnreadable(bundle, command); };
  };
  return {
      {"memory.job-sets", "a job sets a signal by moving the input counter by one", moves("SetSignal", 3, 3, 4, false)},
      {"memory.job-sets-again", "a set signal stays set", moves("SetSignal", 4, 3, 5, false)},
      {"memory.job-set-wraps", "the input counter wraps", moves("SetSignal", 255, 255, 0, false)},
      {"memory.job-set-passes-other-side", "a set that would meet the other counter warns and moves by two",
       moves("SetSignal", 0, 1, 2, true)},
      {"memory.job-set-passes-at-255", "passing the other counter wraps, too", moves("SetSignal", 255, 0, 1, true)},
      {"memory.job-resets", "a job resets a signal by copying the output counter", moves("ResetSignal", 9, 200, 200, false)},
      {"memory.job-consumes", "a job that consumes a set signal copies the output counter",
       moves("WaitForSignal", 9, 8, 8, false)},
      {"memory.job-finds-reset", "a reset signal is left as it is", moves("WaitForSignal", 9, 9, 9, false)},
      {"memory.out-unreadable", "an output counter that cannot be read counts as 0, without a trace", outUnreadable},
      {"memory.in-unreadable-set", "a set that cannot access the input counter changes nothing and does not trace it",
       unreadable("SetSignal")},
      {"memory.in-unreadable-reset", "a reset that cannot access the input counter changes nothing and does not trace it",
       unreadable("ResetSignal")},
      {"memory.in-unreadable-get", "a wait that cannot access the input counter changes nothing and does not trace it",
       unreadable("WaitForSignal")},
      {"memory.not-initialised", "a job that runs after the stop is told that there are no memories", notInitialised},
  };
}

}  // namespace

Checks memoryFailureChecks() {
  const auto termination = [](const std::string& operation, int nth, std::vector<std::string> texts) {
    return [=](const Bundle& bundle) { terminationFails(bundle, operation, nth, texts); };
  };
  const std::string notDeleted = "Cannot delete input memory: DL_TIMEOUT";
  Checks checks = {
      {"memory.no-provider", "without a provider there are no memories", noProvider},
      {"memory.end-of-clear-fails", "an access that cannot end is no failure", endOfClearFails},
      {"memory.delete-out-fails", "signals_out that cannot be deleted is traced as the input memory",
       termination("dataLayer.deleteMemorySync", 1, {notDeleted})},
      {"memory.delete-in-fails", "signals_in that cannot be deleted is traced",
       termination("dataLayer.deleteMemorySync", 2, {notDeleted})},
      {"memory.delete-both-fails", "both failures are traced, and the termination goes on",
       termination("dataLayer.deleteMemorySync", test::FakeCalls::EVERY, {notDeleted, notDeleted})},
      {"memory.provider-stop-fails", "a provider that cannot be stopped is traced and deleted",
       termination("provider.stop", 1, {"Stopping provider failed with: DL_TIMEOUT"})},
  };
  for (const auto& step : steps()) {
    checks.push_back({fmt::format("memory.{}-fails", step.name),
                      fmt::format("\"{}\" ends the start, and what was made is taken back", step.trace),
                      [step](const Bundle& bundle) { stepFails(bundle, step); }});
  }
  return together({checks, jobChecks()});
}

}  // namespace motion::conformance
