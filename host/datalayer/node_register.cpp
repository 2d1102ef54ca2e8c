#include "host/datalayer/node_register.h"

#include <algorithm>
#include <utility>

#include "host/datalayer/address.h"

namespace motion::host::datalayer {

using namespace comm::datalayer;

namespace {

constexpr std::string_view SCOPES_FOLDER = "scopes/";

std::string folderPrefix(std::string_view folder) {
  return folder.empty() ? std::string() : std::string(folder) + "/";
}

}  // namespace

bool NodeRegister::isListOfScopes(const std::string& address) noexcept {
  return address.starts_with(SCOPES_FOLDER);
}

void NodeRegister::addProvider(const IProvider* provider, std::shared_ptr<ProviderCore> core) {
  const std::lock_guard lock(m_mutex);
  m_providers.emplace(provider, std::move(core));
}

void NodeRegister::removeProvider(const IProvider* provider) noexcept {
  Nodes nodes;
  {
    const std::lock_guard lock(m_mutex);
    m_providers.erase(provider);
    for (auto node = m_nodes.begin(); node != m_nodes.end();) {
      const auto next = std::next(node);
      if (node->second.provider == provider) {
        nodes.insert(m_nodes.extract(node));
      }
      node = next;
    }
    std::erase_if(m_types, [&](const auto& type) {
      if (type.second.provider != provider) {
        return false;
      }
      m_scopes.remove(type.first);
      return true;
    });
  }
  for (const auto& [address, node] : nodes) {
    static_cast<void>(node.core->remove(address));
  }
}

bool NodeRegister::hasProvider(const IProvider* provider) const {
  const std::lock_guard lock(m_mutex);
  return m_providers.contains(provider);
}

std::size_t NodeRegister::providerCount() const {
  const std::lock_guard lock(m_mutex);
  return m_providers.size();
}

DlResult NodeRegister::addNode(const IProvider* provider, const std::string& address, IProviderNode* node) {
  if (node == nullptr) {
    return DL_INVALID_HANDLE;
  }
  if (!isNodeAddress(address)) {
    return DL_INVALID_ADDRESS;
  }
  const std::lock_guard lock(m_mutex);
  const auto owner = m_providers.find(provider);
  if (owner == m_providers.end()) {
    return DL_INVALID_HANDLE;
  }
  const std::shared_ptr<ProviderCore>& core = owner->second;
  const auto [place, isNew] = m_nodes.try_emplace(address, Node{provider, core});
  if (!isNew) {
    return DL_ALREADY_EXISTS;
  }
  try {
    if (core->add(address, node)) {
      return DL_OK;
    }
  } catch (...) {
    m_nodes.erase(place);
    throw;
  }
  m_nodes.erase(place);
  return DL_ALREADY_EXISTS;  // the one before is just being withdrawn
}

DlResult NodeRegister::removeNode(const IProvider* provider, const std::string& address) {
  std::shared_ptr<ProviderCore> core;
  {
    const std::lock_guard lock(m_mutex);
    const auto found = m_nodes.find(address);
    if (found == m_nodes.end() || found->second.provider != provider) {
      return DL_INVALID_ADDRESS;
    }
    core = std::move(found->second.core);
    m_nodes.erase(found);
  }
  static_cast<void>(core->remove(address));
  return DL_OK;
}

DlResult NodeRegister::addType(const IProvider* provider, const std::string& address, const Variant& value) {
  if (value.getType() == VariantType::UNKNOWN) {
    return DL_INVALID_VALUE;
  }
  if (!isAddress(address)) {
    return DL_INVALID_ADDRESS;
  }
  const std::lock_guard lock(m_mutex);
  if (!m_providers.contains(provider)) {
    return DL_INVALID_HANDLE;
  }
  const auto [place, isNew] = m_types.try_emplace(address, Type{provider, value});
  if (!isNew) {
    return DL_ALREADY_EXISTS;
  }
  if (!isListOfScopes(address)) {
    return DL_OK;
  }
  auto result = DL_OUT_OF_MEMORY;
  try {
    result = m_scopes.add(address, value);
  } catch (...) {
    m_types.erase(place);
    throw;
  }
  if (isFailure(result)) {
    m_types.erase(place);
  }
  return result;
}

DlResult NodeRegister::removeType(const IProvider* provider, const std::string& address) {
  const std::lock_guard lock(m_mutex);
  const auto found = m_types.find(address);
  if (found == m_types.end() || found->second.provider != provider) {
    return DL_INVALID_ADDRESS;
  }
  if (isListOfScopes(address)) {
    m_scopes.remove(address);
  }
  m_types.erase(found);
  return DL_OK;
}

std::optional<NodeRegister::Route> NodeRegister::routeOf(const std::string& node) const {
  const auto found = m_nodes.find(node);
  if (found == m_nodes.end()) {
    return std::nullopt;
  }
  Route route;  // filled one by one: the compiler loses track of a half-made temporary when the copy of the text fails
  route.core = found->second.core;
  route.node = node;
  return route;
}

std::optional<NodeRegister::Route> NodeRegister::find(std::string_view address) const {
  const std::lock_guard lock(m_mutex);
  if (auto route = routeOf(std::string(address))) {
    return route;
  }
  return routeOf(folderPrefix(parentOf(address)) + std::string(ONE_LEVEL));
}

std::optional<NodeRegister::Route> NodeRegister::findContent(std::string_view folder) const {
  const std::lock_guard lock(m_mutex);
  return routeOf(folderPrefix(folder) + std::string(ONE_LEVEL));
}

std::set<std::string> NodeRegister::childrenOf(std::string_view folder) const {
  const std::string prefix = folderPrefix(folder);
  const std::lock_guard lock(m_mutex);
  std::set<std::string> children;
  for (auto node = m_nodes.lower_bound(prefix); node != m_nodes.end() && node->first.starts_with(prefix); ++node) {
    std::string_view rest = std::string_view(node->first).substr(prefix.size());
    std::string_view level;
    if (takeLevel(rest, level) && level != ONE_LEVEL) {
      children.emplace(level);
    }
  }
  return children;
}

bool NodeRegister::isFolder(std::string_view address) const {
  const std::string prefix = folderPrefix(address);
  const std::lock_guard lock(m_mutex);
  const auto below = m_nodes.lower_bound(prefix);
  return below != m_nodes.end() && below->first.starts_with(prefix);
}

std::vector<std::string> NodeRegister::addresses() const {
  const std::lock_guard lock(m_mutex);
  std::vector<std::string> result;
  for (const auto& [address, node] : m_nodes) {
    result.push_back(address);
  }
  return result;
}

std::shared_ptr<ProviderCore> NodeRegister::findBusy() const {
  const std::lock_guard lock(m_mutex);
  const auto busy = std::ranges::find_if(m_providers, [](const auto& provider) { return !provider.second->isIdle(); });
  return busy != m_providers.end() ? busy->second : nullptr;
}

bool NodeRegister::waitUntilIdle(ProviderCore::Clock::time_point deadline) const noexcept {
  // Waits without the lock: a callback may register something before it comes back.
  while (const std::shared_ptr<ProviderCore> busy = findBusy()) {
    if (!busy->waitUntilIdle(deadline)) {
      return false;
    }
  }
  return true;
}

}  // namespace motion::host::datalayer
