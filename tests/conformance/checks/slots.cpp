// Operations of commands, job objects and options by the number of their slot, as a host that was built elsewhere calls
// them.
#include <fmt/format.h>

#include "conformance/buffered_cmd.h"
#include "conformance/buffered_option.h"
#include "conformance/checks/motion_parts.h"
#include "conformance/expect.h"
#include "conformance/expected_commands.h"
#include "conformance/slots.h"
#include "conformance/trace_texts.h"

namespace motion::conformance {
namespace {

using core::ObjectType;

/// Calls an operation without arguments by the number of its slot, from 1; 1 and 2 are the destructors.
template <typename RESULT, typename OBJECT>
RESULT call(OBJECT* object, std::size_t number) {
  return callSlot<RESULT>(object, number - 1);
}

void commandSlots(const Bundle& bundle, const ExpectedCommand& expected) {
  Subject subject(bundle);
  subject.start();
  const auto created = create(subject, expected.id.objectType, expected.id.name);
  auto* const cmd = created.cmd.get();
  expectTrue("slot 3 gives the job names", call<const void*>(cmd, 3) == &created.cmd->getJobNames());
  expectEqual("slot 5 gives the command type", call<std::uint32_t>(cmd, 5), expected.isAxis() ? 35U : 18U);
  expectFalse("slot 9 tells that it is not additional", call<bool>(cmd, 9));
  expectEqual("slot 10 does nothing", call<std::uint32_t>(cmd, 10), 0x00110000U);
  expectEqual("slot 11 does nothing", call<std::uint32_t>(cmd, 11), 0x00110000U);
  expectEqual("slot 12 does nothing", call<std::uint32_t>(cmd, 12), 0x00110000U);
  expectEqual("slot 13 gives no slot", call<std::uint32_t>(cmd, 13), 0U);
  expectTrue("slot 14 lets the drive follow", call<bool>(cmd, 14));
  expectEqual("slot 15 gives the number for PLC blocks", call<std::uint32_t>(cmd, 15), expected.isAxis() ? 39U : 4108U);
}

void* operation(const core::cmd::ICmdGeneric& cmd, int number) {
  return (*reinterpret_cast<void* const* const*>(&cmd))[number - 1];
}

/// The numbers of those slots from 8 to 14 in which two commands have different operations.
std::vector<int> different(const core::cmd::ICmdGeneric& one, const core::cmd::ICmdGeneric& other) {
  std::vector<int> slots;
  for (int number = 8; number <= 14; ++number) {
    if (operation(one, number) != operation(other, number)) {
      slots.push_back(number);
    }
  }
  return slots;
}

void inheritedSlots(const Bundle& bundle, ObjectType type) {
  Subject subject(bundle);
  subject.start();
  const auto set = create(subject, type, "SetSignal");
  for (const char* name : {"ResetSignal", "WaitForSignal", "WaitForSignalReset"}) {
    const auto other = create(subject, type, name);
    expectEqual(std::string("slots in which SetSignal differs from ") + name, different(*set.cmd, *other.cmd),
                std::vector<int>{});
  }
  const auto join = create(subject, type, "Join");
  expectEqual("slots in which SetSignal differs from Join", different(*set.cmd, *join.cmd), std::vector<int>{8});
}

void jobSlots(const Bundle& bundle, const std::string& name) {
  Subject subject(bundle);
  subject.start();
  const auto job = makeJob(subject, name);
  auto* const object = job.get();
  const std::unique_ptr<core::IAmCreatable> clone(call<core::IAmCreatable*>(object, 3));
  expectEqual("slot 3 makes another one of the same name", clone->getID(), name);
  expectEqual("slot 4 gives the name", call<const char*>(object, 4), name);
  expectEqual("slot 5 gives the type of a job", call<std::uint32_t>(object, 5),
              static_cast<std::uint32_t>(core::CreatableType::JOB));
  expectTrue("slot 12 gives the job data", call<const void*>(object, 12) == job->getJobData());
  expectFalse("slot 13 tells that nothing is copied", call<bool>(object, 13));
}

void optionSlots(const Bundle& bundle, const ExpectedOption& expected) {
  using core::cmd::CmdOptDuration;
  Subject subject(bundle);
  subject.start();
  const auto option = makeOption(subject, expected.id.objectType, expected.id.name);
  auto duration = CmdOptDuration::NONE;
  expectEqual("slot 3 gives the duration", callSlot<std::uint32_t>(option.get(), 3 - 1, std::uint32_t{1}, &duration),
              0x00110000U);
  expectEqual("duration", duration, CmdOptDuration::PERMANENT);
  const core::IContainer* parameters = nullptr;
  const bool hasParameters = expected.id.name == "SwitchOnPath";
  expectEqual("slot 6 gives the parameters", callSlot<std::uint32_t>(option.get(), 6 - 1, &parameters),
              hasParameters ? 0x00110000U : 0xF011001AU);
  expectEqual("parameters", parameters != nullptr, hasParameters);
  expectEqual("slot 9 gives the exit strategy", call<std::uint32_t>(option.get(), 9), 0U);
}

}  // namespace

Checks slotChecks() {
  Checks checks = {
      {"registration.inherited-slots-axis", "axis commands share slots 8 to 14, of which Join replaces 8",
       [](const Bundle& bundle) { inheritedSlots(bundle, ObjectType::AXIS); }},
      {"registration.inherited-slots-kinematics", "kinematics commands share slots 8 to 14, of which Join replaces 8",
       [](const Bundle& bundle) { inheritedSlots(bundle, ObjectType::KINEMATICS); }},
  };
  for (const auto& expected : expectedCommands()) {
    checks.push_back({"registration.slots-" + expected.label, "a command's operations lie in their slots",
                      [&expected](const Bundle& bundle) { commandSlots(bundle, expected); }});
  }
  for (const auto& expected : expectedOptions()) {
    checks.push_back({"registration.slots-" + expected.label, "an option's operations lie in their slots",
                      [&expected](const Bundle& bundle) { optionSlots(bundle, expected); }});
  }
  for (const std::string name : {"ext_job_send_signal_cmd", "ext_job_send_signal_cmd_opt", "ext_job_obj_wait_for_signal",
                                 "ext_job_obj_wait_for_signal_reset", "kavo_job_join", "JobObjSwitchOnPath"}) {
    checks.push_back({"registration.slots-" + name, "a job object's operations lie in their slots",
                      [name](const Bundle& bundle) { jobSlots(bundle, name); }});
  }
  return checks;
}

}  // namespace motion::conformance
