// What each command does with its parameters before its jobs run.
#include <fmt/format.h>

#include "conformance/buffered_cmd.h"
#include "conformance/checks/motion_parts.h"
#include "conformance/expect.h"
#include "conformance/expected_commands.h"
#include "conformance/records.h"
#include "conformance/trace_texts.h"

namespace motion::conformance {
namespace {

using core::cmd::CmdResult;

/// A command of its own, outside of a buffer.
class LooseCmd {
 public:
  LooseCmd(const Bundle& bundle, const ExpectedCommand& expected)
      : m_subject(bundle),
        m_obj(expected.isAxis() ? m_subject.host.objMgr.addAxis("X") : m_subject.host.objMgr.addKinematics("X")),
        m_expected(expected) {
    m_subject.start();
    m_cmd = create(m_subject, expected.id.objectType, expected.id.name).cmd;
    expectNotNull("command", m_cmd != nullptr);
    m_subject.forget();
  }

  [[nodiscard]] CmdResult setValues(const core::IContainer* values) {
    return m_cmd->onSetCmdValues(values, source(), &m_obj, false);
  }
  /// Gives it the parameters that a client sent.
  void take(const comm::datalayer::Variant& parameters) {
    const auto marshalled = marshal(m_subject, m_expected.id.objectType, m_expected.id.name, &parameters);
    expectEqual("result of the marshalling", marshalled.result, CmdResult{0x00110000});
    expectEqual("result of onSetCmdValues", setValues(marshalled.container.get()), CmdResult{0x00110000});
  }
  void expectTraced(const Texts& expected) { expectEqual("traces", m_subject.traces(), expected); }
  [[nodiscard]] std::string error(const std::string& function, const std::string& text) const {
    return errorOf(m_expected.unit, function, text);
  }
  /// What it publishes, in words.
  [[nodiscard]] std::string published(test::FakeJobDataHandler& handler) {
    expectEqual("result of onRegisterJobListsInputs", m_cmd->onRegisterJobListsInputs(handler), CmdResult{0x00110000});
    for (const auto& [key, record] : handler.m_published) {
      if (key.second == m_subject.host.sectionMgr.valueOf("CMD_DATA")) {
        return describe(record);
      }
    }
    return "nothing";
  }

