// Reads and writes signals through the data layer, with the rights of the scopes that a request has.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "host/datalayer/data_layer.h"
#include "host/datalayer/node_walk.h"

namespace motion::host::door {

/// Thread-safe. Must not outlive the data layer. Throws std::bad_alloc.
class SignalAccess {
 public:
  /// Sorted, without repetitions.
  using Scopes = datalayer::Client::Scopes;

  explicit SignalAccess(const datalayer::DataLayer& dataLayer) : m_dataLayer(dataLayer) {}

  /// The value of a signal, or why it was not told.
  [[nodiscard]] std::variant<bool, datalayer::NodeError> read(const Scopes& scopes, std::uint32_t signal);
  /// Sets or resets a signal; says what went wrong.
  [[nodiscard]] std::optional<datalayer::NodeError> write(const Scopes& scopes, std::uint32_t signal, bool value);

 private:
  [[nodiscard]] std::shared_ptr<datalayer::Client> clientFor(const Scopes& scopes);

  const datalayer::DataLayer& m_dataLayer;
  std::mutex m_mutex;
  std::map<Scopes, std::shared_ptr<datalayer::Client>> m_clients;  ///< those that were needed lately
};

}  // namespace motion::host::door
