// The commands and command options of the component, as they present themselves to a host.
#include "conformance/expected_commands.h"

#include <fmt/format.h>

namespace motion::conformance {

using core::ObjectType;

namespace {

const std::string NO_FACTORY = "extIf.getObjFactory() or extIf.getGenericCmdOptionFactory() failed";

std::string suffix(ObjectType type) {
  return type == ObjectType::AXIS ? "-axis" : "-kinematics";
}

std::string nonMotionGroup(ObjectType type) {
  return type == ObjectType::AXIS ? "AxsNonMotionCommandsGroup" : "KinNonMotionCommandsGroup";
}

ExpectedCommand waiting(ObjectType type, const std::string& name, const std::string& label, const std::string& description,
                        const std::string& unit, const std::string& job) {
  return {{type, name},
          label + suffix(type),
          "cmd" + name + ".bfbs",
          description,
          {"SyncOnSignalGroup", nonMotionGroup(type)},
          job,
          unit,
          "onMarshall",
          NO_FACTORY,
          NO_FACTORY,
          "Cmd" + name + "Pars::safeCast(cmdValues) failed",
          "Cmd" + name + "Pars::registerPublish() failed: "};
}

ExpectedCommand sending(ObjectType type, const std::string& name, const std::string& label, const std::string& description) {
  return {{type, name},
          label + suffix(type),
          "cmd" + name + ".bfbs",
          description,
          {"SendSignalGroup", nonMotionGroup(type)},
          "ext_job_send_signal_cmd",
          "cmd_send_signal",
          "onMarshal",
          "objFactory is null",
          "cmdFactory is null",
          "SendSignalJobUser::safeCast(cmdValues) failed",
          "registerPublish failed with "};
}

ExpectedCommand joining(ObjectType type) {
  return {{type, "Join"},
          "join" + suffix(type),
          "cmdJoin.bfbs",
          "Synchronize start next buffered command on multiple motion objects",
          {"JoinCmdGroup"},
          "kavo_job_join",
          "cmd_join",
          "onMarshall",
          NO_FACTORY,
          NO_FACTORY,
          "CmdJoinPars::safeCast(cmdValues) failed",
          ""};
}

ExpectedOption settingOption(ObjectType type, const std::string& group) {
  return {
      {type, "SetSignal"},           "option-set-signal" + suffix(type), "cmdOptionSetSignal.bfbs", "Set a signal", {group},
      "ext_job_send_signal_cmd_opt", std::vector<std::uint32_t>{0},      "cmd_option_set_signal"};
}

ExpectedRow rowOf(const ExpectedCommand& command) {
  const std::string refused =
      command.isSend() ? fmt::format("objFactory->registerObj failed: [0x{:08X}].", REFUSED_JOB)
                       : fmt::format("objFactory->registerObj() failed: {}", static_cast<std::int32_t>(REFUSED_JOB));
  return {command.id.name,
          command.label,
          command.job,
          command.unit,
          "registerCmd",
          "unregisterCmd",
          command.missingObjFactory,
          command.missingCmdFactory,
          refused,
          {command.id},
          false};
}

ExpectedRow optionRow(const std::string& label, const std::vector<ExpectedOption>& options) {
  const auto& first = options.front();
  ExpectedRow row{first.id.name,
                  label,
                  first.job,
                  first.unit,
                  "registerCmdOption",
                  "unregisterCmdOption",
                  NO_FACTORY,
                  NO_FACTORY,
                  fmt::format("objFactory->registerObj() failed: {}", static_cast<std::int32_t>(REFUSED_JOB)),
                  {},
                  true};
  for (const auto& option : options) {
    row.ids.push_back(option.id);
  }
  return row;
}

}  // namespace

const std::vector<ExpectedCommand>& expectedCommands() {
  static const std::vector<ExpectedCommand> commands = [] {
    std::vector<ExpectedCommand> all;
    const auto both = [&all](const auto& make) {
      all.push_back(make(ObjectType::AXIS));
      all.push_back(make(ObjectType::KINEMATICS));
    };
    both([](ObjectType type) {
      return waiting(type, "WaitForSignal", "wait-for-signal", "Wait for a signal", "cmd_wait_for_signal",
                     "ext_job_obj_wait_for_signal");
    });
    both([](ObjectType type) {
      return waiting(type, "WaitForSignalReset", "wait-for-signal-reset", "Wait for a signal is reset",
                     "cmd_wait_for_signal_reset", "ext_job_obj_wait_for_signal_reset");
    });
    both([](ObjectType type) { return sending(type, "SetSignal", "set-signal", "Set a signal"); });
    both([](ObjectType type) { return sending(type, "ResetSignal", "reset-signal", "Reset a signal"); });
    both([](ObjectType type) { return joining(type); });
    return all;
  }();
  return commands;
}

const std::vector<ExpectedOption>& expectedOptions() {
  static const std::vector<ExpectedOption> options = {
      settingOption(ObjectType::AXIS, "AllAxsCommandsGroup"),
      settingOption(ObjectType::KINEMATICS, "AllKinCommandsGroup"),
      {{ObjectType::KINEMATICS, "SwitchOnPath"},
       "option-switch-on-path",
       "cmdOptionSwitchOnPath.bfbs",
       "Trigger a signal when the target position is reached.",
       {"KinMotionCommandsGroup"},
       "JobObjSwitchOnPath",
       std::nullopt,
       "cmd_option_switch_on_path"},
  };
  return options;
}

const std::vector<ExpectedRow>& expectedRows() {
  static const std::vector<ExpectedRow> rows = [] {
    std::vector<ExpectedRow> all;
    for (const auto& command : expectedCommands()) {
      if (command.isJoin() && command.isAxis()) {
        all.push_back(optionRow("option-set-signal", {expectedOptions()[0], expectedOptions()[1]}));
      }
      all.push_back(rowOf(command));
    }
    all.push_back(optionRow("option-switch-on-path", {expectedOptions()[2]}));
    return all;
  }();
  return rows;
}

}  // namespace motion::conformance
