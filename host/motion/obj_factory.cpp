#include "host/motion/obj_factory.h"

#include "host/support/guarded.h"
#include "motion/core/job/job_object_base.h"

namespace motion::host {

using core::CreatableType;
using core::ObjFactoryResult;

ObjFactoryResult ObjFactory::registerObj(std::unique_ptr<core::IAmCreatable>& prototype, std::uint32_t /*flags*/) noexcept {
  return guarded(ObjFactoryResult::CreationFailed, [&prototype, this] {
    if (prototype == nullptr || prototype->getID() == nullptr) {
      return ObjFactoryResult::InvalidArgument;
    }
    const std::scoped_lock lock(m_mutex);
    const auto [place, isNew] = m_prototypes.try_emplace(prototype->getID());
    if (!isNew) {
      return ObjFactoryResult::AlreadyKnown;
    }
    place->second = std::move(prototype);
    return ObjFactoryResult::Okay;
  });
}

ObjFactoryResult ObjFactory::createObj(const char* name, std::uint32_t /*flags*/, core::job::IJobObject*& out) noexcept {
  out = nullptr;
  const std::scoped_lock lock(m_mutex);
  const auto found = name != nullptr ? m_prototypes.find(name) : m_prototypes.end();
  if (found == m_prototypes.end() || found->second->getType() != static_cast<std::uint32_t>(CreatableType::JOB)) {
    return ObjFactoryResult::UnknownObject;
  }
  // A prototype has no right to throw across the contract; it made nothing then.
  core::IAmCreatable* const clone =
      guarded<core::IAmCreatable*>(nullptr, [&prototype = *found->second] { return prototype.createNew(); });
  if (clone == nullptr) {
    return ObjFactoryResult::CreationFailed;
  }
  out = static_cast<core::job::IJobObject*>(clone);
  return ObjFactoryResult::Okay;
}

ObjFactoryResult ObjFactory::unregisterObj(const char* name, std::uint32_t /*flags*/) noexcept {
  const std::scoped_lock lock(m_mutex);
  const auto found = name != nullptr ? m_prototypes.find(name) : m_prototypes.end();
  if (found == m_prototypes.end()) {
    return ObjFactoryResult::UnknownObject;
  }
  m_prototypes.erase(found);
  return ObjFactoryResult::Okay;
}

core::IAmCreatable* ObjFactory::getHelper(const char* name) noexcept {
  const std::scoped_lock lock(m_mutex);
  const auto found = name != nullptr ? m_prototypes.find(name) : m_prototypes.end();
  const bool isHelper =
      found != m_prototypes.end() && found->second->getType() == static_cast<std::uint32_t>(CreatableType::HELPER);
  return isHelper ? found->second.get() : nullptr;
}

std::size_t ObjFactory::size() const {
  const std::scoped_lock lock(m_mutex);
  return m_prototypes.size();
}

}  // namespace motion::host
