// The factory of job objects and shared helpers.
#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "motion/core/i_obj_factory.h"

namespace motion::host {

/// Keeps prototypes by name and clones them. Thread-safe.
class ObjFactory : public core::IObjFactory {
 public:
  /// CreationFailed without memory; the prototype stays with the caller then. [framework]
  core::ObjFactoryResult registerObj(std::unique_ptr<core::IAmCreatable>& prototype, std::uint32_t flags) noexcept override;
  /// CreationFailed when the prototype made nothing, for want of memory or another reason. [prepare]
  core::ObjFactoryResult createObj(const char* name, std::uint32_t flags, core::job::IJobObject*& out) noexcept override;
  core::ObjFactoryResult unregisterObj(const char* name, std::uint32_t flags) noexcept override;
  [[nodiscard]] core::IAmCreatable* getHelper(const char* name) noexcept override;

  [[nodiscard]] std::size_t size() const;  ///< [any]

 private:
  mutable std::mutex m_mutex;
  std::map<std::string, std::unique_ptr<core::IAmCreatable>, std::less<>> m_prototypes;
};

}  // namespace motion::host
