// What the component registers with a host, in order.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <string>
#include <vector>

#include "motion/core/cmd/cmd_id.h"

namespace motion::kavo {

/// Where the host keeps a registration.
enum class RegisteredAs { COMMAND, OPTION, OPTION_WITH_SLOTS };

/// One identity towards the host: a command, or an option for one type of object.
struct ExpectedRegistration {
  core::cmd::CmdId id;
  std::string schemaFile;
  std::string description;
  std::vector<std::string> groups;
  std::string job;
  RegisteredAs as = RegisteredAs::COMMAND;
};

/// What is registered, and traced, as one: a command for one type of object, or an option for each type that it has.
using ExpectedRow = std::vector<ExpectedRegistration>;

inline ExpectedRegistration expectedWait(core::ObjectType type, const std::string& name, const std::string& description,
                                         const std::string& job) {
  const std::string group = type == core::ObjectType::AXIS ? "AxsNonMotionCommandsGroup" : "KinNonMotionCommandsGroup";
  return {{type, name}, "cmd" + name + ".bfbs", description, {"SyncOnSignalGroup", group}, job};
}

inline ExpectedRegistration expectedSend(core::ObjectType type, const std::string& name, const std::string& description) {
  const std::string group = type == core::ObjectType::AXIS ? "AxsNonMotionCommandsGroup" : "KinNonMotionCommandsGroup";
  return {{type, name}, "cmd" + name + ".bfbs", description, {"SendSignalGroup", group}, "ext_job_send_signal_cmd"};
}

inline ExpectedRegistration expectedJoin(core::ObjectType type) {
  return {{type, "Join"},
          "cmdJoin.bfbs",
          "Synchronize start next buffered command on multiple motion objects",
          {"JoinCmdGroup"},
          "kavo_job_join"};
}

inline ExpectedRegistration expectedSetSignalOption(core::ObjectType type, const std::string& group) {
  return {{type, "SetSignal"},           "cmdOptionSetSignal.bfbs",      "Set a signal", {group},
          "ext_job_send_signal_cmd_opt", RegisteredAs::OPTION_WITH_SLOTS};
}

inline const ExpectedRow EXPECTED_SET_SIGNAL_OPTION = {
    expectedSetSignalOption(core::ObjectType::AXIS, "AllAxsCommandsGroup"),
    expectedSetSignalOption(core::ObjectType::KINEMATICS, "AllKinCommandsGroup")};
inline const ExpectedRow EXPECTED_SWITCH_ON_PATH_OPTION = {{{core::ObjectType::KINEMATICS, "SwitchOnPath"},
                                                            "cmdOptionSwitchOnPath.bfbs",
                                                            "Trigger a signal when the target position is reached.",
                                                            {"KinMotionCommandsGroup"},
                                                            "JobObjSwitchOnPath",
                                                            RegisteredAs::OPTION}};

inline const std::vector<ExpectedRow> EXPECTED_ROWS = {
    {expectedWait(core::ObjectType::AXIS, "WaitForSignal", "Wait for a signal", "ext_job_obj_wait_for_signal")},
    {expectedWait(core::ObjectType::KINEMATICS, "WaitForSignal", "Wait for a signal", "ext_job_obj_wait_for_signal")},
    {expectedWait(core::ObjectType::AXIS, "WaitForSignalReset", "Wait for a signal is reset",
                  "ext_job_obj_wait_for_signal_reset")},
    {expectedWait(core::ObjectType::KINEMATICS, "WaitForSignalReset", "Wait for a signal is reset",
                  "ext_job_obj_wait_for_signal_reset")},
    {expectedSend(core::ObjectType::AXIS, "SetSignal", "Set a signal")},
    {expectedSend(core::ObjectType::KINEMATICS, "SetSignal", "Set a signal")},
    {expectedSend(core::ObjectType::AXIS, "ResetSignal", "Reset a signal")},
    {expectedSend(core::ObjectType::KINEMATICS, "ResetSignal", "Reset a signal")},
    EXPECTED_SET_SIGNAL_OPTION,
    {expectedJoin(core::ObjectType::AXIS)},
    {expectedJoin(core::ObjectType::KINEMATICS)},
    EXPECTED_SWITCH_ON_PATH_OPTION,
};

/// The name under which a row is traced.
inline const std::string& nameOf(const ExpectedRow& row) {
  return row.front().id.name;
}

/// Number of registrations of that kind in the first rows.
inline std::size_t countOf(std::initializer_list<RegisteredAs> kinds, std::size_t rows = EXPECTED_ROWS.size()) {
  std::size_t count = 0;
  for (std::size_t row = 0; row < rows; ++row) {
    for (const auto& registration : EXPECTED_ROWS[row]) {
      for (const auto kind : kinds) {
        count += registration.as == kind ? 1 : 0;
      }
    }
  }
  return count;
}

/// A record that is announced, and how a warning calls it.
struct ExpectedDataType {
  std::string name;
  std::string shortName = name;
};

/// In the order in which they are announced.
inline const std::vector<ExpectedDataType> EXPECTED_DATA_TYPES = {
    {"CmdJoinPars"},
    {"JoinJobPars"},
    {"CmdOptionSetSignalPars"},
    {"CmdSendSignalPars"},
    {"SendSignalJobPars"},
    {"WaitForSignalJobPars"},
    {"WaitForSignalResetJobPars"},
    {"::motion::kavo::SwitchOnPathParsList", "CmdOptionSwitchOnPathPars"},
};

}  // namespace motion::kavo
