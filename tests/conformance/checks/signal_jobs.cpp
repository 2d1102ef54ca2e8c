// The jobs of the commands with a signal, cycle by cycle.
#include <fmt/format.h>

#include "conformance/buffered_cmd.h"
#include "conformance/checks/motion_parts.h"
#include "conformance/expect.h"
#include "conformance/records.h"
#include "conformance/trace_texts.h"

namespace motion::conformance {
namespace {

using core::ObjectType;
using core::job::JobResult;

constexpr JobResult NOTHING{0};
constexpr JobResult BUSY{0x0103};
constexpr JobResult FINISHED{0x0A06};
constexpr JobResult FAILED{0xF0000004};
constexpr std::uint32_t DL_FAILURE = 0x80060001;
constexpr std::uint32_t SIGNAL = 42;

/// A command with signal 42 whose job is ready.
struct Ready {
  Ready(const Bundle& bundle, ObjectType type, const std::string& name, bool autoReset = false)
      : subject(bundle),
        obj(type == ObjectType::AXIS ? subject.host.objMgr.addAxis("X") : subject.host.objMgr.addKinematics("X")) {
    subject.start();
    cmd = std::make_unique<BufferedCmd>(subject, obj, 11, name, waitParameters(SIGNAL, autoReset));
    cmd->giveJobs();
    subject.forget();
  }
  /// The counters of the signal.
  void setCounters(std::uint8_t in, std::uint8_t out) {
    subject.in(SIGNAL) = in;
    subject.out(SIGNAL) = out;
  }
  void expectCounters(std::uint8_t in, std::uint8_t out) {
    expectEqual("counter of the jobs", subject.in(SIGNAL), in);
    expectEqual("counter of the system functions", subject.out(SIGNAL), out);
  }
  void expectCycle(JobResult result) { expectEqual("result of the job", cmd->cycle(), result); }

