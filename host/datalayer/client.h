// Clients of the data layer: they ask for nodes, within the rights that they were granted.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <shared_mutex>
#include <string>
#include <utility>
#include <vector>

#include "comm/datalayer/i_client.h"
#include "host/datalayer/node_register.h"
#include "host/datalayer/pending_request.h"

namespace motion::host::datalayer {

/// What all clients of a data layer share with it.
class ClientHub {
 public:
  explicit ClientHub(std::shared_ptr<const NodeRegister> nodes) : m_nodes(std::move(nodes)) {}

  [[nodiscard]] const NodeRegister& nodes() const noexcept { return *m_nodes; }
  /// While closed every request is refused, and no provider gets one. [framework]
  void setClosed(bool isClosed) noexcept {
    const std::lock_guard lock(m_mutex);
    m_isClosed = isClosed;
  }
  [[nodiscard]] bool isClosed() const noexcept {
    const std::shared_lock lock(m_mutex);
    return m_isClosed;
  }
  /// Hands a request to a provider unless closed: closing comes either before or after that. [any]
  template <typename POST>
  [[nodiscard]] comm::datalayer::DlResult post(const POST& post) const {
    const std::shared_lock lock(m_mutex);
    if (m_isClosed) {
      return comm::datalayer::DL_CLIENT_NOT_CONNECTED;
    }
    return post() ? comm::datalayer::DL_OK : comm::datalayer::DL_RESOURCE_UNAVAILABLE;
  }

 private:
  std::shared_ptr<const NodeRegister> m_nodes;
  mutable std::shared_mutex m_mutex;
  bool m_isClosed = false;
};

/// Asks synchronously, from any thread. What is checked, in this order:
///
/// | check | result |
/// |---|---|
/// | the data layer is open | DL_CLIENT_NOT_CONNECTED |
/// | the client may do that with that address; says nothing about what exists | DL_SEC_UNAUTHORIZED |
/// | the address is one; only asked of clients that may do everything | DL_INVALID_ADDRESS |
/// | somebody answers for it | DL_INVALID_ADDRESS |
/// | the provider runs and has room | DL_RESOURCE_UNAVAILABLE |
/// | the provider answers, and not with garbage | DL_FAILED, DL_TYPE_MISMATCH |
/// | within the time limit | DL_TIMEOUT |
///
/// A request that was given up at its limit is not carried out any more, unless its node had begun with it. Without memory
/// DL_OUT_OF_MEMORY. On failure `data` holds the provider's error record, if it sent one, else nothing.
class Client final : public comm::datalayer::IClient {
 public:
  using Scopes = std::vector<std::string>;

  /// The longest that anyone waits; the shortest is not at all. Both keep the end of the wait within what the clock can
  /// tell.
  static constexpr std::chrono::hours MAX_LIMIT{24};

  /// Without scopes the client may do everything: it is one of the process's own parts. With an empty list it may do
  /// nothing.
  Client(std::shared_ptr<const ClientHub> hub, std::optional<Scopes> scopes, std::chrono::milliseconds limit);

  comm::datalayer::DlResult readSync(const std::string& address, comm::datalayer::Variant* data) noexcept override;
  comm::datalayer::DlResult writeSync(const std::string& address, comm::datalayer::Variant* data) noexcept override;
  /// The names one level below, in order.
  comm::datalayer::DlResult browseSync(const std::string& address, comm::datalayer::Variant* data) noexcept override;
  comm::datalayer::DlResult createSync(const std::string& address, comm::datalayer::Variant* data) noexcept override;
  comm::datalayer::DlResult removeSync(const std::string& address) noexcept override;
  comm::datalayer::DlResult metadataSync(const std::string& address, comm::datalayer::Variant* data) noexcept override;

 private:
  using Callback = comm::datalayer::IProviderNode::ResponseCallback;
  using Call = std::function<void(comm::datalayer::IProviderNode& node, const Callback& callback)>;

  /// DL_OK when the client may.
  [[nodiscard]] comm::datalayer::DlResult check(Right right, const std::string& address);
  [[nodiscard]] Answer ask(const NodeRegister::Route& route, const Call& call) const;
  [[nodiscard]] Answer askNode(const std::string& address, const Call& call) const;
  [[nodiscard]] Answer browse(const std::string& address) const;
  [[nodiscard]] Answer describe(const std::string& address) const;
  /// Checks, and then does the work, whose answer it hands out.
  template <typename WORK>
  comm::datalayer::DlResult handle(Right right, const std::string& address, comm::datalayer::Variant* data,
                                   const WORK& work) noexcept;

  std::shared_ptr<const ClientHub> m_hub;
  std::optional<Scopes> m_scopes;
  std::chrono::milliseconds m_limit;
  std::mutex m_mutex;  ///< guards the rights
  AccessRights m_rights;
  std::uint64_t m_rightsVersion = 0;
};

}  // namespace motion::host::datalayer
