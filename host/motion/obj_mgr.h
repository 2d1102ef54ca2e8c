// The motion objects of a runtime.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "host/motion/motion_object.h"
#include "motion/core/i_obj_mgr.h"

namespace motion::host {

/// Objects are added before the first cycle and stay until the runtime ends; look-ups need no lock.
class ObjMgr : public core::IObjMgr {
 public:
  /// Adds an object; null when the name is taken. [framework]
  MotionObject* add(ObjectConfig config, RetiredCmds& retired);

  [[nodiscard]] core::IObj* findObj(const char* name, std::uint32_t flags) override { return find(name, flags); }
  [[nodiscard]] const char* getObjName(const core::IObj* obj) const override;
  [[nodiscard]] std::uint32_t getObjCount() const override { return static_cast<std::uint32_t>(m_objects.size()); }

  [[nodiscard]] MotionObject* find(const char* name, std::uint32_t flags = 0) const;
  /// In order of creation.
  [[nodiscard]] std::span<const std::unique_ptr<MotionObject>> objects() const noexcept { return m_objects; }

 private:
  std::vector<std::unique_ptr<MotionObject>> m_objects;
  std::unordered_map<std::string, MotionObject*> m_byName;
  std::unordered_map<const core::IObj*, const MotionObject*> m_byAddress;
};

}  // namespace motion::host
