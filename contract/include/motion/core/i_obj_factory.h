// The host's factory of job objects and shared helpers.
#pragma once

#include <cstdint>
#include <memory>

#include "motion/core/i_am_creatable.h"
#include "motion/core/results.h"

namespace motion::core {

namespace job {
class IJobObject;
}

/// Knows prototypes and helpers of all components by name, in one common set of names.
class IObjFactory {
 public:
  virtual ~IObjFactory() = default;

  /// Takes a prototype over under its getID(); on success `prototype` is left empty. AlreadyKnown leaves it with the caller.
  /// `flags` is 0. [framework]
  virtual ObjFactoryResult registerObj(std::unique_ptr<IAmCreatable>& prototype, std::uint32_t flags) = 0;
  /// Clones the job object of that name; the caller owns the clone. On failure `out` is null. [prepare]
  virtual ObjFactoryResult createObj(const char* name, std::uint32_t flags, job::IJobObject*& out) = 0;
  /// Forgets a prototype. Objects cloned from it stay. [framework]
  virtual ObjFactoryResult unregisterObj(const char* name, std::uint32_t flags) = 0;
  /// The shared helper of that name, not owned, null when there is none. [framework]
  [[nodiscard]] virtual IAmCreatable* getHelper(const char* name) = 0;

 protected:
  IObjFactory() = default;
  IObjFactory(const IObjFactory&) = default;
  IObjFactory& operator=(const IObjFactory&) = default;
};

}  // namespace motion::core
