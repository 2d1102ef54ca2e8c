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

/// What a component refused, in words: who, what, with which result, and why.
class Refusal {
 public:
  Refusal(const MotionObject& object, const DiaLog& dia) : m_object(object), m_dia(dia), m_diagnosesBefore(dia.count()) {}

  [[nodiscard]] std::string text(const std::string& what, CmdResult result, const std::string& why) const {
    return withDiagnosis(fmt::format("{} of '{}' was refused (0x{:08X}){}", what, m_object.name(), core::toCode(result),
                                     why.empty() ? "" : ": " + why));
  }
  [[nodiscard]] std::string withDiagnosis(const std::string& text) const {
    return m_dia.count() > m_diagnosesBefore ? fmt::format("{}: {}", text, m_dia.latestWithCodes()) : text;
  }

 private:
  const MotionObject& m_object;
  const DiaLog& m_dia;
  std::uint64_t m_diagnosesBefore;
};

/// Takes back what happens to the options of an object, unless it is kept.
class OptionTransaction {
 public:
  /// Throws std::bad_alloc.
  explicit OptionTransaction(MotionObject& object) : m_object(object), m_before(object.options().state()) {}
  OptionTransaction(const OptionTransaction&) = delete;
  OptionTransaction& operator=(const OptionTransaction&) = delete;
  ~OptionTransaction() {
    if (!m_isKept) {
      m_object.options().restore(std::move(m_before));
    }
  }
  void keep() noexcept { m_isKept = true; }

 private:
  MotionObject& m_object;
  OptionSet::State m_before;
  bool m_isKept = false;
};

