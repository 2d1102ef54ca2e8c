// The motion objects of a runtime.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/motion/motion_object.h"
#include "motion/core/i_obj_mgr.h"

namespace motion::host {

/// Objects are added before the first cycle and stay until the runtime ends; look-ups need neither a lock nor memory.
class ObjMgr : public core::IObjMgr {
 public:
  /// Adds an object; null when the name is taken. Throws std::bad_alloc and then adds nothing. [framework]
  MotionObject* add(ObjectConfig config, RetiredCmds& retired);

  [[nodiscard]] core::IObj* findObj(const char* name, std::uint32_t flags) noexcept override { return find(name, flags); }
  [[nodiscard]] const char* getObjName(const core::IObj* obj) const noexcept override;
  [[nodiscard]] std::uint32_t getObjCount() const noexcept override { return static_cast<std::uint32_t>(m_objects.size()); }

  [[nodiscard]] MotionObject* find(const char* name, std::uint32_t flags = 0) const noexcept;
  /// In order of creation.
  [[nodiscard]] std::span<const std::unique_ptr<MotionObject>> objects() const noexcept { return m_objects; }

 private:
  /// Lets a name be looked up as it came, without a string of its own.
  struct TextHash {
    using is_transparent = void;
    [[nodiscard]] std::size_t operator()(std::string_view text) const noexcept {
      return std::hash<std::string_view>{}(text);
    }
  };

  std::vector<std::unique_ptr<MotionObject>> m_objects;
  std::unordered_map<std::string, MotionObject*, TextHash, std::equal_to<>> m_byName;
  std::unordered_map<const core::IObj*, const MotionObject*> m_byAddress;
};

}  // namespace motion::host
