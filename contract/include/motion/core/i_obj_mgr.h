// The motion objects by name.
#pragma once

#include <cstdint>

namespace motion::core {

class IObj;

class IObjMgr {
 public:
  virtual ~IObjMgr() = default;

  /// The object of that name, null when there is none. `flags` is 0. [any]
  [[nodiscard]] virtual IObj* findObj(const char* name, std::uint32_t flags) = 0;
  /// The name of an object, null for a stranger. The text lives as long as the object. [any]
  [[nodiscard]] virtual const char* getObjName(const IObj* obj) const = 0;
  [[nodiscard]] virtual std::uint32_t getObjCount() const = 0;  ///< [any]

 protected:
  IObjMgr() = default;
  IObjMgr(const IObjMgr&) = default;
  IObjMgr& operator=(const IObjMgr&) = default;
};

}  // namespace motion::core
