// The job of the command Join.
#include "impl/join/job_obj_join.h"

#include <utility>

#include "impl/command/cmd_data.h"
#include "impl/debug_trace.h"
#include "impl/ext_dep/ext_dep_mgr.h"
#include "impl/guarded.h"
#include "motion/core/job/i_job_data_handler.h"

namespace motion::kavo::job {

using core::job::JobListTypes;
using core::job::JobResult;

namespace {

constexpr const char* NAMELESS = "<?>";

const char* toText(bool flag) noexcept {
  return flag ? "true" : "false";
}

/// Null for an object without a name.
const char* nameOf(const core::IObjMgr& objMgr, const core::IObj* obj) noexcept {
  return guarded<const char*>(nullptr, [&] { return objMgr.getObjName(obj); });
}

}  // namespace

core::IAmCreatable* JobObjJoin::createNew() const {
  return guarded<core::IAmCreatable*>(nullptr, [] { return new JobObjJoin; });
}

const char* JobObjJoin::getID() const {
  return JOB_NAME;
}

JobResult JobObjJoin::addJobsToJoblist(core::job::IJobList* list, JobListTypes type) {
  switch (type) {
    case JobListTypes::COMMAND_PREPARED:
      return addJob(
          *list, [this] { return registerForJoin(); }, getID());
    case JobListTypes::BEFORE_EXECUTION:
      return addJob(
          *list, [this] { return joinPreExecute(); }, getID());
    case JobListTypes::CYCLIC_EXECUTION:
      return addJob(
          *list, [this] { return joinAndWait(); }, getID());
  }
  return JobResult::ListTypeNotServed;
}

JobResult JobObjJoin::registerInputs(core::job::IJobDataHandler* handler) {
  const JobResult result = readInputs(*handler);
  return core::isFailure(result) ? result : initObjectNamesList();
}

JobResult JobObjJoin::readInputs(core::job::IJobDataHandler& handler) noexcept {
  constexpr const char* who = "registerInputs";
  // Traces name the operation that the host called.
  const CallSite site = {unitPath<__FILE__>, who, __LINE__};
  if (const JobResult result = readData(handler, SectionID::OBJ_DATA, who, m_motionObjPtr); core::isFailure(result)) {
    KAVO_TRACE_IN(site, Error, "%s", "IObjPtr::registerRead failed");
    return result;
  }
  if (getMotionObj() == nullptr) {
    KAVO_TRACE_IN(site, Error, "%s", "Motion object is invalid");
    return JobResult::InvalidObject;
  }
  if (const JobResult result = readData(handler, SectionID::CMD_DATA, who, m_joinCmdPtr); core::isFailure(result)) {
    KAVO_TRACE_IN(site, Error, "%s", "ICmdPtr::registerRead failed");
    return result;
  }
  if (m_joinCmdPtr->get() == nullptr) {
    KAVO_TRACE_IN(site, Error, "%s", "m_joinCmdPtr is null");
    return JobResult::InvalidObject;
  }
  const JobResult result = readData(handler, SectionID::CMD_DATA, who, m_joinJobPars);
  if (core::isFailure(result)) {
    KAVO_TRACE_IN(site, Error, "%s", "JoinJobPars::registerRead failed");
  }
  return result;
}

JobResult JobObjJoin::initObjectNamesList() noexcept {
  const CallSite site = KAVO_HERE;
  const core::IObjMgr* const objMgr = getObjMgr(site);
  if (objMgr == nullptr || m_joinJobPars == nullptr) {
    return JobResult::InvalidObject;
  }
  const char* const objName = nameOf(*objMgr, getMotionObj());
  m_objName = objName != nullptr ? objName : NAMELESS;
  JobResult result = JobResult::NoEffect;
  const bool isBuilt = guarded([&] {
    m_groupNames.clear();
    const char* separator = "";
    for (const core::IObj* const obj : *getGroup()) {
      const char* name = nameOf(*objMgr, obj);
      if (name == nullptr) {
        KAVO_TRACE_IN(site, Error, "%s", "Invalid motion object found");
        name = NAMELESS;
        result = JobResult::InvalidJobData;
      }
      m_groupNames.append(separator).append(name);
      separator = ",";
    }
  });
  return isBuilt ? result : JobResult::OutOfMemory;
}

std::string JobObjJoin::getJobString() const {
  return guarded(std::string(), [this] {
    const char* const sync = m_joinJobPars == nullptr ? "" : toText(m_joinJobPars->getRef().syncStartNextCmd);
    return "join(group=[" + m_groupNames + "],syncStartNextCmd=" + sync + ")";
  });
}

JobResult JobObjJoin::registerForJoin() noexcept {
  if (m_joinJobPars == nullptr) {
    return JobResult::InvalidObject;
  }
  m_waitForNextCmd = m_joinJobPars->getRef().syncStartNextCmd;
  int index = -1;
  std::shared_ptr<JoinCmdGlobalContext> context;
  if (!guarded([&] { context = JoinCmdGlobalContext::create(*this, index); })) {
    return JobResult::OutOfMemory;
  }
  if (context == nullptr) {
    return JobResult::InvalidObject;
  }
  m_context = std::move(context);
  m_objIndex = index;
  KAVO_TRACE(Info, "%s: joinCmd seq=%u: group=[%s], syncStartnextCmd=%s, command PREPARED", m_objName, m_context->seq(),
             m_groupNames.c_str(), toText(m_waitForNextCmd));
  return JobResult::NoEffect;
}

bool JobObjJoin::isNextCmdMissing() const {
  const core::IObj* const obj = getMotionObj();
  return obj->getLatestPreparedCmdID() == obj->getCurrentCmdID();
}

JobResult JobObjJoin::joinPreExecute() noexcept {
  if (!m_waitForNextCmd) {
    return JobResult::NoEffect;
  }
  if (m_context == nullptr) {
    return JobResult::InvalidObject;
  }
  if (!guarded([this] { m_waitForNextCmd = isNextCmdMissing(); })) {
    return JobResult::ExecutionFailed;
  }
  KAVO_TRACE(Info, "%s: joinCmd seq=%u: %s", m_objName, m_context->seq(),
             m_waitForNextCmd ? "wait for next prepared command" : "next prepared command is available");
  return JobResult::NoEffect;
}

JobResult JobObjJoin::joinAndWait() noexcept {
  if (m_context == nullptr) [[unlikely]] {
    return JobResult::InvalidObject;
  }
  const CallSite site = KAVO_HERE;
  return guarded(JobResult::ExecutionFailed, [this, &site] {
    if (m_waitForNextCmd) {
      m_waitForNextCmd = isNextCmdMissing();
      if (m_waitForNextCmd) {
        return JobResult::NoEffect;
      }
      KAVO_TRACE_IN(site, Info, "%s: joinCmd seq=%u: finished waiting for next prepared command", m_objName,
                    m_context->seq());
    }
    if (!m_context->isJoined(m_objIndex)) {
      m_context->join(m_objIndex);
      KAVO_TRACE_IN(site, Info, "%s: joinCmd seq=%u: %s has joined", m_objName, m_context->seq(), m_objName);
    }
    if (m_context->isAborted() || m_context->joinedCount() != m_context->groupMap().m_infos.size() ||
        // Exactly then and never later, so that all members end in one and the same cycle or not at all.
        getMotionObj()->getCycleCount() != m_context->completionCycle() + 1) {
      return JobResult::NoEffect;
    }
    KAVO_TRACE_IN(site, Info, "%s: joinCmd seq=%u: join complete", m_objName, m_context->seq());
    return JobResult::CmdFinished;
  });
}

void JobObjJoin::onAbort() noexcept {
  if (m_context == nullptr || m_context->isAborted(m_objIndex)) {
    return;
  }
  KAVO_TRACE(Warning, "%s: joinCmd seq=%u: ABORTED", m_objName, m_context->seq());
  m_context->markAborted(m_objIndex);
}

std::uint64_t JobObjJoin::getCmdId() const {
  const core::cmd::ICmd* const cmd = m_joinCmdPtr != nullptr ? m_joinCmdPtr->get() : nullptr;
  return cmd != nullptr ? cmd->getCmdID() : 0;
}

const core::IObj* JobObjJoin::getMotionObj() const {
  return m_motionObjPtr != nullptr ? m_motionObjPtr->get() : nullptr;
}

const JoinGroup* JobObjJoin::getGroup() const {
  return m_joinJobPars != nullptr ? &m_joinJobPars->getRef().group : nullptr;
}

}  // namespace motion::kavo::job
