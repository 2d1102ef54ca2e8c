// A request of a client on its way to a provider and back.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <utility>

#include "comm/datalayer/dl_result.h"
#include "comm/datalayer/variant.h"
#include "host/support/guarded.h"

namespace motion::host::datalayer {

struct Answer {
  comm::datalayer::DlResult result;
  comm::datalayer::Variant data;
};

/// The client and the provider share it, so that an answer that comes when nobody waits any more does no harm. The first
/// answer counts.
class PendingRequest {
 public:
  void answer(comm::datalayer::DlResult result, const comm::datalayer::Variant* data) noexcept {  ///< [any]
    Answer made{result, {}};
    if (data != nullptr && !host::guarded(false, [&] { return (made.data = *data, true); })) {
      made.result = comm::datalayer::DL_OUT_OF_MEMORY;
    }
    const std::lock_guard lock(m_mutex);
    if (!m_answer) {
      m_answer.emplace(std::move(made));
      m_answered.notify_all();
    }
  }
  /// Empty when nobody has answered within the limit. Hands the data out once, and needs no memory for it: what a provider
  /// has done is never reported as not done. [any]
  [[nodiscard]] std::optional<Answer> waitFor(std::chrono::milliseconds limit) noexcept {
    std::unique_lock lock(m_mutex);
    m_answered.wait_for(lock, limit, [this] { return m_answer.has_value(); });
    m_isGivenUp = !m_answer;
    return m_answer ? std::optional(std::move(*m_answer)) : std::nullopt;
  }
  /// False when the client has given up: what has not begun by then is not done any more. [any]
  [[nodiscard]] bool isAwaited() const noexcept {
    const std::lock_guard lock(m_mutex);
    return !m_isGivenUp;
  }

 private:
  mutable std::mutex m_mutex;
  std::condition_variable m_answered;
  bool m_isGivenUp = false;
  std::optional<Answer> m_answer;
};

}  // namespace motion::host::datalayer