  Subject subject;
  test::FakeObj& obj;
  std::unique_ptr<BufferedCmd> cmd;
};

struct Counters {
  std::uint8_t in = 0;
  std::uint8_t out = 0;
};

const std::string BOTH_SIDES =
    "Signal(42) might be set by both the system function SetSignal as well as the command SetSignal";

void sends(const Bundle& bundle, ObjectType type, const std::string& name, Counters before, std::uint8_t after) {
  Ready ready(bundle, type, name);
  ready.setCounters(before.in, before.out);
  auto others = ready.subject.bytes(SIGNALS_IN);
  ready.expectCycle(FINISHED);
  ready.expectCounters(after, before.out);
  others[SIGNAL] = after;
  expectEqual("counters of all signals", ready.subject.bytes(SIGNALS_IN), others);
  const bool meets = name == "SetSignal" && static_cast<std::uint8_t>(before.in + 1) == before.out;
  expectEqual("traces", ready.subject.traces(), meets ? Texts{warningOf("rt_signals", "set", BOTH_SIDES)} : Texts{});
}

void sendsOnce(const Bundle& bundle, ObjectType type, const std::string& name) {
  Ready ready(bundle, type, name);
  ready.setCounters(3, 9);
  ready.expectCycle(FINISHED);
  const auto after = ready.subject.in(SIGNAL);
  ready.subject.forget();
  ready.setCounters(after, 77);
  for (int i = 0; i < 3; ++i) {
    ready.expectCycle(NOTHING);
  }
  ready.expectCounters(after, 77);
  expectEqual("calls of the host", ready.subject.host.calls.all(), Texts{});
  expectEqual("traces", ready.subject.traces(), Texts{});
}

void sendsAgain(const Bundle& bundle, const std::string& name) {
  Ready ready(bundle, ObjectType::AXIS, name);
  ready.expectCycle(FINISHED);
  expectEqual("result of addJobsToJoblist",
              ready.cmd->job().addJobsToJoblist(&ready.cmd->lists.cyclic, core::job::JobListTypes::CYCLIC_EXECUTION),
              NOTHING);
  ready.setCounters(5, 9);
  ready.expectCycle(FINISHED);
  ready.expectCounters(name == "SetSignal" ? 6 : 9, 9);
}

void failsToSend(const Bundle& bundle, ObjectType type, const std::string& name) {
  Ready ready(bundle, type, name);
  ready.setCounters(3, 9);
  ready.subject.host.calls.fail("memory.beginAccess signals_in", DL_FAILURE);
  ready.expectCycle(FAILED);
  const std::string text = name == "SetSignal" ? "m_signals.set() failed" : "m_signals.reset() failed";
  const auto traces = ready.subject.tracesOf("job_obj_send_signal");
  expectEqual("number of traces of the job", traces.size(), 1U);
  expectTrue("trace \"" + text + "\" and not " + traces[0], traces[0].ends_with(": " + text));
  expectTrue("an error", traces[0].starts_with("Error "));
  ready.subject.host.calls.failNothing();
  ready.subject.forget();
  ready.expectCycle(NOTHING);
  ready.expectCounters(3, 9);
  expectEqual("traces of later cycles", ready.subject.traces(), Texts{});
}

void sendsWithoutOutCounter(const Bundle& bundle, const std::string& name) {
  Ready ready(bundle, ObjectType::AXIS, name);
  ready.setCounters(3, 9);
  ready.subject.host.calls.fail("memory.beginAccess signals_out", DL_FAILURE);
  ready.expectCycle(FINISHED);
  ready.expectCounters(name == "SetSignal" ? 4 : 0, 9);
  expectEqual("traces", ready.subject.traces(), Texts{});
}

void sendsWithoutSignals(const Bundle& bundle, const std::string& name) {
  Ready ready(bundle, ObjectType::AXIS, name);
  expectEqual("status of stop", ready.subject.component().stop(), 0);
  ready.subject.forget();
  ready.expectCycle(FAILED);
  expectEqual("number of traces of the job", ready.subject.tracesOf("job_obj_send_signal").size(), 1U);
}

void waitsForSet(const Bundle& bundle, ObjectType type, bool autoReset) {
  Ready ready(bundle, type, "WaitForSignal", autoReset);
  ready.setCounters(9, 9);
  for (int i = 0; i < 5; ++i) {
    ready.expectCycle(BUSY);
  }
  ready.expectCounters(9, 9);
  ready.setCounters(9, 10);
  ready.expectCycle(FINISHED);
  ready.expectCounters(autoReset ? 10 : 9, 10);
  expectEqual("traces", ready.subject.traces(), Texts{});
  ready.expectCycle(autoReset ? BUSY : FINISHED);
}

void setBefore(const Bundle& bundle, ObjectType type, bool autoReset) {
  Ready ready(bundle, type, "WaitForSignal", autoReset);
  ready.setCounters(200, 10);
  ready.expectCycle(FINISHED);
  ready.expectCounters(autoReset ? 10 : 200, 10);
}

void waitsForReset(const Bundle& bundle, ObjectType type) {
  Ready ready(bundle, type, "WaitForSignalReset");
  ready.setCounters(9, 10);
  for (int i = 0; i < 5; ++i) {
    ready.expectCycle(BUSY);
  }
  ready.expectCounters(9, 10);
  ready.setCounters(10, 10);
  ready.expectCycle(FINISHED);
  ready.expectCounters(10, 10);
  expectEqual("traces", ready.subject.traces(), Texts{});
}

void waitsWhileReadFails(const Bundle& bundle, const std::string& name) {
  Ready ready(bundle, ObjectType::AXIS, name);
  ready.setCounters(9, name == "WaitForSignal" ? 10 : 9);
  ready.subject.host.calls.fail("memory.beginAccess signals_in", DL_FAILURE);
  for (int i = 0; i < 3; ++i) {
    ready.expectCycle(BUSY);
  }
  expectEqual("traces", ready.subject.traces(), Texts{});
  ready.subject.host.calls.failNothing();
  ready.expectCycle(FINISHED);
}

void waitsWithoutSignals(const Bundle& bundle, const std::string& name, const std::string& unit) {
  Ready ready(bundle, ObjectType::KINEMATICS, name);
  expectEqual("status of stop", ready.subject.component().stop(), 0);
  ready.subject.forget();
  ready.expectCycle(BUSY);
  expectEqual("traces of the job", ready.subject.tracesOf(unit), Texts{});
}

void oneConsumer(const Bundle& bundle) {
  Ready first(bundle, ObjectType::AXIS, "WaitForSignal", true);
  auto& other = first.subject.host.objMgr.addKinematics("K");
  BufferedCmd second(first.subject, other, 21, "WaitForSignal", waitParameters(SIGNAL, true));
  second.giveJobs();
  first.setCounters(9, 10);
  first.expectCycle(FINISHED);
  expectEqual("result of the second job", second.cycle(), BUSY);
  first.setCounters(11, 10);
  expectEqual("result of the second job after another setting", second.cycle(), FINISHED);
}

void sharedWithoutReset(const Bundle& bundle) {
  Ready first(bundle, ObjectType::AXIS, "WaitForSignal", false);
  auto& other = first.subject.host.objMgr.addKinematics("K");
  BufferedCmd second(first.subject, other, 21, "WaitForSignal", waitParameters(SIGNAL, false));
  second.giveJobs();
  first.setCounters(9, 10);
  first.expectCycle(FINISHED);
  expectEqual("result of the second job", second.cycle(), FINISHED);
}

/// The record that a ready command offers its job.
template <typename RECORD>
RECORD& offered(Ready& ready) {
  const auto section = ready.subject.host.sectionMgr.valueOf("CMD_DATA");
  auto* const found = static_cast<RECORD*>(ready.cmd->inputs.handler.m_published.at({RECORD::getMyID(), section}));
  return *found;
}

void waitReadsEachCycle(const Bundle& bundle) {
  Ready ready(bundle, ObjectType::AXIS, "WaitForSignal");
  ready.expectCycle(BUSY);
  offered<kavo::job::WaitForSignalJobPars>(ready).set({.signalId = 7, .autoReset = true});
  ready.subject.in(7) = 1;
  ready.expectCycle(FINISHED);
  expectEqual("counter of signal 7", ready.subject.in(7), 0);
}

void waitResetReadsEachCycle(const Bundle& bundle) {
  Ready ready(bundle, ObjectType::AXIS, "WaitForSignalReset");
  ready.setCounters(1, 0);
  ready.expectCycle(BUSY);
  offered<kavo::job::WaitForSignalResetJobPars>(ready).set({.signalId = 7});
  ready.expectCycle(FINISHED);
}

void copiesOnce(const Bundle& bundle) {
  Ready ready(bundle, ObjectType::AXIS, "SetSignal");
  offered<kavo::job::SendSignalJobPars>(ready).set({.signalId = 7, .reset = true});
  ready.expectCycle(FINISHED);
  ready.expectCounters(1, 0);
  expectEqual("counter of signal 7", ready.subject.in(7), 0);
}

struct SendRow {
  std::string what;
  std::string name;
  Counters before;
  std::uint8_t after;
};

const std::vector<SendRow>& sendRows() {
  static const std::vector<SendRow> rows = {
      {"set", "SetSignal", {0, 0}, 1},
      {"set-twice", "SetSignal", {5, 3}, 6},
      {"set-by-both", "SetSignal", {0, 1}, 2},
      {"set-wraps", "SetSignal", {255, 7}, 0},
      {"set-wraps-by-both", "SetSignal", {255, 0}, 1},
      {"set-by-both-at-the-end", "SetSignal", {254, 255}, 0},
      {"reset", "ResetSignal", {0, 9}, 9},
      {"reset-own-setting", "ResetSignal", {12, 9}, 9},
      {"reset-what-is-reset", "ResetSignal", {9, 9}, 9},
  };
  return rows;
}

Checks sendChecks(ObjectType type, const std::string& suffix) {
  Checks checks;
  for (const auto& row : sendRows()) {
    checks.push_back({"signal-job." + row.what + suffix,
                      "the job moves the counter of its side as it must, and ends the command",
                      [&row, type](const Bundle& bundle) { sends(bundle, type, row.name, row.before, row.after); }});
  }
  for (const std::string name : {"SetSignal", "ResetSignal"}) {
    checks.push_back({"signal-job.once-" + name + suffix, "the job does its work once and nothing in later cycles",
                      [=](const Bundle& bundle) { sendsOnce(bundle, type, name); }});
    checks.push_back({"signal-job.fails-" + name + suffix,
                      "a signal that cannot be moved fails the command, is traced, and is "
                      "not tried again",
                      [=](const Bundle& bundle) { failsToSend(bundle, type, name); }});
  }
  for (const bool autoReset : {false, true}) {
    const auto flag = std::string(autoReset ? "-consuming" : "") + suffix;
    checks.push_back({"signal-job.wait" + flag,
                      "the job is busy until the signal is set, and consumes it only when it shall",
                      [=](const Bundle& bundle) { waitsForSet(bundle, type, autoReset); }});
    checks.push_back({"signal-job.wait-set-before" + flag,
                      "a signal that is set already ends the command in its first cycle",
                      [=](const Bundle& bundle) { setBefore(bundle, type, autoReset); }});
  }
  checks.push_back({"signal-job.wait-reset" + suffix, "the job is busy until the signal is reset, and moves nothing",
                    [=](const Bundle& bundle) { waitsForReset(bundle, type); }});
  return checks;
}

Checks failureChecks() {
  Checks checks;
  for (const std::string name : {"SetSignal", "ResetSignal"}) {
    checks.push_back({"signal-job.again-" + name, "a job that is added anew does its work anew",
                      [=](const Bundle& bundle) { sendsAgain(bundle, name); }});
    checks.push_back({"signal-job.no-out-counter-" + name, "an output memory that cannot be read counts as counter 0",
                      [=](const Bundle& bundle) { sendsWithoutOutCounter(bundle, name); }});
    checks.push_back({"signal-job.without-signals-" + name, "a job without signals fails the command",
                      [=](const Bundle& bundle) { sendsWithoutSignals(bundle, name); }});
  }
  for (const auto& [name, unit] : {std::pair("WaitForSignal", "job_obj_wait_for_signal"),
                                   std::pair("WaitForSignalReset", "job_obj_wait_for_signal_reset")}) {
    checks.push_back({std::string("signal-job.read-fails-") + name, "a signal that cannot be read keeps the command waiting",
                      [name = std::string(name)](const Bundle& bundle) { waitsWhileReadFails(bundle, name); }});
    checks.push_back({std::string("signal-job.without-signals-") + name, "a job without signals keeps the command waiting",
                      [name = std::string(name), unit = std::string(unit)](const Bundle& bundle) {
                        waitsWithoutSignals(bundle, name, unit);
                      }});
  }
  return checks;
}

}  // namespace

Checks signalJobChecks() {
  const Checks several = {
      {"signal-job.one-consumer", "one setting releases only one of two that consume it", oneConsumer},
      {"signal-job.shared-setting", "one setting releases all that do not consume it", sharedWithoutReset},
      {"signal-job.wait-reads-each-cycle", "a waiting job reads the parameters in each cycle", waitReadsEachCycle},
      {"signal-job.wait-reset-reads-each-cycle", "a waiting job reads the parameters in each cycle",
       waitResetReadsEachCycle},
      {"signal-job.send-copies", "a sending job keeps the parameters that it found when it was prepared", copiesOnce},
  };
  return together({sendChecks(ObjectType::AXIS, "-axis"), sendChecks(ObjectType::KINEMATICS, "-kinematics"), failureChecks(),
                   several, jobObjectChecks()});
}

}  // namespace motion::conformance
