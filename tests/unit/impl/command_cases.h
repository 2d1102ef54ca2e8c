// The component's commands, for tests that hold for each of them.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "expected_commands.h"
#include "impl/send_signal/cmd_send_signal.h"
#include "impl/wait_for_signal/cmd_wait_for_signal.h"
#include "impl/wait_for_signal_reset/cmd_wait_for_signal_reset.h"
#include "motion/core/cmd/cmd_generic.h"

namespace motion::kavo::cmd {

struct CommandCase {
  ExpectedRegistration expected;
  std::string unit;     ///< base name of its source file
  std::string marshal;  ///< name of its marshalling function

  core::cmd::CmdResult (*registerCmd)(const core::IMotionExt& extIf, const std::string& schemaDir);
  core::cmd::CmdResult (*unregisterCmd)(const core::IMotionExt& extIf);
  core::cmd::CmdResult (*onMarshal)(const comm::datalayer::Variant* data, core::IContainer*& container, bool& owned);
  const core::cmd::CmdId& (*getCmdId)();
  const char* (*getStaticName)();
  /// onCreate, for whatever type of object; a command that was made before stays when none is made.
  std::function<core::cmd::CmdResult(core::IObjFactory& factory, bool buffered, std::unique_ptr<core::cmd::ICmdGeneric>& cmd,
                                     std::string& errText)>
      onCreate;

  std::string missingObjFactory;  ///< what is traced without an object factory, and without a command factory
  std::string missingCmdFactory;
  std::string refusedJob;  ///< format of the trace when the object factory refuses the job
  std::string wrongVariant;
  std::string invalidBuffer;
  std::string wrongContainer;
  std::string failedPublish;
  std::string jobData;  ///< name of the record that the command offers its jobs

  [[nodiscard]] bool isAxis() const { return expected.id.objectType == core::ObjectType::AXIS; }
};

template <typename COMMAND, core::ObjectType OBJECT_TYPE>
core::cmd::CmdResult createAny(core::IObjFactory& factory, bool buffered, std::unique_ptr<core::cmd::ICmdGeneric>& cmd,
                               std::string& errText) {
  core::cmd::CmdGeneric<OBJECT_TYPE>* made = nullptr;
  const auto result = COMMAND::onCreate(factory, buffered, made, errText);
  if (made != nullptr) {
    cmd.reset(made);
  }
  return result;
}

template <core::ObjectType OBJECT_TYPE, SignalAction ACTION>
CommandCase sendSignalCase(std::size_t row) {
  using Command = CmdSendSignal<OBJECT_TYPE, ACTION>;
  return {EXPECTED_ROWS[row].front(),
          "cmd_send_signal",
          "onMarshal",
          &Command::registerCmd,
          &Command::unregisterCmd,
          &Command::onMarshal,
          &Command::getCmdId,
          &Command::getStaticName,
          &createAny<Command, OBJECT_TYPE>,
          "objFactory is null",
          "cmdFactory is null",
          "objFactory->registerObj failed: [0x%08X].",
          "'Variant data type(%d), is not FLATBUFFERS",
          "Invalid FlatBuffer description",
          "SendSignalJobUser::safeCast(cmdValues) failed",
          "registerPublish failed with %d",
          "SendSignalJobPars"};
}

template <typename COMMAND, core::ObjectType OBJECT_TYPE>
CommandCase waitCase(std::size_t row, const std::string& unit, const std::string& record) {
  const std::string missing = "extIf.getObjFactory() or extIf.getGenericCmdOptionFactory() failed";
  return {EXPECTED_ROWS[row].front(),
          unit,
          "onMarshall",
          &COMMAND::registerCmd,
          &COMMAND::unregisterCmd,
          &COMMAND::onMarshall,
          &COMMAND::getCmdId,
          &COMMAND::getStaticName,
          &createAny<COMMAND, OBJECT_TYPE>,
          missing,
          missing,
          "objFactory->registerObj() failed: %d",
          "flatBufferData type(%d) != FLATBUFFERS",
          "Invalid FlatBuffer structure",
          "Cmd" + record + "Pars::safeCast(cmdValues) failed",
          "Cmd" + record + "Pars::registerPublish() failed: %d",
          record + "JobPars"};
}

inline std::vector<CommandCase> commandCases() {
  using enum core::ObjectType;
  return {
      waitCase<CmdWaitForSignal<AXIS>, AXIS>(0, "cmd_wait_for_signal", "WaitForSignal"),
      waitCase<CmdWaitForSignal<KINEMATICS>, KINEMATICS>(1, "cmd_wait_for_signal", "WaitForSignal"),
      waitCase<CmdWaitForSignalReset<AXIS>, AXIS>(2, "cmd_wait_for_signal_reset", "WaitForSignalReset"),
      waitCase<CmdWaitForSignalReset<KINEMATICS>, KINEMATICS>(3, "cmd_wait_for_signal_reset", "WaitForSignalReset"),
      sendSignalCase<AXIS, SignalAction::SET>(4),
      sendSignalCase<KINEMATICS, SignalAction::SET>(5),
      sendSignalCase<AXIS, SignalAction::RESET>(6),
      sendSignalCase<KINEMATICS, SignalAction::RESET>(7),
  };
}

/// Name of a case in a test's name.
inline std::string caseName(const testing::TestParamInfo<CommandCase>& info) {
  return info.param.expected.id.name + (info.param.isAxis() ? "Axis" : "Kinematics");
}

}  // namespace motion::kavo::cmd
