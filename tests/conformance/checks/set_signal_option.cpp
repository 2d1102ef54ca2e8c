// The command option SetSignal: parameters are checked by a job, and each accompanied command gets a job of its own.
#include <fmt/format.h>

#include "conformance/buffered_cmd.h"
#include "conformance/buffered_option.h"
#include "conformance/checks/motion_parts.h"
#include "conformance/counting_job.h"
#include "conformance/expect.h"
#include "conformance/records.h"
#include "conformance/trace_texts.h"
#include "support/fake_jobs.h"

namespace motion::conformance {
namespace {

using core::ObjectType;
using core::cmd::CmdResult;
using core::job::JobListTypes;
using core::job::JobResult;
using kavo::cmd::CmdOptionSetSignalPars;

constexpr JobResult NOTHING{0};
const std::string NAME = "SetSignal";
const std::string UNIT = "cmd_option_set_signal";
const std::string JOB = "ext_job_send_signal_cmd_opt";

/// An option that was given nothing yet.
struct LooseOption {
  LooseOption(const Bundle& bundle, ObjectType type)
      : subject(bundle),
        obj(type == ObjectType::AXIS ? subject.host.objMgr.addAxis("X") : subject.host.objMgr.addKinematics("X")) {
    subject.start();
    option = makeOption(subject, type, NAME);
    subject.forget();
  }
  [[nodiscard]] CmdResult set(const core::IContainer* values) {
    return option->setParameter(values, subject.host.objFactory, obj, obj.m_dia);
  }
  [[nodiscard]] CmdResult setSignal(std::uint32_t signalId) {
    const CmdOptionSetSignalPars values({.signalId = signalId});
    return set(&values);
  }
  /// The texts of the jobs for one command.
  [[nodiscard]] Texts jobs() {
    Texts texts;
    for (auto* made : option->createJobs(subject.host.objFactory)) {
      const std::unique_ptr<core::job::IJobObject> job(made);
      texts.push_back(std::string(job->getID()) + ": " + job->getJobString());
    }
    return texts;
  }

