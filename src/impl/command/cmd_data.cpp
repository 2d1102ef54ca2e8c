// Exchange of records between commands and their jobs.
#include "impl/command/cmd_data.h"

#include "impl/ext_dep/ext_dep_mgr.h"
#include "impl/guarded.h"
#include "impl/rt_signals.h"

namespace motion::kavo {

namespace {

/// Everything that the component's commands exchange stands in one section.
core::SectionValue cmdDataSection() noexcept {
  return ExtDepMgr::getInstance().getSectionValue(SectionID::CMD_DATA);
}

}  // namespace

namespace cmd {

core::cmd::CmdResult validateSignalId(const CallSite& site, std::uint32_t signalId) noexcept {
  if (!rt_data::RtSignals::isValidId(signalId)) {
    KAVO_TRACE_AT(site, Error, "m_cmdValues.signalId (=%d) is not valid", signalId);
    return core::cmd::CmdResult::Refused;
  }
  return core::cmd::CmdResult::Okay;
}

core::job::JobResult publishCmdData(core::job::IJobDataHandler& handler, core::IContainer& data) noexcept {
  return guarded(core::job::JobResult::OutOfMemory,
                 [&] { return handler.registerPublish(data.getID(), cmdDataSection(), "onRegisterJobListsInputs", &data); });
}

}  // namespace cmd

namespace job {

core::job::JobResult readData(core::job::IJobDataHandler& handler, core::DataID id, SectionID section, const char* who,
                              core::IContainer*& out) noexcept {
  return guarded(core::job::JobResult::OutOfMemory, [&] {
    core::IContainer* container = nullptr;
    const auto result =
        handler.registerRead(id, ExtDepMgr::getInstance().getSectionValue(section), core::job::READ_ONE, who, container);
    if (!core::isFailure(result)) {
      out = container;
    }
    return result;
  });
}

core::job::JobResult addJob(core::job::IJobList& list, const core::job::Job& job, const char* name,
                            SectionID section) noexcept {
  return guarded(core::job::JobResult::OutOfMemory,
                 [&] { return list.addJob(job, name, ExtDepMgr::getInstance().getSectionValue(section)); });
}

core::job::JobResult addCyclicJob(core::job::IJobList* list, core::job::JobListTypes type, const core::job::Job& job,
                                  const char* name) noexcept {
  return type == core::job::JobListTypes::CYCLIC_EXECUTION ? addJob(*list, job, name)
                                                           : core::job::JobResult::ListTypeNotServed;
}

}  // namespace job

}  // namespace motion::kavo
