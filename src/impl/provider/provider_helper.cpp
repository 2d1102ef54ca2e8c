// Builds the answers of nodes.
#include "impl/provider/provider_helper.h"

#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <vector>

#include "comm/datalayer/variant.h"
#include "schemas/datalayer/diagnosis_generated.h"
#include "schemas/datalayer/metadata_generated.h"

namespace motion::kavo {

using comm::datalayer::DlResult;
using comm::datalayer::Variant;
using ResponseCallback = comm::datalayer::IProviderNode::ResponseCallback;

namespace {

using Text = std::array<char, 256>;

/// As much of it as there is room for.
void append(Text& text, const char* what) noexcept {
  const std::size_t length = std::strlen(text.data());
  std::strncat(text.data() + length, what, text.size() - 1 - length);
}

Variant toVariant(const flatbuffers::FlatBufferBuilder& builder) {
  return Variant::fromFlatBuffer({builder.GetBufferPointer(), builder.GetSize()});
}

}  // namespace

void ProviderHelper::createMetaData(const std::string& typeAddress, const MetaDataInfo& info,
                                    const ResponseCallback& callback, const std::string& extraText, bool browse) {
  flatbuffers::FlatBufferBuilder builder;
  const auto allows = [&info](NodeOperation operation) { return (info.operations & operation) != 0; };
  std::vector<flatbuffers::Offset<comm::datalayer::Reference>> references;
  const auto refer = [&](const char* type) {
    references.push_back(comm::datalayer::CreateReferenceDirect(builder, type, typeAddress.c_str()));
  };
  if (allows(NODE_READ)) {
    refer("readType");
  }
  if (allows(NODE_WRITE)) {
    refer("writeType");
  }
  if (allows(NODE_CREATE) && !typeAddress.empty()) {
    refer("createType");
  }
  const auto operations = comm::datalayer::CreateAllowedOperations(builder, allows(NODE_READ), allows(NODE_WRITE),
                                                                   allows(NODE_CREATE), allows(NODE_DELETE), browse);
  const auto description = builder.CreateString(info.description);
  const auto descriptionUrl = builder.CreateString(info.descriptionUrl);
  const auto extra = extraText.empty() ? flatbuffers::Offset<flatbuffers::String>() : builder.CreateString(extraText);
  const auto sorted = builder.CreateVectorOfSortedTables(&references);
  builder.Finish(
      comm::datalayer::CreateMetadata(builder, info.nodeClass, operations, description, descriptionUrl, extra, sorted));
  const Variant answer = toVariant(builder);
  callback(comm::datalayer::DL_OK, &answer);
}

void ProviderHelper::sendDlErrorResponse(const ResponseCallback& callback, DlResult result, std::uint32_t mainDiagnosis,
                                         std::uint32_t detailDiagnosis, const char* format, ...) {
  Text text{};
  std::va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text.data(), text.size(), format, arguments);
  va_end(arguments);
  append(text, " ,DLResult: ");
  append(text, result.toString());
  flatbuffers::FlatBufferBuilder builder;
  builder.Finish(
      comm::datalayer::CreateDiagnosisDirect(builder, result.code(), mainDiagnosis, detailDiagnosis, text.data()));
  const Variant answer = toVariant(builder);
  callback(result, &answer);
}

}  // namespace motion::kavo
