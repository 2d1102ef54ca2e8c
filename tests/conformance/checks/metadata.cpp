// What the nodes say about themselves, and the form of their errors.
#include <fmt/format.h>

#include "conformance/check.h"
#include "conformance/expect.h"
#include "conformance/node_answer.h"
#include "conformance/subject.h"
#include "conformance/trace_texts.h"
#include "schemas/datalayer/diagnosis_generated.h"
#include "schemas/datalayer/metadata_generated.h"

namespace motion::conformance {
namespace {

using comm::datalayer::AllowedOperations;
using comm::datalayer::Metadata;

/// A node's metadata; the answer keeps the bytes.
class Described {
 public:
  Described(const Subject& subject, const std::string& node, const std::string& address)
      : m_answer(conformance::metadata(nodeOf(subject, node), address)) {
    expectEqual("result", m_answer.result, comm::datalayer::DL_OK);
    expectEqual("variant type", static_cast<std::uint32_t>(m_answer.data.getType()), 26U);
    const auto buffer = m_answer.data.getFlatBuffer();
    flatbuffers::Verifier verifier(buffer.data(), buffer.size());
    expectTrue("the metadata is a valid buffer", comm::datalayer::VerifyMetadataBuffer(verifier));
  }

  const Metadata* operator->() const { return comm::datalayer::GetMetadata(m_answer.data.getFlatBuffer().data()); }
  /// In the order read, write, create, delete, browse, as in "rw--b".
  [[nodiscard]] std::string operations() const {
    const AllowedOperations* const allowed = (*this)->operations();
    expectNotNull("allowed operations", allowed != nullptr);
    return fmt::format("{}{}{}{}{}", allowed->read() ? 'r' : '-', allowed->write() ? 'w' : '-',
                       allowed->create() ? 'c' : '-', allowed->delete_() ? 'd' : '-', allowed->browse() ? 'b' : '-');
  }
  [[nodiscard]] Texts references() const {
    Texts texts;
    if ((*this)->references() != nullptr) {
      for (const auto* const reference : *(*this)->references()) {
        texts.push_back(reference->type()->str() + " " + reference->targetAddress()->str());
      }
    }
    return texts;
  }

