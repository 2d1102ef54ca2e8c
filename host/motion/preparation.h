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
#include "host/motion/cmd_request.h"
#include "host/motion/events.h"
#include "host/motion/motion_object.h"
#include "host/motion/obj_factory.h"

namespace motion::host {

/// Looks at commands and options before the cycle can get them.
class ICmdWatch {
 public:
  virtual ~ICmdWatch() = default;
  /// The option is in force, unless the command that it was given with is refused yet. One that only ends others is not
  /// shown. [prepare]
  virtual void onAccepted(const AcceptedOption& option, const MotionObject& object) noexcept = 0;
  /// All jobs of the command stand in its lists; it may be given further ones, to watch it by. A failure refuses it.
  /// [prepare]
  [[nodiscard]] virtual core::job::JobResult onBuilt(CmdFrame& frame) noexcept = 0;
};

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
  Preparation(ObjFactory& objFactory, GenericCmdFactory& cmdFactory, GenericCmdOptionFactory& optionFactory,
              RetiredCmds& retired, const std::atomic<std::uint64_t>& cycle);
  Preparation(const Preparation&) = delete;
  Preparation& operator=(const Preparation&) = delete;
  ~Preparation();

  /// Brings the options into force, creates the command, checks it, and appends it to the object's buffer. On failure
  /// nothing of it stays, and `problem` says why. Whatever operations of a component throw becomes a result: OutOfMemory or
  /// PreparationError. [any, not real-time]
  [[nodiscard]] core::FctResult add(MotionObject& object, const CmdRequest& request, unsigned long& cmdId,
                                    std::string& problem) noexcept;
  /// Brings an option into force for following commands. OptionNotSupported when the object has none of that name; else as
  /// add. [any, not real-time]
  [[nodiscard]] core::FctResult addOption(MotionObject& object, const OptionRequest& request, std::string& problem) noexcept;
  /// Creates and checks as add would, and throws everything away. Its diagnoses reach `problem` only. [any, not real-time]
  [[nodiscard]] core::FctResult tryOut(MotionObject& object, const CmdRequest& request, std::string& problem) noexcept;
  /// The path of a command that is tried out begins where that of the one tried out before it ends; from now on, where the
  /// paths of issued commands end, or where the object stands. [any, not real-time]
  void forgetTriedPaths(MotionObject& object);

  /// Prepares what waits, and destroys what has ended. [prepare]
  void prepareAll();
  /// Does so on a thread of its own, until stopThread.
  void startThread();
  void stopThread();
  /// Forgets what waits here; those commands become aborted. Not while the thread or cycles run.
  void clear();

  void setListener(ICmdListener* listener) noexcept { m_listener = listener; }
  void setWatch(ICmdWatch* watch) noexcept { m_watch = watch; }
  /// Commands that exist: waiting here, in a buffer, current, or not yet taken back.
  [[nodiscard]] std::size_t alive() const;

 private:
  using Frame = std::unique_ptr<CmdFrame>;
  using Accepted = std::vector<OptionSet::Shared>;

  /// The options and the command of a request. Null with `result` and `problem` when something was refused.
  [[nodiscard]] Frame create(MotionObject& object, const CmdRequest& request, DiaLog& dia, Accepted& accepted,
                             core::FctResult& result, std::string& problem);
  [[nodiscard]] Frame createCommand(MotionObject& object, const CmdEntry& entry, const CmdRequest& request, DiaLog& dia,
                                    core::FctResult& result, std::string& problem);
  /// Null with `result` and `problem` when the option was refused.
  [[nodiscard]] OptionSet::Shared accept(MotionObject& object, const OptionRequest& request, DiaLog& dia,
                                         core::FctResult& result, std::string& problem);
  /// Throws std::bad_alloc when the watch refuses. The command may be null.
  void showToWatch(MotionObject& object, const Accepted& options, CmdFrame* frame) const;
  void prepare(Frame frame);
  void drop(Frame frame);
  /// What is buffered behind a command that failed; what is ahead of it goes on.
  void dropWaiting(const MotionObject& object);
  void destroyRetired();
  void runThread();
  [[nodiscard]] std::uint64_t nextCycle() const noexcept { return m_cycle.load(std::memory_order_acquire) + 1; }

  ObjFactory& m_objFactory;
  GenericCmdFactory& m_cmdFactory;
  GenericCmdOptionFactory& m_optionFactory;
  RetiredCmds& m_retired;
  const std::atomic<std::uint64_t>& m_cycle;
  ICmdListener* m_listener = nullptr;
  ICmdWatch* m_watch = nullptr;

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
