// Fuzz target: addresses and values that clients send to the component's nodes.
#include <cstring>
#include <string>

#include "fuzz/started_component.h"
#include "fuzz/targets.h"
#include "schemas/datalayer/diagnosis_generated.h"

namespace motion::fuzz {
namespace {

using comm::datalayer::DlResult;
using comm::datalayer::IProviderNode;
using comm::datalayer::Variant;

enum Operation : std::uint8_t { CREATE, REMOVE, BROWSE, READ, WRITE, METADATA, OPERATIONS };

/// Takes bytes from the front.
class Reader {
 public:
  explicit Reader(Bytes bytes) : m_bytes(bytes) {}

  std::uint8_t byte() {
    const auto taken = take(1);
    return taken.empty() ? 0 : taken[0];
  }
  Bytes take(std::size_t count) {
    const auto taken = m_bytes.first(std::min(count, m_bytes.size()));
    m_bytes = m_bytes.subspan(taken.size());
    return taken;
  }
  template <typename NUMBER>
  NUMBER number() {
    NUMBER value{};
    const auto taken = take(sizeof value);
    std::memcpy(&value, taken.data(), taken.size());
    return value;
  }
  std::string text(std::size_t count) {
    const auto taken = take(count);
    return {taken.begin(), taken.end()};
  }

 private:
  Bytes m_bytes;
};

Variant valueFrom(std::uint8_t type, Reader& reader) {
  switch (type % 8) {
    case 0:
      return Variant((reader.byte() & 1) != 0);
    case 1:
      return Variant(reader.number<std::int32_t>());
    case 2:
      return Variant(reader.number<std::uint32_t>());
    case 3:
      return Variant(reader.number<double>());
    case 4:
      return Variant(reader.text(4096));
    case 5:
      return Variant(Variant::Strings{reader.text(8), reader.text(4096)});
    case 6:
      return Variant::fromFlatBuffer(reader.take(4096));
    default:
      return Variant();
  }
}

void call(IProviderNode& node, std::uint8_t operation, const std::string& address, const Variant* value,
          const IProviderNode::ResponseCallback& answer) {
  switch (operation % OPERATIONS) {
    case CREATE:
      return node.onCreate(address, value, answer);
    case REMOVE:
      return node.onRemove(address, answer);
    case BROWSE:
      return node.onBrowse(address, answer);
    case READ:
      return node.onRead(address, value, answer);
    case WRITE:
      return node.onWrite(address, value, answer);
    default:
      return node.onMetadata(address, answer);
  }
}

void checkAnswer(DlResult result, const Variant* data) {
  if (!result.isFailure() || data == nullptr || data->getFlatBuffer().empty()) {
    return;
  }
  const auto buffer = data->getFlatBuffer();
  flatbuffers::Verifier verifier(buffer.data(), buffer.size());
  require(comm::datalayer::VerifyDiagnosisBuffer(verifier), "an error record is a valid buffer");
}

}  // namespace

void fuzzNodes(Bytes bytes) {
  auto& subject = startedComponent();
  auto& nodes = subject.host.dataLayer.m_lastProvider->m_nodes;
  Reader reader(bytes);
  const auto choice = reader.byte();
  auto node = nodes.begin();
  std::advance(node, (choice & 0x80U) != 0 ? 1 : 0);
  const auto type = reader.byte();
  const auto address = reader.text(reader.byte());
  const Variant value = valueFrom(type, reader);
  int answers = 0;
  call(*node->second, choice & 0x7FU, address, (type & 0x80U) != 0 ? nullptr : &value,
       [&answers](DlResult result, const Variant* data) {
         ++answers;
         checkAnswer(result, data);
       });
  require(answers == 1, "a node answers each call once");
  subject.forget();
}

}  // namespace motion::fuzz
