// A command option of the bundle, driven as a host drives it.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "comm/datalayer/variant.h"
#include "conformance/subject.h"
#include "motion/core/cmd/generic_cmd_option.h"
#include "motion/core/cmd/i_cmd_opt_handler.h"
#include "motion/core/job/job_object_base.h"
#include "support/fake_dia.h"

namespace motion::conformance {

/// What an option's marshalling function answered.
struct MarshalledOption {
  core::cmd::CmdResult result{};
  std::unique_ptr<core::IContainer> container;  ///< null when there is none
  core::cmd::CmdOptPermType permType{};
};

/// Calls the marshalling function of a registered option; the permanence is `before` when the function leaves it alone. What
/// it reports to the collector is among the subject's calls as "collector.add(...)".
[[nodiscard]] MarshalledOption marshalOption(Subject& subject, core::ObjectType type, const std::string& name,
                                             const comm::datalayer::Variant* data,
                                             core::cmd::CmdOptPermType before = core::cmd::CmdOptPermType::ONCE);

/// Makes an instance of a registered option; a Mismatch when it cannot be made.
[[nodiscard]] std::unique_ptr<core::cmd::GenericCmdOption> makeOption(Subject& subject, core::ObjectType type,
                                                                      const std::string& name);

/// The options that are active on an object, as an option asks for them.
class ActiveOptions : public core::cmd::ICmdOptHandler {
 public:
  core::cmd::CmdResult getDataOfOption(const core::cmd::CmdId& option, const core::IContainer*& data) const override;

  std::map<core::cmd::CmdId, const core::IContainer*> m_data;
};

/// An option with parameters, through preparation and setParameter; each step is a Mismatch when it fails.
class BufferedOption {
 public:
  BufferedOption(Subject& subject, test::FakeObj& obj, const std::string& name, const comm::datalayer::Variant& parameters,
                 const ActiveOptions& active = {});

  /// The jobs for one accompanied command, not yet given their inputs.
  [[nodiscard]] std::vector<std::unique_ptr<core::job::IJobObject>> makeJobs() const;

  [[nodiscard]] core::cmd::GenericCmdOption& option() const { return *m_option; }
  [[nodiscard]] core::IContainer& parameters() const { return *m_parameters; }
  [[nodiscard]] core::cmd::CmdOptPermType permType() const { return m_permType; }

 private:
  Subject& m_subject;
  std::unique_ptr<core::IContainer> m_parameters;
  core::cmd::CmdOptPermType m_permType{};
  std::unique_ptr<core::cmd::GenericCmdOption> m_option;
};

/// Parameters of SwitchOnPath in the units of a user; the mode is "enter sphere".
struct PathParameters {
  std::string permType = "Once";
  std::uint32_t signalId = 0;
  bool resets = false;
  std::vector<double> targetPosition = {0, 0, 0};
  double radius = 0;
  double preTriggerTime = 0;
};
[[nodiscard]] comm::datalayer::Variant pathParameters(const PathParameters& parameters);
[[nodiscard]] comm::datalayer::Variant signalOptionParameters(const std::string& permType, std::uint32_t signalId);

}  // namespace motion::conformance
