// From a value of the data layer to a command option: the permanence and the target of a path.
#include <fmt/format.h>

#include "conformance/checks/motion_parts.h"
#include "conformance/expect.h"
#include "conformance/marshal_cases.h"
#include "conformance/trace_texts.h"
#include "support/parameter_table.h"

namespace motion::conformance {
namespace {

using core::cmd::CmdOptPermType;
using core::cmd::CmdResult;
using test::ParameterTable;

const std::string SWITCH_ON_PATH = "option-switch-on-path";
const std::string WRONG_TARGET =
    "cmdDataIn->targetPosition()->size() != sizeof(::motion::kavo::SwitchOnPathPars::targetPos) / sizeof(double)";

/// A table that is good for each option but for its permanence.
std::vector<std::uint8_t> tableOf(const MarshalCase& option, const std::string& permType) {
  if (option.label == SWITCH_ON_PATH) {
    return ParameterTable().withText(4, permType).with(12, {1, 2, 3}).finishBytes();
  }
  return ParameterTable().withText(4, permType).with<std::uint32_t>(6, 42).finishBytes();
}

void permanence(const Bundle& bundle, const MarshalCase& option, const std::string& word, std::uint32_t number) {
  Subject subject(bundle);
  subject.start();
  const auto answer = answerTo(subject, option, tableOf(option, word));
  expectEqual("result", answer.result, CmdResult{0x00110000});
  expectEqual("permanence", static_cast<std::uint32_t>(answer.permType), number);
  expectEqual("traces", subject.traces(), Texts{});
  expectEqual("calls of the host", subject.host.calls.all(), Texts{});
}

void unknownWords(const Bundle& bundle, const MarshalCase& option) {
  Subject subject(bundle);
  subject.start();
  for (const std::string word : {"", "once", "ONCE", "Once ", " Once", "permon", "Permon", "permOn", "permoff", "PERMOFF",
                                 "Permoff", "PermOffx", "Perm", "always", "0", "2"}) {
    const auto data = comm::datalayer::Variant::fromFlatBuffer(tableOf(option, word));
    expectRefused(subject, option, &data, 0xF011000F, "Invalid permType(" + word + ")");
    expectEqual("format of the trace", subject.host.traceSink.entries().at(0).format, "Invalid permType(%s)");
    expectEqual("calls of the host", subject.host.calls.all(), Texts{});
    expectEqual("permanence of the word \"" + word + "\"", answerTo(subject, option, &data).permType,
                CmdOptPermType::PERM_OFF);
  }
}

void noPermanence(const Bundle& bundle, const MarshalCase& option) {
  Subject subject(bundle);
  subject.start();
  const auto data = ParameterTable().with<std::uint32_t>(8, 7).finish();
  expectRefused(subject, option, &data, 0xF011000F, "cmdDataIn->permType==nullptr");
  expectEqual("permanence left alone", answerTo(subject, option, &data).permType, UNTOUCHED);
}

void noTarget(const Bundle& bundle, const std::string& word) {
  Subject subject(bundle);
  subject.start();
  const auto data = ParameterTable().withText(4, word).with<double>(14, 1).finish();
  expectRefused(subject, marshalCase(SWITCH_ON_PATH), &data, 0xF0110011, "cmdDataIn->targetPosition==nullptr");
  expectEqual("calls of the host", subject.host.calls.all(), Texts{});
}

void coordinates(const Bundle& bundle, const std::string& word, std::size_t count) {
  Subject subject(bundle);
  subject.start();
  const auto data = ParameterTable().withText(4, word).with(12, std::vector<double>(count, 1.0)).finish();
  expectRefused(subject, marshalCase(SWITCH_ON_PATH), &data, 0xF011000F, WRONG_TARGET);
  expectEqual("format of the trace", subject.host.traceSink.entries().at(0).format, "%s");
  expectEqual(
      "what is collected", subject.host.calls.all(),
      Texts{fmt::format("collector.add({}, {}, require 3 double values for the \"targetPosition\" field, but found {})",
                        0x090F2001, 0x0C570101, count)});
}

void permanenceFirst(const Bundle& bundle) {
  Subject subject(bundle);
  subject.start();
  const auto data = ParameterTable().withText(4, "never").with(12, {1, 2}).finish();
  expectRefused(subject, marshalCase(SWITCH_ON_PATH), &data, 0xF011000F, "Invalid permType(never)");
  expectEqual("calls of the host", subject.host.calls.all(), Texts{});
}

}  // namespace

Checks optionMarshallingChecks() {
  Checks checks = {
      {"marshalling.permanence-before-target", "a wrong permanence is told before a wrong target", permanenceFirst}};
  for (const auto& option : marshalCases()) {
    if (!option.isOption) {
      continue;
    }
    for (const auto& [word, number] : {std::pair("Once", 0U), std::pair("PermOn", 1U), std::pair("PermOff", 2U)}) {
      checks.push_back({fmt::format("marshalling.permanence-{}-{}", word, option.label),
                        "each of the three words has its number",
                        [&option, word = std::string(word), number = number](const Bundle& bundle) {
                          permanence(bundle, option, word, number);
                        }});
    }
    checks.push_back({"marshalling.unknown-permanence-" + option.label,
                      "any other word, in whatever case, is refused and named",
                      [&option](const Bundle& bundle) { unknownWords(bundle, option); }});
    checks.push_back({"marshalling.no-permanence-" + option.label, "an absent permanence is refused with its text",
                      [&option](const Bundle& bundle) { noPermanence(bundle, option); }});
  }
  for (const std::string word : {"Once", "PermOn"}) {
    checks.push_back({"marshalling.no-target-" + word, "a path without a target is refused with its text",
                      [word](const Bundle& bundle) { noTarget(bundle, word); }});
    for (const std::size_t count : {0U, 1U, 2U, 4U, 1000U}) {
      checks.push_back({fmt::format("marshalling.target-of-{}-{}", count, word),
                        "a target without three coordinates is refused, and collected for the user",
                        [word, count](const Bundle& bundle) { coordinates(bundle, word, count); }});
    }
  }
  return checks;
}

}  // namespace motion::conformance
