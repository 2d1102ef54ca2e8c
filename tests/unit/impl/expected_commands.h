// What the component registers with a host, in order.
#pragma once

#include <string>
#include <vector>

#include "motion/core/cmd/cmd_id.h"

namespace motion::kavo {

struct ExpectedCommand {
  core::cmd::CmdId id;
  std::string schemaFile;
  std::string description;
  std::vector<std::string> groups;
  std::string job;
};

/// One row per command and type of object.
inline const std::vector<ExpectedCommand> EXPECTED_COMMANDS = {
    {{core::ObjectType::AXIS, "WaitForSignal"},
     "cmdWaitForSignal.bfbs",
     "Wait for a signal",
     {"SyncOnSignalGroup", "AxsNonMotionCommandsGroup"},
     "ext_job_obj_wait_for_signal"},
    {{core::ObjectType::KINEMATICS, "WaitForSignal"},
     "cmdWaitForSignal.bfbs",
     "Wait for a signal",
     {"SyncOnSignalGroup", "KinNonMotionCommandsGroup"},
     "ext_job_obj_wait_for_signal"},
    {{core::ObjectType::AXIS, "WaitForSignalReset"},
     "cmdWaitForSignalReset.bfbs",
     "Wait for a signal is reset",
     {"SyncOnSignalGroup", "AxsNonMotionCommandsGroup"},
     "ext_job_obj_wait_for_signal_reset"},
    {{core::ObjectType::KINEMATICS, "WaitForSignalReset"},
     "cmdWaitForSignalReset.bfbs",
     "Wait for a signal is reset",
     {"SyncOnSignalGroup", "KinNonMotionCommandsGroup"},
     "ext_job_obj_wait_for_signal_reset"},
    {{core::ObjectType::AXIS, "SetSignal"},
     "cmdSetSignal.bfbs",
     "Set a signal",
     {"SendSignalGroup", "AxsNonMotionCommandsGroup"},
     "ext_job_send_signal_cmd"},
    {{core::ObjectType::KINEMATICS, "SetSignal"},
     "cmdSetSignal.bfbs",
     "Set a signal",
     {"SendSignalGroup", "KinNonMotionCommandsGroup"},
     "ext_job_send_signal_cmd"},
    {{core::ObjectType::AXIS, "ResetSignal"},
     "cmdResetSignal.bfbs",
     "Reset a signal",
     {"SendSignalGroup", "AxsNonMotionCommandsGroup"},
     "ext_job_send_signal_cmd"},
    {{core::ObjectType::KINEMATICS, "ResetSignal"},
     "cmdResetSignal.bfbs",
     "Reset a signal",
     {"SendSignalGroup", "KinNonMotionCommandsGroup"},
     "ext_job_send_signal_cmd"},
    {{core::ObjectType::AXIS, "Join"},
     "cmdJoin.bfbs",
     "Synchronize start next buffered command on multiple motion objects",
     {"JoinCmdGroup"},
     "kavo_job_join"},
    {{core::ObjectType::KINEMATICS, "Join"},
     "cmdJoin.bfbs",
     "Synchronize start next buffered command on multiple motion objects",
     {"JoinCmdGroup"},
     "kavo_job_join"},
};

/// Names of the records, in the order in which they are announced.
inline const std::vector<std::string> EXPECTED_DATA_TYPES = {"CmdJoinPars",          "JoinJobPars",
                                                             "CmdSendSignalPars",    "SendSignalJobPars",
                                                             "WaitForSignalJobPars", "WaitForSignalResetJobPars"};

}  // namespace motion::kavo
