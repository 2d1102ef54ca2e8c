#include "host/datalayer/scope_register.h"

#include <algorithm>
#include <set>
#include <string_view>

#include "host/datalayer/address.h"
#include "schemas/datalayer/scopes_generated.h"

namespace motion::host::datalayer {

using comm::datalayer::DlResult;
using comm::datalayer::Variant;
using Patterns = flatbuffers::Vector<flatbuffers::Offset<flatbuffers::String>>;

namespace {

/// False when one of them is no pattern.
template <typename GRANTS>
bool take(GRANTS& grants, const Patterns* patterns, Rights rights) {
  for (flatbuffers::uoffset_t i = 0; patterns != nullptr && i < patterns->size(); ++i) {
    if (!isPattern(patterns->Get(i)->string_view())) {
      return false;
    }
    grants.push_back({patterns->Get(i)->str(), rights});
  }
  return true;
}

/// The levels of a pattern ahead of the first wildcard.
std::string fixedLevelsOf(std::string_view pattern) {
  std::string fixed;
  for (std::string_view level; takeLevel(pattern, level) && level != ONE_LEVEL && level != ALL_LEVELS;) {
    fixed += fixed.empty() ? "" : "/";
    fixed += level;
  }
  return fixed;
}

const comm::datalayer::Scopes* scopesIn(const Variant& value) {
  const auto bytes = value.getFlatBuffer();
  flatbuffers::Verifier verifier(bytes.data(), bytes.size());
  return verifier.VerifyBuffer<comm::datalayer::Scopes>(nullptr)
             ? flatbuffers::GetRoot<comm::datalayer::Scopes>(bytes.data())
             : nullptr;
}

}  // namespace

DlResult ScopeRegister::add(const std::string& address, const Variant& value) {
  const comm::datalayer::Scopes* const list = scopesIn(value);
  if (list == nullptr || list->scopes() == nullptr) {
    return comm::datalayer::DL_INVALID_VALUE;
  }
  constexpr Rights read = static_cast<Rights>(Right::READ);
  constexpr Rights all = (Right::READ | Right::WRITE) | (Right::CREATE_AND_REMOVE | Right::USE);
  Scopes added;
  for (const comm::datalayer::Scope* const scope : *list->scopes()) {
    if (scope->identifier() == nullptr || scope->identifier()->size() == 0) {
      return comm::datalayer::DL_INVALID_VALUE;
    }
    Scope made{address, {}};
    if (!take(made.grants, scope->permissionsR(), read) ||
        !take(made.grants, scope->permissionsRW(), Right::READ | Right::WRITE) ||
        !take(made.grants, scope->permissionsX(), static_cast<Rights>(Right::USE)) ||
        !take(made.grants, scope->permissionsRWX(), all)) {
      return comm::datalayer::DL_INVALID_VALUE;
    }
    if (!added.emplace(scope->identifier()->str(), std::move(made)).second) {
      return comm::datalayer::DL_ALREADY_EXISTS;
    }
  }
  const std::lock_guard lock(m_mutex);
  if (std::ranges::any_of(added, [this](const auto& scope) { return m_scopes.contains(scope.first); })) {
    return comm::datalayer::DL_ALREADY_EXISTS;
  }
  m_scopes.merge(added);
  m_version.fetch_add(1, std::memory_order_release);
  return comm::datalayer::DL_OK;
}

void ScopeRegister::remove(const std::string& address) noexcept {
  const std::lock_guard lock(m_mutex);
  if (std::erase_if(m_scopes, [&address](const auto& scope) { return scope.second.address == address; }) != 0) {
    m_version.fetch_add(1, std::memory_order_release);
  }
}

std::vector<std::string> ScopeRegister::identifiers() const {
  const std::lock_guard lock(m_mutex);
  std::vector<std::string> result;
  for (const auto& [identifier, scope] : m_scopes) {
    result.push_back(identifier);
  }
  return result;
}

AccessRights ScopeRegister::rightsOf(const std::vector<std::string>& identifiers) const {
  const std::lock_guard lock(m_mutex);
  AccessRights rights;
  for (const std::string& identifier : identifiers) {
    if (const auto scope = m_scopes.find(identifier); scope != m_scopes.end()) {
      for (const Grant& grant : scope->second.grants) {
        rights.grant(grant.pattern, grant.rights);
      }
    }
  }
  return rights;
}

std::vector<std::string> ScopeRegister::readableRootsOf(const std::vector<std::string>& identifiers) const {
  std::set<std::string> roots;
  {
    const std::lock_guard lock(m_mutex);
    for (const std::string& identifier : identifiers) {
      const auto scope = m_scopes.find(identifier);
      for (std::size_t i = 0; scope != m_scopes.end() && i < scope->second.grants.size(); ++i) {
        const Grant& grant = scope->second.grants[i];
        const std::string root = fixedLevelsOf(grant.pattern);
        if ((grant.rights & static_cast<Rights>(Right::READ)) != 0) {
          roots.insert(root);
        }
      }
    }
  }
  std::vector<std::string> result;
  for (const std::string& root : roots) {
    const bool isBelow =
        std::ranges::any_of(result, [&root](const auto& other) { return other.empty() || root.starts_with(other + "/"); });
    if (!isBelow) {
      result.push_back(root);
    }
  }
  return result;
}

}  // namespace motion::host::datalayer
