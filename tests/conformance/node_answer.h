// What the nodes of a component answer to the data layer.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "comm/datalayer/i_provider_node.h"
#include "conformance/subject.h"

namespace motion::conformance {

inline const std::string SIGNALS_FOLDER = "motion/state/functions/kavo/signals";
inline const std::string SIGNAL_NODE = SIGNALS_FOLDER + "/*";

struct NodeAnswer {
  comm::datalayer::DlResult result;
  bool hasData = false;
  comm::datalayer::Variant data;
};

/// @name One request to a node; a Mismatch unless it is answered once, before the call returns.
/// @{
[[nodiscard]] NodeAnswer create(comm::datalayer::IProviderNode& node, const std::string& address);
[[nodiscard]] NodeAnswer remove(comm::datalayer::IProviderNode& node, const std::string& address);
[[nodiscard]] NodeAnswer browse(comm::datalayer::IProviderNode& node, const std::string& address);
[[nodiscard]] NodeAnswer read(comm::datalayer::IProviderNode& node, const std::string& address);
[[nodiscard]] NodeAnswer write(comm::datalayer::IProviderNode& node, const std::string& address,
                               const comm::datalayer::Variant* data);
[[nodiscard]] NodeAnswer metadata(comm::datalayer::IProviderNode& node, const std::string& address);
/// @}

/// The node that the component has registered at the address; a Mismatch when there is none.
[[nodiscard]] comm::datalayer::IProviderNode& nodeOf(const Subject& subject, const std::string& address);

/// An error as in "80010002 090F2040 0C57010B not implemented ,DLResult: DL_UNSUPPORTED": the record's result, its codes and
/// its text. A Mismatch when the answer holds no such record or is given with another result.
[[nodiscard]] std::string errorOf(const NodeAnswer& answer);

}  // namespace motion::conformance
