// The job of the command Join: meets the jobs of the other members and ends its command in the same cycle as theirs.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "impl/join/join_cmd_global_context.h"
#include "impl/join/join_pars.h"
#include "motion/core/cmd/i_cmd.h"
#include "motion/core/job/job_object_base.h"

namespace motion::kavo::job {

class JobObjJoin : public core::job::JobObjectBase {
 public:
  static constexpr const char* JOB_NAME = "kavo_job_join";

  [[nodiscard]] core::IAmCreatable* createNew() const override;
  [[nodiscard]] const char* getID() const override;
  /// Serves all three lists.
  core::job::JobResult addJobsToJoblist(core::job::IJobList* list, core::job::JobListTypes type) override;
  core::job::JobResult registerInputs(core::job::IJobDataHandler* handler) override;
  [[nodiscard]] std::string getJobString() const override;

  /// The command is prepared: takes part in an occurrence of the join. OutOfMemory, InvalidObject. [prepare]
  core::job::JobResult registerForJoin() noexcept;
  /// The command becomes current: is the next one prepared already? [cyclic & real-time]
  core::job::JobResult joinPreExecute() noexcept;
  /// Joins as soon as nothing is to be waited for, and is finished exactly one cycle after the last member has joined.
  /// [cyclic & real-time]
  core::job::JobResult joinAndWait() noexcept;
  /// The command was aborted, and so is the occurrence. In the thread that has the command. [prepare | cyclic & real-time]
  void onAbort() noexcept;

  /// Host ID of the job's command, 0 without one. [any & real-time]
  [[nodiscard]] std::uint64_t getCmdId() const;
  /// The object on which the job runs, null without one. [any & real-time]
  [[nodiscard]] const core::IObj* getMotionObj() const;
  /// The members, null before registerInputs. [prepare]
  [[nodiscard]] const JoinGroup* getGroup() const;
  /// The occurrence in which the job takes part, null before registerForJoin. [prepare]
  [[nodiscard]] const JoinCmdGlobalContext* getContext() const noexcept { return m_context.get(); }
  /// Looks the names up that traces show. [prepare]
  core::job::JobResult initObjectNamesList() noexcept;

 private:
  /// Is the newest prepared command still the one that is being executed?
  [[nodiscard]] bool isNextCmdMissing() const;
  [[nodiscard]] core::job::JobResult readInputs(core::job::IJobDataHandler& handler) noexcept;

  core::NamedType<JoinJobParsT, JoinJobPars___t>* m_joinJobPars = nullptr;
  core::IObjPtr* m_motionObjPtr = nullptr;
  core::cmd::ICmdPtr* m_joinCmdPtr = nullptr;
  std::string m_groupNames;
  std::shared_ptr<JoinCmdGlobalContext> m_context;
  std::int32_t m_objIndex = -1;
  bool m_waitForNextCmd = true;
  const char* m_objName = "<?>";
};

}  // namespace motion::kavo::job
