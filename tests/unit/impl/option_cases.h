// The component's command options, for tests that hold for each of them.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "comm/datalayer/variant.h"
#include "expected_commands.h"
#include "impl/send_signal/cmd_option_set_signal.h"
#include "impl/send_signal/option_set_signal_pars.h"
#include "impl/switch_on_path/cmd_option_switch_on_path.h"
#include "support/fake_factories.h"
#include "support/parameter_table.h"

namespace motion::kavo::cmd {

/// A table whose first field is the permanence, absent when it is not given.
class OptionTable : public test::ParameterTable {
 public:
  explicit OptionTable(const std::optional<std::string>& permType) {
    if (permType) {
      withText(PERM_TYPE, *permType);
    }
  }

  static constexpr Place PERM_TYPE = 4;
};

struct OptionCase {
  ExpectedRow expected;
  std::string unit;  ///< base name of its source file

  core::cmd::CmdResult (*registerCmdOption)(const core::IMotionExt& extIf, const std::string& schemaDir);
  core::cmd::CmdResult (*unregisterCmdOption)(const core::IMotionExt& extIf);
  core::cmd::CmdResult (*onCreate)(core::cmd::GenericCmdOption*& option, std::string& errText);
  core::cmd::CmdResult (*onMarshall)(const comm::datalayer::Variant* data, core::IContainer*& container,
                                     core::cmd::CmdOptPermType& permType, core::dia::IDiagCollector& collector);
  core::cmd::CmdId (*getCmdId)(core::ObjectType objectType);
  std::unique_ptr<core::cmd::GenericCmdOption> (*make)();

  /// A table that is right but for what is said of its permanence.
  comm::datalayer::Variant (*table)(const std::optional<std::string>& permType);
  /// Parameters that are right.
  std::unique_ptr<core::IContainer> (*parameters)();
  core::DataID (*parametersID)();
  std::string wrongContainer;  ///< what is traced for parameters of another type

  [[nodiscard]] const std::string& job() const { return expected.front().job; }
};

inline OptionCase setSignalOptionCase() {
  using Option = CmdOptionSetSignal;
  return {
      EXPECTED_SET_SIGNAL_OPTION,
      "cmd_option_set_signal",
      &Option::registerCmdOption,
      &Option::unregisterCmdOption,
      &Option::onCreate,
      &Option::onMarshall,
      [](core::ObjectType type) -> core::cmd::CmdId { return Option::getCmdId(type); },
      []() -> std::unique_ptr<core::cmd::GenericCmdOption> { return std::make_unique<Option>(); },
      [](const std::optional<std::string>& permType) { return OptionTable(permType).with<std::uint32_t>(6, 42).finish(); },
      []() -> std::unique_ptr<core::IContainer> {
        return std::make_unique<CmdOptionSetSignalPars>(CmdOptionSetSignalParsT{42});
      },
      &CmdOptionSetSignalPars::getMyID,
      "SendSignalJobPars::safeCast(cmdOptValues) failed"};
}

inline OptionCase switchOnPathOptionCase() {
  using Option = CmdOptionSwitchOnPath;
  return {EXPECTED_SWITCH_ON_PATH_OPTION,
          "cmd_option_switch_on_path",
          &Option::registerCmdOption,
          &Option::unregisterCmdOption,
          &Option::onCreate,
          &Option::onMarshall,
          [](core::ObjectType type) -> core::cmd::CmdId { return Option::getCmdId(type); },
          []() -> std::unique_ptr<core::cmd::GenericCmdOption> { return std::make_unique<Option>(); },
          [](const std::optional<std::string>& permType) {
            return OptionTable(permType).with(12, {1, 2, 3}).with<std::uint32_t>(8, 42).finish();
          },
          []() -> std::unique_ptr<core::IContainer> {
            return std::make_unique<SwitchOnPathParsList>(
                SwitchOnPathParsListT{std::make_shared<SwitchOnPathPars>(SwitchOnPathPars{.signalId = 42})});
          },
          &SwitchOnPathParsList::getMyID,
          "CmdOptionSwitchOnPathPars::safeCast(cmdOptValues) failed"};
}

inline std::vector<OptionCase> optionCases() {
  return {setSignalOptionCase(), switchOnPathOptionCase()};
}

/// Name of a case in a test's name.
inline std::string optionCaseName(const testing::TestParamInfo<OptionCase>& info) {
  return nameOf(info.param.expected);
}

}  // namespace motion::kavo::cmd
