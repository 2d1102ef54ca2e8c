// Good buffers of parameters that were cut or changed on their way.
#include <fmt/format.h>

#include <algorithm>

#include "conformance/checks/motion_parts.h"
#include "conformance/expect.h"
#include "conformance/marshal_cases.h"
#include "conformance/trace_texts.h"

namespace motion::conformance {
namespace {

using Bytes = std::vector<std::uint8_t>;

/// The codes with which damaged parameters may be refused: not readable, and a field that must be there is gone.
bool isRefusal(const MarshalAnswer& answer) {
  const auto code = core::toCode(answer.result);
  return code == 0xF011000F || code == 0xF0110011;
}

/// Ended in a record that the host owns, or in a refusal without one; never in between.
void expectAllOrNothing(const MarshalCase& table, const MarshalAnswer& answer, const std::string& what) {
  if (answer.isOkay()) {
    expectTrue(what + ": a record of the table, not " + answer.record, answer.record.starts_with(table.record));
    expectTrue(what + ": the host owns the record", answer.isOwned);
    return;
  }
  expectTrue(fmt::format("{}: a refusal, not 0x{:08X}", what, core::toCode(answer.result)), isRefusal(answer));
  expectEqual(what + ": record", answer.record, "null");
}

void empty(const Bundle& bundle, const MarshalCase& table) {
  Subject subject(bundle);
  subject.start();
  expectInvalidBuffer(subject, table, {});
}

void truncated(const Bundle& bundle, const MarshalCase& table) {
  Subject subject(bundle);
  subject.start();
  constexpr std::size_t FILLING = 8;  // behind a text there may be bytes that mean nothing
  for (std::size_t size = 0; size < table.good.size(); ++size) {
    const Bytes bytes(table.good.begin(), table.good.begin() + static_cast<std::ptrdiff_t>(size));
    if (size + FILLING <= table.good.size()) {
      expectInvalidBuffer(subject, table, bytes);
      continue;
    }
    const auto answer = answerTo(subject, table, bytes);
    const auto what = fmt::format("the first {} bytes", size);
    expectAllOrNothing(table, answer, what);
    if (answer.isOkay()) {
      expectEqual(what + ": record", answer.record, table.goodRecord);
    }
  }
}

void flipped(const Bundle& bundle, const MarshalCase& table) {
  Subject subject(bundle);
  subject.start();
  std::size_t refusals = 0;
  for (std::size_t bit = 0; bit < table.good.size() * 8; ++bit) {
    Bytes bytes = table.good;
    bytes[bit / 8] ^= static_cast<std::uint8_t>(1U << bit % 8);
    const auto answer = answerTo(subject, table, bytes);
    expectAllOrNothing(table, answer, fmt::format("bit {} of byte {}", bit % 8, bit / 8));
    refusals += answer.isOkay() ? 0 : 1;
  }
  expectTrue(fmt::format("some of {} flipped bits are noticed", table.good.size() * 8), refusals >= 32);
}

void filled(const Bundle& bundle, const MarshalCase& table) {
  Subject subject(bundle);
  subject.start();
  for (std::size_t position = 0; position < table.good.size(); ++position) {
    for (const std::uint8_t value : {0x00, 0x7F, 0x80, 0xFF}) {
      Bytes bytes = table.good;
      std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(position), std::min<std::size_t>(4, bytes.size() - position),
                  value);
      expectAllOrNothing(table, answerTo(subject, table, bytes), fmt::format("bytes from {} on are {}", position, value));
    }
  }
}

void extended(const Bundle& bundle, const MarshalCase& table) {
  Subject subject(bundle);
  subject.start();
  Bytes bytes = table.good;
  bytes.resize(bytes.size() + 64, 0xFF);
  const auto answer = answerTo(subject, table, bytes);
  expectEqual("result", answer.result, core::cmd::CmdResult{0x00110000});
  expectEqual("record", answer.record, table.goodRecord);
}

}  // namespace

Checks damagedBufferChecks() {
  Checks checks;
  for (const auto& table : marshalCases()) {
    const auto with = [&table](auto* body) { return [&table, body](const Bundle& bundle) { body(bundle, table); }; };
    checks.push_back({"marshalling.empty-" + table.label, "an empty buffer is refused with its text", with(&empty)});
    checks.push_back({"marshalling.truncated-" + table.label, "a buffer that was cut at any length is refused with its text",
                      with(&truncated)});
    checks.push_back({"marshalling.flipped-" + table.label,
                      "a buffer with any bit flipped gives a record that the host owns, or a refusal", with(&flipped)});
    checks.push_back({"marshalling.overwritten-" + table.label,
                      "a buffer with any four bytes overwritten gives a record that the host owns, or a refusal",
                      with(&filled)});
    checks.push_back({"marshalling.extended-" + table.label, "bytes behind a good buffer do not matter", with(&extended)});
  }
  return checks;
}

}  // namespace motion::conformance
