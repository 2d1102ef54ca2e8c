// From a value of the data layer to a parameter record: each field, each default and each refusal.
#include <fmt/format.h>

#include "conformance/checks/motion_parts.h"
#include "conformance/expect.h"
#include "conformance/marshal_cases.h"
#include "conformance/trace_texts.h"
#include "support/parameter_table.h"

namespace motion::conformance {
namespace {

using comm::datalayer::Variant;
using core::cmd::CmdResult;
using test::ParameterTable;

void good(const Bundle& bundle, const MarshalCase& table) {
  Subject subject(bundle);
  subject.start();
  const auto answer = answerTo(subject, table, table.good);
  expectEqual("result", answer.result, CmdResult{0x00110000});
  expectEqual("record", answer.record, table.goodRecord);
  expectTrue("the host owns the record", answer.isOwned);
  expectEqual("traces", subject.traces(), Texts{});
  expectEqual("calls of the host", subject.host.calls.all(), Texts{});
}

void noData(const Bundle& bundle, const MarshalCase& table) {
  Subject subject(bundle);
  subject.start();
  expectRefused(subject, table, nullptr, 0xF0110011, "Invalid flatBufferData");
  const auto entry = subject.host.traceSink.entries().at(0);
  expectEqual("format of the trace", entry.format, "%s");
  expectEqual("origin of the trace", entry.origin.value_or("null"), "motion.kavo");
  expectEqual("class type of the trace", entry.classType, 1U);
}

void otherTypes(const Bundle& bundle, const MarshalCase& table) {
  Subject subject(bundle);
  subject.start();
  const std::vector<std::pair<Variant, int>> others = {
      {Variant(), 0},     {Variant(true), 1},    {Variant(std::int32_t{-1}), 6},          {Variant(std::uint32_t{42}), 7},
      {Variant(1.5), 11}, {Variant("Once"), 12}, {Variant(Variant::Strings{"Once"}), 24},
  };
  for (const auto& [data, number] : others) {
    expectRefused(subject, table, &data, 0xF011000F, fmt::format(fmt::runtime(table.wrongType), number));
  }
}

void unalikeRecords(const Bundle& bundle, const MarshalCase& table) {
  Subject subject(bundle);
  subject.start();
  const auto first = answerTo(subject, table, table.good);
  const auto second = answerTo(subject, table, table.good);
  expectEqual("second record", second.record, first.record);
  expectEqual("second result", second.result, first.result);
}

/// A buffer, and the record that it gives.
struct FieldRow {
  std::string table;
  std::string what;
  std::vector<std::uint8_t> bytes;
  std::string record;
};

void field(const Bundle& bundle, const FieldRow& row) {
  Subject subject(bundle);
  subject.start();
  const auto answer = answerTo(subject, marshalCase(row.table), row.bytes);
  expectEqual("result", answer.result, CmdResult{0x00110000});
  expectEqual("record", answer.record, row.record);
  expectEqual("traces", subject.traces(), Texts{});
}

std::vector<FieldRow> signalRows() {
  std::vector<FieldRow> rows;
  const std::vector<std::pair<std::string, std::string>> tables = {
      {"set-signal-kinematics", "CmdSendSignalPars"},
      {"reset-signal-axis", "CmdSendSignalPars"},
      {"wait-for-signal-reset-axis", "WaitForSignalResetJobPars"}};
  for (const auto& [table, record] : tables) {
    rows.push_back({table, "empty-table", ParameterTable().finishBytes(), record + " signalId=0"});
    rows.push_back({table, "largest-signal", ParameterTable().with<std::uint32_t>(4, 0xFFFFFFFF).finishBytes(),
                    record + " signalId=4294967295"});
    rows.push_back({table, "further-fields",
                    ParameterTable().with<std::uint32_t>(4, 7).with<std::uint32_t>(8, 9).finishBytes(),
                    record + " signalId=7"});
  }
  return rows;
}

std::vector<FieldRow> waitRows() {
  const std::string table = "wait-for-signal-axis";
  const auto record = [](std::uint32_t signalId, bool autoReset) {
    return fmt::format("WaitForSignalJobPars signalId={} autoReset={}", signalId, autoReset);
  };
  std::vector<FieldRow> rows = {
      {table, "empty-table", ParameterTable().finishBytes(), record(0, false)},
      {table, "no-auto-reset", ParameterTable().with<std::uint32_t>(4, 7).finishBytes(), record(7, false)},
      {table, "no-signal", ParameterTable().with<std::uint8_t>(6, 1).finishBytes(), record(0, true)},
  };
  for (const int flag : {0, 1, 2, 128, 255}) {
    rows.push_back({table, fmt::format("auto-reset-{}", flag),
                    ParameterTable().with<std::uint32_t>(4, 7).with(6, static_cast<std::uint8_t>(flag)).finishBytes(),
                    record(7, flag != 0)});
  }
  return rows;
}

std::vector<FieldRow> joinRows() {
  const std::string table = "join-axis";
  return {
      {table, "no-flag", ParameterTable().withTexts(4, {"B", "A"}).finishBytes(), "CmdJoinPars group=[B,A] sync=false"},
      {table, "empty-group", ParameterTable().withTexts(4, {}).finishBytes(), "CmdJoinPars group=[] sync=false"},
      {table, "flag-255", ParameterTable().withTexts(4, {"A"}).with<std::uint8_t>(6, 255).finishBytes(),
       "CmdJoinPars group=[A] sync=true"},
      {table, "same-name-twice", ParameterTable().withTexts(4, {"A", "B", "A"}).finishBytes(),
       "CmdJoinPars group=[A,B,A] sync=false"},
      {table, "odd-names", ParameterTable().withTexts(4, {"", "ä b", std::string(300, 'x')}).finishBytes(),
       "CmdJoinPars group=[,ä b," + std::string(300, 'x') + "] sync=false"},
  };
}

std::vector<FieldRow> pathRows() {
  const std::string table = "option-switch-on-path";
  const auto record = [](const std::string& before, const std::string& target, const std::string& behind) {
    return "SwitchOnPathParsList (" + before + " target=" + target + " " + behind + " reached=false)";
  };
  const std::string none = "radius=0 preTriggerTime=0";
  return {
      {table, "no-numbers", ParameterTable().withText(4, "Once").with(12, {1, 2, 3}).finishBytes(),
       record("mode=0 signalId=0 action=0", "(1,2,3)", none)},
      {table, "target-anywhere", ParameterTable().withText(4, "Once").with(12, {1, 2, 3}).finishMovedBytes(),
       record("mode=0 signalId=0 action=0", "(1,2,3)", none)},
      {table, "mode", ParameterTable().withText(4, "Once").with(12, {1, 2, 3}).with<std::uint8_t>(6, 255).finishBytes(),
       record("mode=255 signalId=0 action=0", "(1,2,3)", none)},
      {table, "signal",
       ParameterTable().withText(4, "Once").with(12, {1, 2, 3}).with<std::uint32_t>(8, 0xFFFFFFFF).finishBytes(),
       record("mode=0 signalId=4294967295 action=0", "(1,2,3)", none)},
      {table, "action", ParameterTable().withText(4, "Once").with(12, {1, 2, 3}).with<std::uint8_t>(10, 2).finishBytes(),
       record("mode=0 signalId=0 action=2", "(1,2,3)", none)},
      {table, "radius", ParameterTable().withText(4, "Once").with(12, {1, 2, 3}).with<double>(14, -1.5).finishBytes(),
       record("mode=0 signalId=0 action=0", "(1,2,3)", "radius=-1.5 preTriggerTime=0")},
      {table, "pre-trigger-time",
       ParameterTable().withText(4, "Once").with(12, {1, 2, 3}).with<double>(16, -2.5).finishBytes(),
       record("mode=0 signalId=0 action=0", "(1,2,3)", "radius=0 preTriggerTime=-2.5")},
      {table, "off-without-target", ParameterTable().withText(4, "PermOff").with<double>(14, 3).finishBytes(),
       record("mode=0 signalId=0 action=0", "(0,0,0)", "radius=3 preTriggerTime=0")},
      {table, "off-ignores-target", ParameterTable().withText(4, "PermOff").with(12, {1, 2, 3}).finishBytes(),
       record("mode=0 signalId=0 action=0", "(0,0,0)", none)},
      {table, "off-ignores-wrong-target", ParameterTable().withText(4, "PermOff").with(12, {1, 2}).finishBytes(),
       record("mode=0 signalId=0 action=0", "(0,0,0)", none)},
  };
}

void joinWithoutGroup(const Bundle& bundle, const std::string& table) {
  Subject subject(bundle);
  subject.start();
  const auto data = ParameterTable().with<std::uint8_t>(6, 1).finish();
  expectRefused(subject, marshalCase(table), &data, 0xF011000F, "No axes defined in group");
}

Checks caseChecks() {
  Checks checks;
  for (const auto& table : marshalCases()) {
    const auto with = [&table](auto* body) { return [&table, body](const Bundle& bundle) { body(bundle, table); }; };
    checks.push_back(
        {"marshalling.good-" + table.label, "a good buffer gives its record, which the host owns", with(&good)});
    checks.push_back({"marshalling.null-" + table.label, "no data is refused with its text", with(&noData)});
    checks.push_back(
        {"marshalling.other-type-" + table.label, "data of another type is refused, and its type named", with(&otherTypes)});
    checks.push_back(
        {"marshalling.twice-" + table.label, "the same buffer gives the same record again", with(&unalikeRecords)});
  }
  return checks;
}

Checks fieldChecks() {
  static const std::vector<FieldRow> rows = [] {
    std::vector<FieldRow> all;
    for (const auto& part : {signalRows(), waitRows(), joinRows(), pathRows()}) {
      all.insert(all.end(), part.begin(), part.end());
    }
    all.push_back({"option-set-signal-axis", "no-signal", ParameterTable().withText(4, "Once").finishBytes(),
                   "CmdOptionSetSignalPars signalId=0"});
    all.push_back({"option-set-signal-kinematics", "signal-100",
                   ParameterTable().withText(4, "Once").with<std::uint32_t>(6, 100).finishBytes(),
                   "CmdOptionSetSignalPars signalId=100"});
    return all;
  }();
  Checks checks;
  for (const auto& row : rows) {
    checks.push_back({"marshalling.field-" + row.table + "-" + row.what,
                      "fields are read from their places, and absent ones are 0 or false",
                      [&row](const Bundle& bundle) { field(bundle, row); }});
  }
  return checks;
}

}  // namespace

Checks marshallingChecks() {
  const Checks join = {
      {"marshalling.join-axis-without-group", "a join without a group is refused with its text",
       [](const Bundle& bundle) { joinWithoutGroup(bundle, "join-axis"); }},
      {"marshalling.join-kinematics-without-group", "a join without a group is refused with its text",
       [](const Bundle& bundle) { joinWithoutGroup(bundle, "join-kinematics"); }},
  };
  return together(
      {caseChecks(), fieldChecks(), join, optionMarshallingChecks(), damagedBufferChecks(), hostileBufferChecks()});
}

}  // namespace motion::conformance
