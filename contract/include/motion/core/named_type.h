// Data records that carry the identity of their type across the border between component and host.
#pragma once

#include <cstddef>
#include <functional>
#include <string_view>
#include <utility>

namespace motion::core {

/// Identity of a named type.
using DataID = unsigned long;

/// A record of some named type. Slot order of a NamedType: two destructors, getID, getRef, get, set.
class IContainer {
 public:
  virtual ~IContainer() = default;
  [[nodiscard]] virtual DataID getID() const = 0;  ///< [any & real-time]

 protected:
  IContainer() = default;
  IContainer(const IContainer&) = default;
  IContainer& operator=(const IContainer&) = default;
};

/// A payload of type BASETYPE whose meaning is SEMANTIC (a type that is only declared).
template <typename BASETYPE, typename SEMANTIC>
class NamedType : public IContainer {
 public:
  NamedType() = default;
  explicit NamedType(BASETYPE value) : m_value(std::move(value)) {}

  [[nodiscard]] DataID getID() const override { return getMyID(); }
  [[nodiscard]] virtual BASETYPE& getRef() { return m_value; }
  [[nodiscard]] virtual BASETYPE get() const { return m_value; }
  virtual void set(BASETYPE value) { m_value = std::move(value); }

  /// The hash of the compiler's text for this very function, computed once per type: both sides find the same number
  /// without sharing a table. The exact text, and so the signature, is part of the contract.
  static DataID getMyID() {
    static const DataID id = std::hash<std::string_view>{}(__PRETTY_FUNCTION__);
    return id;
  }

  /// The container as this type; null when it is null or of another type.
  [[nodiscard]] static NamedType* safeCast(IContainer* container) {
    return container != nullptr && container->getID() == getMyID() ? static_cast<NamedType*>(container) : nullptr;
  }
  [[nodiscard]] static const NamedType* safeCast(const IContainer* container) {
    return container != nullptr && container->getID() == getMyID() ? static_cast<const NamedType*>(container) : nullptr;
  }

 private:
  BASETYPE m_value{};
};

}  // namespace motion::core

namespace motion::core::job {

/// The form in which jobs and commands keep their records. It has the identity of its base.
template <typename BASETYPE, typename SEMANTIC>
class JobNamedType : public NamedType<BASETYPE, SEMANTIC> {
 public:
  using NamedType<BASETYPE, SEMANTIC>::NamedType;
};

}  // namespace motion::core::job
