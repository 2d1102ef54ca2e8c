// The job objects of the commands with a signal, apart from what their jobs do.
#include <fmt/format.h>

#include "conformance/buffered_cmd.h"
#include "conformance/checks/motion_parts.h"
#include "conformance/expect.h"
#include "conformance/records.h"
#include "conformance/trace_texts.h"

namespace motion::conformance {
namespace {

using core::job::JobListTypes;
using core::job::JobResult;
using kavo::job::SendSignalJobPars;

constexpr JobResult NOTHING{0};
constexpr JobResult INVALID{0xF0000016};
constexpr JobResult NOT_SERVED{0xF000000F};

const std::string SEND = "ext_job_send_signal_cmd";
const std::string SEND_OPTION = "ext_job_send_signal_cmd_opt";
const std::string WAIT = "ext_job_obj_wait_for_signal";
const std::string WAIT_RESET = "ext_job_obj_wait_for_signal_reset";

void clones(const Bundle& bundle, const std::string& name) {
  Subject subject(bundle);
  subject.start();
  const auto job = makeJob(subject, name);
  const auto other = makeJob(subject, name);
  expectEqual("name", job->getID(), name);
  expectEqual("type", job->getType(), static_cast<std::uint32_t>(core::CreatableType::JOB));
  expectTrue("an object of its own", job.get() != other.get());
  const std::unique_ptr<core::IAmCreatable> clone(job->createNew());
  expectNotNull("clone", clone != nullptr);
  expectEqual("name of the clone", clone->getID(), name);
}

void servesOneList(const Bundle& bundle, const std::string& name) {
  Subject subject(bundle);
  subject.start();
  const auto job = makeJob(subject, name);
  test::FakeJobList list(subject.host.calls);
  for (const std::uint32_t type : {1U, 2U, 3U, 0xFFFFFFFFU}) {
    expectEqual(fmt::format("result for type {}", type), job->addJobsToJoblist(&list, JobListTypes{type}), NOT_SERVED);
  }
  expectEqual("jobs added", list.m_jobs.size(), 0U);
  subject.forget();
  expectEqual("result for type 0", job->addJobsToJoblist(&list, JobListTypes{0}), NOTHING);
  expectEqual("calls of the host", subject.host.calls.all(),
              Texts{fmt::format("jobList.addJob({}, {})", name, subject.host.sectionMgr.valueOf("CMD_DATA"))});
  subject.host.calls.fail("jobList.addJob", 0xF0000022);
  expectEqual("result of a list that refuses", job->addJobsToJoblist(&list, JobListTypes{0}), JobResult{0xF0000022});
}

/// The reads that a job registers.
void reads(const Bundle& bundle, const std::string& name, const std::string& record) {
  Subject subject(bundle);
  subject.start();
  const auto job = makeJob(subject, name);
  test::FakeJobDataHandler handler(subject.host.calls);
  subject.forget();
  (void)job->registerInputs(&handler);
  expectEqual(
      "calls of the host", subject.host.calls.all(),
      Texts{fmt::format("handler.registerRead({}, {}, 1, registerInputs)", subject.host.jobDataIDMgr.getID(record.c_str()),
                        subject.host.sectionMgr.valueOf("CMD_DATA"))});
}

void refusedRead(const Bundle& bundle, const std::string& name, const std::string& trace) {
  Subject subject(bundle);
  subject.start();
  const auto job = makeJob(subject, name);
  test::FakeJobDataHandler handler(subject.host.calls);
  for (const std::uint32_t code : {0xF0000020U, 0xF0000001U}) {
    subject.host.calls.failNothing();
    subject.host.calls.fail("handler.registerRead", code);
    subject.forget();
    expectEqual("result", job->registerInputs(&handler), JobResult{code});
    expectEqual("traces", subject.traces(), Texts{fmt::format(fmt::runtime(trace), static_cast<std::int32_t>(code))});
  }
}

void optionReadsNothing(const Bundle& bundle) {
  Subject subject(bundle);
  subject.start();
  const auto job = makeJob(subject, SEND_OPTION);
  test::FakeJobDataHandler handler(subject.host.calls);
  subject.forget();
  expectEqual("result", job->registerInputs(&handler), NOTHING);
  expectEqual("calls of the host", subject.host.calls.all(), Texts{});
}

void noJobData(const Bundle& bundle, const std::string& name) {
  Subject subject(bundle);
  subject.start();
  const auto job = makeJob(subject, name);
  test::FakeJobList list(subject.host.calls);
  expectEqual("result of addJobsToJoblist", job->addJobsToJoblist(&list, JobListTypes{0}), NOTHING);
  subject.forget();
  for (int i = 0; i < 2; ++i) {
    expectEqual("result of the job", list.m_jobs.at(0).job(), JobResult{0xF0000004});
  }
  const auto entries = subject.host.traceSink.entries();
  expectEqual("number of traces", entries.size(), 2U);
  expectEqual("text", entries[0].text, "No job data!");
  expectEqual("level", entries[0].level(), "Error");
}

void setJobData(const Bundle& bundle, const std::string& name) {
  Subject subject(bundle);
  subject.start();
  const auto job = makeJob(subject, name);
  const SendSignalJobPars good({.signalId = 99, .reset = true});
  expectEqual("result", job->setJobData(&good), NOTHING);
  expectEqual("job data", describe(job->getJobData()), "SendSignalJobPars signalId=99 reset=true");
  const kavo::cmd::CmdSendSignalPars other({.signalId = 7});
  for (const core::IContainer* data : std::initializer_list<const core::IContainer*>{nullptr, &other}) {
    subject.forget();
    expectEqual("result for what is no job data", job->setJobData(data), INVALID);
    expectEqual("traces", subject.traces(), Texts{errorOf("job_obj_send_signal", "setJobData", "Invalid jobData")});
  }
  for (const auto& [id, shown] : {std::pair(100U, "100"), std::pair(0xFFFFFFFFU, "-1")}) {
    subject.forget();
    const SendSignalJobPars invalid({.signalId = id});
    expectEqual("result for a wrong signal", job->setJobData(&invalid), INVALID);
    expectEqual(
        "traces", subject.traces(),
        Texts{errorOf("job_obj_send_signal", "setJobData", fmt::format("jobData.signalId '{}' is not valid", shown))});
  }
  expectEqual("job data afterwards", describe(job->getJobData()), "SendSignalJobPars signalId=99 reset=true");
}

/// Refused by checkParameter, once with a diagnosis and once without.
void expectRefused(Subject& subject, const core::job::IJobObject& job, const core::IContainer* data,
                   const std::string& text) {
  test::FakeDia dia(subject.host.calls);
  subject.forget();
  expectEqual("result with a diagnosis", job.checkParameter(data, &dia), INVALID);
  expectEqual("calls of the host", subject.host.calls.all(), Texts{"dia.report(" + text + ")", "dia.close()"});
  expectEqual("traces beside a diagnosis", subject.traces(), Texts{});
  const auto& report = dia.m_reports.at(0);
  expectEqual("main code", report.mainCode, 0x090F0FFFU);
  expectEqual("detail code", report.detailCode, 0x0C570101U);
  expectEqual("format", report.format, "%s");
  expectEqual("client of the source", report.source.client, "");
  expectEqual("file of the source", report.source.file, "");
  expectEqual("line of the source", report.source.line, 0U);
  expectEqual("function of the source position", report.function, "checkParameter");
  expectTrue("a line of the source position", report.line != 0);
  subject.forget();
  expectEqual("result without a diagnosis", job.checkParameter(data, nullptr), INVALID);
  expectEqual("traces", subject.traces(), Texts{errorOf("job_obj_send_signal", "checkParameter", text)});
}

void checkParameter(const Bundle& bundle, const std::string& name) {
  Subject subject(bundle);
  subject.start();
  const auto job = makeJob(subject, name);
  test::FakeDia dia(subject.host.calls);
  const SendSignalJobPars good({.signalId = 99, .reset = true});
  expectEqual("result with a diagnosis", job->checkParameter(&good, &dia), NOTHING);
  expectEqual("result without a diagnosis", job->checkParameter(&good, nullptr), NOTHING);
  expectEqual("diagnoses", dia.m_reports.size(), 0U);
  expectEqual("traces", subject.traces(), Texts{});
  expectEqual("job data", describe(job->getJobData()), "SendSignalJobPars signalId=0 reset=false");
  const kavo::cmd::CmdSendSignalPars other({.signalId = 7});
  const SendSignalJobPars invalid({.signalId = 100});
  expectRefused(subject, *job, nullptr, "jobData=nullptr");
  expectRefused(subject, *job, &other, "jobData=nullptr");
  expectRefused(subject, *job, &invalid, "jobData->signalId: 100");
}

void sendStrings(const Bundle& bundle, const std::string& name) {
  Subject subject(bundle);
  subject.start();
  const auto job = makeJob(subject, name);
  expectEqual("text of a fresh job", job->getJobString(), "setSignal(0)");
  const SendSignalJobPars reset({.signalId = 7, .reset = true});
  expectEqual("result of setJobData", job->setJobData(&reset), NOTHING);
  expectEqual("text", job->getJobString(), "resetSignal(7)");
  const auto clone = makeJob(subject, name);
  expectEqual("text of a clone", clone->getJobString(), "setSignal(0)");
}

void waitStrings(const Bundle& bundle, const std::string& name, bool autoReset, const std::string& text) {
  Subject subject(bundle);
  auto& obj = subject.host.objMgr.addAxis("X");
  subject.start();
  BufferedCmd cmd(subject, obj, 11, name, waitParameters(7, autoReset));
  cmd.giveJobs();
  expectEqual("text", cmd.job().getJobString(), text);
  const std::unique_ptr<core::IAmCreatable> clone(cmd.job().createNew());
  expectEqual("text of a clone", dynamic_cast<core::job::IJobObject&>(*clone).getJobString(), "No inputs registered");
}

void waitBase(const Bundle& bundle, const std::string& name) {
  Subject subject(bundle);
  subject.start();
  const auto job = makeJob(subject, name);
  const SendSignalJobPars any;
  expectEqual("result of setJobData", job->setJobData(&any), NOTHING);
  expectEqual("result of checkParameter", job->checkParameter(nullptr, nullptr), NOTHING);
  expectNull("job data", job->getJobData() == nullptr);
  expectEqual("traces", subject.traces(), Texts{});
}

/// The job of an option sets its signal once and leaves the command alone.
void optionJob(const Bundle& bundle, bool reset) {
  Subject subject(bundle);
  subject.start();
  const auto job = makeJob(subject, SEND_OPTION);
  const SendSignalJobPars data({.signalId = 42, .reset = reset});
  expectEqual("result of setJobData", job->setJobData(&data), NOTHING);
  test::FakeJobList list(subject.host.calls);
  expectEqual("result of addJobsToJoblist", job->addJobsToJoblist(&list, JobListTypes{0}), NOTHING);
  subject.in(42) = 3;
  subject.out(42) = 9;
  for (int i = 0; i < 3; ++i) {
    expectEqual("result of the job", list.m_jobs.at(0).job(), NOTHING);
    expectEqual("counter", subject.in(42), reset ? 9 : 4);
  }
  expectEqual("traces", subject.traces(), Texts{});
}

Checks objectChecks() {
  Checks checks;
  for (const auto& name : {SEND, SEND_OPTION, WAIT, WAIT_RESET}) {
    checks.push_back({"signal-job.object-" + name, "the factory's clones are objects of their own with the job's name",
                      [=](const Bundle& bundle) { clones(bundle, name); }});
    checks.push_back({"signal-job.lists-" + name, "the job goes into the cyclic list only, under its name and section",
                      [=](const Bundle& bundle) { servesOneList(bundle, name); }});
  }
  for (const auto& name : {SEND, SEND_OPTION}) {
    checks.push_back({"signal-job.set-data-" + name, "data is taken when it is valid, else refused with its text",
                      [=](const Bundle& bundle) { setJobData(bundle, name); }});
    checks.push_back({"signal-job.check-parameter-" + name, "wrong data is reported, or traced where nobody listens",
                      [=](const Bundle& bundle) { checkParameter(bundle, name); }});
    checks.push_back({"signal-job.text-" + name, "the job's text names what it does and its signal",
                      [=](const Bundle& bundle) { sendStrings(bundle, name); }});
  }
  for (const auto& name : {WAIT, WAIT_RESET}) {
    checks.push_back({"signal-job.no-data-" + name, "a job without inputs fails, and traces that each time",
                      [=](const Bundle& bundle) { noJobData(bundle, name); }});
    checks.push_back({"signal-job.base-" + name, "a waiting job takes no data by hand",
                      [=](const Bundle& bundle) { waitBase(bundle, name); }});
  }
  return checks;
}

}  // namespace

Checks jobObjectChecks() {
  const std::string waitRead = "Failed to register the read of job data ({})";
  const Checks others = {
      {"signal-job.reads-" + SEND, "the job reads the record of its command",
       [](const Bundle& bundle) { reads(bundle, SEND, "SendSignalJobPars"); }},
      {"signal-job.reads-" + WAIT, "the job reads the record of its command",
       [](const Bundle& bundle) { reads(bundle, WAIT, "WaitForSignalJobPars"); }},
      {"signal-job.reads-" + WAIT_RESET, "the job reads the record of its command",
       [](const Bundle& bundle) { reads(bundle, WAIT_RESET, "WaitForSignalResetJobPars"); }},
      {"signal-job.refused-read-" + SEND, "a read that fails is traced, and its result handed on",
       [](const Bundle& bundle) {
         refusedRead(bundle, SEND,
                     errorOf("job_obj_send_signal", "registerInputs", "SendSignalJobPars::registerRead failed with {}"));
       }},
      {"signal-job.refused-read-" + WAIT, "a read that fails is traced, and its result handed on",
       [=](const Bundle& bundle) {
         refusedRead(bundle, WAIT, errorOf("job_obj_wait_for_signal", "registerInputs", waitRead));
       }},
      {"signal-job.refused-read-" + WAIT_RESET, "a read that fails is traced, and its result handed on",
       [=](const Bundle& bundle) {
         refusedRead(bundle, WAIT_RESET, errorOf("job_obj_wait_for_signal_reset", "registerInputs", waitRead));
       }},
      {"signal-job.reads-" + SEND_OPTION, "the job of an option reads nothing", optionReadsNothing},
      {"signal-job.option-sets", "the job of an option sets its signal once and never ends the command",
       [](const Bundle& bundle) { optionJob(bundle, false); }},
      {"signal-job.option-resets", "the job of an option resets its signal once and never ends the command",
       [](const Bundle& bundle) { optionJob(bundle, true); }},
      {"signal-job.text-wait", "the text names signal and flag",
       [](const Bundle& bundle) { waitStrings(bundle, "WaitForSignal", false, "waitForSignal(signalId=7,autoReset=0)"); }},
      {"signal-job.text-wait-consuming", "the text names signal and flag",
       [](const Bundle& bundle) { waitStrings(bundle, "WaitForSignal", true, "waitForSignal(signalId=7,autoReset=1)"); }},
      {"signal-job.text-wait-reset", "the text names the signal",
       [](const Bundle& bundle) { waitStrings(bundle, "WaitForSignalReset", false, "waitForSignalReset(signalId=7)"); }},
  };
  return together({objectChecks(), others});
}

}  // namespace motion::conformance
