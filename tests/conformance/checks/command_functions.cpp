// How the commands come to the host and leave it.
#include <fmt/format.h>

#include <algorithm>

#include "conformance/check.h"
#include "conformance/checks/frame_parts.h"
#include "conformance/expect.h"
#include "conformance/expected_commands.h"
#include "conformance/inside_call.h"
#include "conformance/service_rows.h"
#include "conformance/subject.h"
#include "conformance/trace_texts.h"

namespace motion::conformance {
namespace {

constexpr std::uint32_t REFUSAL = 0xF0110020;
const Texts DATA_TYPES = {
    "CmdJoinPars",       "JoinJobPars",          "CmdOptionSetSignalPars",    "CmdSendSignalPars",
    "SendSignalJobPars", "WaitForSignalJobPars", "WaitForSignalResetJobPars", "::motion::kavo::SwitchOnPathParsList"};

std::string info(const std::string& function, const std::string& text) {
  return infoOf("motion_kavo_cmd", function, text);
}
std::string error(const std::string& function, const std::string& text) {
  return errorOf("motion_kavo_cmd", function, text);
}

/// "Registration of ... succeeded" for the first rows.
Texts registered(std::size_t rows) {
  Texts texts;
  for (std::size_t i = 0; i < rows; ++i) {
    texts.push_back(info("initialize", "Registration of " + expectedRows()[i].name + " succeeded"));
  }
  return texts;
}

bool isOptionWithSlots(const core::cmd::CmdId& id) {
  return std::ranges::any_of(expectedOptions(),
                             [&id](const ExpectedOption& option) { return option.id == id && option.slots.has_value(); });
}

std::string registerOperation(const ExpectedRow& row) {
  return !row.isOption                        ? "cmdFactory.registerCmd"
         : isOptionWithSlots(row.ids.front()) ? "optionFactory.registerCmdOptionWithSlots"
                                              : "optionFactory.registerCmdOption";
}

std::string unregisterOperation(const ExpectedRow& row) {
  return row.isOption ? "optionFactory.unregisterCmdOption" : "cmdFactory.unregisterCmd";
}

/// The calls into the command factories that a walk over all rows makes.
Texts walk(std::string (*operation)(const ExpectedRow& row)) {
  Texts calls;
  for (const auto& row : expectedRows()) {
    for (const auto& id : row.ids) {
      calls.push_back(fmt::format("{}({})", operation(row), test::toText(id)));
    }
  }
  return calls;
}

void startOrder(const Bundle& bundle) {
  Subject subject(bundle);
  subject.giveEverything();
  expectEqual("status of start", subject.component().start(), 0);
  Texts expected = {"provider.start()", "ext.getJobDataIDMgr()"};
  for (const auto& type : DATA_TYPES) {
    expected.push_back("idMgr.addID(" + type + ")");
  }
  const auto registrations = walk(registerOperation);
  expected.insert(expected.end(), registrations.begin(), registrations.end());
  expected.push_back("dataLayer.openMemory(" + std::string(SIGNALS_OUT) + ")");
  expected.push_back("dataLayer.openMemory(" + std::string(SIGNALS_IN) + ")");
  expected.push_back("provider.start()");
  expectEqual("calls of start",
              subject.host.calls.of({"provider.start", "ext.getJobDataIDMgr", "idMgr.", "cmdFactory.", "optionFactory.",
                                     "dataLayer.openMemory"}),
              expected);
}

void startTraces(const Bundle& bundle) {
  Subject subject(bundle);
  subject.giveEverything();
  expectEqual("status of start", subject.component().start(), 0);
  expectEqual("traces", subject.tracesOf("motion_kavo_cmd"), registered(expectedRows().size()));
}

void stopOrder(const Bundle& bundle) {
  Subject subject(bundle);
  subject.start();
  subject.component().stop();
  expectEqual("calls of stop", subject.host.calls.of({"cmdFactory.", "optionFactory."}), walk(unregisterOperation));
  expectEqual("traces", subject.tracesOf("motion_kavo_cmd"), commandTerminationTraces());
}

void published(const Bundle& bundle) {
  InsideCall inside;
  Subject subject(bundle);
  subject.giveEverything();
  expectCommands(subject, false);
  const auto registering = subject.host.calls.onCall("optionFactory.registerCmdOption", [&] {
    inside.look([&] {
      expectNull("setSignalCmd while commands are registered", subject.host.cmdIf.setSignalCmd == nullptr);
      expectNull("kinSwitchOnPathCmdOpt while commands are registered",
                 subject.host.cmdKin.kinSwitchOnPathCmdOpt == nullptr);
    });
  });
  expectEqual("status of start", subject.component().start(), 0);
  expectEqual("options registered", subject.host.calls.count("optionFactory.registerCmdOption"), 1);
  expectCommands(subject, true);
  inside.expectFine();
}

void sameInBoth(const Bundle& bundle) {
  Subject subject(bundle);
  subject.start();
  const auto& old = subject.host.cmdIf;
  const auto& current = subject.host.cmdGeneral;
  expectTrue("resetSignalCmd is the same", old.resetSignalCmd == current.resetSignalCmd);
  expectTrue("setSignalCmd is the same", old.setSignalCmd == current.setSignalCmd);
  expectTrue("setSignalCmdOpt is the same", old.setSignalCmdOpt == current.setSignalCmdOpt);
  expectTrue("waitForSignalCmd is the same", old.waitForSignalCmd == current.waitForSignalCmd);
  expectTrue("joinCmd is the same", old.joinCmd == current.joinCmd);
}

core::FctResult abortNothing(core::cmd::ICmdContext* /*context*/, const core::dia::CmdSourceInfo& /*source*/,
                             const char* /*objName*/) {
  return core::FctResult::Okay;
}

void neighbours(const Bundle& bundle) {
  Subject subject(bundle);
  auto& host = subject.host;
  host.cmdIf.abortCmd = &abortNothing;
  host.cmdGeneral.abortCmd = &abortNothing;
  host.cmdKin.abortCmd = &abortNothing;
  const auto expectUntouched = [&host] {
    expectTrue("abortCmd of the older record", host.cmdIf.abortCmd == &abortNothing);
    expectNull("dwellCmd of the older record", host.cmdIf.dwellCmd == nullptr);
    expectTrue("abortCmd of the general sub-record", host.cmdGeneral.abortCmd == &abortNothing);
    expectNull("dwellCmd of the general sub-record", host.cmdGeneral.dwellCmd == nullptr);
    expectTrue("abortCmd of the sub-record of kinematics", host.cmdKin.abortCmd == &abortNothing);
    expectEqual("version of the record", host.cmdIf2.version, 2U);
    expectTrue("pointers to sub-records", host.cmdIf2.general == &host.cmdGeneral && host.cmdIf2.kin == &host.cmdKin);
  };
  subject.start();
  expectUntouched();
  subject.component().stop();
  expectUntouched();
}

void takenBackBetween(const Bundle& bundle) {
  InsideCall inside;
  Subject subject(bundle);
  subject.start();
  const auto unregistering = subject.host.calls.onCall("cmdFactory.unregisterCmd", [&] {
    inside.look([&] {
      expectNotNull("setSignalCmd while commands are unregistered", subject.host.cmdIf.setSignalCmd != nullptr);
      expectNotNull("waitForSignalResetCmd while commands are unregistered",
                    subject.host.cmdGeneral.waitForSignalResetCmd != nullptr);
    });
  });
  const auto deleting = subject.host.calls.onCall("dataLayer.deleteMemorySync", [&] {
    inside.look([&] {
      expectNull("setSignalCmd when the memories go", subject.host.cmdIf.setSignalCmd == nullptr);
      expectNull("joinCmd when the memories go", subject.host.cmdGeneral.joinCmd == nullptr);
      expectNull("kinSwitchOnPathCmdOpt when the memories go", subject.host.cmdKin.kinSwitchOnPathCmdOpt == nullptr);
    });
  });
  subject.component().stop();
  expectEqual("commands unregistered", subject.host.calls.count("cmdFactory.unregisterCmd"), 10);
  expectEqual("memories deleted", subject.host.calls.count("dataLayer.deleteMemorySync"), 2);
  inside.expectFine();
}

void fieldsCleared(const Bundle& bundle) {
  Subject subject(bundle);
  subject.start();
  const core::SignalCmdFn other = [](core::cmd::ICmdContext*, const core::dia::CmdSourceInfo&, const char*, unsigned int,
                                     unsigned long&) { return core::FctResult::Okay; };
  subject.host.cmdIf.resetSignalCmd = other;
  subject.host.cmdGeneral.waitForSignalResetCmd = other;
  subject.component().stop();
  expectCommands(subject, false);
}

void unregisteringFails(const Bundle& bundle) {
  Subject subject(bundle);
  subject.start();
  subject.host.calls.fail("cmdFactory.unregisterCmd", 0xF0110021, 3);
  subject.remove(Service::MOTION_CMD);
  expectEqual("calls", subject.host.calls.of({"cmdFactory.", "optionFactory."}), walk(unregisterOperation));
  auto expected = commandTerminationTraces();
  expected.erase(expected.begin() + 2);
  expectEqual("traces", subject.tracesOf("motion_kavo_cmd"), expected);
  expectEqual("real-time memories", subject.host.dataLayer.m_memories.size(), 0U);
  subject.host.cmdFactory.m_commands.clear();
}

void expectFailedStart(Subject& subject, const std::string& cause) {
  Texts expected = {cause, errorOf("motion_kavo_cmp", "bundleStart", "MotionKavoCmd::initialize() failed"),
                    errorOf("motion_kavo_cmp", "bundleStart", "Call bundleStop as to cleanup after error"),
                    errorOf("motion_kavo_cmp", "start", "Motion.Kavo failed to start - return with error code")};
  expectEqual("status of start", subject.component().start(), 70001);
  auto errors = subject.traces("Error");
  std::erase_if(errors, [](const std::string& trace) { return trace.starts_with("Error rt_signals"); });
  expectEqual("errors of start", errors, expected);
  expectEqual("memories opened", subject.host.calls.count("dataLayer.openMemory"), 0);
  subject.expectNothingLeft();
}

void noMemories(const Bundle& bundle) {
  Subject subject(bundle);
  subject.giveEverything();
  subject.forget();
  subject.host.calls.fail("dataLayer.createProvider", 0x80000001, 1);
  expectFailedStart(subject, error("initialize", "RtSignals::initialize() failed"));
  expectEqual("what was asked for", subject.host.calls.of({"ext.getJobDataIDMgr", "idMgr.", "cmdFactory.registerCmd"}),
              Texts{});
}

void noDataIdMgr(const Bundle& bundle) {
  Subject subject(bundle);
  subject.giveEverything();
  subject.forget();
  subject.host.parts.jobDataIDMgr = nullptr;
  expectFailedStart(subject, error("initialize", "Failed to retrieve the jobDataIdMgr from motionExtIf"));
  expectEqual("commands registered", subject.host.calls.count("cmdFactory.registerCmd"), 0);
}

void knownDataTypes(const Bundle& bundle) {
  Subject subject(bundle);
  subject.host.calls.fail("idMgr.addID", 0);
  subject.giveEverything();
  expectEqual("status of start", subject.component().start(), 0);
  expectEqual("data types announced", subject.host.calls.count("idMgr.addID"), static_cast<int>(DATA_TYPES.size()));
  expectEqual("warnings", subject.traces("Warning").size(), DATA_TYPES.size());
  expectCommands(subject, true);
}

void startAfterStart(const Bundle& bundle) {
  Subject subject(bundle);
  subject.start();
  subject.component().stop();
  subject.forget();
  expectEqual("status of the second start", subject.component().start(), 0);
  expectEqual("registrations", subject.host.calls.of({"cmdFactory.", "optionFactory."}), walk(registerOperation));
}

/// Which registration of its operation is the first of a row, counted from 1.
int positionOf(std::size_t row) {
  int position = 1;
  for (std::size_t i = 0; i < row; ++i) {
    const auto& before = expectedRows()[i];
    position +=
        registerOperation(before) == registerOperation(expectedRows()[row]) ? static_cast<int>(before.ids.size()) : 0;
  }
  return position;
}

void rowFails(const Bundle& bundle, std::size_t row) {
  Subject subject(bundle);
  subject.giveEverything();
  subject.forget();
  subject.host.calls.fail(registerOperation(expectedRows()[row]), REFUSAL, positionOf(row));
  std::size_t known = 0;
  const auto deleting = subject.host.calls.onCall("dataLayer.deleteMemorySync", [&] {
    known = subject.host.cmdFactory.m_commands.size() + subject.host.cmdOptionFactory.m_options.size();
  });
  expectFailedStart(subject, error("initialize", fmt::format("Registration of {} failed", expectedRows()[row].name)));
  auto expected = registered(row);
  expected.push_back(error("initialize", fmt::format("Registration of {} failed", expectedRows()[row].name)));
  std::size_t before = 0;
  for (std::size_t i = 0; i < row; ++i) {
    before += expectedRows()[i].ids.size();
    expected.push_back(info("terminate", fmt::format("Unregistration of {} succeeded", expectedRows()[i].name)));
  }
  expectEqual("traces", subject.tracesOf("motion_kavo_cmd"), expected);
  expectEqual("registrations that stay until the clean-up", known, before);
}

}  // namespace

Checks commandFunctionChecks() {
  Checks own = {
      {"command-functions.start-order",
       "a start brings up memories, data types, the twelve rows and then the system functions", startOrder},
      {"command-functions.start-traces", "each row that was registered is traced", startTraces},
      {"command-functions.stop-order", "a stop unregisters the rows in the same order and traces each", stopOrder},
      {"command-functions.published", "the functions are published after the last row was registered", published},
      {"command-functions.same-in-both", "both records hold the same functions", sameInBoth},
      {"command-functions.neighbours", "no other field of the records is touched", neighbours},
      {"command-functions.taken-back-between", "the functions go after the commands and before the memories",
       takenBackBetween},
      {"command-functions.fields-cleared", "a field is cleared whatever stands in it", fieldsCleared},
      {"command-functions.unregistering-fails", "a row that cannot be unregistered is passed over in silence",
       unregisteringFails},
      {"command-functions.no-memories", "without the real-time memories nothing is registered", noMemories},
      {"command-functions.no-data-id-manager", "without the manager of data names nothing is registered", noDataIdMgr},
      {"command-functions.known-data-types", "a data type that is known already is a warning", knownDataTypes},
      {"command-functions.second-start", "a second start registers everything again", startAfterStart},
  };
  for (std::size_t row = 0; row < expectedRows().size(); ++row) {
    own.push_back(
        {fmt::format("command-functions.row-{}-fails", row + 1),
         fmt::format("a refused registration in row {} ends the start; the rows before stay until the clean-up", row + 1),
         [row](const Bundle& bundle) { rowFails(bundle, row); }});
  }
  return together({own, publishedCommandChecks(), publishedOptionChecks()});
}

}  // namespace motion::conformance
