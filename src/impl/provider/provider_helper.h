// The answers that every node gives besides plain values: its metadata, and errors.
#pragma once

#include <cstdint>
#include <string>

#include "comm/datalayer/dl_result.h"
#include "comm/datalayer/i_provider_node.h"

namespace motion::kavo {

/// Operations of a node, as bits of MetaDataInfo::operations.
enum NodeOperation : std::uint32_t { NODE_READ = 1, NODE_WRITE = 2, NODE_CREATE = 4, NODE_DELETE = 8 };

/// What a node says of itself.
struct MetaDataInfo {
  std::string description;
  std::string descriptionUrl;
  std::uint32_t nodeClass = 0;   ///< code of the data layer: 3 variable, 7 folder
  std::uint32_t operations = 0;  ///< bits of NodeOperation
};

/// Answers through the callback of a node. May throw std::bad_alloc before it answers, and what the callback throws.
class ProviderHelper {
 public:
  ProviderHelper() = delete;

  /// Answers with the metadata; `typeAddress` is where the type of the node's value is described. [provider]
  static void createMetaData(const std::string& typeAddress, const MetaDataInfo& info,
                             const comm::datalayer::IProviderNode::ResponseCallback& callback, const std::string& extraText,
                             bool browse);
  /// Answers with an error record. Its text, with the name of the result behind it, is cut to 255 characters. [provider]
  static void sendDlErrorResponse(const comm::datalayer::IProviderNode::ResponseCallback& callback,
                                  comm::datalayer::DlResult result, std::uint32_t mainDiagnosis,
                                  std::uint32_t detailDiagnosis, const char* format, ...)
      __attribute__((format(printf, 5, 6)));
};

}  // namespace motion::kavo