 private:
  NodeAnswer m_answer;
};

std::string textOf(const flatbuffers::String* text) {
  return text != nullptr ? text->str() : "";
}

bool isStored(const void* table, flatbuffers::voffset_t field) {
  return static_cast<const flatbuffers::Table*>(table)->GetOptionalFieldOffset(field) != 0;
}

/// A node's expected metadata.
struct Row {
  std::string node;
  std::string address;
  std::uint32_t nodeClass;
  std::string description;
  std::string operations;
  Texts references;
};

const Row FOLDER = {SIGNALS_FOLDER, SIGNALS_FOLDER, 7, "Kavo signals", "----b", {}};
const Row SIGNAL = {SIGNAL_NODE, SIGNALS_FOLDER + "/05",
                    3,           "Kavo signal",
                    "rw--b",     {"readType types/datalayer/bool8", "writeType types/datalayer/bool8"}};

/// Runs a comparison of one node's metadata.
template <typename COMPARE>
auto comparing(const Row& row, COMPARE compare) {
  return [row, compare](const Bundle& bundle) {
    Subject subject(bundle);
    subject.start();
    compare(Described(subject, row.node, row.address), row);
    expectEqual("calls into the host", subject.host.calls.all(), Texts{});
  };
}

void nodeClass(const Described& found, const Row& row) {
  expectEqual("node class", found->nodeClass(), row.nodeClass);
}
void description(const Described& found, const Row& row) {
  expectEqual("description", textOf(found->description()), row.description);
  expectEqual("description URL", textOf(found->descriptionUrl()), "");
}
void extraText(const Described& found, const Row& /*row*/) {
  expectNull("extra text", found->extraText() == nullptr);
}
void operations(const Described& found, const Row& row) {
  expectEqual("allowed operations", found.operations(), row.operations);
}
void references(const Described& found, const Row& row) {
  expectEqual("references", found.references(), row.references);
}
void noDefaults(const Described& found, const Row& row) {
  const void* const allowed = found->operations();
  expectEqual("reading is stored", isStored(allowed, AllowedOperations::VT_READ), row.operations[0] == 'r');
  expectEqual("writing is stored", isStored(allowed, AllowedOperations::VT_WRITE), row.operations[1] == 'w');
  expectFalse("creating is stored", isStored(allowed, AllowedOperations::VT_CREATE));
  expectFalse("deleting is stored", isStored(allowed, AllowedOperations::VT_DELETE_));
}

void foundByKey(const Described& found, const Row& /*row*/) {
  for (const char* key : {"readType", "writeType"}) {
    const auto* const reference = found->references()->LookupByKey(key);
    expectNotNull(std::string("reference ") + key, reference != nullptr);
    expectEqual("target", reference->targetAddress()->str(), "types/datalayer/bool8");
  }
}

void anyAddress(const Bundle& bundle) {
  Subject subject(bundle);
  subject.start();
  for (const std::string address : {"", "somewhere/else"}) {
    const Described found(subject, SIGNAL_NODE, address);
    description(found, SIGNAL);
    operations(found, SIGNAL);
  }
}

/// The text of an error whose message is that long before the result is put behind it.
std::string errorText(const Subject& subject, std::size_t length) {
  const std::string beginning = "Can not get signalId: ";
  const std::string address(length - beginning.size(), 'x');
  const auto error = errorOf(read(nodeOf(subject, SIGNAL_NODE), address));
  const std::string codes = "80010001 090F2040 0C570101 ";
  expectEqual("codes", error.substr(0, codes.size()), codes);
  return error.substr(codes.size());
}

void errorLength(const Bundle& bundle, std::size_t length, const std::string& behind) {
  Subject subject(bundle);
  subject.start();
  const std::string beginning = "Can not get signalId: ";
  const auto whole = beginning + std::string(length - beginning.size(), 'x') + behind;
  const auto text = errorText(subject, length);
  expectEqual("length of the text", text.size(), std::min<std::size_t>(whole.size(), 255));
  expectEqual("text", text, whole.substr(0, 255));
}

void errorOfEveryLength(const Bundle& bundle) {
  Subject subject(bundle);
  subject.start();
  for (std::size_t length = 22; length <= 400; ++length) {
    const auto whole = "Can not get signalId: " + std::string(length - 22, 'x') + " ,DLResult: DL_INVALID_ADDRESS";
    expectEqual("text of an error", errorText(subject, length), whole.substr(0, 255));
  }
}

void errorFields(const Bundle& bundle) {
  Subject subject(bundle);
  subject.start();
  const auto answer = browse(nodeOf(subject, SIGNALS_FOLDER), SIGNALS_FOLDER);
  expectEqual("result of the answer", answer.result, comm::datalayer::DL_UNSUPPORTED);
  expectEqual("record", errorOf(answer), "80010002 090F2040 0C57010B not implemented ,DLResult: DL_UNSUPPORTED");
}

void percentInAddress(const Bundle& bundle) {
  Subject subject(bundle);
  subject.start();
  const auto address = SIGNALS_FOLDER + "/%s%n%d";
  expectEqual("answer", errorOf(read(nodeOf(subject, SIGNAL_NODE), address)),
              fmt::format("80010001 090F2040 0C570101 Can not get signalId: {} ,DLResult: DL_INVALID_ADDRESS", address));
}

}  // namespace

Checks metadataChecks() {
  const std::string name = " ,DLResult: DL_INVALID_ADDRESS";
  const auto length = [&name](std::size_t count) {
    return [count, name](const Bundle& bundle) { errorLength(bundle, count, name); };
  };
  return {
      {"metadata.folder-class", "the folder has node class 7", comparing(FOLDER, nodeClass)},
      {"metadata.folder-description", "the folder describes itself, without an address", comparing(FOLDER, description)},
      {"metadata.folder-extra-text", "the folder has no extra text", comparing(FOLDER, extraText)},
      {"metadata.folder-operations", "the folder can only be browsed", comparing(FOLDER, operations)},
      {"metadata.folder-references", "the folder refers to no type", comparing(FOLDER, references)},
      {"metadata.folder-no-defaults", "what the folder does not allow is not stored", comparing(FOLDER, noDefaults)},
      {"metadata.signal-class", "a signal has node class 3", comparing(SIGNAL, nodeClass)},
      {"metadata.signal-description", "a signal describes itself, without an address", comparing(SIGNAL, description)},
      {"metadata.signal-extra-text", "a signal has no extra text", comparing(SIGNAL, extraText)},
      {"metadata.signal-operations", "a signal can be read, written and browsed", comparing(SIGNAL, operations)},
      {"metadata.signal-references", "a signal is read and written as a bool8", comparing(SIGNAL, references)},
      {"metadata.signal-references-sorted", "references are found by their type", comparing(SIGNAL, foundByKey)},
      {"metadata.signal-no-defaults", "what a signal does not allow is not stored", comparing(SIGNAL, noDefaults)},
      {"metadata.any-address", "the address makes no difference", anyAddress},
      {"metadata.error-record", "an error holds the result, both codes, and the text with the result's name", errorFields},
      {"metadata.error-fits", "a text of 255 characters is whole", length(255 - name.size())},
      {"metadata.error-name-cut", "the name of the result is cut at 255 characters", length(256 - name.size())},
      {"metadata.error-separator-cut", "what stands before the name is cut, too", length(250)},
      {"metadata.error-message-cut", "a message of 300 characters is cut", length(300)},
      {"metadata.error-every-length", "every text is cut at the same place", errorOfEveryLength},
      {"metadata.error-percent", "an address is shown as it is, whatever it looks like", percentInAddress},
  };
}

}  // namespace motion::conformance
