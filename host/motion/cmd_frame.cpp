#include "host/motion/cmd_frame.h"

#include <fmt/format.h>

#include <string_view>

#include "host/motion/motion_object.h"
#include "host/motion/section_mgr.h"
#include "motion/core/i_obj_factory.h"

namespace motion::host {

using core::cmd::CmdResult;
using core::cmd::CmdState;
using core::job::JobListTypes;
using core::job::JobResult;

CmdFrame::CmdFrame(std::uint64_t id, MotionObject& object, std::string name, core::dia::CmdSourceInfo source,
                   std::unique_ptr<core::cmd::ICmdGeneric> cmd, JobDataHandler& objectData)
    : m_id(id),
      m_object(object),
      m_name(std::move(name)),
      m_source(std::move(source)),
      m_cmd(std::move(cmd)),
      m_cmdPtr(this),
      m_data(&objectData) {}

CmdResult CmdFrame::build(core::IObjFactory& factory, std::vector<OptionJob> optionJobs, std::string& problem) {
  if (const auto result = publishCommand(problem); core::isFailure(result)) {
    return result;
  }
  for (const std::string& jobName : m_cmd->getJobNames()) {
    if (const auto result = createJobObject(factory, jobName, problem); core::isFailure(result)) {
      return result;
    }
  }
  for (OptionJob& optionJob : optionJobs) {
    m_options.push_back({optionJob.option, optionJob.job.get()});
    if (const auto result = addJobObject(std::move(optionJob.job), problem); core::isFailure(result)) {
      problem = fmt::format("option '{}': {}", m_options.back().option->name(), problem);
      return result;
    }
  }
  return CmdResult::Okay;
}

CmdResult CmdFrame::publishCommand(std::string& problem) {
  if (core::isFailure(m_data.registerPublish(core::cmd::ICmdPtr::getMyID(), SectionMgr::CMD_DATA, "host", &m_cmdPtr))) {
    problem = "the command could not be published to its jobs";
    return CmdResult::JobRegistrationFailed;
  }
  const CmdResult result = m_cmd->onRegisterJobListsInputs(m_data);
  if (core::isFailure(result)) {
    problem = fmt::format("the command refused to register its job data: 0x{:08X}", core::toCode(result));
  }
  return result;
}

CmdResult CmdFrame::createJobObject(core::IObjFactory& factory, const std::string& name, std::string& problem) {
  core::job::IJobObject* made = nullptr;
  const auto created = factory.createObj(name.c_str(), 0, made);
  std::unique_ptr<core::job::IJobObject> job(made);
  if (core::isFailure(created)) {
    problem = fmt::format("job object '{}' could not be created: 0x{:08X}", name, core::toCode(created));
    return CmdResult::JobCreationFailed;
  }
  return addJobObject(std::move(job), problem);
}

CmdResult CmdFrame::addJobObject(std::unique_ptr<core::job::IJobObject> job, std::string& problem) {
  const char* const name = job->getID();
  JobResult registered = job->registerOutputs(&m_data);
  if (!core::isFailure(registered)) {
    registered = job->registerInputs(&m_data);
  }
  if (core::isFailure(registered)) {
    problem = fmt::format("job object '{}' could not register its data: 0x{:08X}", name, core::toCode(registered));
    return CmdResult::JobRegistrationFailed;
  }
  const struct {
    JobList& list;
    JobListTypes type;
  } lists[] = {{m_cyclic, JobListTypes::CYCLIC_EXECUTION},
               {m_before, JobListTypes::BEFORE_EXECUTION},
               {m_prepared, JobListTypes::COMMAND_PREPARED}};
  for (const auto& [list, type] : lists) {
    const JobResult result = job->addJobsToJoblist(&list, type);
    if (core::isFailure(result) && result != JobResult::ListTypeNotServed) {
      problem = fmt::format("job object '{}' could not add its jobs: 0x{:08X}", name, core::toCode(result));
      return CmdResult::JobRegistrationFailed;
    }
  }
  m_jobObjects.push_back(std::move(job));
  return CmdResult::Okay;
}

void CmdFrame::setState(CmdState state) noexcept {
  m_state.store(state, std::memory_order_release);
  m_object.noteCmdState(m_id, state);
  try {
    m_cmd->onCmdStateChanged(*this, state);
  } catch (...) {
    // A command has no right to throw across the contract; the new state stands.
  }
}

std::string CmdFrame::jobString() const {
  std::string result;
  for (const auto& job : m_jobObjects) {
    result += (result.empty() ? "" : ", ") + job->getJobString();
  }
  return result;
}

core::job::IJobObject* CmdFrame::findJobObject(const char* name) const noexcept {
  for (const auto& job : m_jobObjects) {
    if (name != nullptr && std::string_view(job->getID()) == name) {
      return job.get();
    }
  }
  return nullptr;
}

void RetiredCmds::push(CmdFrame* frame) noexcept {
  CmdFrame* head = m_head.load(std::memory_order_relaxed);
  do {
    frame->next = head;
  } while (!m_head.compare_exchange_weak(head, frame, std::memory_order_release, std::memory_order_relaxed));
}

}  // namespace motion::host
