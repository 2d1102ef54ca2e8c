#include "host/datalayer/node_walk.h"

#include <fmt/format.h>

#include <string_view>

#include "schemas/datalayer/diagnosis_generated.h"
#include "schemas/datalayer/metadata_generated.h"

namespace motion::host::datalayer {

using namespace comm::datalayer;

namespace {

template <typename TABLE>
const TABLE* tableIn(const Variant& value) {
  const auto bytes = value.getFlatBuffer();
  flatbuffers::Verifier verifier(bytes.data(), bytes.size());
  return verifier.VerifyBuffer<TABLE>(nullptr) ? flatbuffers::GetRoot<TABLE>(bytes.data()) : nullptr;
}

std::string textOf(const flatbuffers::String* text) {
  return text != nullptr ? text->str() : "";
}

std::string targetOf(const Metadata& metadata, std::string_view type) {
  if (metadata.references() == nullptr) {
    return "";
  }
  // One after the other, not by key: a provider may have left them unsorted.
  for (const Reference* const reference : *metadata.references()) {
    if (reference->type() != nullptr && reference->type()->string_view() == type) {
      return textOf(reference->targetAddress());
    }
  }
  return "";
}

NodeDescription describe(const Metadata& metadata) {
  NodeDescription result;
  result.nodeClass = metadata.nodeClass();
  result.description = textOf(metadata.description());
  result.descriptionUrl = textOf(metadata.descriptionUrl());
  if (const AllowedOperations* const allowed = metadata.operations(); allowed != nullptr) {
    result.canRead = allowed->read();
    result.canWrite = allowed->write();
    result.canCreate = allowed->create();
    result.canRemove = allowed->delete_();
    result.canBrowse = allowed->browse();
  }
  result.readType = targetOf(metadata, "readType");
  result.writeType = targetOf(metadata, "writeType");
  return result;
}

void note(NodeView& view, DlResult result, const Variant& answer) {
  if (!view.error) {
    view.error = errorOf(result, answer);
  }
}

}  // namespace

std::string NodeError::toString() const {
  return text.empty() ? result.toString() : fmt::format("{} (0x{:08X}, 0x{:08X})", text, mainCode, detailCode);
}

NodeError errorOf(DlResult result, const Variant& answer) {
  NodeError error{result, 0, 0, ""};
  if (const Diagnosis* const record = tableIn<Diagnosis>(answer); record != nullptr) {
    if (const DlResult said(record->result()); isFailure(said)) {
      error.result = said;  // what the provider itself calls it
    }
    error.mainCode = record->mainDiagnosisCode();
    error.detailCode = record->detailedDiagnosisCode();
    error.text = textOf(record->text());
  }
  return error;
}

NodeView walkNodes(IClient& client, const std::string& address, unsigned int depth) {
  NodeView view;
  view.address = address;
  Variant answer;
  DlResult result = client.metadataSync(address, &answer);
  if (const Metadata* const metadata = isFailure(result) ? nullptr : tableIn<Metadata>(answer); metadata != nullptr) {
    view.metadata = describe(*metadata);
  } else {
    note(view, result, answer);
  }
  if (view.metadata && view.metadata->canRead) {
    result = client.readSync(address, &answer);
    if (isFailure(result)) {
      note(view, result, answer);
    } else {
      view.value = answer;
    }
  }
  if (depth > 0 && !isFailure(client.browseSync(address, &answer)) && answer.getStrings() != nullptr) {
    const Variant::Strings names = *answer.getStrings();
    for (const std::string& name : names) {
      view.children.push_back(walkNodes(client, address + "/" + name, depth - 1));
    }
  }
  return view;
}

}  // namespace motion::host::datalayer
