// What the nodes of a component answer to the data layer.
#include "conformance/node_answer.h"

#include <fmt/format.h>

#include "conformance/expect.h"
#include "schemas/datalayer/diagnosis_generated.h"

namespace motion::conformance {

using comm::datalayer::DlResult;
using comm::datalayer::IProviderNode;
using comm::datalayer::Variant;

namespace {

template <typename REQUEST>
NodeAnswer answerTo(const REQUEST& request) {
  std::vector<NodeAnswer> answers;
  request([&answers](DlResult result, const Variant* data) {
    answers.push_back({result, data != nullptr, data != nullptr ? *data : Variant()});
  });
  expectEqual("number of answers to one request", answers.size(), 1U);
  return answers.front();
}

}  // namespace

NodeAnswer create(IProviderNode& node, const std::string& address) {
  const Variant data(true);
  return answerTo([&](const auto& callback) { node.onCreate(address, &data, callback); });
}

NodeAnswer remove(IProviderNode& node, const std::string& address) {
  return answerTo([&](const auto& callback) { node.onRemove(address, callback); });
}

NodeAnswer browse(IProviderNode& node, const std::string& address) {
  return answerTo([&](const auto& callback) { node.onBrowse(address, callback); });
}

NodeAnswer read(IProviderNode& node, const std::string& address) {
  return answerTo([&](const auto& callback) { node.onRead(address, nullptr, callback); });
}

NodeAnswer write(IProviderNode& node, const std::string& address, const Variant* data) {
  return answerTo([&](const auto& callback) { node.onWrite(address, data, callback); });
}

NodeAnswer metadata(IProviderNode& node, const std::string& address) {
  return answerTo([&](const auto& callback) { node.onMetadata(address, callback); });
}

IProviderNode& nodeOf(const Subject& subject, const std::string& address) {
  const auto& nodes = subject.host.dataLayer.m_lastProvider->m_nodes;
  const auto found = nodes.find(address);
  expectNotNull("node at " + address, found != nodes.end() && found->second != nullptr);
  return *found->second;
}

std::string errorOf(const NodeAnswer& answer) {
  const auto buffer = answer.data.getFlatBuffer();
  flatbuffers::Verifier verifier(buffer.data(), buffer.size());
  expectEqual("variant type of an error", static_cast<std::uint32_t>(answer.data.getType()), 26U);
  expectTrue("the error is a valid record", comm::datalayer::VerifyDiagnosisBuffer(verifier));
  const auto* const record = comm::datalayer::GetDiagnosis(buffer.data());
  expectEqual("result in the error record", fmt::format("{:08X}", record->result()),
              fmt::format("{:08X}", answer.result.code()));
  return fmt::format("{:08X} {:08X} {:08X} {}", record->result(), record->mainDiagnosisCode(),
                     record->detailedDiagnosisCode(), record->text() != nullptr ? record->text()->str() : "(no text)");
}

}  // namespace motion::conformance
