// Base of every buffered command.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "motion/core/cmd/cmd_state.h"
#include "motion/core/dia/cmd_source_info.h"
#include "motion/core/named_type.h"
#include "motion/core/object_type.h"
#include "motion/core/results.h"

namespace motion::core {
class IObj;
class IObjFactory;
}  // namespace motion::core

namespace motion::core::dia {
class IDia;
}

namespace motion::core::job {
class IJobDataHandler;
}

namespace motion::core::cmd {

class ICmdFrame;

/// The operations of a command, whatever object it is for. Slot order is fixed.
/// The host calls, in this order: onSetCmdValues, onValidate, onRegisterJobListsInputs; onCmdStateChanged on every change. A
/// host without commands that run beside the current one never asks onIsAdditional, onAdditionalExecute, onGetAddCmdSlotID.
class ICmdGeneric {
 public:
  virtual ~ICmdGeneric() = default;

  /// Names of the job objects that this command needs; the list has static storage. [prepare]
  [[nodiscard]] virtual const std::vector<std::string>& getJobNames() const = 0;
  /// Takes the parameters over; the container stays the caller's. [prepare]
  virtual CmdResult onSetCmdValues(const IContainer* cmdValues, const dia::CmdSourceInfo& source, IObj* obj, bool flag) = 0;
  /// A number by which the host sorts commands. [any]
  [[nodiscard]] virtual std::uint32_t onGetCmdType() const = 0;
  /// Publishes what the command's jobs read, and reads what the command needs. [prepare]
  virtual CmdResult onRegisterJobListsInputs(job::IJobDataHandler& handler) = 0;
  /// Checks the parameters; reports to `dia`, which may be null. [prepare]
  virtual CmdResult onValidate(const dia::CmdSourceInfo& source, dia::IDia* dia) = 0;
  /// Told on every change of state, in the thread that changes it. [prepare | cyclic & real-time]
  virtual void onCmdStateChanged(const ICmdFrame& frame, CmdState state) = 0;
  /// True for a command that runs beside the current one instead of after it. [prepare]
  virtual bool onIsAdditional() = 0;
  /// Does at once what a command that runs beside another one has to do. [prepare]
  virtual CmdResult onAdditionalExecute() = 0;
  /// Told when the command becomes current, before its jobs; a failure ends the command. [cyclic & real-time]
  virtual CmdResult onCmdActivate() = 0;
  /// Told when the command is current no more, however it ended; the result is ignored. [cyclic & real-time]
  virtual CmdResult onCmdExit() = 0;
  /// Number of the slot in which a command that runs beside another one has its place, else 0. [prepare]
  [[nodiscard]] virtual std::uint32_t onGetAddCmdSlotID() const = 0;
  /// True when the physical drive must follow the set-points of the command. [prepare]
  virtual bool onDeviceHasToFollow() = 0;
  /// Number under which PLC function blocks know the command. [any]
  [[nodiscard]] virtual std::uint32_t onGetPlcOpenCmdType() const = 0;

 protected:
  ICmdGeneric() = default;
  ICmdGeneric(const ICmdGeneric&) = default;
  ICmdGeneric& operator=(const ICmdGeneric&) = default;
};

/// Base of the commands for one type of object. The order of the fields is fixed.
template <ObjectType OBJECT_TYPE>
class CmdGeneric : public ICmdGeneric {
 public:
  /// `name` is the one that the command is registered by; `objFactory` is borrowed and outlives the command. [prepare]
  CmdGeneric(std::string name, bool bufferedOnly, IObjFactory& objFactory)
      : m_name(std::move(name)), m_bufferedOnly(bufferedOnly), m_objFactory(objFactory) {}
  CmdGeneric(const CmdGeneric&) = delete;
  CmdGeneric& operator=(const CmdGeneric&) = delete;

  void onCmdStateChanged(const ICmdFrame& /*frame*/, CmdState /*state*/) override {}
  bool onIsAdditional() override { return false; }
  CmdResult onAdditionalExecute() override { return CmdResult::Okay; }
  CmdResult onCmdActivate() override { return CmdResult::Okay; }
  CmdResult onCmdExit() override { return CmdResult::Okay; }
  [[nodiscard]] std::uint32_t onGetAddCmdSlotID() const override { return 0; }
  bool onDeviceHasToFollow() override { return true; }
  [[nodiscard]] std::uint32_t onGetPlcOpenCmdType() const override { return 0; }

  /// The name by which users ask for the command. [any & real-time]
  [[nodiscard]] const std::string& getName() const noexcept { return m_name; }

 protected:
  std::uint64_t m_hostData = 0;  ///< free for the host's use
  std::string m_name;            ///< does not change after construction
  bool m_bufferedOnly;           ///< true when the command makes sense in a buffer only
  IObjFactory& m_objFactory;     ///< where the command finds its job objects; borrowed
};

}  // namespace motion::core::cmd
