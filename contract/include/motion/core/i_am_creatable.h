// What the object factory keeps: prototypes and shared helpers.
#pragma once

#include <cstdint>

namespace motion::core {

/// Something that the object factory knows by name and can clone. Slot order is fixed.
class IAmCreatable {
 public:
  virtual ~IAmCreatable() = default;

  /// A fresh instance of the same class, owned by the caller. [prepare]
  [[nodiscard]] virtual IAmCreatable* createNew() const = 0;
  /// The name, a text with static storage. [any & real-time]
  [[nodiscard]] virtual const char* getID() const = 0;
  /// A CreatableType as a number: whether the factory clones the object or hands it out as it is. [any & real-time]
  [[nodiscard]] virtual std::uint32_t getType() const = 0;

 protected:
  IAmCreatable() = default;
  IAmCreatable(const IAmCreatable&) = default;
  IAmCreatable& operator=(const IAmCreatable&) = default;
};

/// Values of IAmCreatable::getType.
enum class CreatableType : std::uint32_t {
  JOB = 1,     ///< a prototype of job objects, cloned by createObj
  HELPER = 2,  ///< one shared object, handed out by getHelper
};

}  // namespace motion::core
