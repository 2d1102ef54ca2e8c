// Names of identifiers.
#pragma once

namespace motion::core {

/// Records names for identifiers, both ways.
template <typename ID>
class IDManager {
 public:
  virtual ~IDManager() = default;

  /// False when the identifier is known already (nothing changes); otherwise records both directions. [framework]
  virtual bool addID(ID id, const char* name) = 0;
  /// The name of an identifier, null when unknown. [any]
  [[nodiscard]] virtual const char* getName(ID id) const = 0;
  /// The identifier of a name, 0 when unknown. [any]
  [[nodiscard]] virtual ID getID(const char* name) const = 0;

 protected:
  IDManager() = default;
  IDManager(const IDManager&) = default;
  IDManager& operator=(const IDManager&) = default;
};

}  // namespace motion::core
