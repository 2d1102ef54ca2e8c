#include "host/datalayer/client.h"

#include <algorithm>
#include <set>
#include <utility>

#include "host/datalayer/address.h"
#include "host/datalayer/built_in_nodes.h"
#include "host/datalayer/guarded.h"
#include "schemas/datalayer/metadata_generated.h"

namespace motion::host::datalayer {

using namespace comm::datalayer;

namespace {

/// Shared by all copies of a callback. When the last of them goes and nobody has answered, nobody will.
class LastWord {
 public:
  explicit LastWord(std::shared_ptr<PendingRequest> request) : m_request(std::move(request)) {}
  LastWord(const LastWord&) = delete;
  LastWord& operator=(const LastWord&) = delete;
  ~LastWord() { m_request->answer(DL_FAILED, nullptr); }

  void answer(DlResult result, const Variant* data) noexcept { m_request->answer(result, data); }
  [[nodiscard]] bool isAwaited() const noexcept { return m_request->isAwaited(); }

 private:
  std::shared_ptr<PendingRequest> m_request;
};

Answer failure(DlResult result) {
  return {result, {}};
}

Variant copyOf(const Variant* data) {
  return data != nullptr ? *data : Variant();
}

/// What a provider lists in a folder.
bool isName(std::string_view name) noexcept {
  return isAddress(name) && name.find('/') == std::string_view::npos;
}

Variant namesOf(const std::set<std::string>& names) {
  return Variant(Variant::Strings(names.begin(), names.end()));
}

}  // namespace

Client::Client(std::shared_ptr<const ClientHub> hub, std::optional<Scopes> scopes, std::chrono::milliseconds limit)
    : m_hub(std::move(hub)),
      m_scopes(std::move(scopes)),
      m_limit(std::clamp<std::chrono::milliseconds>(limit, std::chrono::milliseconds::zero(), MAX_LIMIT)) {}

DlResult Client::check(Right right, const std::string& address) {
  if (m_hub->isClosed()) {
    return DL_CLIENT_NOT_CONNECTED;
  }
  if (!m_scopes) {
    return isAddress(address) ? DL_OK : DL_INVALID_ADDRESS;
  }
  const std::lock_guard lock(m_mutex);
  // Whoever withdraws a scope takes it from clients that are connected, too.
  const ScopeRegister& scopes = m_hub->nodes().scopes();
  if (const std::uint64_t version = scopes.version(); version != m_rightsVersion) {
    m_rights = scopes.rightsOf(*m_scopes);
    m_rightsVersion = version;
  }
  return m_rights.allows(right, address) ? DL_OK : DL_SEC_UNAUTHORIZED;
}

template <typename WORK>
DlResult Client::handle(Right right, const std::string& address, Variant* data, const WORK& work) noexcept {
  Variant received;
  const DlResult result = guarded([&] {
    if (const DlResult allowed = check(right, address); isFailure(allowed)) {
      return allowed;
    }
    Answer answer = work();
    received = std::move(answer.data);
    return answer.result;
  });
  if (data != nullptr) {
    *data = std::move(received);
  }
  return result;
}

Answer Client::ask(const NodeRegister::Route& route, const Call& call) const {
  const auto request = std::make_shared<PendingRequest>();
  {
    const auto lastWord = std::make_shared<LastWord>(request);
    ProviderCore::Call posted = [call, lastWord](IProviderNode& node) {
      if (lastWord->isAwaited()) {
        call(node, [lastWord](DlResult result, const Variant* data) { lastWord->answer(result, data); });
      }
    };
    const DlResult result = m_hub->post([&] { return route.core->post(route.node, std::move(posted)); });
    if (isFailure(result)) {
      return failure(result);
    }
  }
  auto answer = request->waitFor(m_limit);
  return answer ? std::move(*answer) : failure(DL_TIMEOUT);
}

Answer Client::askNode(const std::string& address, const Call& call) const {
  // Nobody else speaks for the data layer's own nodes, whatever wildcards there are.
  const auto route = isBuiltIn(address) ? std::nullopt : m_hub->nodes().find(address);
  return route ? ask(*route, call) : failure(DL_INVALID_ADDRESS);
}

DlResult Client::readSync(const std::string& address, Variant* data) noexcept {
  return handle(Right::READ, address, data, [&] {
    if (auto value = readBuiltIn(m_hub->nodes(), address)) {
      return Answer{DL_OK, std::move(*value)};
    }
    return askNode(address, [address, argument = copyOf(data)](IProviderNode& node, const Callback& callback) {
      node.onRead(address, &argument, callback);
    });
  });
}

DlResult Client::writeSync(const std::string& address, Variant* data) noexcept {
  return handle(Right::WRITE, address, data, [&] {
    return askNode(address, [address, argument = copyOf(data)](IProviderNode& node, const Callback& callback) {
      node.onWrite(address, &argument, callback);
    });
  });
}

DlResult Client::createSync(const std::string& address, Variant* data) noexcept {
  return handle(Right::CREATE_AND_REMOVE, address, data, [&] {
    return askNode(address, [address, argument = copyOf(data)](IProviderNode& node, const Callback& callback) {
      node.onCreate(address, &argument, callback);
    });
  });
}

DlResult Client::removeSync(const std::string& address) noexcept {
  return handle(Right::CREATE_AND_REMOVE, address, nullptr, [&] {
    return askNode(address, [address](IProviderNode& node, const Callback& callback) { node.onRemove(address, callback); });
  });
}

DlResult Client::browseSync(const std::string& address, Variant* data) noexcept {
  return handle(Right::READ, address, data, [&] { return browse(address); });
}

Answer Client::browse(const std::string& address) const {
  const NodeRegister& nodes = m_hub->nodes();
  std::set<std::string> names = nodes.childrenOf(address);
  names.merge(builtInChildrenOf(address));
  if (const auto content = nodes.findContent(address)) {
    Answer answer =
        ask(*content, [address](IProviderNode& node, const Callback& callback) { node.onBrowse(address, callback); });
    if (isFailure(answer.result)) {
      return answer;
    }
    const Variant::Strings* const listed = answer.data.getStrings();
    if (listed == nullptr || !std::ranges::all_of(*listed, isName)) {
      return failure(DL_TYPE_MISMATCH);
    }
    names.insert(listed->begin(), listed->end());
  }
  const bool isThere = !names.empty() || nodes.find(address) || isBuiltIn(address);
  return isThere ? Answer{DL_OK, namesOf(names)} : failure(DL_INVALID_ADDRESS);
}

DlResult Client::metadataSync(const std::string& address, Variant* data) noexcept {
  return handle(Right::READ, address, data, [&] { return describe(address); });
}

Answer Client::describe(const std::string& address) const {
  const NodeRegister& nodes = m_hub->nodes();
  if (isBuiltIn(address)) {
    return {DL_OK, builtInMetadata(true)};
  }
  if (const auto route = nodes.find(address)) {
    Answer answer =
        ask(*route, [address](IProviderNode& node, const Callback& callback) { node.onMetadata(address, callback); });
    const auto bytes = answer.data.getFlatBuffer();
    flatbuffers::Verifier verifier(bytes.data(), bytes.size());
    return isFailure(answer.result) || verifier.VerifyBuffer<Metadata>(nullptr) ? answer : failure(DL_TYPE_MISMATCH);
  }
  if (nodes.isFolder(address) || !builtInChildrenOf(address).empty()) {
    return {DL_OK, builtInMetadata(false)};
  }
  return failure(DL_INVALID_ADDRESS);
}

}  // namespace motion::host::datalayer
