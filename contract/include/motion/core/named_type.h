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
  /// The identity of the type that the record really has; safeCast compares it. [any & real-time]
  [[nodiscard]] virtual DataID getID() const = 0;

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
  /// Takes the payload over. [any]
  explicit NamedType(BASETYPE value) : m_value(std::move(value)) {}

  [[nodiscard]] DataID getID() const override { return getMyID(); }
  /// The payload itself, to be read and changed without a copy; valid as long as the record. [any & real-time]
  [[nodiscard]] virtual BASETYPE& getRef() { return m_value; }
  /// A copy of the payload; it may allocate where copies of BASETYPE do. [any]
  [[nodiscard]] virtual BASETYPE get() const { return m_value; }
  /// Replaces the payload. Nothing keeps readers on other threads off. [any]
  virtual void set(BASETYPE value) { m_value = std::move(value); }

  /// The hash of the compiler's text for this very function, computed once per type: both sides find the same number
  /// without sharing a table. The exact text, and so the signature, is part of the contract. [any]
  static DataID getMyID() {
    static const DataID id = std::hash<std::string_view>{}(__PRETTY_FUNCTION__);
    return id;
  }

  /// The container as this type; null when it is null or of another type. [any & real-time]
  [[nodiscard]] static NamedType* safeCast(IContainer* container) {
    return container != nullptr && container->getID() == getMyID() ? static_cast<NamedType*>(container) : nullptr;
  }
  /// As above, for a container that is only read. [any & real-time]
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
