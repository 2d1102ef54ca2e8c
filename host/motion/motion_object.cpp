#include "host/motion/motion_object.h"

#include <algorithm>
#include <new>

#include "host/motion/section_mgr.h"

namespace motion::host {

using core::cmd::CmdState;
using core::job::JobResult;

namespace {

EventKind endEvent(CmdState state) {
  switch (state) {
    case CmdState::DONE:
      return EventKind::CMD_DONE;
    case CmdState::FAILED:
      return EventKind::CMD_FAILED;
    default:
      return EventKind::CMD_ABORTED;
  }
}

}  // namespace

MotionObject::MotionObject(ObjectConfig config, RetiredCmds& retired)
    : m_moving(config.type == core::ObjectType::AXIS ? Moving::AXIS : Moving::NOTHING),
      m_prepared(config.bufferSize + std::size_t{1}),
      m_position(config.start[0]),
      m_setpoint(AxisSetpointT{config.start[0], 0.0}),
      m_retired(retired),
      m_config(std::move(config)),
      m_objPtr(this),
      m_pose(core::KinPoseT{m_config.start[0], m_config.start[1], m_config.start[2], 0.0, 0.0, 0.0}),
      m_kinSetpoint(KinSetpointT{m_config.start, 0.0}),
      m_positionY(isAxis() ? 0.0 : m_config.start[1]),
      m_positionZ(isAxis() ? 0.0 : m_config.start[2]),
      m_cmdStates(m_config.bufferSize),
      // Those that wait, the current one, and the one that is being issued.
      m_plan(m_config.start, isAxis() ? 0 : m_config.bufferSize + std::size_t{2}) {
  publish(SectionMgr::OBJ_DATA, m_objPtr);
  if (isAxis()) {
    publish(SectionMgr::OBJ_DATA, m_setpoint);
  } else {
    publish(SectionMgr::OBJ_DATA, m_kinSetpoint);
    publish(SectionMgr::GEOMETRY_TOOL_OFFSET, m_pose);
  }
}

void MotionObject::publish(core::SectionValue section, core::IContainer& data) {
  if (core::isFailure(m_data.registerPublish(data.getID(), section, "host", &data))) {
    throw std::bad_alloc();  // a new object's data is refused for no other reason
  }
}

void MotionObject::runCycle(std::uint64_t cycle) noexcept {
  m_cycleCount.store(cycle, std::memory_order_relaxed);
  if (m_abortUpTo.load(std::memory_order_acquire) != m_abortDone) {
    carryOutAbort();
  }
  if (m_current == nullptr) {
    takeNext();
  }
  if (m_current != nullptr) {
    runCurrent();
  }
}

void MotionObject::takeNext() noexcept {
  CmdFrame* frame = nullptr;
  while (m_current == nullptr && m_prepared.pop(frame)) {
    releaseBuffer();
    if (isAborted(frame->getCmdID())) {
      retire(frame, CmdState::ABORTED);
    } else {
      activate(frame);
    }
  }
}

void MotionObject::activate(CmdFrame* frame) noexcept {
  m_current = frame;
  if (m_moving != Moving::AXIS) {
    m_moving = frame->path() != nullptr ? Moving::KINEMATICS : Moving::NOTHING;
  }
  m_currentID.store(frame->getCmdID(), std::memory_order_release);
  frame->setState(CmdState::ACTIVE);
  event(EventKind::CMD_ACTIVE, frame->getCmdID());
  JobListResult result;
  try {
    if (core::isFailure(frame->command().onCmdActivate())) {
      result = {JobResult::ExecutionFailed, "onCmdActivate"};
    }
  } catch (...) {
    result = {JobResult::ExecutionFailed, "onCmdActivate"};
  }
  if (!core::isFailure(result.result)) {
    result = frame->beforeJobs().run();
  }
  if (core::isFailure(result.result)) {
    frame->failure = result;
    endCurrent(CmdState::FAILED);
  }
}

void MotionObject::runCurrent() noexcept {
  const JobListResult result = m_current->cyclicJobs().run();
  if (core::isFailure(result.result)) {
    m_current->failure = result;
    publishMotion();
    endCurrent(CmdState::FAILED);
    return;
  }
  if (m_moving != Moving::NOTHING) {
    publishMotion();
  }
  if (result.result == JobResult::CmdFinished) {
    endCurrent(CmdState::DONE);
  }
}

void MotionObject::endCurrent(CmdState state) noexcept {
  CmdFrame* frame = m_current;
  m_current = nullptr;
  m_currentID.store(0, std::memory_order_release);
  try {
    static_cast<void>(frame->command().onCmdExit());
  } catch (...) {
    // The command has ended, whatever it says on leaving.
  }
  if (state != CmdState::DONE) {
    standStill();
  }
  if (state == CmdState::FAILED) {
    raiseAbortUpTo(m_lastIssued.load(std::memory_order_acquire));
  }
  retire(frame, state);
}

void MotionObject::retire(CmdFrame* frame, CmdState state) noexcept {
  frame->setState(state);
  event(endEvent(state), frame->getCmdID(), core::toCode(frame->failure.result));
  m_retired.push(frame);
}

void MotionObject::carryOutAbort() noexcept {
  m_abortDone = m_abortUpTo.load(std::memory_order_acquire);
  if (m_current != nullptr && isAborted(m_current->getCmdID())) {
    endCurrent(CmdState::ABORTED);
  }
}

void MotionObject::publishMotion() noexcept {
  const double before = m_velocity.load(std::memory_order_relaxed);
  double velocity = 0.0;
  if (m_moving == Moving::AXIS) {
    const AxisSetpointT& setpoint = m_setpoint.getRef();
    m_position.store(setpoint.position, std::memory_order_relaxed);
    velocity = setpoint.velocity;
  } else {
    // The pose, not the set-point, is what other jobs have seen.
    const core::KinPoseT& pose = m_pose.getRef();
    m_position.store(pose.x, std::memory_order_relaxed);
    m_positionY.store(pose.y, std::memory_order_relaxed);
    m_positionZ.store(pose.z, std::memory_order_relaxed);
    velocity = m_kinSetpoint.getRef().velocity;
  }
  m_velocity.store(velocity, std::memory_order_relaxed);
  if (before == 0.0 && velocity != 0.0) {
    event(EventKind::MOTION_BEGAN, getCurrentCmdID());
  }
}

void MotionObject::standStill() noexcept {
  // An object that loses its command stands still; nothing else would move it.
  m_setpoint.getRef().velocity = 0.0;
  const core::KinPoseT& pose = m_pose.getRef();
  m_kinSetpoint.getRef() = {{pose.x, pose.y, pose.z}, 0.0};
  publishMotion();
}

void MotionObject::planPath() noexcept {
  dropEndedPaths();
  m_plan.beginNext(pose());
}

void MotionObject::planTriedPath() noexcept {
  dropEndedPaths();
  m_plan.beginTrial(pose());
}

void MotionObject::dropEndedPaths() noexcept {
  m_plan.dropEnded([this](std::uint64_t cmdID) { return !isAborted(cmdID) && getCmdState(cmdID) < CmdState::DONE; });
}

void MotionObject::abortAll() noexcept {
  raiseAbortUpTo(m_lastIssued.load(std::memory_order_acquire));
}

void MotionObject::raiseAbortUpTo(std::uint64_t cmdID) noexcept {
  std::uint64_t known = m_abortUpTo.load(std::memory_order_relaxed);
  while (known < cmdID && !m_abortUpTo.compare_exchange_weak(known, cmdID, std::memory_order_acq_rel)) {
  }
}

bool MotionObject::reserveBuffer() noexcept {
  if (m_buffered.fetch_add(1, std::memory_order_relaxed) < m_config.bufferSize) {
    return true;
  }
  releaseBuffer();
  return false;
}

void MotionObject::putPrepared(CmdFrame* frame) noexcept {
  // The cycle may take and retire the frame at once.
  const std::uint64_t cmdID = frame->getCmdID();
  // There is room: reserveBuffer admits no more commands than the queue takes.
  static_cast<void>(m_prepared.push(frame));
  // Only now, so that whoever sees the number can count on the cycle finding the command.
  m_latestPrepared.store(cmdID, std::memory_order_release);
}

void MotionObject::clear() noexcept {
  if (m_current != nullptr) {
    endCurrent(CmdState::ABORTED);
  }
  CmdFrame* frame = nullptr;
  while (m_prepared.pop(frame)) {
    releaseBuffer();
    retire(frame, CmdState::ABORTED);
  }
}

void MotionObject::event(EventKind kind, std::uint64_t cmdID, std::uint32_t detail) noexcept {
  if (m_events != nullptr) {
    m_events->write({getCycleCount(), kind, m_config.index, cmdID, detail});
  }
}

}  // namespace motion::host
