#include "host/motion/preparation.h"

#include <fmt/format.h>

#include <chrono>
#include <exception>
#include <new>
#include <string_view>

#include "host/support/guarded.h"

namespace motion::host {

using core::FctResult;
using core::cmd::CmdResult;
using core::cmd::CmdState;

namespace {

/// How long the thread sleeps at most when nobody wakes it. Commands that end in the cycle do not wake it, because waking
/// would be a system call on the cyclic thread.
constexpr std::chrono::milliseconds TAKE_BACK_INTERVAL{2};

FctResult toFctResult(CmdResult result) {
  switch (result) {
    case CmdResult::NotRegistered:
      return FctResult::NotSupportedByObject;
    case CmdResult::OutOfMemory:
      return FctResult::OutOfMemory;
    case CmdResult::Refused:
    case CmdResult::WrongContainer:
    case CmdResult::InvalidParameterData:
      return FctResult::InvalidParameter;
    default:
      return FctResult::PreparationError;
  }
}

std::string withDiagnosis(const std::string& text, const DiaLog& dia, std::uint64_t diagnosesBefore) {
  return dia.count() > diagnosesBefore ? fmt::format("{}: {}", text, dia.latestText()) : text;
}

/// Runs `make`, which calls operations of a command; whatever they throw becomes a result with a text, or without one when
/// there is no memory even for that.
template <typename MAKE>
FctResult explained(const MotionObject& object, const std::string& cmdName, std::string& problem,
                    const MAKE& make) noexcept {
  problem.clear();
  const auto failed = [&](FctResult result, std::string_view why) {
    problem = fmt::format("'{}' of '{}' could not be made: {}", cmdName, object.name(), why);
    return result;
  };
  return guarded(FctResult::OutOfMemory, [&] {
    try {
      return make();
    } catch (const std::bad_alloc&) {
      return failed(FctResult::OutOfMemory, "no memory");
    } catch (const std::exception& error) {
      return failed(FctResult::PreparationError, error.what());
    } catch (...) {
      return failed(FctResult::PreparationError, "an unknown exception");
    }
  });
}

}  // namespace

Preparation::Preparation(ObjFactory& objFactory, GenericCmdFactory& cmdFactory, RetiredCmds& retired,
                         const std::atomic<std::uint64_t>& cycle)
    : m_objFactory(objFactory), m_cmdFactory(cmdFactory), m_retired(retired), m_cycle(cycle) {}

Preparation::~Preparation() {
  stopThread();
  clear();
}

Preparation::Frame Preparation::create(MotionObject& object, const std::string& cmdName, const core::IContainer& values,
                                       const core::dia::CmdSourceInfo& source, DiaLog& dia, FctResult& result,
                                       std::string& problem) {
  const auto entry = m_cmdFactory.find({object.type(), cmdName});
  if (entry == nullptr) {
    result = FctResult::NotSupportedByObject;
    problem =
        fmt::format("'{}' is not a command of {} '{}'", cmdName, object.isAxis() ? "axis" : "kinematics", object.name());
    return nullptr;
  }
  const std::uint64_t diagnoses = dia.count();
  const auto refuse = [&](CmdResult cmdResult, const std::string& text) -> Frame {
    result = toFctResult(cmdResult);
    problem = withDiagnosis(fmt::format("'{}' of '{}' was refused (0x{:08X}){}", cmdName, object.name(),
                                        core::toCode(cmdResult), text.empty() ? "" : ": " + text),
                            dia, diagnoses);
    return nullptr;
  };

  std::unique_ptr<core::cmd::ICmdGeneric> cmd;
  std::string errText;
  if (const auto made = entry->create(m_objFactory, true, cmd, errText); core::isFailure(made) || cmd == nullptr) {
    return refuse(core::isFailure(made) ? made : CmdResult::NullPointer, errText);
  }
  if (const auto set = cmd->onSetCmdValues(&values, source, &object, false); core::isFailure(set)) {
    return refuse(set, "its parameters were not accepted");
  }
  if (const auto valid = cmd->onValidate(source, &dia); core::isFailure(valid)) {
    return refuse(valid, "its parameters are not valid");
  }
  auto frame = std::make_unique<CmdFrame>(m_nextID, object, cmdName, source, std::move(cmd), object.data());
  if (const auto built = frame->build(m_objFactory, errText); core::isFailure(built)) {
    return refuse(built, errText);
  }
  result = FctResult::Okay;
  return frame;
}

FctResult Preparation::add(MotionObject& object, const std::string& cmdName, const core::IContainer& values,
                           const core::dia::CmdSourceInfo& source, unsigned long& cmdId, std::string& problem) noexcept {
  {
    const std::scoped_lock lock(m_mutex);
    if (!object.reserveBuffer()) {
      return explained(object, cmdName, problem, [&] {
        problem = fmt::format("the command buffer of '{}' is full ({} commands)", object.name(), object.bufferSize());
        return FctResult::TooManyCommands;
      });
    }
    Frame made;
    const FctResult result = explained(object, cmdName, problem, [&] {
      FctResult creation = FctResult::NotOkay;
      made = create(object, cmdName, values, source, object.diaLog(), creation, problem);
      if (made != nullptr) {
        m_waiting.push_back(nullptr);  // whatever may throw comes before anything is noted
      }
      return creation;
    });
    if (core::isFailure(result)) {
      object.releaseBuffer();
      return result;
    }
    m_waiting.back() = std::move(made);
    CmdFrame& frame = *m_waiting.back();
    cmdId = m_nextID++;
    ++m_alive;
    object.noteIssued(frame.getCmdID());
    frame.setState(CmdState::BUFFERED);
    if (m_listener != nullptr) {
      m_listener->onBuffered(frame, nextCycle());
    }
  }
  m_wake.notify_one();
  return FctResult::Okay;
}

FctResult Preparation::tryOut(MotionObject& object, const std::string& cmdName, const core::IContainer& values,
                              const core::dia::CmdSourceInfo& source, std::string& problem) noexcept {
  const std::scoped_lock lock(m_mutex);
  return explained(object, cmdName, problem, [&] {
    FctResult result = FctResult::NotOkay;
    DiaLog dia;  // the object's own log is for commands that somebody wants to run
    const Frame frame = create(object, cmdName, values, source, dia, result, problem);
    return result;
  });
}

void Preparation::prepareAll() {
  const std::scoped_lock lock(m_mutex);
  while (!m_waiting.empty()) {
    Frame frame = std::move(m_waiting.front());
    m_waiting.pop_front();
    prepare(std::move(frame));
  }
  destroyRetired();
}

void Preparation::prepare(Frame frame) {
  MotionObject& object = frame->object();
  if (object.isAborted(frame->getCmdID())) {
    drop(std::move(frame));
    return;
  }
  const JobListResult result = frame->preparedJobs().run();
  if (core::isFailure(result.result)) {
    frame->failure = result;
    drop(std::move(frame));
    dropWaiting(object);
    return;
  }
  frame->setState(CmdState::PREPARED);
  if (m_listener != nullptr) {
    m_listener->onPrepared(*frame, nextCycle());
  }
  // The cycle owns the command until it comes back as retired.
  object.putPrepared(frame.release());
}

void Preparation::drop(Frame frame) {
  frame->object().releaseBuffer();
  frame->setState(core::isFailure(frame->failure.result) ? CmdState::FAILED : CmdState::ABORTED);
  if (m_listener != nullptr) {
    m_listener->onDropped(*frame, nextCycle());
    m_listener->onRetired(*frame);
  }
  --m_alive;
}

void Preparation::dropWaiting(const MotionObject& object) {
  for (Frame& frame : m_waiting) {
    if (&frame->object() == &object) {
      drop(std::move(frame));
    }
  }
  std::erase(m_waiting, nullptr);
}

void Preparation::destroyRetired() {
  CmdFrame* link = m_retired.takeAll();
  while (link != nullptr) {
    const Frame frame(link);
    link = frame->next;
    if (m_listener != nullptr) {
      m_listener->onRetired(*frame);
    }
    --m_alive;
  }
}

void Preparation::startThread() {
  m_stop = false;
  m_thread = std::thread([this] { runThread(); });
}

void Preparation::stopThread() {
  if (!m_thread.joinable()) {
    return;
  }
  {
    const std::scoped_lock lock(m_wakeMutex);
    m_stop = true;
  }
  m_wake.notify_one();
  m_thread.join();
}

void Preparation::runThread() {
  std::unique_lock lock(m_wakeMutex);
  while (!m_stop) {
    lock.unlock();
    prepareAll();
    lock.lock();
    if (!m_stop) {
      m_wake.wait_for(lock, TAKE_BACK_INTERVAL);
    }
  }
}

void Preparation::clear() {
  const std::scoped_lock lock(m_mutex);
  while (!m_waiting.empty()) {
    Frame frame = std::move(m_waiting.front());
    m_waiting.pop_front();
    drop(std::move(frame));
  }
  destroyRetired();
}

std::size_t Preparation::alive() const {
  const std::scoped_lock lock(m_mutex);
  return m_alive;
}

}  // namespace motion::host
