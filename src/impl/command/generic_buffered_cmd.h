// What the component's buffered commands do alike: register, come into being and offer a record to their jobs.
#pragma once

#include <string>
#include <vector>

#include "impl/command/cmd_data.h"
#include "impl/command/kavo_cmd.h"
#include "impl/command/registration.h"
#include "motion/core/cmd/cmd_id.h"
#include "motion/core/i_motion_ext.h"

namespace motion::kavo::cmd {

/// What sets a command apart from others, for whatever type of object. All texts have static storage.
struct CmdDefinition {
  CallSite site;  ///< where the command is defined; its traces name this place, and the operation
  const char* name;
  CmdDescription description;
  /// Traces that the host did not take the record that the command offers its jobs.
  void (*publishRefused)(const CallSite& site, core::job::JobResult result) noexcept;
};

/// Base of COMMAND, a command for one type of object that keeps a RECORD. COMMAND overrides onSetCmdValues and onValidate,
/// and says by static members what sets it apart:
///
/// | member | |
/// |---|---|
/// | `define()` | its CmdDefinition |
/// | `GROUPS` | the groups of commands that it belongs to, an array of texts |
/// | `MARSHAL` | its function that makes a container of parameters out of a value of the data layer |
template <typename COMMAND, typename RECORD, core::ObjectType OBJECT_TYPE>
class GenericBufferedCmd : public KavoCmd<OBJECT_TYPE> {
 public:
  /// Throws std::bad_alloc.
  explicit GenericBufferedCmd(core::IObjFactory& objFactory) : KavoCmd<OBJECT_TYPE>(getStaticName(), objFactory) {
    static_cast<void>(jobNames());  // a command that exists has them
  }

  /// Registers and unregisters the jobs and the command; see registerCommand. [framework]
  [[nodiscard]] static core::cmd::CmdResult registerCmd(const core::IMotionExt& extIf, const std::string& schemaDir) {
    const CmdRegistration<OBJECT_TYPE> registration = {
        .getCmdId = &getCmdId, .groups = COMMAND::GROUPS, .onCreate = &onCreate, .onMarshal = COMMAND::MARSHAL};
    return registerCommand(siteOf(__func__), COMMAND::define().description, registration, extIf, schemaDir);
  }
  [[nodiscard]] static core::cmd::CmdResult unregisterCmd(const core::IMotionExt& extIf) {  ///< [framework]
    return unregisterCommand(siteOf(__func__), COMMAND::define().description, &getCmdId, extIf);
  }
  /// What the host's command factory calls; see createCommand. [prepare]
  static core::cmd::CmdResult onCreate(core::IObjFactory& factory, bool buffered, core::cmd::CmdGeneric<OBJECT_TYPE>*& cmd,
                                       std::string& errText) {
    return createCommand<COMMAND>(siteOf(__func__), factory, buffered, cmd, errText);
  }
  /// The first call, at registration, may throw std::bad_alloc. [framework] [prepare]
  [[nodiscard]] static const core::cmd::CmdId& getCmdId() {
    static const core::cmd::CmdId id = {OBJECT_TYPE, getStaticName()};
    return id;
  }
  [[nodiscard]] static const char* getStaticName() noexcept { return COMMAND::define().name; }  ///< [any]

  [[nodiscard]] const std::vector<std::string>& getJobNames() const override { return jobNames(); }
  core::cmd::CmdResult onRegisterJobListsInputs(core::job::IJobDataHandler& handler) override {
    if (const auto result = publishCmdData(handler, m_cmdValues); core::isFailure(result)) {
      COMMAND::define().publishRefused(siteOf(__func__), result);
      return core::cmd::CmdResult::Refused;
    }
    return core::cmd::CmdResult::Okay;
  }

 protected:
  /// The place that traces of an operation name.
  [[nodiscard]] static CallSite siteOf(const char* operation) noexcept { return COMMAND::define().site.as(operation); }

  RECORD m_cmdValues;

 private:
  [[nodiscard]] static const std::vector<std::string>& jobNames() {
    static const std::vector<std::string> names = jobNamesOf(COMMAND::define().description.jobs);
    return names;
  }
};

}  // namespace motion::kavo::cmd
