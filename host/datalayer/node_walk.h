// What a client sees of the data layer: the nodes below an address, with what they say of themselves.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "comm/datalayer/i_client.h"

namespace motion::host::datalayer {

/// A failed operation, as its provider explained it.
struct NodeError {
  comm::datalayer::DlResult result;
  std::uint32_t mainCode = 0;  ///< 0 when the provider sent no error record
  std::uint32_t detailCode = 0;
  std::string text;  ///< empty likewise

  /// In one line, for people.
  [[nodiscard]] std::string toString() const;
};

/// Reads the error record of an answer. [any]
[[nodiscard]] NodeError errorOf(comm::datalayer::DlResult result, const comm::datalayer::Variant& answer);

/// What a node says of itself.
struct NodeDescription {
  std::uint32_t nodeClass = 0;  ///< code of the data layer: 3 variable, 7 folder
  std::string description;
  std::string descriptionUrl;
  bool canRead = false;
  bool canWrite = false;
  bool canCreate = false;
  bool canRemove = false;
  bool canBrowse = false;
  std::string readType;   ///< address of its type; empty when it has none
  std::string writeType;  ///< likewise
};

struct NodeView {
  std::string address;
  std::optional<NodeDescription> metadata;
  std::optional<comm::datalayer::Variant> value;
  std::optional<NodeError> error;  ///< of the first operation that failed
  std::vector<NodeView> children;
};

/// Everything below an address that the client may see, at most `depth` levels deep. Throws std::bad_alloc. [any]
[[nodiscard]] NodeView walkNodes(comm::datalayer::IClient& client, const std::string& address, unsigned int depth = 16);

}  // namespace motion::host::datalayer
