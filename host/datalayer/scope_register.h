// The scopes that providers have registered: named sets of rights that clients may be granted.
#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "comm/datalayer/dl_result.h"
#include "comm/datalayer/variant.h"
#include "host/datalayer/access_rights.h"

namespace motion::host::datalayer {

/// Thread-safe. Operations may throw std::bad_alloc and then change nothing.
class ScopeRegister {
 public:
  /// Takes a list of scopes over. DL_INVALID_VALUE for what is no list of scopes with identifiers and proper patterns;
  /// DL_ALREADY_EXISTS when one of the identifiers is taken: nobody widens what somebody else has named. [framework]
  [[nodiscard]] comm::datalayer::DlResult add(const std::string& address, const comm::datalayer::Variant& scopes);
  /// Withdraws the list of that address, if there is one. Clients lose its rights at once. [framework]
  void remove(const std::string& address) noexcept;
  /// Of all scopes, in order. [any]
  [[nodiscard]] std::vector<std::string> identifiers() const;
  /// The rights of these scopes as they are registered now; unknown ones give none. [any]
  [[nodiscard]] AccessRights rightsOf(const std::vector<std::string>& identifiers) const;
  /// Where the readable nodes of these scopes begin: the levels of their patterns that are no wildcards, none of them below
  /// another one, in order. Empty text: a pattern begins with a wildcard. [any]
  [[nodiscard]] std::vector<std::string> readableRootsOf(const std::vector<std::string>& identifiers) const;
  /// Changes whenever scopes do. [any]
  [[nodiscard]] std::uint64_t version() const noexcept { return m_version.load(std::memory_order_acquire); }

 private:
  struct Grant {
    std::string pattern;
    Rights rights = NO_RIGHTS;
  };
  struct Scope {
    std::string address;  ///< under which it was registered
    std::vector<Grant> grants;
  };
  using Scopes = std::map<std::string, Scope>;

  mutable std::mutex m_mutex;
  Scopes m_scopes;
  std::atomic<std::uint64_t> m_version{1};
};

}  // namespace motion::host::datalayer