/// Runs `make`, which calls operations of a component; whatever they throw becomes a result with a text, or without one when
/// there is no memory even for that.
template <typename MAKE>
FctResult explained(const MotionObject& object, const std::string& name, std::string& problem, const MAKE& make) noexcept {
  problem.clear();
  const auto failed = [&](FctResult result, std::string_view why) {
    problem = fmt::format("'{}' of '{}' could not be made: {}", name, object.name(), why);
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

Preparation::Preparation(ObjFactory& objFactory, GenericCmdFactory& cmdFactory, GenericCmdOptionFactory& optionFactory,
                         RetiredCmds& retired, const std::atomic<std::uint64_t>& cycle)
    : m_objFactory(objFactory),
      m_cmdFactory(cmdFactory),
      m_optionFactory(optionFactory),
      m_retired(retired),
      m_cycle(cycle) {}

Preparation::~Preparation() {
  stopThread();
  clear();
}

Preparation::Frame Preparation::create(MotionObject& object, const CmdRequest& request, DiaLog& dia, Accepted& accepted,
                                       FctResult& result, std::string& problem) {
  const auto entry = m_cmdFactory.find({object.type(), request.name});
  if (entry == nullptr) {
    result = FctResult::NotSupportedByObject;
    problem = fmt::format("'{}' is not a command of {} '{}'", request.name, object.isAxis() ? "axis" : "kinematics",
                          object.name());
    return nullptr;
  }
  for (const OptionRequest& option : request.options) {
    accepted.push_back(accept(object, option, dia, result, problem));
    if (accepted.back() == nullptr) {
      return nullptr;
    }
  }
  return createCommand(object, *entry, request, dia, result, problem);
}

Preparation::Frame Preparation::createCommand(MotionObject& object, const CmdEntry& entry, const CmdRequest& request,
                                              DiaLog& dia, FctResult& result, std::string& problem) {
  const Refusal refusal(object, dia);
  const auto refuse = [&](CmdResult cmdResult, const std::string& why) -> Frame {
    result = toFctResult(cmdResult);
    problem = refusal.text(fmt::format("'{}'", request.name), cmdResult, why);
    return nullptr;
  };
  std::unique_ptr<core::cmd::ICmdGeneric> cmd;
  std::string errText;
  if (const auto made = entry.create(m_objFactory, true, cmd, errText); core::isFailure(made) || cmd == nullptr) {
    return refuse(core::isFailure(made) ? made : CmdResult::NullPointer, errText);
  }
  if (const auto set = cmd->onSetCmdValues(&request.values, request.source, &object, false); core::isFailure(set)) {
    return refuse(set, "its parameters were not accepted");
  }
  if (const auto valid = cmd->onValidate(request.source, &dia); core::isFailure(valid)) {
    return refuse(valid, "its parameters are not valid");
  }
  auto frame = std::make_unique<CmdFrame>(m_nextID, object, request.name, request.source, std::move(cmd), object.data());
  std::vector<OptionJob> optionJobs;
  if (const auto made = object.options().accompany(entry, m_objFactory, optionJobs, errText); core::isFailure(made)) {
    return refuse(made, errText);
  }
  if (const auto built = frame->build(m_objFactory, std::move(optionJobs), errText); core::isFailure(built)) {
    return refuse(built, errText);
  }
  if (entry.builtIn) {  // of a command that comes from elsewhere, nothing but the contract is known
    frame->setPath(dynamic_cast<const IPathCmd*>(&frame->command()));
  }
  result = FctResult::Okay;
  return frame;
}

OptionSet::Shared Preparation::accept(MotionObject& object, const OptionRequest& request, DiaLog& dia, FctResult& result,
                                      std::string& problem) {
  const auto entry = m_optionFactory.find({object.type(), request.name});
  if (entry == nullptr) {
    result = FctResult::OptionNotSupported;
    problem = fmt::format("'{}' is not an option of {} '{}'", request.name, object.isAxis() ? "axis" : "kinematics",
                          object.name());
    return nullptr;
  }
  const Refusal refusal(object, dia);
  auto cmdResult = CmdResult::Okay;
  std::string why;
  OptionSet::Shared option = object.options().accept(entry, object, request, m_objFactory, dia, cmdResult, why);
  result = FctResult::Okay;
  if (option == nullptr) {
    result = toFctResult(cmdResult);
    problem = refusal.text(fmt::format("option '{}'", request.name), cmdResult, why);
  }
  return option;
}

void Preparation::showToWatch(MotionObject& object, const Accepted& options, CmdFrame* frame) const {
  if (m_watch == nullptr) {
    return;
  }
  for (const OptionSet::Shared& option : options) {
    if (option->duration() != core::cmd::CmdOptDuration::NONE) {
      m_watch->onAccepted(*option, object);
    }
  }
  if (frame != nullptr && core::isFailure(m_watch->onBuilt(*frame))) {
    throw std::bad_alloc();
  }
}

FctResult Preparation::add(MotionObject& object, const CmdRequest& request, unsigned long& cmdId,
                           std::string& problem) noexcept {
  {
    const std::scoped_lock lock(m_mutex);
    if (!object.reserveBuffer()) {
      return explained(object, request.name, problem, [&] {
        problem = fmt::format("the command buffer of '{}' is full ({} commands)", object.name(), object.bufferSize());
        return FctResult::TooManyCommands;
      });
    }
    Frame made;
    const FctResult result = explained(object, request.name, problem, [&] {
      FctResult creation = FctResult::NotOkay;
      OptionTransaction transaction(object);
      object.planPath();
      Accepted accepted;
      made = create(object, request, object.diaLog(), accepted, creation, problem);
      if (made != nullptr) {
        showToWatch(object, accepted, made.get());
        m_waiting.push_back(nullptr);  // whatever may throw comes before anything is noted
        transaction.keep();
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
    if (frame.path() != nullptr) {
      object.notePath(frame.getCmdID(), frame.path()->plannedEnd());
    }
    frame.setState(CmdState::BUFFERED);
    if (m_listener != nullptr) {
      m_listener->onBuffered(frame, nextCycle());
    }
  }
  m_wake.notify_one();
  return FctResult::Okay;
}

FctResult Preparation::addOption(MotionObject& object, const OptionRequest& request, std::string& problem) noexcept {
  const std::scoped_lock lock(m_mutex);
  return explained(object, request.name, problem, [&] {
    OptionTransaction transaction(object);
    FctResult result = FctResult::NotOkay;
    if (const auto option = accept(object, request, object.diaLog(), result, problem); option != nullptr) {
      showToWatch(object, {option}, nullptr);
      transaction.keep();
    }
    return result;
  });
}

FctResult Preparation::tryOut(MotionObject& object, const CmdRequest& request, std::string& problem) noexcept {
  const std::scoped_lock lock(m_mutex);
  return explained(object, request.name, problem, [&] {
    FctResult result = FctResult::NotOkay;
    DiaLog dia;  // the object's own log is for commands that somebody wants to run
    const OptionTransaction transaction(object);
    object.planTriedPath();
    Accepted accepted;
    const Frame frame = create(object, request, dia, accepted, result, problem);
    if (frame != nullptr && frame->path() != nullptr) {
      object.noteTriedPath(frame->path()->plannedEnd());
    }
    return result;
  });
}

void Preparation::forgetTriedPaths(MotionObject& object) {
  const std::scoped_lock lock(m_mutex);
  object.forgetTriedPaths();
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
