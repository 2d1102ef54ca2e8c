// One answer to each request, whatever happens while it is made.
#pragma once

#include "comm/datalayer/i_provider_node.h"
#include "impl/guarded.h"

namespace motion::kavo {

/// Lets `work` answer through the callback that it is given. If it fails before that, the answer is DL_OUT_OF_MEMORY.
/// [provider]
template <typename WORK>
void answerOnce(const comm::datalayer::IProviderNode::ResponseCallback& callback, const WORK& work) noexcept {
  using comm::datalayer::DlResult;
  using comm::datalayer::Variant;
  bool isAnswered = false;
  const auto once = [&](DlResult result, const Variant* data) {
    isAnswered = true;
    callback(result, data);
  };
  guarded([&] { work(comm::datalayer::IProviderNode::ResponseCallback(std::ref(once))); });
  if (!isAnswered) {
    guarded([&callback] { callback(comm::datalayer::DL_OUT_OF_MEMORY, nullptr); });
  }
}

}  // namespace motion::kavo
