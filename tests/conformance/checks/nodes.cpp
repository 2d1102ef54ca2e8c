// The nodes: what the folder and the signals answer.
#include <fmt/format.h>

#include "conformance/check.h"
#include "conformance/checks/frame_parts.h"
#include "conformance/expect.h"
#include "conformance/node_answer.h"
#include "conformance/subject.h"
#include "conformance/trace_texts.h"

namespace motion::conformance {
namespace {

using comm::datalayer::IProviderNode;
using comm::datalayer::Variant;

const std::string NOT_IMPLEMENTED = "80010002 090F2040 0C57010B not implemented ,DLResult: DL_UNSUPPORTED";

std::string addressOf(const std::string& signal) {
  return SIGNALS_FOLDER + "/" + signal;
}

using Operation = NodeAnswer (*)(IProviderNode& node, const std::string& address);

NodeAnswer writeTrue(IProviderNode& node, const std::string& address) {
  const Variant data(true);
  return write(node, address, &data);
}

void notImplemented(const Bundle& bundle, const std::string& node, const std::string& address, Operation operation) {
  Subject subject(bundle);
  subject.start();
  expectEqual("answer", errorOf(operation(nodeOf(subject, node), address)), NOT_IMPLEMENTED);
  expectEqual("calls into the host", subject.host.calls.all(), Texts{});
}

void expectNames(const NodeAnswer& answer) {
  expectEqual("result", answer.result, comm::datalayer::DL_OK);
  expectEqual("variant type", static_cast<std::uint32_t>(answer.data.getType()), 24U);
  Texts expected;
  for (std::uint32_t i = 0; i < NUMBER_OF_SIGNALS; ++i) {
    expected.push_back(fmt::format("{:02}", i));
  }
  expectEqual("names", *answer.data.getStrings(), expected);
}

void browses(const Bundle& bundle, const std::string& address) {
  Subject subject(bundle);
  subject.start();
  auto& node = nodeOf(subject, SIGNAL_NODE);
  expectNames(browse(node, address));
  expectNames(browse(node, address));
}

/// Reads a signal that is set, beside others that are not.
void reads(const Bundle& bundle, const std::string& signal, std::uint32_t signalId) {
  Subject subject(bundle);
  subject.start();
  auto& node = nodeOf(subject, SIGNAL_NODE);
  for (const bool isSet : {false, true}) {
    subject.out(signalId) = isSet ? 1 : 0;
    const auto answer = read(node, addressOf(signal));
    expectEqual("result", answer.result, comm::datalayer::DL_OK);
    expectEqual("variant type", static_cast<std::uint32_t>(answer.data.getType()), 1U);
    expectEqual("value", *answer.data.getBool(), isSet);
  }
  expectEqual("traces", subject.traces(), Texts{});
}

void writes(const Bundle& bundle, const std::string& signal, std::uint32_t signalId) {
  Subject subject(bundle);
  subject.start();
  auto& node = nodeOf(subject, SIGNAL_NODE);
  for (const bool value : {true, false}) {
    const Variant data(value);
    const auto answer = write(node, addressOf(signal), &data);
    expectEqual("result", answer.result, comm::datalayer::DL_OK);
    expectFalse("the answer has data", answer.hasData);
    expectEqual("output counter", subject.out(signalId), std::uint8_t(value ? 1 : 0));
    expectEqual("input counter", subject.in(signalId), std::uint8_t{0});
  }
  expectEqual("traces", subject.traces(), Texts{});
}

/// An address that is refused by reading and writing alike, before any function of the host is called.
void refusesAddress(const Bundle& bundle, const std::string& address) {
  Subject subject(bundle);
  subject.start();
  auto& node = nodeOf(subject, SIGNAL_NODE);
  const auto expected =
      fmt::format("80010001 090F2040 0C570101 Can not get signalId: {} ,DLResult: DL_INVALID_ADDRESS", address);
  expectEqual("answer to a read", errorOf(read(node, address)), expected);
  expectEqual("answer to a write", errorOf(writeTrue(node, address)), expected);
  expectEqual("calls into the host", subject.host.calls.all(), Texts{});
}

void refusesData(const Bundle& bundle, const Variant* data, const std::string& expected) {
  Subject subject(bundle);
  subject.start();
  // The data is looked at before the address.
  expectEqual("answer", errorOf(write(nodeOf(subject, SIGNAL_NODE), "nowhere", data)), expected);
  expectEqual("calls into the host", subject.host.calls.all(), Texts{});
}

Checks folderChecks() {
  struct Row {
    const char* name;
    Operation operation;
  };
  static constexpr Row ROWS[] = {
      {"create", create}, {"remove", remove}, {"browse", browse}, {"read", read}, {"write", writeTrue}};
  Checks checks;
  for (const auto& row : ROWS) {
    checks.push_back(
        {fmt::format("nodes.folder-{}", row.name), fmt::format("the folder does not implement {}", row.name),
         [row](const Bundle& bundle) { notImplemented(bundle, SIGNALS_FOLDER, SIGNALS_FOLDER, row.operation); }});
    if (row.operation == &create || row.operation == &remove) {
      checks.push_back(
          {fmt::format("nodes.signal-{}", row.name), fmt::format("a signal does not implement {}", row.name),
           [row](const Bundle& bundle) { notImplemented(bundle, SIGNAL_NODE, addressOf("05"), row.operation); }});
    }
  }
  return checks;
}

Checks addressChecks() {
  struct Row {
    const char* name;
    const char* sentence;
    std::string address;
  };
  const Row rows[] = {
      {"empty-number", "an address that ends behind the folder", addressOf("")},
      {"letters", "letters", addressOf("abc")},
      {"letter-behind", "a letter behind the number", addressOf("5x")},
      {"letter-before", "a letter before the number", addressOf("x5")},
      {"plus", "a sign", addressOf("+5")},
      {"minus", "a negative number", addressOf("-1")},
      {"blank-before", "a blank before the number", addressOf(" 5")},
      {"blank-behind", "a blank behind the number", addressOf("5 ")},
      {"hexadecimal", "hexadecimal digits", addressOf("0x5")},
      {"level-behind", "another level behind the number", addressOf("5/6")},
      {"overflow", "a number of more than 32 bits", addressOf("4294967296")},
      {"long-overflow", "a number of more than 64 bits", addressOf("99999999999999999999")},
      {"wildcard", "the wildcard", SIGNAL_NODE},
      {"folder", "the folder itself", SIGNALS_FOLDER},
      {"elsewhere", "an address elsewhere", "motion/state/functions/kavo/rt-data/signals_in/is/long/enough/5"},
      {"no-address", "no address", ""},
      {"folder-inside", "an address that holds the folder, but not at its start", "x" + addressOf("5")},
  };
  Checks checks;
  for (const auto& row : rows) {
    checks.push_back({fmt::format("nodes.address-{}", row.name), fmt::format("{} is no signal's address", row.sentence),
                      [address = row.address](const Bundle& bundle) { refusesAddress(bundle, address); }});
  }
  return checks;
}

}  // namespace

Checks nodeChecks() {
  const auto browsing = [](const std::string& address) {
    return [address](const Bundle& bundle) { browses(bundle, address); };
  };
  const auto reading = [](const std::string& signal, std::uint32_t signalId) {
    return [=](const Bundle& bundle) { reads(bundle, signal, signalId); };
  };
  const auto writing = [](const std::string& signal, std::uint32_t signalId) {
    return [=](const Bundle& bundle) { writes(bundle, signal, signalId); };
  };
  const auto noBoolean = [](const Variant& data) {
    return [data](const Bundle& bundle) {
      refusesData(bundle, &data,
                  "80010006 090F2040 0C570101 no data provided, expected boolean ,DLResult: DL_TYPE_MISMATCH");
    };
  };
  const Checks own = {
      {"nodes.browse", "browsing the node of the signals gives the names 00 to 99", browsing(SIGNAL_NODE)},
      {"nodes.browse-any-address", "the address of a browse makes no difference", browsing("somewhere/else")},
      {"nodes.read-first", "00 is signal 0", reading("00", 0)},
      {"nodes.read-last", "99 is signal 99", reading("99", 99)},
      {"nodes.read-one-digit", "a number may have one digit", reading("5", 5)},
      {"nodes.read-leading-zeros", "zeros may lead, and do not make a number octal", reading("00010", 10)},
      {"nodes.write", "writing true sets and writing false resets, on the side of the system functions", writing("05", 5)},
      {"nodes.write-last", "99 can be written", writing("99", 99)},
      {"nodes.write-no-data", "a write without data is refused",
       [](const Bundle& bundle) {
         refusesData(bundle, nullptr, "8001000A 090F2040 0C570101 Invalid data ,DLResult: DL_INVALID_HANDLE");
       }},
      {"nodes.write-integer", "a write of an integer is refused", noBoolean(Variant(std::int32_t{1}))},
      {"nodes.write-text", "a write of a text is refused", noBoolean(Variant("true"))},
      {"nodes.write-unknown", "a write of a value without a type is refused", noBoolean(Variant())},
  };
  return together({folderChecks(), own, addressChecks(), signalNodeChecks()});
}

}  // namespace motion::conformance
