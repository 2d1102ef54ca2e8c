// Command options and their job objects that do what a test writes down, and note what the host does with them.
#pragma once

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "motion/core/cmd/cmd_groups.h"
#include "motion/core/cmd/i_cmd_opt_handler.h"
#include "tests/host/motion/scripted_cmd.h"

namespace motion::host::test {

/// Parameters of a scripted option: the labels under which it stands in the journal. A new option has one; stacking appends
/// those that it takes over.
struct Labels___t;
using Labels = core::NamedType<std::vector<std::string>, Labels___t>;

[[nodiscard]] inline std::string permTypeName(core::cmd::CmdOptPermType type) {
  static constexpr std::array<const char*, 3> names{"Once", "PermOn", "PermOff"};
  return names.at(static_cast<std::size_t>(type));
}

/// What all scripted options of a test do. Uses the script's `at`, with "option." ahead of each operation, and its journal.
struct OptionScript {
  using JobFn = Script::JobFn;

  explicit OptionScript(Script& cmdScript) : script(cmdScript) {}

  Script& script;
  core::cmd::CmdResult createResult = core::cmd::CmdResult::Okay;
  core::cmd::CmdResult stackResult = core::cmd::CmdResult::Okay;
  core::cmd::CmdResult setResult = core::cmd::CmdResult::Okay;
  core::cmd::CmdResult durationResult = core::cmd::CmdResult::Okay;
  core::job::JobResult inputsResult = core::job::JobResult::NoEffect;
  std::string createText;
  bool makesOption = true;
  std::string diagnosis;                                 ///< what setParameter reports; empty = nothing
  std::optional<core::cmd::CmdOptPermType> newPermType;  ///< what stacking makes of the permanence
  int jobCount = 1;
  int nullJob = -1;                ///< place of a null among the jobs; -1 = none
  std::vector<std::string> spent;  ///< labels that stacking does not take over any more
  JobFn prepared;                  ///< null = the jobs do not serve that list
  JobFn before;
  JobFn cyclic = [](const std::string&, unsigned) { return core::job::JobResult::NoEffect; };

  std::atomic<int> optionsAlive{0};
  std::atomic<int> jobsAlive{0};
};

class ScriptedOptionJob : public core::job::JobObjectBase {
 public:
  ScriptedOptionJob(OptionScript& script, std::string label) : m_script(script), m_label(std::move(label)) {
    ++m_script.jobsAlive;
  }
  ~ScriptedOptionJob() override { --m_script.jobsAlive; }
  ScriptedOptionJob(const ScriptedOptionJob&) = delete;
  ScriptedOptionJob& operator=(const ScriptedOptionJob&) = delete;

  [[nodiscard]] core::IAmCreatable* createNew() const override { return new ScriptedOptionJob(m_script, m_label); }
  [[nodiscard]] const char* getID() const override { return "option_job"; }
  core::job::JobResult registerInputs(core::job::IJobDataHandler* /*handler*/) override {
    m_script.script.at("option.registerInputs");
    return m_script.inputsResult;
  }
  core::job::JobResult addJobsToJoblist(core::job::IJobList* list, core::job::JobListTypes type) override {
    m_script.script.at("option.addJobsToJoblist");
    switch (type) {
      case core::job::JobListTypes::CYCLIC_EXECUTION:
        return add(*list, m_script.cyclic, "cyclic");
      case core::job::JobListTypes::BEFORE_EXECUTION:
        return add(*list, m_script.before, "before");
      case core::job::JobListTypes::COMMAND_PREPARED:
        return add(*list, m_script.prepared, "prepared");
    }
    return core::job::JobResult::ListTypeNotServed;
  }
  [[nodiscard]] std::string getJobString() const override { return fmt::format("option {}", m_label); }

 private:
  core::job::JobResult add(core::job::IJobList& list, const Script::JobFn& job, const char* what) {
    if (!job) {
      return core::job::JobResult::ListTypeNotServed;
    }
    const auto call = [this, &job, what] {
      m_script.script.note(m_label, what);
      return job(m_label, ++m_calls);
    };
    return list.addJob(call, what, SectionMgr::EXEC_FINAL);
  }

  OptionScript& m_script;
  std::string m_label;
  unsigned m_calls = 0;
};

class ScriptedOption : public core::cmd::GenericCmdOption {
 public:
  using CmdResult = core::cmd::CmdResult;
  using CmdOptPermType = core::cmd::CmdOptPermType;

  /// One with an identity for stacking takes over what is active under it, and offers its own data.
  ScriptedOption(OptionScript& script, std::optional<core::cmd::CmdId> stackID)
      : m_script(script), m_stackID(std::move(stackID)) {
    ++m_script.optionsAlive;
  }
  ~ScriptedOption() override { --m_script.optionsAlive; }
  ScriptedOption(const ScriptedOption&) = delete;
  ScriptedOption& operator=(const ScriptedOption&) = delete;

