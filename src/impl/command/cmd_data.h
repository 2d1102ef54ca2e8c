// What commands and their jobs do with the records that they exchange in the host's section for data of commands.
#pragma once

#include <cstdint>

#include "impl/call_site.h"
#include "impl/debug_trace.h"
#include "impl/ext_dep/ext_dep_mgr.h"
#include "motion/core/job/i_job_data_handler.h"
#include "motion/core/job/i_job_list.h"
#include "motion/core/named_type.h"
#include "motion/core/results.h"

namespace motion::kavo::cmd {

/// Copies the parameters out of `cmdValues` if they are of the type of `target`; otherwise traces `refusal`: WrongContainer.
/// [prepare]
template <typename CONTAINER>
[[nodiscard]] core::cmd::CmdResult takeParameters(const CallSite& site, const core::IContainer* cmdValues, CONTAINER& target,
                                                  const char* refusal) {
  const auto* values = CONTAINER::safeCast(cmdValues);
  if (values == nullptr) {
    KAVO_TRACE_AT(site, Error, "%s", refusal);
    return core::cmd::CmdResult::WrongContainer;
  }
  target.set(values->get());
  return core::cmd::CmdResult::Okay;
}

/// Refused, with a trace, when the command's signal does not exist. [prepare]
[[nodiscard]] core::cmd::CmdResult validateSignalId(const CallSite& site, std::uint32_t signalId) noexcept;

/// Offers the record to the command's jobs. The result of the host. [prepare]
[[nodiscard]] core::job::JobResult publishCmdData(core::job::IJobDataHandler& handler, core::IContainer& data) noexcept;

}  // namespace motion::kavo::cmd

namespace motion::kavo::job {

/// Finds a record of that identity in a section; `who` names the caller. The result of the host; `out` is written only on
/// success. [prepare]
[[nodiscard]] core::job::JobResult readData(core::job::IJobDataHandler& handler, core::DataID id, SectionID section,
                                            const char* who, core::IContainer*& out) noexcept;

/// The same for a record of a known type. InvalidJobData for one of another type. [prepare]
template <typename BASETYPE, typename SEMANTIC>
[[nodiscard]] core::job::JobResult readData(core::job::IJobDataHandler& handler, SectionID section, const char* who,
                                            core::NamedType<BASETYPE, SEMANTIC>*& out) noexcept {
  using Record = core::NamedType<BASETYPE, SEMANTIC>;
  core::IContainer* container = nullptr;
  if (const auto result = readData(handler, Record::getMyID(), section, who, container); core::isFailure(result)) {
    return result;
  }
  Record* const record = Record::safeCast(container);
  if (record == nullptr) {
    return core::job::JobResult::InvalidJobData;
  }
  out = record;
  return core::job::JobResult::NoEffect;
}

/// Finds, for a job, the record that its command offers. [prepare]
template <typename BASETYPE, typename SEMANTIC>
[[nodiscard]] core::job::JobResult readCmdData(core::job::IJobDataHandler& handler,
                                               const core::NamedType<BASETYPE, SEMANTIC>*& out) noexcept {
  core::NamedType<BASETYPE, SEMANTIC>* record = nullptr;
  const auto result = readData(handler, SectionID::CMD_DATA, "registerInputs", record);
  if (!core::isFailure(result)) {
    out = record;
  }
  return result;
}

/// Adds a job to the stage of a section. The result of the host, OutOfMemory. [prepare]
[[nodiscard]] core::job::JobResult addJob(core::job::IJobList& list, const core::job::Job& job, const char* name,
                                          SectionID section = SectionID::CMD_DATA) noexcept;
/// Adds a job to the list for cyclic execution; ListTypeNotServed for every other list. [prepare]
[[nodiscard]] core::job::JobResult addCyclicJob(core::job::IJobList* list, core::job::JobListTypes type,
                                                const core::job::Job& job, const char* name) noexcept;

}  // namespace motion::kavo::job
