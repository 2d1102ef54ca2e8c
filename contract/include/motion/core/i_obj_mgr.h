// The motion objects by name.
#pragma once

#include <cstdint>

namespace motion::core {

class IObj;

/// Finds motion objects. They all exist before the first cycle and stay as long as the runtime.
class IObjMgr {
 public:
  virtual ~IObjMgr() = default;

  /// The object of that name, null when there is none. `flags` is 0. [any]
  [[nodiscard]] virtual IObj* findObj(const char* name, std::uint32_t flags) = 0;
  /// The name of an object, null for a stranger. The text lives as long as the object. [any]
  [[nodiscard]] virtual const char* getObjName(const IObj* obj) const = 0;
  /// How many motion objects there are, axes and kinematics together. [any]
  [[nodiscard]] virtual std::uint32_t getObjCount() const = 0;

 protected:
  IObjMgr() = default;
  IObjMgr(const IObjMgr&) = default;
  IObjMgr& operator=(const IObjMgr&) = default;
};

}  // namespace motion::core
