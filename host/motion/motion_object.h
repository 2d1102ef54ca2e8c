// A motion object: its command buffer and its turn in a cycle.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

#include "host/motion/cmd_frame.h"
#include "host/motion/cmd_states.h"
#include "host/motion/dia_log.h"
#include "host/motion/events.h"
#include "host/motion/job_data_handler.h"
#include "host/motion/option_set.h"
#include "host/motion/path_plan.h"
#include "host/motion/setpoint.h"
#include "host/motion/spsc_queue.h"
#include "host/motion/unit_helper.h"
#include "motion/core/i_obj.h"
#include "motion/core/obj/kin_pose.h"
#include "motion/core/object_type.h"

namespace motion::host {

/// What a motion object is made of.
struct ObjectConfig {
  std::string name;
  core::ObjectType type = core::ObjectType::AXIS;
  Point start{};                  ///< [m]; an axis uses the first
  double cycleTime = 0.001;       ///< [s]
  std::uint32_t bufferSize = 64;  ///< commands that wait at most
  std::uint32_t index = 0;        ///< place in the order of creation
  core::UnitSettings units = UnitHelper::defaultSettings();
};

/// Preparation puts commands in; the cycle takes them out one after the other and runs their jobs.
class MotionObject : public core::IObj {
 public:
  /// Throws std::bad_alloc. [framework]
  MotionObject(ObjectConfig config, RetiredCmds& retired);
  MotionObject(const MotionObject&) = delete;
  MotionObject& operator=(const MotionObject&) = delete;
  ~MotionObject() override = default;

  [[nodiscard]] bool isAxis() const noexcept override { return m_config.type == core::ObjectType::AXIS; }
  [[nodiscard]] bool isEncoder() const noexcept override { return false; }
  [[nodiscard]] bool isKinematics() const noexcept override { return m_config.type == core::ObjectType::KINEMATICS; }
  [[nodiscard]] std::uint64_t getLatestPreparedCmdID() const noexcept override {
    // The cycle may have taken a command before its number was noted here.
    return std::max(m_latestPrepared.load(std::memory_order_acquire), getCurrentCmdID());
  }
  [[nodiscard]] std::uint64_t getCurrentCmdID() const noexcept override {
    return m_currentID.load(std::memory_order_acquire);
  }
  [[nodiscard]] std::uint64_t getCycleCount() const noexcept override {
    return m_cycleCount.load(std::memory_order_relaxed);
  }
  [[nodiscard]] core::cmd::CmdState getCmdState(std::uint64_t cmdID) const noexcept override {
    return m_cmdStates.get(cmdID);
  }
  [[nodiscard]] double getCycleTime() const noexcept override { return m_config.cycleTime; }
  [[nodiscard]] const core::UnitSettings& getUnitSettings() const noexcept override { return m_config.units; }
  [[nodiscard]] core::dia::IDia& getDia() noexcept override { return m_dia; }

  /// One turn: take the next command if there is none, run its jobs, end it if they say so. [cyclic & real-time]
  void runCycle(std::uint64_t cycle) noexcept;
  /// Fetches what the next runCycle will read, while other objects have their turns: first the command, then its jobs.
  /// [cyclic & real-time]
  void prefetchCommand() const noexcept {
    if (m_current != nullptr) {
      __builtin_prefetch(m_current);
    }
  }
  void prefetchJobs() const noexcept {  ///< [cyclic & real-time]
    if (m_current != nullptr) {
      __builtin_prefetch(m_current->cyclicJobs().data());
    }
  }

  /// Counts one command into the buffer; false when it is full. [prepare]
  [[nodiscard]] bool reserveBuffer() noexcept;
  void releaseBuffer() noexcept { m_buffered.fetch_sub(1, std::memory_order_relaxed); }  ///< [prepare | cyclic]
  /// Remembers that a command exists, so that an abort reaches it wherever it is. [prepare]
  void noteIssued(std::uint64_t cmdID) noexcept { m_lastIssued.store(cmdID, std::memory_order_release); }
  /// Hands a prepared command to the cycle. [prepare]
  void putPrepared(CmdFrame* frame) noexcept;
  /// True for a command that an abort has caught before it reached the cycle. [prepare | cyclic & real-time]
  [[nodiscard]] bool isAborted(std::uint64_t cmdID) const noexcept {
    return cmdID <= m_abortUpTo.load(std::memory_order_acquire);
  }
  /// Aborts the current command and everything issued so far; the cycle carries it out in its next turn. [any]
  void abortAll() noexcept;
  /// Keeps the state of a command for queries. [prepare | cyclic & real-time]
  void noteCmdState(std::uint64_t cmdID, core::cmd::CmdState state) noexcept { m_cmdStates.note(cmdID, state); }