  Subject subject;
  test::FakeObj& obj;
  std::unique_ptr<core::cmd::GenericCmdOption> option;
};

void keepsSignal(const Bundle& bundle, ObjectType type) {
  LooseOption loose(bundle, type);
  for (const std::uint32_t signalId : {99U, 0U, 42U}) {
    expectEqual("result", loose.setSignal(signalId), CmdResult{0x00110000});
    expectEqual("jobs", loose.jobs(), Texts{fmt::format("{}: setSignal({})", JOB, signalId)});
  }
  expectEqual("traces", loose.subject.traces(), Texts{});
  expectEqual("diagnoses", loose.obj.m_dia.m_reports.size(), 0U);
}

void wrongContainer(const Bundle& bundle, ObjectType type) {
  LooseOption loose(bundle, type);
  const kavo::job::SendSignalJobPars jobRecord({.signalId = 7});
  const kavo::cmd::CmdSendSignalPars cmdRecord({.signalId = 7});
  for (const core::IContainer* values : std::initializer_list<const core::IContainer*>{nullptr, &jobRecord, &cmdRecord}) {
    loose.subject.forget();
    expectEqual("result", loose.set(values), CmdResult{0xF011000E});
    expectEqual("traces", loose.subject.traces(),
                Texts{errorOf(UNIT, "setParameter", "SendSignalJobPars::safeCast(cmdOptValues) failed")});
    expectEqual("calls of the host", loose.subject.host.calls.all(), Texts{});
  }
}

void noCheckingJob(const Bundle& bundle, ObjectType type) {
  LooseOption loose(bundle, type);
  loose.subject.host.calls.fail("objFactory.createObj", 0xF0150001);
  expectEqual("result", loose.setSignal(7), CmdResult{0xF0110004});
  expectEqual("traces", loose.subject.traces(),
              Texts{errorOf(UNIT, "setParameter",
                            fmt::format("jobObjFactory.createObj() failed: {}", static_cast<std::int32_t>(0xF0150001)))});
  expectEqual("calls of the host", loose.subject.host.calls.all(), Texts{"objFactory.createObj(" + JOB + ", 0)"});
}

void invalidSignal(const Bundle& bundle, ObjectType type) {
  LooseOption loose(bundle, type);
  expectEqual("result for a good signal", loose.setSignal(7), CmdResult{0x00110000});
  for (const std::uint32_t signalId : {100U, 0x7FFFFFFFU}) {
    loose.subject.forget();
    expectEqual("result", loose.setSignal(signalId), CmdResult{0xF011001D});
    expectEqual("traces", loose.subject.traces(),
                Texts{errorOf(UNIT, "setParameter",
                              fmt::format("jobObj->checkParameter() failed: {}", static_cast<std::int32_t>(0xF0000016)))});
    expectEqual("diagnosis", loose.subject.host.calls.of({"dia."}),
                Texts{fmt::format("dia.report(jobData->signalId: {})", signalId), "dia.close()"});
    expectEqual("main code", loose.obj.m_dia.m_reports.back().mainCode, 0x090F0FFFU);
    expectEqual("detail code", loose.obj.m_dia.m_reports.back().detailCode, 0x0C570101U);
    expectEqual("jobs afterwards", loose.jobs(), Texts{JOB + ": setSignal(7)"});
  }
}

void noJob(const Bundle& bundle, ObjectType type) {
  LooseOption loose(bundle, type);
  expectEqual("result", loose.setSignal(7), CmdResult{0x00110000});
  loose.subject.forget();
  loose.subject.host.calls.fail("objFactory.createObj", 0xF0150004);
  expectEqual("jobs", loose.jobs(), Texts{});
  expectEqual("traces", loose.subject.traces(),
              Texts{errorOf(UNIT, "createJobs",
                            fmt::format("jobObjFactory.createObj() failed: {}", static_cast<std::int32_t>(0xF0150004)))});
}

void refusedJobData(const Bundle& bundle, ObjectType type) {
  LooseOption loose(bundle, type);
  JobCounts counts;
  replaceJob(loose.subject, JOB, counts);
  counts.resultOfSetJobData = JobResult{0xF0000016};
  expectEqual("result", loose.setSignal(7), CmdResult{0x00110000});
  loose.subject.forget();
  expectEqual("jobs", loose.jobs(), Texts{});
  expectEqual("traces", loose.subject.traces(),
              Texts{errorOf(UNIT, "createJobs",
                            fmt::format("jobObj->setJobData() failed: {}", static_cast<std::int32_t>(0xF0000016)))});
  expectEqual("job objects made", counts.made, 2);
  expectEqual("job objects left", counts.alive, 0);
}

void noCheckingJobLeft(const Bundle& bundle, ObjectType type) {
  LooseOption loose(bundle, type);
  JobCounts counts;
  replaceJob(loose.subject, JOB, counts);
  expectEqual("result", loose.setSignal(7), CmdResult{0x00110000});
  expectEqual("what was checked", counts.checked, Texts{"SendSignalJobPars signalId=7 reset=false"});
  counts.resultOfCheck = JobResult{0xF0000001};
  expectEqual("result of a refusal", loose.setSignal(8), CmdResult{0xF011001D});
  expectEqual("job objects made", counts.made, 2);
  expectEqual("job objects left", counts.alive, 0);
}

void jobsOfTheirOwn(const Bundle& bundle, ObjectType type) {
  LooseOption loose(bundle, type);
  expectEqual("result", loose.setSignal(42), CmdResult{0x00110000});
  for (std::uint8_t command = 1; command <= 3; ++command) {
    const auto made = loose.option->createJobs(loose.subject.host.objFactory);
    expectEqual("number of jobs", made.size(), 1U);
    const std::unique_ptr<core::job::IJobObject> job(made[0]);
    test::FakeJobDataHandler handler(loose.subject.host.calls);
    expectEqual("result of registerInputs", job->registerInputs(&handler), NOTHING);
    test::FakeJobList list(loose.subject.host.calls);
    expectEqual("result of addJobsToJoblist", job->addJobsToJoblist(&list, JobListTypes::CYCLIC_EXECUTION), NOTHING);
    for (int cycle = 0; cycle < 3; ++cycle) {
      expectEqual("result of the job", list.m_jobs.at(0).job(), NOTHING);
      expectEqual("counter of the signal", loose.subject.in(42), command);
    }
  }
  expectEqual("traces", loose.subject.traces(), Texts{});
}

void failingSignal(const Bundle& bundle, ObjectType type) {
  LooseOption loose(bundle, type);
  expectEqual("result", loose.setSignal(42), CmdResult{0x00110000});
  const std::unique_ptr<core::job::IJobObject> job(loose.option->createJobs(loose.subject.host.objFactory).at(0));
  test::FakeJobList list(loose.subject.host.calls);
  expectEqual("result of addJobsToJoblist", job->addJobsToJoblist(&list, JobListTypes::CYCLIC_EXECUTION), NOTHING);
  loose.subject.host.calls.fail("memory.beginAccess signals_in", 0x80060001);
  expectEqual("result of the job", list.m_jobs.at(0).job(), JobResult{0xF0000004});
  loose.subject.host.calls.failNothing();
  expectEqual("result in the next cycle", list.m_jobs.at(0).job(), NOTHING);
  expectEqual("counter of the signal", loose.subject.in(42), 0);
}

void wholeWay(const Bundle& bundle, ObjectType type, const std::string& permType, std::uint32_t number) {
  Subject subject(bundle);
  auto& obj = type == ObjectType::AXIS ? subject.host.objMgr.addAxis("X") : subject.host.objMgr.addKinematics("X");
  subject.start();
  const BufferedOption option(subject, obj, NAME, signalOptionParameters(permType, 42));
  expectEqual("permanence", static_cast<std::uint32_t>(option.permType()), number);
  expectEqual("number of jobs", option.makeJobs().size(), 1U);
  expectEqual("traces", subject.traces(), Texts{});
}

void keepsNoParameters(const Bundle& bundle, ObjectType type) {
  LooseOption loose(bundle, type);
  expectEqual("result of setParameter", loose.setSignal(7), CmdResult{0x00110000});
  const core::IContainer* parameters = nullptr;
  expectEqual("result of getParameter", loose.option->getParameter(parameters), CmdResult{0xF011001A});
  expectNull("parameters", parameters == nullptr);
}

void stacksNothing(const Bundle& bundle, ObjectType type) {
  LooseOption loose(bundle, type);
  CmdOptionSetSignalPars values({.signalId = 7});
  auto permType = core::cmd::CmdOptPermType::ONCE;
  const ActiveOptions active;
  expectEqual("result", loose.option->prepareStackableCmdOption(loose.obj, active, &values, permType, source()),
              CmdResult{0x00110000});
  expectEqual("parameters", describe(&values), "CmdOptionSetSignalPars signalId=7");
  expectEqual("calls of the host", loose.subject.host.calls.all(), Texts{});
}

void freshJobs(const Bundle& bundle, ObjectType type) {
  LooseOption loose(bundle, type);
  expectEqual("jobs", loose.jobs(), Texts{JOB + ": setSignal(0)"});
}

Checks checksFor(ObjectType type, const std::string& suffix) {
  const auto with = [type](auto* body) { return [type, body](const Bundle& bundle) { body(bundle, type); }; };
  const auto wholeWayOf = [type](const std::string& permType, std::uint32_t number) {
    return [type, permType, number](const Bundle& bundle) { wholeWay(bundle, type, permType, number); };
  };
  return {
      {"option.keeps-signal" + suffix, "the signal that was checked is the one that the jobs set", with(&keepsSignal)},
      {"option.wrong-container" + suffix, "parameters of another type are refused with code and text",
       with(&wrongContainer)},
      {"option.no-checking-job" + suffix, "without a job object nothing can be checked", with(&noCheckingJob)},
      {"option.invalid-signal" + suffix, "a wrong signal is reported and refused, and the option keeps what it had",
       with(&invalidSignal)},
      {"option.checking-job-ends" + suffix, "the job object that checks is destroyed, whatever it says",
       with(&noCheckingJobLeft)},
      {"option.no-job" + suffix, "a job object that cannot be made is traced, and the list is empty", with(&noJob)},
      {"option.refused-job-data" + suffix, "a job object that refuses its data is traced and destroyed",
       with(&refusedJobData)},
      {"option.job-for-each-command" + suffix, "each accompanied command sets the signal once and goes on",
       with(&jobsOfTheirOwn)},
      {"option.failing-signal" + suffix, "a signal that cannot be set fails once and is not tried again",
       with(&failingSignal)},
      {"option.once" + suffix, "an option for one command comes all the way from a buffer to a job", wholeWayOf("Once", 0)},
      {"option.on" + suffix, "a permanent option comes all the way from a buffer to a job", wholeWayOf("PermOn", 1)},
      {"option.off" + suffix, "the end of an option comes all the way from a buffer to a job", wholeWayOf("PermOff", 2)},
      {"option.hands-out-nothing" + suffix, "the option hands out no parameters", with(&keepsNoParameters)},
      {"option.stacks-nothing" + suffix, "the option leaves new parameters as they are", with(&stacksNothing)},
      {"option.fresh-job" + suffix, "an option without parameters makes jobs for signal 0", with(&freshJobs)},
  };
}

}  // namespace

Checks optionChecks() {
  return together({checksFor(ObjectType::AXIS, "-axis"), checksFor(ObjectType::KINEMATICS, "-kinematics")});
}

}  // namespace motion::conformance
