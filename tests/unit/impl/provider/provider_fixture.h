// What the tests of the provider share: nodes' answers, and a pretended host that lists nodes.
#pragma once

#include <fmt/format.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "impl/provider/provider_mgr.h"
#include "impl_fixture.h"
#include "schemas/datalayer/diagnosis_generated.h"
#include "schemas/datalayer/metadata_generated.h"

namespace motion::kavo {

/// What a node answered.
struct Answer {
  comm::datalayer::DlResult result;
  bool hasData = false;
  comm::datalayer::Variant data;
};

/// Keeps all answers to one request.
class Answers {
 public:
  Answers()
      : m_callback([this](comm::datalayer::DlResult result, const comm::datalayer::Variant* data) {
          const test::AllocationPause pause;
          m_all.push_back({result, data != nullptr, data != nullptr ? *data : comm::datalayer::Variant()});
        }) {}
  Answers(const Answers&) = delete;
  Answers& operator=(const Answers&) = delete;

  [[nodiscard]] const comm::datalayer::IProviderNode::ResponseCallback& callback() const { return m_callback; }
  [[nodiscard]] const std::vector<Answer>& all() const { return m_all; }
  /// The answer; a failure unless there is exactly one.
  [[nodiscard]] Answer only() const {
    EXPECT_EQ(m_all.size(), 1U) << "each request is answered once";
    return m_all.empty() ? Answer() : m_all.front();
  }
  void clear() { m_all.clear(); }

 private:
  std::vector<Answer> m_all;
  comm::datalayer::IProviderNode::ResponseCallback m_callback;
};

/// An error record as in "80010002 090F2040 0C57010B not implemented ,DLResult: DL_UNSUPPORTED".
inline std::string errorRecordIn(const comm::datalayer::Variant& data) {
  if (data.getType() != comm::datalayer::VariantType::FLATBUFFERS) {
    return "no flat buffer";
  }
  const auto buffer = data.getFlatBuffer();
  flatbuffers::Verifier verifier(buffer.data(), buffer.size());
  if (!comm::datalayer::VerifyDiagnosisBuffer(verifier)) {
    return "no error record";
  }
  const auto* const record = comm::datalayer::GetDiagnosis(buffer.data());
  return fmt::format("{:08X} {:08X} {:08X} {}", record->result(), record->mainDiagnosisCode(),
                     record->detailedDiagnosisCode(), record->text() != nullptr ? record->text()->str() : "(no text)");
}

/// Expects one answer, an error; `text` includes the result's name.
inline void expectError(const Answers& answers, std::uint32_t result, std::uint32_t detail, const std::string& text) {
  const Answer answer = answers.only();
  EXPECT_EQ(fmt::format("{:08X}", answer.result.code()), fmt::format("{:08X}", result));
  EXPECT_EQ(errorRecordIn(answer.data), fmt::format("{:08X} 090F2040 {:08X} {}", result, detail, text));
}

/// A node's metadata, copied out of the only answer.
inline comm::datalayer::MetadataT metadataIn(const Answers& answers) {
  const Answer answer = answers.only();
  EXPECT_EQ(answer.result.code(), 0U);
  EXPECT_EQ(answer.data.getType(), comm::datalayer::VariantType::FLATBUFFERS);
  comm::datalayer::MetadataT metadata;
  const auto buffer = answer.data.getFlatBuffer();
  flatbuffers::Verifier verifier(buffer.data(), buffer.size());
  if (comm::datalayer::VerifyMetadataBuffer(verifier)) {
    comm::datalayer::GetMetadata(buffer.data())->UnPackTo(&metadata);
  } else {
    ADD_FAILURE() << "no metadata";
  }
  return metadata;
}

/// What a node allows, in the order read, write, create, delete, browse, as in "rw--b".
inline std::string allowedBy(const comm::datalayer::MetadataT& metadata) {
  const auto& operations = metadata.operations;
  if (operations == nullptr) {
    return "nothing said";
  }
  std::string result;
  result += operations->read ? 'r' : '-';
  result += operations->write ? 'w' : '-';
  result += operations->create ? 'c' : '-';
  result += operations->delete_ ? 'd' : '-';
  result += operations->browse ? 'b' : '-';
  return result;
}

/// A node's references as in "readType types/datalayer/bool8", in the order in which they are stored.
inline std::vector<std::string> referencesOf(const comm::datalayer::MetadataT& metadata) {
  std::vector<std::string> result;
  for (const auto& reference : metadata.references) {
    result.push_back(reference->type + " " + reference->targetAddress);
  }
  return result;
}

class ProviderTest : public ImplTest {
 protected:
  inline static const std::string NODE_LIST = "datalayer/nodes";
  inline static const std::string FOLDER = "motion/state/functions/kavo/signals";
  inline static const std::string EVERY_SIGNAL = "motion/state/functions/kavo/signals/*";

  ProviderTest() { m_host.dataLayer.makeFakeClients(); }

  /// A manager that notes each "sleep" instead of sleeping.
  [[nodiscard]] std::unique_ptr<ProviderMgr> makeManager() {
    return std::make_unique<ProviderMgr>(m_host.sysIf, m_host.dataLayer, [this](std::chrono::milliseconds duration) {
      m_host.calls.note("sleep", duration.count());
    });
  }
  /// What the data layer answers to the question for its nodes.
  void list(comm::datalayer::Variant::Strings addresses) {
    m_host.dataLayer.m_clientValues[NODE_LIST] = comm::datalayer::Variant(std::move(addresses));
  }
  void listAllNodes() { list({FOLDER, EVERY_SIGNAL}); }
  /// Providers made and not deleted.
  [[nodiscard]] int livingProviders() const {
    return m_host.calls.count("dataLayer.createProvider") - m_host.calls.count("provider.destroyed");
  }
};

}  // namespace motion::kavo