  [[nodiscard]] const std::string& name() const noexcept { return m_config.name; }
  [[nodiscard]] core::ObjectType type() const noexcept { return m_config.type; }
  [[nodiscard]] std::uint32_t index() const noexcept { return m_config.index; }
  [[nodiscard]] std::uint32_t bufferSize() const noexcept { return m_config.bufferSize; }
  [[nodiscard]] std::uint32_t bufferedCount() const noexcept { return m_buffered.load(std::memory_order_relaxed); }
  [[nodiscard]] JobDataHandler& data() noexcept { return m_data; }
  [[nodiscard]] DiaLog& diaLog() noexcept { return m_dia; }
  /// What accompanies the object's commands. Preparation's lock guards it. [prepare]
  [[nodiscard]] OptionSet& options() noexcept { return m_options; }
  /// Commanded position of an axis [m] after the last cycle. [any]
  [[nodiscard]] double position() const noexcept { return m_position.load(std::memory_order_relaxed); }
  /// Commanded position of a kinematics after the last cycle; an axis has its position as the first of the three. While a
  /// cycle runs, some coordinates may already be those of the next. [any]
  [[nodiscard]] Point pose() const noexcept {
    return {position(), m_positionY.load(std::memory_order_relaxed), m_positionZ.load(std::memory_order_relaxed)};
  }
  /// Commanded velocity of an axis, or of a kinematics along its path [m/s], after the last cycle. [any]
  [[nodiscard]] double velocity() const noexcept { return m_velocity.load(std::memory_order_relaxed); }

  /// Finds out where the path begins of the command that is about to be made, or tried out. [prepare]
  void planPath() noexcept;
  void planTriedPath() noexcept;
  /// Where that path begins. [prepare]
  [[nodiscard]] const Point& plannedStart() const noexcept { return m_plan.start(); }
  /// The command was issued, or would have been: the next path begins at its end. [prepare]
  void notePath(std::uint64_t cmdID, const Point& end) noexcept { m_plan.append(cmdID, end); }
  void noteTriedPath(const Point& end) noexcept { m_plan.appendTrial(end); }
  /// What was tried out does not count any more. [prepare]
  void forgetTriedPaths() noexcept { m_plan.forgetTrials(); }

  /// Where events go; null for none. Set before the first cycle.
  void setEvents(EventRing* events) noexcept { m_events = events; }
  /// Forgets everything that waits in the buffer and the current command; they become aborted and retired. Not while cycles
  /// run.
  void clear() noexcept;

 private:
  /// What of the object its users may see moving: nothing, unless the current command moves a kinematics.
  enum class Moving : std::uint8_t { NOTHING, AXIS, KINEMATICS };

  /// Offers a record of the object to the jobs of its commands.
  void publish(core::SectionValue section, core::IContainer& data);
  void takeNext() noexcept;
  void activate(CmdFrame* frame) noexcept;
  void runCurrent() noexcept;
  void endCurrent(core::cmd::CmdState state) noexcept;
  void retire(CmdFrame* frame, core::cmd::CmdState state) noexcept;
  void carryOutAbort() noexcept;
  void publishMotion() noexcept;
  void standStill() noexcept;
  void dropEndedPaths() noexcept;
  void raiseAbortUpTo(std::uint64_t cmdID) noexcept;
  void event(EventKind kind, std::uint64_t cmdID, std::uint32_t detail = 0) noexcept;

  // What every cycle touches stands first.
  CmdFrame* m_current = nullptr;
  std::atomic<std::uint64_t> m_cycleCount{0};
  std::atomic<std::uint64_t> m_abortUpTo{0};
  std::uint64_t m_abortDone = 0;
  EventRing* m_events = nullptr;
  Moving m_moving;
  SpscQueue<CmdFrame*> m_prepared;

  std::atomic<std::uint64_t> m_currentID{0};
  std::atomic<std::uint64_t> m_latestPrepared{0};
  std::atomic<std::uint64_t> m_lastIssued{0};
  std::atomic<std::uint32_t> m_buffered{0};
  std::atomic<double> m_position{0.0};
  std::atomic<double> m_velocity{0.0};
  AxisSetpoint m_setpoint;
  RetiredCmds& m_retired;

  ObjectConfig m_config;
  DiaLog m_dia;
  core::IObjPtr m_objPtr;
  core::KinPose m_pose;
  KinSetpoint m_kinSetpoint;
  std::atomic<double> m_positionY;
  std::atomic<double> m_positionZ;
  JobDataHandler m_data;

  CmdStates m_cmdStates;
  OptionSet m_options;
  PathPlan m_plan;
};

}  // namespace motion::host
