// What the jobs that wait until a signal has some state do alike.
#pragma once

#include <array>
#include <cstdio>
#include <span>
#include <string>

#include "impl/call_site.h"
#include "impl/command/cmd_data.h"
#include "impl/debug_trace.h"
#include "impl/guarded.h"
#include "impl/rt_signals.h"
#include "motion/core/job/i_job_data_handler.h"
#include "motion/core/job/job_object_base.h"

namespace motion::kavo::job {

/// Base of JOB_OBJECT, whose job ends its command once a signal is set, or reset. It keeps nothing from one cycle to the
/// next, so that nothing has to be undone when the command is aborted. RECORD is the container of what the command offers,
/// `signalId` among its fields. JOB_OBJECT says by static members what sets it apart:
///
/// | member | |
/// |---|---|
/// | `SITE` | where it is defined; traces name this place, and the operation |
/// | `JOB_NAME` | |
/// | `AWAITED` | the state that it waits for: true for a signal that is set |
/// | `consumes(parameters)` | whether it resets the signal in the access that finds it set |
/// | `describe(parameters, text)` | writes a text for people |
template <typename JOB_OBJECT, typename RECORD>
class WaitJobObject : public core::job::JobObjectBase {
 public:
  WaitJobObject() : m_rtSignals(&rt_data::RtSignals::getInstance()) {}

  [[nodiscard]] core::IAmCreatable* createNew() const override {
    return guarded<core::IAmCreatable*>(nullptr, [] { return new JOB_OBJECT; });
  }
  [[nodiscard]] const char* getID() const override { return JOB_OBJECT::JOB_NAME; }

  core::job::JobResult addJobsToJoblist(core::job::IJobList* list, core::job::JobListTypes type) override {
    return addCyclicJob(
        list, type, [this]() __attribute__((flatten)) { return execute(); }, getID());
  }

  core::job::JobResult registerInputs(core::job::IJobDataHandler* handler) override {
    if (const auto result = readCmdData(*handler, m_jobData); core::isFailure(result)) {
      KAVO_TRACE_AT(JOB_OBJECT::SITE.as(__func__), Error, "Failed to register the read of job data (%d)",
                    core::toCode(result));
      return result;
    }
    return core::job::JobResult::NoEffect;
  }

  [[nodiscard]] std::string getJobString() const override {
    std::array<char, 64> text{"No inputs registered"};
    if (m_jobData != nullptr) {
      JOB_OBJECT::describe(m_jobData->get(), text);
    }
    return guarded(std::string(), [&text] { return std::string(text.data()); });
  }

 private:
  /// The job itself. [cyclic & real-time]
  core::job::JobResult execute() const noexcept {
    if (m_jobData == nullptr) [[unlikely]] {
      KAVO_TRACE_AT(JOB_OBJECT::SITE.as(__func__), Error, "%s", "No job data!");
      return core::job::JobResult::ExecutionFailed;
    }
    const auto parameters = m_jobData->get();
    bool isSet = !JOB_OBJECT::AWAITED;
    // A memory that cannot be read is no reason to end the command: it goes on waiting.
    const bool isRead = m_rtSignals->get(parameters.signalId, isSet, JOB_OBJECT::consumes(parameters));
    return isRead && isSet == JOB_OBJECT::AWAITED ? core::job::JobResult::CmdFinished : core::job::JobResult::Busy;
  }

  /// What the command offers, null before registerInputs.
  const RECORD* m_jobData = nullptr;
  rt_data::RtSignals* m_rtSignals;
};

}  // namespace motion::kavo::job
