// A command and its job object that do what a test writes down, and note what the host does with them.
#pragma once

#include <fmt/format.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/motion/cmd_factory.h"
#include "host/motion/obj_factory.h"
#include "host/motion/section_mgr.h"
#include "motion/core/cmd/cmd_generic.h"
#include "motion/core/cmd/i_cmd.h"
#include "motion/core/dia/i_dia.h"
#include "motion/core/job/i_job_data_handler.h"
#include "motion/core/job/job_object_base.h"

namespace motion::host::test {

/// Parameters of a scripted command: the name under which it stands in the journal.
struct Label___t;
using Label = core::NamedType<std::string, Label___t>;
/// What a scripted command tells its job.
struct JobLabel___t;
using JobLabel = core::job::JobNamedType<std::string, JobLabel___t>;

[[nodiscard]] inline std::string stateName(core::cmd::CmdState state) {
  static constexpr std::array<const char*, 7> names{"CREATED", "BUFFERED", "PREPARED", "ACTIVE",
                                                    "DONE",    "ABORTED",  "FAILED"};
  return names.at(static_cast<std::size_t>(state));
}

/// What all scripted commands of a test do, and what happened to them. Outlives the runtime. Only the journal and the
/// counters may be used while other threads run.
struct Script {
  using JobFn = std::function<core::job::JobResult(const std::string& label, unsigned call)>;

  /// Called at the beginning of every operation of a command or job object; may throw.
  std::function<void(std::string_view operation)> at = [](std::string_view) {};
  core::cmd::CmdResult createResult = core::cmd::CmdResult::Okay;
  core::cmd::CmdResult setResult = core::cmd::CmdResult::Okay;
  core::cmd::CmdResult validateResult = core::cmd::CmdResult::Okay;
  core::cmd::CmdResult inputsResult = core::cmd::CmdResult::Okay;
  core::job::JobResult outputsResult = core::job::JobResult::NoEffect;
  core::cmd::CmdResult activateResult = core::cmd::CmdResult::Okay;
  std::string createText;
  std::string diagnosis;  ///< what validation reports; empty = nothing
  std::vector<std::string> jobNames{"test_job"};
  bool publishes = true;  ///< the command publishes what its job reads
  JobFn prepared;         ///< null = the job object does not serve that list
  JobFn before;
  JobFn cyclic = [](const std::string&, unsigned) { return core::job::JobResult::CmdFinished; };
  bool journaling = true;

  std::atomic<int> commandsAlive{0};
  std::atomic<int> jobsAlive{0};
  std::array<std::atomic<int>, 7> stateChanges{};

  void note(const std::string& label, const std::string& what) {
    if (journaling) {
      const std::scoped_lock lock(m_mutex);
      m_journal.push_back(fmt::format("{} {}", label, what));
    }
  }
  /// What was noted since the last call.
  [[nodiscard]] std::vector<std::string> takeJournal() {
    const std::scoped_lock lock(m_mutex);
    return std::exchange(m_journal, {});
  }

 private:
  std::mutex m_mutex;
  std::vector<std::string> m_journal;
};

class ScriptedJob : public core::job::JobObjectBase {
 public:
  explicit ScriptedJob(Script& script) : m_script(script) { ++m_script.jobsAlive; }
  ~ScriptedJob() override { --m_script.jobsAlive; }
  ScriptedJob(const ScriptedJob&) = delete;
  ScriptedJob& operator=(const ScriptedJob&) = delete;

  [[nodiscard]] core::IAmCreatable* createNew() const override {
    m_script.at("createNew");
    return new ScriptedJob(m_script);
  }
  [[nodiscard]] const char* getID() const override { return "test_job"; }
  core::job::JobResult registerOutputs(core::job::IJobDataHandler* /*handler*/) override {
    m_script.at("registerOutputs");
    return m_script.outputsResult;
  }
  core::job::JobResult registerInputs(core::job::IJobDataHandler* handler) override {
    m_script.at("registerInputs");
    core::IContainer* data = nullptr;
    const auto result = handler->registerRead(JobLabel::getMyID(), SectionMgr::CMD_DATA, core::job::READ_ONE, "test", data);
    if (!core::isFailure(result)) {
      m_label = JobLabel::safeCast(data)->get();
    }
    return result;
  }
  core::job::JobResult addJobsToJoblist(core::job::IJobList* list, core::job::JobListTypes type) override {
    m_script.at("addJobsToJoblist");
    switch (type) {
      case core::job::JobListTypes::CYCLIC_EXECUTION:
        return add(*list, m_script.cyclic, "cyclic", m_cyclicCalls);
      case core::job::JobListTypes::BEFORE_EXECUTION:
        return add(*list, m_script.before, "before", m_beforeCalls);
      case core::job::JobListTypes::COMMAND_PREPARED:
        return add(*list, m_script.prepared, "prepared", m_preparedCalls);
    }
    return core::job::JobResult::ListTypeNotServed;
  }
  [[nodiscard]] std::string getJobString() const override { return fmt::format("job of {}", m_label); }

