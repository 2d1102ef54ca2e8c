// The seven tables of parameters, and what becomes of a buffer that is handed to their marshalling functions.
#include "conformance/marshal_cases.h"

#include <algorithm>

#include "conformance/buffered_cmd.h"
#include "conformance/buffered_option.h"
#include "conformance/expect.h"
#include "conformance/expected_commands.h"
#include "conformance/records.h"
#include "conformance/trace_texts.h"
#include "support/parameter_table.h"

namespace motion::conformance {

using comm::datalayer::Variant;
using core::cmd::CmdResult;

namespace {

std::vector<std::uint8_t> goodBytes(const std::string& record) {
  test::ParameterTable table;
  if (record == "CmdJoinPars") {
    return table.withTexts(4, {"B", "A", "a longer name"}).with<std::uint8_t>(6, 1).finishBytes();
  }
  if (record == "CmdOptionSetSignalPars") {
    return table.withText(4, "PermOn").with<std::uint32_t>(6, 42).finishBytes();
  }
  if (record == "SwitchOnPathParsList") {
    return table.withText(4, "PermOn")
        .with(12, {1.5, -2.25, 4096})
        .with<std::uint8_t>(6, 0)
        .with<std::uint32_t>(8, 42)
        .with<std::uint8_t>(10, 1)
        .with<double>(14, 0.125)
        .with<double>(16, 0.25)
        .finishBytes();
  }
  table.with<std::uint32_t>(4, 42);
  if (record == "WaitForSignalJobPars") {
    table.with<std::uint8_t>(6, 1);
  }
  return table.finishBytes();
}

std::string goodRecord(const std::string& record) {
  if (record == "CmdJoinPars") {
    return "CmdJoinPars group=[B,A,a longer name] sync=true";
  }
  if (record == "SwitchOnPathParsList") {
    return "SwitchOnPathParsList (mode=0 signalId=42 action=1 target=(1.5,-2.25,4096) radius=0.125 preTriggerTime=0.25 "
           "reached=false)";
  }
  return record + " signalId=42" + (record == "WaitForSignalJobPars" ? " autoReset=true" : "");
}

MarshalCase caseOf(const ExpectedCommand& command) {
  const std::string record = command.isSend()                     ? "CmdSendSignalPars"
                             : command.isJoin()                   ? "CmdJoinPars"
                             : command.id.name == "WaitForSignal" ? "WaitForSignalJobPars"
                                                                  : "WaitForSignalResetJobPars";
  return {command.label,
          command.id.objectType,
          command.id.name,
          false,
          command.unit,
          command.marshal,
          command.isSend() || command.isJoin() ? "'Variant data type({}), is not FLATBUFFERS"
                                               : "flatBufferData type({}) != FLATBUFFERS",
          command.isSend() ? "Invalid FlatBuffer description" : "Invalid FlatBuffer structure",
          goodBytes(record),
          goodRecord(record),
          record};
}

MarshalCase caseOf(const ExpectedOption& option) {
  const std::string record = option.id.name == "SwitchOnPath" ? "SwitchOnPathParsList" : "CmdOptionSetSignalPars";
  return {option.label,
          option.id.objectType,
          option.id.name,
          true,
          option.unit,
          "onMarshall",
          "flatBufferData type({}) != FLATBUFFERS",
          "Invalid FlatBuffer structure",
          goodBytes(record),
          goodRecord(record),
          record};
}

}  // namespace

const std::vector<MarshalCase>& marshalCases() {
  static const std::vector<MarshalCase> cases = [] {
    std::vector<MarshalCase> all;
    for (const auto& command : expectedCommands()) {
      all.push_back(caseOf(command));
    }
    for (const auto& option : expectedOptions()) {
      all.push_back(caseOf(option));
    }
    return all;
  }();
  return cases;
}

const MarshalCase& marshalCase(const std::string& label) {
  const auto found = std::ranges::find(marshalCases(), label, &MarshalCase::label);
  expectNotNull("table " + label, found != marshalCases().end());
  return *found;
}

MarshalAnswer answerTo(Subject& subject, const MarshalCase& table, const Variant* data) {
  if (table.isOption) {
    const auto answer = marshalOption(subject, table.type, table.name, data, UNTOUCHED);
    return {answer.result, describe(answer.container.get()), answer.container != nullptr, answer.permType};
  }
  const auto answer = marshal(subject, table.type, table.name, data);
  return {answer.result, describe(answer.container.get()), answer.isOwned, UNTOUCHED};
}

MarshalAnswer answerTo(Subject& subject, const MarshalCase& table, const std::vector<std::uint8_t>& bytes) {
  const auto data = Variant::fromFlatBuffer(bytes);
  return answerTo(subject, table, &data);
}

void expectRefused(Subject& subject, const MarshalCase& table, const Variant* data, std::uint32_t code,
                   const std::string& text) {
  subject.forget();
  const auto answer = answerTo(subject, table, data);
  expectEqual("result", answer.result, static_cast<CmdResult>(code));
  expectEqual("record", answer.record, "null");
  expectFalse("the host was told to own a record", answer.isOwned);
  expectEqual("traces", subject.traces(), Texts{errorOf(table.unit, table.function, text)});
}

void expectInvalidBuffer(Subject& subject, const MarshalCase& table, const std::vector<std::uint8_t>& bytes) {
  const auto data = Variant::fromFlatBuffer(bytes);
  expectRefused(subject, table, &data, 0xF011000F, table.invalidBuffer);
  expectEqual("permanence left alone", answerTo(subject, table, &data).permType, UNTOUCHED);
}

}  // namespace motion::conformance
