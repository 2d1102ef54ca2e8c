#include "host/door/signal_access.h"

#include "host/observe/signal_nodes.h"

namespace motion::host::door {

using namespace comm::datalayer;

namespace {

/// More lists of scopes than anyone uses at a time.
constexpr std::size_t MAX_CLIENTS = 32;

}  // namespace

std::variant<bool, datalayer::NodeError> SignalAccess::read(const Scopes& scopes, std::uint32_t signal) {
  Variant answer;
  const DlResult result = clientFor(scopes)->readSync(observe::signalAddress(signal), &answer);
  if (isFailure(result)) {
    return datalayer::errorOf(result, answer);
  }
  const bool* const value = answer.getBool();
  if (value == nullptr) {
    return datalayer::NodeError{DL_TYPE_MISMATCH, 0, 0, ""};
  }
  return *value;
}

std::optional<datalayer::NodeError> SignalAccess::write(const Scopes& scopes, std::uint32_t signal, bool value) {
  Variant data(value);
  const DlResult result = clientFor(scopes)->writeSync(observe::signalAddress(signal), &data);
  return isFailure(result) ? std::optional(datalayer::errorOf(result, data)) : std::nullopt;
}

std::shared_ptr<datalayer::Client> SignalAccess::clientFor(const Scopes& scopes) {
  const std::lock_guard lock(m_mutex);
  if (const auto found = m_clients.find(scopes); found != m_clients.end()) {
    return found->second;
  }
  if (m_clients.size() >= MAX_CLIENTS) {
    m_clients.clear();
  }
  return m_clients.emplace(scopes, m_dataLayer.connect(scopes)).first->second;
}

}  // namespace motion::host::door
