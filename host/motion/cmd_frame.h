// A command in the buffer of a motion object, with its jobs and their data.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "host/motion/i_path_cmd.h"
#include "host/motion/job_data_handler.h"
#include "host/motion/job_list.h"
#include "host/motion/option_set.h"
#include "motion/core/cmd/cmd_generic.h"
#include "motion/core/cmd/i_cmd.h"
#include "motion/core/dia/cmd_source_info.h"
#include "motion/core/job/job_object_base.h"

namespace motion::host {

class MotionObject;

/// Created, given its jobs and destroyed by preparation; changes its state in the thread that executes it.
class CmdFrame : public core::cmd::ICmdFrame, private core::job::IJobHandler {
 public:
  CmdFrame(std::uint64_t id, MotionObject& object, std::string name, core::dia::CmdSourceInfo source,
           std::unique_ptr<core::cmd::ICmdGeneric> cmd, JobDataHandler& objectData);
  CmdFrame(const CmdFrame&) = delete;
  CmdFrame& operator=(const CmdFrame&) = delete;
  ~CmdFrame() override = default;

  [[nodiscard]] std::uint64_t getCmdID() const noexcept override { return m_id; }
  [[nodiscard]] core::cmd::CmdState getCmdState() const noexcept override { return m_state.load(std::memory_order_acquire); }
  [[nodiscard]] const core::job::IJobHandler& getJobHandler() const noexcept override { return *this; }

  /// Registers data and creates the job objects and job lists; the jobs of options stand behind those of the command. On
  /// failure `problem` says which step refused. [prepare]
  [[nodiscard]] core::cmd::CmdResult build(core::IObjFactory& factory, std::vector<OptionJob> optionJobs,
                                           std::string& problem);
  /// Adds a job of the host's own, which runs in every cycle after all others of its stage. OutOfMemory. [prepare]
  core::job::JobResult addCyclicJob(const core::job::Job& job, const char* name, core::SectionValue section) noexcept {
    return m_cyclic.addJob(job, name, section);
  }

  /// Changes the state and tells the command. [prepare | cyclic & real-time]
  void setState(core::cmd::CmdState state) noexcept;

  [[nodiscard]] const std::string& name() const noexcept { return m_name; }
  [[nodiscard]] const core::dia::CmdSourceInfo& source() const noexcept { return m_source; }
  [[nodiscard]] MotionObject& object() const noexcept { return m_object; }
  [[nodiscard]] core::cmd::ICmdGeneric& command() const noexcept { return *m_cmd; }
  /// The same command if it moves a kinematics along a path, else null. [prepare | cyclic & real-time]
  [[nodiscard]] const IPathCmd* path() const noexcept { return m_path; }
  void setPath(const IPathCmd* path) noexcept { m_path = path; }  ///< [prepare]
  /// What the command's jobs say about themselves. [prepare]
  [[nodiscard]] std::string jobString() const;

  /// A job object of an option, which the frame owns.
  struct OptionUse {
    std::shared_ptr<const AcceptedOption> option;
    const core::job::IJobObject* job;
  };
  /// The options that accompany the command, in the order in which their jobs run. [prepare]
  [[nodiscard]] const std::vector<OptionUse>& options() const noexcept { return m_options; }

  [[nodiscard]] const JobList& cyclicJobs() const noexcept { return m_cyclic; }
  [[nodiscard]] const JobList& beforeJobs() const noexcept { return m_before; }
  [[nodiscard]] const JobList& preparedJobs() const noexcept { return m_prepared; }

  JobListResult failure;     ///< written by the cyclic thread before the state becomes FAILED
  CmdFrame* next = nullptr;  ///< link of the list of retired commands

 private:
  [[nodiscard]] core::job::IJobObject* findJobObject(const char* name) const noexcept override;
  [[nodiscard]] core::cmd::CmdResult publishCommand(std::string& problem);
  [[nodiscard]] core::cmd::CmdResult createJobObject(core::IObjFactory& factory, const std::string& name,
                                                     std::string& problem);
  [[nodiscard]] core::cmd::CmdResult addJobObject(std::unique_ptr<core::job::IJobObject> job, std::string& problem);

  JobList m_cyclic;  // first, beside what a cycle reads of a frame
  std::atomic<core::cmd::CmdState> m_state{core::cmd::CmdState::CREATED};
  std::uint64_t m_id;
  MotionObject& m_object;
  std::string m_name;
  core::dia::CmdSourceInfo m_source;
  std::unique_ptr<core::cmd::ICmdGeneric> m_cmd;
  const IPathCmd* m_path = nullptr;
  core::cmd::ICmdPtr m_cmdPtr;
  JobDataHandler m_data;
  std::vector<OptionUse> m_options;  // before the job objects: an option outlives its jobs
  std::vector<std::unique_ptr<core::job::IJobObject>> m_jobObjects;
  JobList m_before;
  JobList m_prepared;
};

/// Hands commands that have ended from the cycle to preparation.
///
/// | promise | |
/// |---|---|
/// | writers, readers | any number of writers, one reader |
/// | push | lock-free, never allocates, always succeeds |
class RetiredCmds {
 public:
  void push(CmdFrame* frame) noexcept;
  /// All that were pushed, as a list linked by `next`.
  [[nodiscard]] CmdFrame* takeAll() noexcept { return m_head.exchange(nullptr, std::memory_order_acq_rel); }

 private:
  std::atomic<CmdFrame*> m_head{nullptr};
};

}  // namespace motion::host