 private:
  core::job::JobResult add(core::job::IJobList& list, const Script::JobFn& job, const char* what, unsigned& calls) {
    if (!job) {
      return core::job::JobResult::ListTypeNotServed;
    }
    const auto call = [this, &job, what, &calls] {
      m_script.note(m_label, what);
      return job(m_label, ++calls);
    };
    return list.addJob(call, what, SectionMgr::EXEC_FINAL);
  }

  Script& m_script;
  std::string m_label;
  unsigned m_cyclicCalls = 0;
  unsigned m_beforeCalls = 0;
  unsigned m_preparedCalls = 0;
};

template <core::ObjectType TYPE>
class ScriptedCmd : public core::cmd::CmdGeneric<TYPE> {
 public:
  using CmdResult = core::cmd::CmdResult;

  ScriptedCmd(Script& script, core::IObjFactory& factory)
      : core::cmd::CmdGeneric<TYPE>("Test", true, factory), m_script(script) {
    ++m_script.commandsAlive;
  }
  ~ScriptedCmd() override {
    m_script.note(m_label.get(), "destroyed");
    --m_script.commandsAlive;
  }

  [[nodiscard]] const std::vector<std::string>& getJobNames() const override {
    m_script.at("getJobNames");
    return m_script.jobNames;
  }
  CmdResult onSetCmdValues(const core::IContainer* values, const core::dia::CmdSourceInfo& /*source*/, core::IObj* /*obj*/,
                           bool /*flag*/) override {
    m_script.at("onSetCmdValues");
    const Label* label = Label::safeCast(values);
    if (label == nullptr) {
      return CmdResult::WrongContainer;
    }
    m_label.set(label->get());
    return m_script.setResult;
  }
  [[nodiscard]] std::uint32_t onGetCmdType() const override { return 99; }
  CmdResult onRegisterJobListsInputs(core::job::IJobDataHandler& handler) override {
    m_script.at("onRegisterJobListsInputs");
    if (m_script.publishes &&
        core::isFailure(handler.registerPublish(JobLabel::getMyID(), SectionMgr::CMD_DATA, "test", &m_label))) {
      return CmdResult::JobRegistrationFailed;
    }
    return m_script.inputsResult;
  }
  CmdResult onValidate(const core::dia::CmdSourceInfo& source, core::dia::IDia* dia) override {
    m_script.at("onValidate");
    if (!m_script.diagnosis.empty()) {
      dia->report(1, 2, source, {"file", "function", 3}, "%s", m_script.diagnosis.c_str());
      dia->close();
    }
    return m_script.validateResult;
  }
  void onCmdStateChanged(const core::cmd::ICmdFrame& frame, core::cmd::CmdState state) override {
    ++m_script.stateChanges.at(static_cast<std::size_t>(state));
    m_script.note(m_label.get(), frame.getCmdState() == state ? stateName(state) : "told of a state that it does not have");
    m_script.at("onCmdStateChanged");
  }
  CmdResult onCmdActivate() override {
    m_script.note(m_label.get(), "activate");
    m_script.at("onCmdActivate");
    return m_script.activateResult;
  }
  CmdResult onCmdExit() override {
    m_script.note(m_label.get(), "exit");
    m_script.at("onCmdExit");
    return CmdResult::Okay;
  }

 private:
  Script& m_script;
  JobLabel m_label;
};

/// Makes the scripted command known as "Test" for one type of object. A value of type STRING is marshalled into a Label.
template <core::ObjectType TYPE>
void registerScriptedCmd(Script& script, GenericCmdFactory& factory) {
  CmdEntry entry;
  entry.id = {TYPE, "Test"};
  entry.create = wrapCreate<TYPE>(
      [&script](core::IObjFactory& objFactory, bool /*buffered*/, core::cmd::CmdGeneric<TYPE>*& cmd, std::string& errText) {
        script.at("create");
        errText = script.createText;
        if (!core::isFailure(script.createResult)) {
          cmd = new ScriptedCmd<TYPE>(script, objFactory);
        }
        return script.createResult;
      });
  entry.marshal = [&script](const comm::datalayer::Variant* data, core::IContainer*& container, bool& owned) {
    script.at("marshal");
    if (data->getString() == nullptr) {
      return core::cmd::CmdResult::InvalidParameterData;
    }
    container = new Label(*data->getString());
    owned = true;
    return core::cmd::CmdResult::Okay;
  };
  factory.addBuiltIn(std::move(entry));
}

/// Both of the above and the job object.
inline void registerScripted(Script& script, GenericCmdFactory& cmdFactory, ObjFactory& objFactory) {
  registerScriptedCmd<core::ObjectType::AXIS>(script, cmdFactory);
  registerScriptedCmd<core::ObjectType::KINEMATICS>(script, cmdFactory);
  std::unique_ptr<core::IAmCreatable> job = std::make_unique<ScriptedJob>(script);
  objFactory.registerObj(job, 0);
}

}  // namespace motion::host::test
