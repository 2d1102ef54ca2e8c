// A motion runtime: objects, factories, command buffers and cycle, and the services that components receive from it.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <thread>

#include "host/motion/cmd_factory.h"
#include "host/motion/cycle.h"
#include "host/motion/job_data_id_mgr.h"
#include "host/motion/obj_factory.h"
#include "host/motion/obj_mgr.h"
#include "host/motion/pacer.h"
#include "host/motion/preparation.h"
#include "host/motion/section_mgr.h"
#include "motion/core/cmd/i_cmd_context.h"
#include "motion/core/records/motion_cmd_if.h"
#include "motion/core/records/motion_data_if.h"
#include "motion/core/records/motion_extension_if.h"
#include "motion/core/records/motion_sys_if.h"

namespace motion::host {

struct RuntimeConfig {
  double cycleTime = 0.001;  ///< [s]
  std::uint32_t bufferSize = 64;
};

/// The records that the framework hands to a component.
struct Records {
  core::MotionExtensionIfT extension;
  core::MotionSysIfT sys;
  core::MotionSysGeneralFctT sysGeneral;
  core::MotionSysSyncFctT sysSync;
  core::MotionSysIf2T sys2;
  core::MotionCmdIfT cmd;
  core::MotionCmdGeneralFctT cmdGeneral;
  core::MotionCmdKinFctT cmdKin;
  core::MotionCmdIf2T cmd2;
  core::MotionDataIfT data;
};

/// Life: make it, add objects, start a component with its records, run cycles, stopCommands, stop the component, destroy it.
class Runtime : public core::cmd::ICmdContext {
 public:
  explicit Runtime(const RuntimeConfig& config);
  Runtime(const Runtime&) = delete;
  Runtime& operator=(const Runtime&) = delete;
  ~Runtime() override;

  /// Adds an object; null when the name is taken. Throws std::bad_alloc. Before the first cycle. [framework]
  MotionObject* addObject(const std::string& name, core::ObjectType type, const Point& start,
                          const core::UnitSettings& units = UnitHelper::defaultSettings());

  core::FctResult addCmd(const core::dia::CmdSourceInfo& source, const char* objName, const std::string& cmdType,
                         const core::IContainer& values, std::uint32_t count, unsigned long* cmdId) noexcept override;
  core::FctResult addCmdOption(const core::dia::CmdSourceInfo& source, const char* objName, const std::string& cmdType,
                               core::cmd::CmdOptPermType permType, core::IContainer& values) noexcept override;
  /// As addCmd, with the parameters as FlatBuffers values and with options; `problem` says in words why something was
  /// refused, and then nothing of it stays. [any, not real-time]
  core::FctResult issue(MotionObject& object, const EncodedCmd& command, unsigned long& cmdId, std::string& problem);
  /// Creates and checks the command and its options, and throws them away. [any, not real-time]
  core::FctResult tryOut(MotionObject& object, const EncodedCmd& command, std::string& problem);

  /// Virtual time: prepares what waits, then runs one cycle, in the calling thread.
  void step();
  /// Real time: one thread that runs cycles and one that prepares, until stopThreads. `onStarted` is given the warning of
  /// requestRealTime, empty when there is none.
  void startThreads(IPacer& pacer, const std::function<void(const std::string& warning)>& onStarted);
  void stopThreads();
  /// Aborts everything and takes all commands back, so that a component can be stopped. Not while cycles run.
  void stopCommands();

  [[nodiscard]] Records& records() noexcept { return m_records; }
  [[nodiscard]] ObjMgr& objMgr() noexcept { return m_objMgr; }
  [[nodiscard]] SectionMgr& sectionMgr() noexcept { return m_sectionMgr; }
  [[nodiscard]] JobDataIDMgr& jobDataIDMgr() noexcept { return m_jobDataIDMgr; }
  [[nodiscard]] ObjFactory& objFactory() noexcept { return m_objFactory; }
  [[nodiscard]] GenericCmdFactory& cmdFactory() noexcept { return m_cmdFactory; }
  [[nodiscard]] GenericCmdOptionFactory& cmdOptionFactory() noexcept { return m_cmdOptionFactory; }
  [[nodiscard]] const GenericCmdOptionFactory& cmdOptionFactory() const noexcept { return m_cmdOptionFactory; }
  [[nodiscard]] const Complaints& complaints() const noexcept { return m_complaints; }
  [[nodiscard]] Preparation& preparation() noexcept { return m_preparation; }
  [[nodiscard]] Cycle& cycle() noexcept { return m_cycle; }
  [[nodiscard]] double cycleTime() const noexcept { return m_config.cycleTime; }

 private:
  /// Deletes what a marshalling function gave away and leaves alone what it lent.
  struct ParametersDeleter {
    ParametersDeleter() noexcept : owned(false) {}
    explicit ParametersDeleter(bool isOwned) noexcept : owned(isOwned) {}
    void operator()(core::IContainer* container) const {
      if (owned) {
        delete container;
      }
    }
    bool owned;
  };
  using Parameters = std::unique_ptr<core::IContainer, ParametersDeleter>;

  struct DecodedOption {
    Parameters values;
    core::cmd::CmdOptPermType permType = core::cmd::CmdOptPermType::ONCE;
  };
  /// A command with all that a request borrows.
  class Decoded;

  [[nodiscard]] Parameters marshal(const MotionObject& object, const EncodedCmd& command, core::FctResult& result,
                                   std::string& problem);
  [[nodiscard]] DecodedOption marshal(const MotionObject& object, const EncodedOption& option, DiaLog& dia,
                                      core::FctResult& result, std::string& problem);
  void fillRecords();
  void runCyclicThread(IPacer& pacer, const std::function<void(const std::string&)>& onStarted) noexcept;

  RuntimeConfig m_config;
  Complaints m_complaints;
  SectionMgr m_sectionMgr;
  JobDataIDMgr m_jobDataIDMgr;
  ObjFactory m_objFactory;
  GenericCmdFactory m_cmdFactory;
  GenericCmdOptionFactory m_cmdOptionFactory;
  RetiredCmds m_retired;
  ObjMgr m_objMgr;
  Cycle m_cycle;
  Preparation m_preparation;
  Records m_records;
  std::atomic<bool> m_stopCycles{false};
  std::thread m_cyclicThread;
};

}  // namespace motion::host
