// What commands and jobs exchange with a pretended motion runtime: names of data, data, job lists and the command context.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "motion/core/cmd/i_cmd_context.h"
#include "motion/core/job/i_job_data_handler.h"
#include "motion/core/job/i_job_data_id_mgr.h"
#include "motion/core/job/i_job_list.h"
#include "support/fake_calls.h"

namespace motion::test {

/// Operation: "idMgr.addID", shown with the name only.
class FakeJobDataIDMgr : public core::job::IJobDataIDMgr {
 public:
  explicit FakeJobDataIDMgr(FakeCalls& calls) : m_calls(calls) {}

  bool addID(core::DataID id, const char* name) override;
  const char* getName(core::DataID id) const override;
  core::DataID getID(const char* name) const override;

  std::map<core::DataID, std::string> m_names;

 private:
  FakeCalls& m_calls;
};

/// Operations: "handler.registerPublish", "handler.registerRead". Only data that was published in the same section is found.
class FakeJobDataHandler : public core::job::IJobDataHandler {
 public:
  explicit FakeJobDataHandler(FakeCalls& calls) : m_calls(calls) {}

  core::job::JobResult registerPublish(core::DataID id, core::SectionValue section, const char* who,
                                       core::IContainer* data) override;
  core::job::JobResult registerRead(core::DataID id, core::SectionValue section, std::uint32_t mode, const char* who,
                                    core::IContainer*& out) override;

  std::map<std::pair<core::DataID, core::SectionValue>, core::IContainer*> m_published;

 private:
  FakeCalls& m_calls;
};

/// Operation: "jobList.addJob".
class FakeJobList : public core::job::IJobList {
 public:
  struct Entry {
    core::job::Job job;
    std::string name;
    core::SectionValue section;
  };

  explicit FakeJobList(FakeCalls& calls) : m_calls(calls) {}

  core::job::JobResult addJob(const core::job::Job& job, const char* name, core::SectionValue section) override;

  std::vector<Entry> m_jobs;

 private:
  FakeCalls& m_calls;
};

/// Operations: "context.addCmd", "context.addCmdOption".
class FakeCmdContext : public core::cmd::ICmdContext {
 public:
  explicit FakeCmdContext(FakeCalls& calls) : m_calls(calls) {}

  core::FctResult addCmd(const core::dia::CmdSourceInfo& source, const char* objName, const std::string& cmdType,
                         const core::IContainer& values, std::uint32_t count, unsigned long* cmdId) override;
  core::FctResult addCmdOption(const core::dia::CmdSourceInfo& source, const char* objName, const std::string& cmdType,
                               core::cmd::CmdOptPermType permType, core::IContainer& values) override;

  /// Called with the parameters of each command and option, which are borrowed.
  std::function<void(const core::IContainer&)> m_onValues;
  const core::dia::CmdSourceInfo* m_source = nullptr;  ///< of the last call
  unsigned long* m_cmdIdAddress = nullptr;             ///< of the last call
  unsigned long m_nextCmdId = 4711;

 private:
  FakeCalls& m_calls;
};

}  // namespace motion::test
