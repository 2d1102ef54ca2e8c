// What commands and jobs exchange with a pretended motion runtime: names of data, data, job lists and the command context.
#include "support/fake_jobs.h"

namespace motion::test {

using core::FctResult;
using core::job::JobResult;

bool FakeJobDataIDMgr::addID(core::DataID id, const char* name) {
  const AllocationPause pause;
  if (m_calls.note("idMgr.addID", name)) {
    return false;
  }
  return m_names.try_emplace(id, name).second;
}

const char* FakeJobDataIDMgr::getName(core::DataID id) const {
  const auto found = m_names.find(id);
  return found != m_names.end() ? found->second.c_str() : nullptr;
}

core::DataID FakeJobDataIDMgr::getID(const char* name) const {
  for (const auto& [id, known] : m_names) {
    if (known == name) {
      return id;
    }
  }
  return 0;
}

JobResult FakeJobDataHandler::registerPublish(core::DataID id, core::SectionValue section, const char* who,
                                              core::IContainer* data) {
  const AllocationPause pause;
  if (const auto code = m_calls.note("handler.registerPublish", id, section, who)) {
    return static_cast<JobResult>(*code);
  }
  const bool isNew = m_published.try_emplace({id, section}, data).second;
  return isNew ? JobResult::NoEffect : JobResult::DataAlreadyPublished;
}

JobResult FakeJobDataHandler::registerRead(core::DataID id, core::SectionValue section, std::uint32_t mode, const char* who,
                                           core::IContainer*& out) {
  if (const auto code = m_calls.note("handler.registerRead", id, section, mode, who)) {
    return static_cast<JobResult>(*code);
  }
  const auto found = m_published.find({id, section});
  if (found == m_published.end()) {
    return JobResult::DataNotPublished;
  }
  out = found->second;
  return JobResult::NoEffect;
}

JobResult FakeJobList::addJob(const core::job::Job& job, const char* name, core::SectionValue section) {
  const AllocationPause pause;
  if (const auto code = m_calls.note("jobList.addJob", name, section)) {
    return static_cast<JobResult>(*code);
  }
  m_jobs.push_back({job, name, section});
  return JobResult::NoEffect;
}

FctResult FakeCmdContext::addCmd(const core::dia::CmdSourceInfo& source, const char* objName, const std::string& cmdType,
                                 const core::IContainer& values, std::uint32_t count, unsigned long* cmdId) {
  const AllocationPause pause;
  m_source = &source;
  m_cmdIdAddress = cmdId;
  if (m_onValues) {
    m_onValues(values);
  }
  if (const auto code = m_calls.note("context.addCmd", objName, cmdType, count)) {
    return static_cast<FctResult>(*code);
  }
  *cmdId = m_nextCmdId;
  return FctResult::Okay;
}

FctResult FakeCmdContext::addCmdOption(const core::dia::CmdSourceInfo& source, const char* objName,
                                       const std::string& cmdType, core::cmd::CmdOptPermType permType,
                                       core::IContainer& values) {
  const AllocationPause pause;
  m_source = &source;
  m_cmdIdAddress = nullptr;
  if (m_onValues) {
    m_onValues(values);
  }
  return m_calls.noteOr(FctResult::Okay, "context.addCmdOption", objName, cmdType, static_cast<std::uint32_t>(permType));
}

}  // namespace motion::test
