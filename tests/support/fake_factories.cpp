// The factories of a pretended motion runtime: job objects, helpers, commands and command options.
#include "support/fake_factories.h"

#include <string_view>

#include "motion/core/job/job_object_base.h"

namespace motion::test {

using core::ObjFactoryResult;
using core::cmd::CmdId;
using core::cmd::CmdResult;

double FakeUnitHelper::toInternal(const core::UnitSettings& settings, core::UnitEntry entry, double userValue) const {
  m_calls.note("unitHelper.toInternal", static_cast<std::uint32_t>(entry), userValue);
  return userValue * settings.entries.at(static_cast<std::size_t>(entry)).factor;
}

double FakeUnitHelper::toUser(const core::UnitSettings& settings, core::UnitEntry entry, double internalValue) const {
  m_calls.note("unitHelper.toUser", static_cast<std::uint32_t>(entry), internalValue);
  return internalValue / settings.entries.at(static_cast<std::size_t>(entry)).factor;
}

ObjFactoryResult FakeObjFactory::registerObj(std::unique_ptr<core::IAmCreatable>& prototype, std::uint32_t flags) {
  const AllocationPause pause;
  if (prototype == nullptr) {
    return ObjFactoryResult::InvalidArgument;
  }
  if (const auto code = m_calls.note("objFactory.registerObj", prototype->getID(), flags)) {
    return static_cast<ObjFactoryResult>(*code);
  }
  const bool isNew = m_prototypes.try_emplace(prototype->getID(), std::move(prototype)).second;
  return isNew ? ObjFactoryResult::Okay : ObjFactoryResult::AlreadyKnown;
}

ObjFactoryResult FakeObjFactory::createObj(const char* name, std::uint32_t flags, core::job::IJobObject*& out) {
  out = nullptr;
  if (const auto code = m_calls.note("objFactory.createObj", name, flags)) {
    return static_cast<ObjFactoryResult>(*code);
  }
  const core::IAmCreatable* prototype = nullptr;
  {
    const AllocationPause pause;
    const auto found = m_prototypes.find(name);
    if (found == m_prototypes.end()) {
      return ObjFactoryResult::UnknownObject;
    }
    prototype = found->second.get();
  }
  out = dynamic_cast<core::job::IJobObject*>(prototype->createNew());
  return out != nullptr ? ObjFactoryResult::Okay : ObjFactoryResult::CreationFailed;
}

ObjFactoryResult FakeObjFactory::unregisterObj(const char* name, std::uint32_t flags) {
  if (const auto code = m_calls.note("objFactory.unregisterObj", name, flags)) {
    return static_cast<ObjFactoryResult>(*code);
  }
  const AllocationPause pause;
  return m_prototypes.erase(name) == 1 ? ObjFactoryResult::Okay : ObjFactoryResult::UnknownObject;
}

core::IAmCreatable* FakeObjFactory::getHelper(const char* name) {
  if (m_calls.note("objFactory.getHelper", name)) {
    return nullptr;
  }
  return name == std::string_view(m_unitHelper.getID()) ? &m_unitHelper : nullptr;
}

CmdResult FakeCmdFactory::registerCmd(const CmdId& id, const core::cmd::CmdCreateFn<core::ObjectType::AXIS>& onCreate,
                                      const core::cmd::CmdMarshalFn& onMarshal, bool visible,
                                      const std::vector<std::string>& groups, const std::string& schemaPath,
                                      const std::string& description, const std::string& helpUrl) {
  const AllocationPause pause;
  return add(id, {onCreate, nullptr, onMarshal, visible, groups, schemaPath, description, helpUrl});
}

CmdResult FakeCmdFactory::registerCmd(const CmdId& id, const core::cmd::CmdCreateFn<core::ObjectType::KINEMATICS>& onCreate,
                                      const core::cmd::CmdMarshalFn& onMarshal, bool visible,
                                      const std::vector<std::string>& groups, const std::string& schemaPath,
                                      const std::string& description, const std::string& helpUrl) {
  const AllocationPause pause;
  return add(id, {nullptr, onCreate, onMarshal, visible, groups, schemaPath, description, helpUrl});
}

CmdResult FakeCmdFactory::add(const CmdId& id, const FakeCmdRegistration& registration) {
  if (const auto code = m_calls.note("cmdFactory.registerCmd", toText(id))) {
    return static_cast<CmdResult>(*code);
  }
  return m_commands.try_emplace(id, registration).second ? CmdResult::Okay : CmdResult::AlreadyRegistered;
}

CmdResult FakeCmdFactory::unregisterCmd(const CmdId& id) {
  const AllocationPause pause;
  if (const auto code = m_calls.note("cmdFactory.unregisterCmd", toText(id))) {
    return static_cast<CmdResult>(*code);
  }
  return m_commands.erase(id) == 1 ? CmdResult::Okay : CmdResult::NotRegistered;
}

CmdResult FakeCmdOptionFactory::registerCmdOption(const CmdId& id, const core::cmd::CmdOptionCreateFn& onCreate,
                                                  const core::cmd::CmdOptionMarshalFn& onMarshal,
                                                  const std::vector<std::string>& groups, const std::string& schemaPath,
                                                  const std::string& description, const std::string& helpUrl) {
  const AllocationPause pause;
  if (const auto code = m_calls.note("optionFactory.registerCmdOption", toText(id))) {
    return static_cast<CmdResult>(*code);
  }
  return add(id, {onCreate, onMarshal, groups, schemaPath, description, helpUrl, std::nullopt});
}

CmdResult FakeCmdOptionFactory::registerCmdOptionWithSlots(const CmdId& id, const core::cmd::CmdOptionCreateFn& onCreate,
                                                           const core::cmd::CmdOptionMarshalFn& onMarshal,
                                                           const std::vector<std::string>& groups,
                                                           const std::string& schemaPath, const std::string& description,
                                                           const std::string& helpUrl,
                                                           const std::vector<std::uint32_t>& slots) {
  const AllocationPause pause;
  if (const auto code = m_calls.note("optionFactory.registerCmdOptionWithSlots", toText(id))) {
    return static_cast<CmdResult>(*code);
  }
  return add(id, {onCreate, onMarshal, groups, schemaPath, description, helpUrl, slots});
}

CmdResult FakeCmdOptionFactory::add(const CmdId& id, const FakeCmdOptionRegistration& registration) {
  return m_options.try_emplace(id, registration).second ? CmdResult::Okay : CmdResult::AlreadyRegistered;
}

CmdResult FakeCmdOptionFactory::unregisterCmdOption(const CmdId& id) {
  const AllocationPause pause;
  if (const auto code = m_calls.note("optionFactory.unregisterCmdOption", toText(id))) {
    return static_cast<CmdResult>(*code);
  }
  return m_options.erase(id) == 1 ? CmdResult::Okay : CmdResult::NotRegistered;
}

std::string toText(const CmdId& id) {
  return fmt::format("{} {}", static_cast<std::uint32_t>(id.objectType), id.name);
}

}  // namespace motion::test
