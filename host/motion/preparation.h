// Makes commands ready for the cycle and takes back those that have ended.
#pragma once

#include <atomic>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "host/motion/cmd_factory.h"
#include "host/motion/cmd_frame.h"
#include "host/motion/events.h"
#include "host/motion/motion_object.h"
#include "host/motion/obj_factory.h"

namespace motion::host {

/// What becomes of a command outside the cycle, for observers.
class ICmdListener {
 public:
  virtual ~ICmdListener() = default;
  /// A command was taken into a buffer. [prepare]
  virtual void onBuffered(const CmdFrame& frame, std::uint64_t cycle) noexcept = 0;
  /// Its "command prepared" jobs have run. [prepare]
  virtual void onPrepared(const CmdFrame& frame, std::uint64_t cycle) noexcept = 0;
  /// It never reached the cycle. [prepare]
  virtual void onDropped(const CmdFrame& frame, std::uint64_t cycle) noexcept = 0;
  /// It has ended and is about to be destroyed; its state says how. [prepare]
  virtual void onRetired(const CmdFrame& frame) noexcept = 0;
};

/// Creating and preparing share one lock, so that commands are prepared in the order in which they were issued. Without a
/// thread of its own (virtual time), prepareAll does the thread's work when it is called.
class Preparation {
 public:
  Preparation(ObjFactory& objFactory, GenericCmdFactory& cmdFactory, RetiredCmds& retired,
              const std::atomic<std::uint64_t>& cycle);
  Preparation(const Preparation&) = delete;
  Preparation& operator=(const Preparation&) = delete;
  ~Preparation();

  /// Creates a command, checks it, and appends it to the object's buffer. Whatever its operations throw becomes a result:
  /// OutOfMemory or PreparationError. [any, not real-time]
  [[nodiscard]] core::FctResult add(MotionObject& object, const std::string& cmdName, const core::IContainer& values,
                                    const core::dia::CmdSourceInfo& source, unsigned long& cmdId,
                                    std::string& problem) noexcept;
  /// Creates and checks a command as add would, and throws it away. Its diagnoses reach `problem` only. [any, not real-time]
  [[nodiscard]] core::FctResult tryOut(MotionObject& object, const std::string& cmdName, const core::IContainer& values,
                                       const core::dia::CmdSourceInfo& source, std::string& problem) noexcept;

  /// Prepares what waits, and destroys what has ended. [prepare]
  void prepareAll();
  /// Does so on a thread of its own, until stopThread.
  void startThread();
  void stopThread();
  /// Forgets what waits here; those commands become aborted. Not while the thread or cycles run.
  void clear();

  void setListener(ICmdListener* listener) noexcept { m_listener = listener; }
  /// Commands that exist: waiting here, in a buffer, current, or not yet taken back.
  [[nodiscard]] std::size_t alive() const;

 private:
  using Frame = std::unique_ptr<CmdFrame>;

  [[nodiscard]] Frame create(MotionObject& object, const std::string& cmdName, const core::IContainer& values,
                             const core::dia::CmdSourceInfo& source, DiaLog& dia, core::FctResult& result,
                             std::string& problem);
  void prepare(Frame frame);
  void drop(Frame frame);
  /// What is buffered behind a command that failed; what is ahead of it goes on.
  void dropWaiting(const MotionObject& object);
  void destroyRetired();
  void runThread();
  [[nodiscard]] std::uint64_t nextCycle() const noexcept { return m_cycle.load(std::memory_order_acquire) + 1; }

  ObjFactory& m_objFactory;
  GenericCmdFactory& m_cmdFactory;
  RetiredCmds& m_retired;
  const std::atomic<std::uint64_t>& m_cycle;
  ICmdListener* m_listener = nullptr;

  mutable std::mutex m_mutex;
  std::deque<Frame> m_waiting;
  std::size_t m_alive = 0;
  std::uint64_t m_nextID = 1;

  std::mutex m_wakeMutex;
  std::condition_variable m_wake;
  bool m_stop = false;
  std::thread m_thread;
};

}  // namespace motion::host