  CmdResult getDuration(CmdOptPermType permType, core::cmd::CmdOptDuration& duration) const override {
    note("getDuration " + permTypeName(permType));
    m_script.script.at("option.getDuration");
    const CmdResult known = GenericCmdOption::getDuration(permType, duration);
    return core::isFailure(m_script.durationResult) ? m_script.durationResult : known;
  }
  CmdResult prepareStackableCmdOption(core::IObj& /*obj*/, const core::cmd::ICmdOptHandler& handler,
                                      core::IContainer* values, CmdOptPermType& permType,
                                      const core::dia::CmdSourceInfo& source) const override {
    auto& labels = Labels::safeCast(values)->getRef();
    m_script.script.note(text(labels), fmt::format("prepareStackable {} of line {}", permTypeName(permType), source.line));
    m_script.script.at("option.prepareStackable");
    const core::IContainer* active = nullptr;
    if (m_stackID && permType != CmdOptPermType::PERM_OFF && !core::isFailure(handler.getDataOfOption(*m_stackID, active))) {
      for (const std::string& label : Labels::safeCast(active)->get()) {
        if (std::ranges::find(m_script.spent, label) == m_script.spent.end()) {
          labels.push_back(label);
        }
      }
    }
    permType = m_script.newPermType.value_or(permType);
    return m_script.stackResult;
  }
  CmdResult setParameter(const core::IContainer* values, core::IObjFactory& /*factory*/, const core::IObj& /*obj*/,
                         core::dia::IDia& dia) override {
    m_labels.set(Labels::safeCast(values)->get());
    note("setParameter");
    if (!m_script.diagnosis.empty()) {
      dia.report(1, 2, {}, {"file", "function", 3}, "%s", m_script.diagnosis.c_str());
      dia.close();
    }
    m_script.script.at("option.setParameter");
    return m_script.setResult;
  }
  CmdResult getParameter(const core::IContainer*& values) override {
    if (!m_stackID) {
      return GenericCmdOption::getParameter(values);
    }
    values = &m_labels;
    return CmdResult::Okay;
  }
  std::vector<core::job::IJobObject*> createJobs(core::IObjFactory& /*factory*/) const override {
    note("createJobs");
    m_script.script.at("option.createJobs");
    std::vector<std::unique_ptr<core::job::IJobObject>> made;
    for (int i = 0; i < m_script.jobCount; ++i) {
      made.push_back(i == m_script.nullJob ? nullptr : std::make_unique<ScriptedOptionJob>(m_script, text(m_labels.get())));
    }
    std::vector<core::job::IJobObject*> given(made.size());
    std::ranges::transform(made, given.begin(), [](auto& job) { return job.release(); });
    return given;
  }

 private:
  static std::string text(const std::vector<std::string>& labels) { return fmt::format("{}", fmt::join(labels, "+")); }
  void note(const std::string& what) const { m_script.script.note(text(m_labels.get()), what); }

  OptionScript& m_script;
  std::optional<core::cmd::CmdId> m_stackID;
  Labels m_labels;
};

/// A scripted option as it would be registered. A value of type STRING is decoded into a label: "PermOn A" or "A".
[[nodiscard]] inline CmdOptionEntry scriptedOption(OptionScript& script, const core::cmd::CmdId& id, bool isStackable,
                                                   std::vector<std::string> groups) {
  CmdOptionEntry entry;
  entry.id = id;
  entry.groups = std::move(groups);
  entry.slots = {7};
  entry.create = [&script, stackID = isStackable ? std::optional(id) : std::nullopt](core::cmd::GenericCmdOption*& option,
                                                                                     std::string& errText) {
    script.script.at("option.create");
    errText = script.createText;
    if (script.makesOption) {
      option = new ScriptedOption(script, stackID);
    }
    return script.createResult;
  };
  entry.marshal = [&script](const comm::datalayer::Variant* data, core::IContainer*& container,
                            core::cmd::CmdOptPermType& permType, core::dia::IDiagCollector& collector) {
    script.script.at("option.marshal");
    if (data->getString() == nullptr) {
      collector.add(0x11, 0x22, "no text");
      return core::cmd::CmdResult::InvalidParameterData;
    }
    std::string label = *data->getString();
    for (const auto type : {core::cmd::CmdOptPermType::PERM_ON, core::cmd::CmdOptPermType::PERM_OFF}) {
      if (label.starts_with(permTypeName(type) + " ")) {
        permType = type;
        label.erase(0, permTypeName(type).size() + 1);
      }
    }
    container = new Labels({label});
    return core::cmd::CmdResult::Okay;
  };
  return entry;
}

/// The group of all commands of a type of object.
[[nodiscard]] inline std::string allCommandsOf(core::ObjectType type) {
  return type == core::ObjectType::AXIS ? core::cmd::axs::GROUP_ALL_COMMANDS : core::cmd::kin::GROUP_ALL_COMMANDS;
}

/// Makes two options known for both types of objects: "Plain", which stands for itself, and "Stack", which takes over what
/// was active. The factory insists on the file of a schema.
inline void registerScriptedOptions(OptionScript& script, GenericCmdOptionFactory& factory) {
  for (const auto type : {core::ObjectType::AXIS, core::ObjectType::KINEMATICS}) {
    for (const char* name : {"Plain", "Stack"}) {
      const CmdOptionEntry entry =
          scriptedOption(script, {type, name}, std::string_view(name) == "Stack", {allCommandsOf(type)});
      factory.registerCmdOptionWithSlots(entry.id, entry.create, entry.marshal, entry.groups,
                                         KAVO_TEST_SCHEMA_DIR "/cmdSetSignal.bfbs", "", "", entry.slots);
    }
  }
}

}  // namespace motion::host::test