  Subject m_subject;
  test::FakeObj& m_obj;
  const ExpectedCommand& m_expected;
  std::unique_ptr<core::cmd::ICmdGeneric> m_cmd;
};

void noValues(const Bundle& bundle, const ExpectedCommand& expected) {
  LooseCmd loose(bundle, expected);
  expectEqual("result", loose.setValues(nullptr), expected.isSend() ? CmdResult{0xF0110011} : CmdResult{0xF011000E});
  loose.expectTraced({loose.error("onSetCmdValues", expected.isSend() ? "cmdValues==nullptr" : expected.wrongContainer)});
}

void otherValues(const Bundle& bundle, const ExpectedCommand& expected) {
  LooseCmd loose(bundle, expected);
  core::IObjPtr stranger(nullptr);
  kavo::job::SendSignalJobPars jobRecord;
  kavo::job::JoinJobPars joinRecord;
  for (const core::IContainer* values : std::initializer_list<const core::IContainer*>{&stranger, &jobRecord, &joinRecord}) {
    loose.m_subject.forget();
    expectEqual("result", loose.setValues(values), CmdResult{0xF011000E});
    loose.expectTraced({loose.error("onSetCmdValues", expected.wrongContainer)});
  }
}

/// The record that a command with a signal offers its jobs.
std::string recordOf(const ExpectedCommand& expected, std::uint32_t signalId, bool autoReset) {
  if (expected.isSend()) {
    return fmt::format("SendSignalJobPars signalId={} reset={}", signalId, expected.id.name == "ResetSignal");
  }
  return expected.id.name == "WaitForSignal"
             ? fmt::format("WaitForSignalJobPars signalId={} autoReset={}", signalId, autoReset)
             : fmt::format("WaitForSignalResetJobPars signalId={}", signalId);
}

void takesValues(const Bundle& bundle, const ExpectedCommand& expected) {
  LooseCmd loose(bundle, expected);
  for (const bool autoReset : {true, false}) {
    loose.take(waitParameters(autoReset ? 42 : 7, autoReset));
    test::FakeJobDataHandler handler(loose.m_subject.host.calls);
    expectEqual("what its jobs read", loose.published(handler), recordOf(expected, autoReset ? 42 : 7, autoReset));
  }
  loose.expectTraced({});
}

void freshRecord(const Bundle& bundle, const ExpectedCommand& expected) {
  LooseCmd loose(bundle, expected);
  test::FakeJobDataHandler handler(loose.m_subject.host.calls);
  const std::string zeros = expected.isSend() ? "SendSignalJobPars signalId=0 reset=false" : recordOf(expected, 0, false);
  expectEqual("what its jobs read", loose.published(handler), zeros);
}

void validSignals(const Bundle& bundle, const ExpectedCommand& expected) {
  LooseCmd loose(bundle, expected);
  for (const std::uint32_t signalId : {0U, 1U, 98U, 99U}) {
    loose.take(signalParameters(signalId));
    expectEqual("result of onValidate", loose.m_cmd->onValidate(source(), &loose.m_obj.m_dia), CmdResult{0x00110000});
    expectEqual("result of onValidate without a diagnosis", loose.m_cmd->onValidate(source(), nullptr),
                CmdResult{0x00110000});
  }
  loose.expectTraced({});
  expectEqual("diagnoses", loose.m_obj.m_dia.m_reports.size(), 0U);
}

struct InvalidSignal {
  std::uint32_t id;
  std::string shown;
};
const std::vector<InvalidSignal> INVALID_SIGNALS = {
    {100, "100"}, {101, "101"}, {256, "256"}, {0x7FFFFFFF, "2147483647"}, {0x80000000, "-2147483648"}, {0xFFFFFFFF, "-1"}};

std::string refusal(const ExpectedCommand& expected, const InvalidSignal& signal) {
  return expected.isSend() ? signal.shown + " is not a valid signal ID"
                           : "m_cmdValues.signalId (=" + signal.shown + ") is not valid";
}

void invalidSignal(const Bundle& bundle, const ExpectedCommand& expected, bool hasDia) {
  LooseCmd loose(bundle, expected);
  for (const auto& signal : INVALID_SIGNALS) {
    loose.take(signalParameters(signal.id));
    loose.m_subject.forget();
    expectEqual("result", loose.m_cmd->onValidate(source(), hasDia ? &loose.m_obj.m_dia : nullptr), CmdResult{0xF011001D});
    loose.expectTraced({loose.error("onValidate", refusal(expected, signal))});
    const Texts reported = {"dia.report(Invalid signal ID)", "dia.close()"};
    expectEqual("calls of the host", loose.m_subject.host.calls.all(), hasDia && expected.isSend() ? reported : Texts{});
  }
}

void diagnosis(const Bundle& bundle, const ExpectedCommand& expected) {
  LooseCmd loose(bundle, expected);
  loose.take(signalParameters(100));
  expectEqual("result", loose.m_cmd->onValidate(source(), &loose.m_obj.m_dia), CmdResult{0xF011001D});
  const auto& reports = loose.m_obj.m_dia.m_reports;
  expectEqual("diagnoses", reports.size(), 1U);
  expectEqual("main code", reports[0].mainCode, 0x090F0FFFU);
  expectEqual("detail code", reports[0].detailCode, 0x0C570101U);
  expectEqual("text", reports[0].text, "Invalid signal ID");
  expectEqual("client of the source", reports[0].source.client, source().client);
  expectEqual("file of the source", reports[0].source.file, source().file);
  expectEqual("line of the source", reports[0].source.line, source().line);
  expectTrue("closed", reports[0].isClosed);
}

void publishes(const Bundle& bundle, const ExpectedCommand& expected) {
  LooseCmd loose(bundle, expected);
  test::FakeJobDataHandler handler(loose.m_subject.host.calls);
  loose.m_subject.host.calls.fail("handler.registerRead", 0xF0000020);
  (void)loose.m_cmd->onRegisterJobListsInputs(handler);
  const std::string record = expected.isSend()                     ? "SendSignalJobPars"
                             : expected.isJoin()                   ? "JoinJobPars"
                             : expected.id.name == "WaitForSignal" ? "WaitForSignalJobPars"
                                                                   : "WaitForSignalResetJobPars";
  auto& host = loose.m_subject.host;
  expectEqual("calls", host.calls.of({"handler.registerPublish"}),
              Texts{fmt::format("handler.registerPublish({}, {}, onRegisterJobListsInputs)",
                                host.jobDataIDMgr.getID(record.c_str()), host.sectionMgr.valueOf("CMD_DATA"))});
}

void refusedPublish(const Bundle& bundle, const ExpectedCommand& expected) {
  LooseCmd loose(bundle, expected);
  test::FakeJobDataHandler handler(loose.m_subject.host.calls);
  loose.m_subject.host.calls.fail("handler.registerPublish", 0xF0000021);
  expectEqual("result", loose.m_cmd->onRegisterJobListsInputs(handler), CmdResult{0xF011001D});
  expectEqual("records read", loose.m_subject.host.calls.count("handler.registerRead"), 0);
  if (expected.isJoin()) {
    expectEqual("number of traces", loose.m_subject.traces("Error cmd_join onRegisterJobListsInputs").size(), 1U);
    return;
  }
  loose.expectTraced({loose.error("onRegisterJobListsInputs",
                                  expected.failedPublish + std::to_string(static_cast<std::int32_t>(0xF0000021)))});
}

Checks signalChecks(const ExpectedCommand& expected) {
  const auto with = [&expected](auto* body) { return [&expected, body](const Bundle& bundle) { body(bundle, expected); }; };
  Checks checks = {
      {"command.takes-values-" + expected.label, "the parameters are what the job reads", with(&takesValues)},
      {"command.fresh-record-" + expected.label, "a new command offers a record of zeros", with(&freshRecord)},
      {"command.valid-signal-" + expected.label, "signals up to 99 are accepted without a word", with(&validSignals)},
      {"command.invalid-signal-" + expected.label,
       "signals from 100 on are refused, traced, and reported by those that do so",
       [&expected](const Bundle& bundle) { invalidSignal(bundle, expected, true); }},
      {"command.invalid-signal-without-diagnosis-" + expected.label,
       "without a diagnosis a wrong signal is traced all the same",
       [&expected](const Bundle& bundle) { invalidSignal(bundle, expected, false); }},
  };
  if (expected.isSend()) {
    checks.push_back({"command.diagnosis-" + expected.label, "a wrong signal is reported with its codes, source and text",
                      with(&diagnosis)});
  }
  return checks;
}

}  // namespace

Checks commandChecks() {
  Checks checks;
  for (const auto& expected : expectedCommands()) {
    const auto with = [&expected](auto* body) {
      return [&expected, body](const Bundle& bundle) { body(bundle, expected); };
    };
    checks.push_back(
        {"command.no-values-" + expected.label, "no parameters are refused with code and text", with(&noValues)});
    checks.push_back({"command.other-values-" + expected.label, "parameters of another type are refused with code and text",
                      with(&otherValues)});
    checks.push_back({"command.publishes-" + expected.label,
                      "the record is offered once, in the section for data of commands", with(&publishes)});
    checks.push_back({"command.refused-publish-" + expected.label,
                      "a record that the host does not take refuses the command", with(&refusedPublish)});
    if (!expected.isJoin()) {
      checks = together({checks, signalChecks(expected)});
    }
  }
  return checks;
}

}  // namespace motion::conformance
