// The factories of a pretended motion runtime: job objects, helpers, commands and command options.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "motion/core/cmd/i_generic_cmd_factory.h"
#include "motion/core/cmd/i_generic_cmd_option_factory.h"
#include "motion/core/i_obj_factory.h"
#include "motion/core/unit_settings.h"
#include "support/fake_calls.h"

namespace motion::test {

/// Converts with the factors of the settings. Operations: "unitHelper.toInternal", "unitHelper.toUser", shown with the entry
/// and the value.
class FakeUnitHelper : public core::UnitHelperT {
 public:
  explicit FakeUnitHelper(FakeCalls& calls) : m_calls(calls) {}

  core::IAmCreatable* createNew() const override { return nullptr; }
  const char* getID() const override { return core::UNITHELPER_T_ID; }
  std::uint32_t getType() const override { return static_cast<std::uint32_t>(core::CreatableType::HELPER); }
  double toInternal(const core::UnitSettings& settings, core::UnitEntry entry, double userValue) const override;
  double toUser(const core::UnitSettings& settings, core::UnitEntry entry, double internalValue) const override;

 private:
  FakeCalls& m_calls;
};

/// Operations: "objFactory.registerObj", "objFactory.createObj", "objFactory.unregisterObj", "objFactory.getHelper".
class FakeObjFactory : public core::IObjFactory {
 public:
  explicit FakeObjFactory(FakeCalls& calls) : m_unitHelper(calls), m_calls(calls) {}

  core::ObjFactoryResult registerObj(std::unique_ptr<core::IAmCreatable>& prototype, std::uint32_t flags) override;
  core::ObjFactoryResult createObj(const char* name, std::uint32_t flags, core::job::IJobObject*& out) override;
  core::ObjFactoryResult unregisterObj(const char* name, std::uint32_t flags) override;
  core::IAmCreatable* getHelper(const char* name) override;

  std::map<std::string, std::unique_ptr<core::IAmCreatable>> m_prototypes;
  FakeUnitHelper m_unitHelper;  ///< the only helper

 private:
  FakeCalls& m_calls;
};

/// What a command was registered with.
struct FakeCmdRegistration {
  core::cmd::CmdCreateFn<core::ObjectType::AXIS> onCreateAxis;       ///< of a command for axes
  core::cmd::CmdCreateFn<core::ObjectType::KINEMATICS> onCreateKin;  ///< of a command for kinematics
  core::cmd::CmdMarshalFn onMarshal;
  bool visible = false;
  std::vector<std::string> groups;
  std::string schemaPath;
  std::string description;
  std::string helpUrl;
};

/// Operations: "cmdFactory.registerCmd", "cmdFactory.unregisterCmd".
class FakeCmdFactory : public core::cmd::IGenericCmdFactory {
 public:
  explicit FakeCmdFactory(FakeCalls& calls) : m_calls(calls) {}

  core::cmd::CmdResult registerCmd(const core::cmd::CmdId& id,
                                   const core::cmd::CmdCreateFn<core::ObjectType::AXIS>& onCreate,
                                   const core::cmd::CmdMarshalFn& onMarshal, bool visible,
                                   const std::vector<std::string>& groups, const std::string& schemaPath,
                                   const std::string& description, const std::string& helpUrl) override;
  core::cmd::CmdResult registerCmd(const core::cmd::CmdId& id,
                                   const core::cmd::CmdCreateFn<core::ObjectType::KINEMATICS>& onCreate,
                                   const core::cmd::CmdMarshalFn& onMarshal, bool visible,
                                   const std::vector<std::string>& groups, const std::string& schemaPath,
                                   const std::string& description, const std::string& helpUrl) override;
  core::cmd::CmdResult unregisterCmd(const core::cmd::CmdId& id) override;

  std::map<core::cmd::CmdId, FakeCmdRegistration> m_commands;

 private:
  core::cmd::CmdResult add(const core::cmd::CmdId& id, const FakeCmdRegistration& registration);

  FakeCalls& m_calls;
};

/// What an option was registered with.
struct FakeCmdOptionRegistration {
  core::cmd::CmdOptionCreateFn onCreate;
  core::cmd::CmdOptionMarshalFn onMarshal;
  std::vector<std::string> groups;
  std::string schemaPath;
  std::string description;
  std::string helpUrl;
  std::optional<std::vector<std::uint32_t>> slots;  ///< absent when registered without slots
};

/// Operations: "optionFactory.registerCmdOption", "optionFactory.registerCmdOptionWithSlots",
/// "optionFactory.unregisterCmdOption".
class FakeCmdOptionFactory : public core::cmd::IGenericCmdOptionFactory {
 public:
  explicit FakeCmdOptionFactory(FakeCalls& calls) : m_calls(calls) {}

  core::cmd::CmdResult registerCmdOption(const core::cmd::CmdId& id, const core::cmd::CmdOptionCreateFn& onCreate,
                                         const core::cmd::CmdOptionMarshalFn& onMarshal,
                                         const std::vector<std::string>& groups, const std::string& schemaPath,
                                         const std::string& description, const std::string& helpUrl) override;
  core::cmd::CmdResult registerCmdOptionWithSlots(const core::cmd::CmdId& id, const core::cmd::CmdOptionCreateFn& onCreate,
                                                  const core::cmd::CmdOptionMarshalFn& onMarshal,
                                                  const std::vector<std::string>& groups, const std::string& schemaPath,
                                                  const std::string& description, const std::string& helpUrl,
                                                  const std::vector<std::uint32_t>& slots) override;
  core::cmd::CmdResult unregisterCmdOption(const core::cmd::CmdId& id) override;

  std::map<core::cmd::CmdId, FakeCmdOptionRegistration> m_options;

 private:
  core::cmd::CmdResult add(const core::cmd::CmdId& id, const FakeCmdOptionRegistration& registration);

  FakeCalls& m_calls;
};

/// As in "1 SetSignal": how calls show a CmdId.
[[nodiscard]] std::string toText(const core::cmd::CmdId& id);

}  // namespace motion::test
