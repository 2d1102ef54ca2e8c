// What the option SwitchOnPath and its job object refuse, and in which order.
#include <fmt/format.h>

#include "conformance/buffered_cmd.h"
#include "conformance/buffered_option.h"
#include "conformance/checks/motion_parts.h"
#include "conformance/counting_job.h"
#include "conformance/expect.h"
#include "conformance/path_world.h"
#include "conformance/records.h"
#include "conformance/trace_texts.h"

namespace motion::conformance {
namespace {

using core::ObjectType;
using core::cmd::CmdResult;
using core::job::JobListTypes;
using core::job::JobResult;
using kavo::SwitchOnPathAction;
using kavo::SwitchOnPathMode;
using kavo::SwitchOnPathPars;
using kavo::SwitchOnPathParsList;

constexpr JobResult NOTHING{0};
constexpr JobResult FAILED{0xF0000004};
constexpr JobResult INVALID_OBJECT{0xF0000008};
constexpr JobResult INVALID_DATA{0xF0000016};
const std::string JOB_UNIT = "job_obj_switch_on_path";
const std::string UNIT = "cmd_option_switch_on_path";

SwitchOnPathParsList listOf(const std::vector<SwitchOnPathPars>& conditions) {
  kavo::SwitchOnPathParsListT list;
  for (const auto& condition : conditions) {
    list.push_back(std::make_shared<SwitchOnPathPars>(condition));
  }
  return SwitchOnPathParsList(list);
}

constexpr auto NO_MODE = static_cast<SwitchOnPathMode>(1);
constexpr auto NO_ACTION = static_cast<SwitchOnPathAction>(2);

const std::string RADIUS = "invalid 'radius': should be >= 0";
const std::string TIME = "invalid 'preTriggerTime': should be >= 0";
const std::string MODE = "invalid 'mode': only ENTER_SPHERE is currently supported";
const std::string ACTION = "invalid 'action': should be SET_SIGNAL or RESET_SIGNAL";
const std::string SIGNAL = "invalid 'signalId': should be in range [0..99]";

struct Row {
  std::string what;
  std::vector<SwitchOnPathPars> conditions;
  std::string text;  ///< why they are refused
};

const std::vector<Row>& rows() {
  static const std::vector<Row> all = {
      {"radius", {{.radius = -1}}, RADIUS},
      {"smallest-negative-radius", {{.radius = -5e-324}}, RADIUS},
      {"time", {{.preTriggerTime = -1}}, TIME},
      {"mode", {{.mode = NO_MODE}}, MODE},
      {"largest-mode", {{.mode = static_cast<SwitchOnPathMode>(0xFFFFFFFF)}}, MODE},
      {"action", {{.action = NO_ACTION}}, ACTION},
      {"largest-action", {{.action = static_cast<SwitchOnPathAction>(0xFFFFFFFF)}}, ACTION},
      {"signal-100", {{.signalId = 100}}, SIGNAL},
      {"largest-signal", {{.signalId = 0xFFFFFFFF}}, SIGNAL},
      {"radius-before-all", {{NO_MODE, 100, NO_ACTION, {}, -1, -1}}, RADIUS},
      {"time-before-others", {{NO_MODE, 100, NO_ACTION, {}, 0, -1}}, TIME},
      {"signal-instead-of-mode", {{.mode = NO_MODE, .signalId = 100}}, SIGNAL},
      {"signal-instead-of-action", {{.signalId = 100, .action = NO_ACTION}}, SIGNAL},
      {"mode-instead-of-action", {{.mode = NO_MODE, .action = NO_ACTION}}, MODE},
      {"mode-is-kept", {{.mode = NO_MODE}, {}, {}}, MODE},
      {"action-replaces-mode", {{.mode = NO_MODE}, {.action = NO_ACTION}}, ACTION},
      {"mode-replaces-action", {{.action = NO_ACTION}, {.mode = NO_MODE}, {}}, MODE},
      {"radius-replaces-mode", {{.mode = NO_MODE}, {.radius = -1}}, RADIUS},
      {"time-replaces-action", {{.action = NO_ACTION}, {.preTriggerTime = -1}}, TIME},
      {"first-stop-counts", {{.signalId = 100}, {.radius = -1}}, SIGNAL},
      {"later-condition", {{}, {}, {.preTriggerTime = -1}, {.radius = -1}}, TIME},
  };
  return all;
}

void refused(const Bundle& bundle, const Row& row) {
  PathWorld world(bundle);
  const auto job = world.makeLooseJob();
  const auto list = listOf(row.conditions);
  world.subject.forget();
  test::FakeDia dia(world.subject.host.calls);
  expectEqual("result with a diagnosis", job->checkParameter(&list, &dia), INVALID_DATA);
  expectEqual("calls of the host", world.subject.host.calls.all(), Texts{"dia.report(" + row.text + ")", "dia.close()"});
  expectEqual("traces beside a diagnosis", world.subject.traces(), Texts{});
  expectEqual("main code", dia.m_reports.at(0).mainCode, 0x090F2030U);
  expectEqual("detail code", dia.m_reports.at(0).detailCode, 0x0C5701B1U);
  expectEqual("function", dia.m_reports.at(0).function, "checkParameter");
  expectTrue("file " + dia.m_reports.at(0).file, dia.m_reports.at(0).file.find(JOB_UNIT) != std::string::npos);
  expectTrue("line", dia.m_reports.at(0).line != 0);
  world.subject.forget();
  expectEqual("result without a diagnosis", job->checkParameter(&list, nullptr), INVALID_DATA);
  expectEqual("traces", world.subject.traces(), Texts{errorOf(JOB_UNIT, "checkParameter", row.text)});
}

void accepted(const Bundle& bundle) {
  PathWorld world(bundle);
  const auto job = world.makeLooseJob();
  const auto list = listOf({{},
                            {.signalId = 99, .action = SwitchOnPathAction::RESET_SIGNAL, .radius = 1e300},
                            {.targetPos = {-1, -2, -3}, .radius = -0.0, .preTriggerTime = -0.0}});
  test::FakeDia dia(world.subject.host.calls);
  expectEqual("result with a diagnosis", job->checkParameter(&list, &dia), NOTHING);
  expectEqual("result without a diagnosis", job->checkParameter(&list, nullptr), NOTHING);
  expectEqual("traces", world.subject.traces(), Texts{});
  expectEqual("diagnoses", dia.m_reports.size(), 0U);
}

void noList(const Bundle& bundle, const core::IContainer* data, const std::string& text) {
  PathWorld world(bundle);
  const auto job = world.makeLooseJob();
  world.subject.forget();
  test::FakeDia dia(world.subject.host.calls);
  expectEqual("result", job->checkParameter(data, &dia), FAILED);
  expectEqual("traces", world.subject.traces(), Texts{errorOf(JOB_UNIT, "checkParameter", text)});
  expectEqual("diagnoses", dia.m_reports.size(), 0U);
}

void lists(const Bundle& bundle) {
  PathWorld world(bundle);
  const auto job = world.makeLooseJob();
  test::FakeJobList list(world.subject.host.calls);
  world.subject.forget();
  for (const std::uint32_t type : {1U, 2U, 3U, 77U}) {
    expectEqual("result for another list", job->addJobsToJoblist(&list, JobListTypes{type}), JobResult{0xF000000F});
    expectEqual("result for no list", job->addJobsToJoblist(nullptr, JobListTypes{type}), INVALID_OBJECT);
  }
  expectEqual("result for no cyclic list", job->addJobsToJoblist(nullptr, JobListTypes{0}), INVALID_OBJECT);
  expectEqual("calls of the host", world.subject.host.calls.all(), Texts{});
  expectEqual("result", job->addJobsToJoblist(&list, JobListTypes{0}), NOTHING);
  expectEqual(
      "calls of the host", world.subject.host.calls.all(),
      Texts{fmt::format("jobList.addJob(JobObjSwitchOnPath, {})", world.subject.host.sectionMgr.valueOf("EXEC_FINAL"))});
  world.subject.host.calls.fail("jobList.addJob", 0xF0000022);
  expectEqual("result of a list that refuses", job->addJobsToJoblist(&list, JobListTypes{0}), JobResult{0xF0000022});
}

void inputs(const Bundle& bundle, std::uint32_t poseCode, std::uint32_t objCode, std::uint32_t expected) {
  PathWorld world(bundle);
  const auto job = world.makeLooseJob();
  world.subject.forget();
  auto& calls = world.subject.host.calls;
  if (poseCode != 0) {
    calls.fail("handler.registerRead", poseCode, 1);
  }
  if (objCode != 0) {
    calls.fail("handler.registerRead", objCode, 2);
  }
  expectEqual("result", job->registerInputs(&world.handler), JobResult{expected});
  const auto& sections = world.subject.host.sectionMgr;
  const std::string who = "JobObjSwitchOnPath::registerInputs()";
  expectEqual("calls of the host", calls.all(),
              Texts{fmt::format("handler.registerRead({}, {}, 1, {})", core::KinPose::getMyID(),
                                sections.valueOf("GEOMETRY_TOOL_OFFSET"), who),
                    fmt::format("handler.registerRead({}, {}, 1, {})", core::IObjPtr::getMyID(),
                                sections.valueOf("OBJ_DATA"), who)});
}

void noHandler(const Bundle& bundle) {
  PathWorld world(bundle);
  expectEqual("result", world.makeLooseJob()->registerInputs(nullptr), INVALID_OBJECT);
  expectEqual("traces", world.subject.traces(), Texts{});
}

void jobData(const Bundle& bundle) {
  PathWorld world(bundle);
  const auto job = world.makeLooseJob();
  expectEqual("fresh data", describe(job->getJobData()), "SwitchOnPathParsList");
  const auto list = listOf({{.signalId = 7}});
  expectEqual("result", job->setJobData(&list), NOTHING);
  const auto* const kept = SwitchOnPathParsList::safeCast(job->getJobData());
  expectTrue("the condition is shared", kept != nullptr && kept->get().at(0) == list.get().at(0));
  const kavo::cmd::CmdSendSignalPars other;
  for (const core::IContainer* data : std::initializer_list<const core::IContainer*>{nullptr, &other}) {
    world.subject.forget();
    expectEqual("result for what is no list", job->setJobData(data), INVALID_DATA);
    expectEqual("traces", world.subject.traces(), Texts{errorOf(JOB_UNIT, "setJobData", "Invalid jobData")});
  }
  expectEqual("text", job->getJobString(), "JobObjSwitchOnPath");
  expectEqual("name", job->getID(), "JobObjSwitchOnPath");
  const std::unique_ptr<core::IAmCreatable> clone(job->createNew());
  expectEqual("data of a clone", describe(dynamic_cast<core::job::IJobObject&>(*clone).getJobData()),
              "SwitchOnPathParsList");
}

/// An option on a kinematics.
struct LooseOption {
  explicit LooseOption(const Bundle& bundle) : world(bundle) {
    option = makeOption(world.subject, ObjectType::KINEMATICS, "SwitchOnPath");
    world.subject.forget();
  }
  [[nodiscard]] CmdResult set(const core::IContainer* values) {
    return option->setParameter(values, world.subject.host.objFactory, world.kin, world.kin.m_dia);
  }
  void expectTraced(const std::string& function, const std::string& text) {
    expectEqual("traces", world.subject.traces(), Texts{errorOf(UNIT, function, text)});
  }

  PathWorld world;
  std::unique_ptr<core::cmd::GenericCmdOption> option;
};

std::string failureText(const std::string& text, std::uint32_t code) {
  return fmt::format("{} failed: {}", text, static_cast<std::int32_t>(code));
}

void optionWrongContainer(const Bundle& bundle) {
  LooseOption loose(bundle);
  const kavo::cmd::CmdOptionSetSignalPars other;
  for (const core::IContainer* values : std::initializer_list<const core::IContainer*>{nullptr, &other}) {
    loose.world.subject.forget();
    expectEqual("result", loose.set(values), CmdResult{0xF011000E});
    loose.expectTraced("setParameter", "CmdOptionSwitchOnPathPars::safeCast(cmdOptValues) failed");
  }
}

void optionNoJob(const Bundle& bundle) {
  LooseOption loose(bundle);
  loose.world.subject.host.calls.fail("objFactory.createObj", 0xF0150001);
  const auto list = listOf({{}});
  expectEqual("result", loose.set(&list), CmdResult{0xF0110004});
  loose.expectTraced("setParameter", failureText("jobObjFactory.createObj()", 0xF0150001));
  loose.world.subject.forget();
  expectEqual("number of jobs", loose.option->createJobs(loose.world.subject.host.objFactory).size(), 0U);
  loose.expectTraced("createJobs", failureText("jobObjFactory.createObj()", 0xF0150001));
}

void optionRefused(const Bundle& bundle) {
  LooseOption loose(bundle);
  const auto list = listOf({{.signalId = 100}});
  expectEqual("result", loose.set(&list), CmdResult{0xF011001D});
  loose.expectTraced("setParameter", failureText("jobObj->checkParameter()", 0xF0000016));
  expectEqual("diagnosis", loose.world.subject.host.calls.of({"dia."}), Texts{"dia.report(" + SIGNAL + ")", "dia.close()"});
}

void optionEmptyList(const Bundle& bundle) {
  LooseOption loose(bundle);
  const SwitchOnPathParsList list;
  expectEqual("result", loose.set(&list), CmdResult{0xF011001D});
  expectEqual("traces", loose.world.subject.traces(),
              Texts{errorOf(JOB_UNIT, "checkParameter", "empty parameter container"),
                    errorOf(UNIT, "setParameter", failureText("jobObj->checkParameter()", 0xF0000004))});
}

void optionKeepsList(const Bundle& bundle) {
  LooseOption loose(bundle);
  const auto list = listOf({{.signalId = 1}, {.signalId = 2}});
  expectEqual("result", loose.set(&list), CmdResult{0x00110000});
  const core::IContainer* kept = nullptr;
  expectEqual("result of getParameter", loose.option->getParameter(kept), CmdResult{0x00110000});
  const auto* const keptList = SwitchOnPathParsList::safeCast(kept);
  expectTrue("the same conditions", keptList != nullptr && keptList->get() == list.get());
  const auto made = loose.option->createJobs(loose.world.subject.host.objFactory);
  expectEqual("number of jobs", made.size(), 1U);
  const std::unique_ptr<core::job::IJobObject> job(made[0]);
  const auto* const jobList = SwitchOnPathParsList::safeCast(job->getJobData());
  expectTrue("the same conditions in the job", jobList != nullptr && jobList->get() == list.get());
  expectEqual("traces", loose.world.subject.traces(), Texts{});
}

void optionJobsEnd(const Bundle& bundle) {
  LooseOption loose(bundle);
  JobCounts counts;
  replaceJob(loose.world.subject, PathWorld::JOB, counts);
  const auto list = listOf({{}});
  expectEqual("result", loose.set(&list), CmdResult{0x00110000});
  counts.resultOfCheck = JobResult{0xF0000001};
  expectEqual("result of a refusal", loose.set(&list), CmdResult{0xF011001D});
  counts.resultOfSetJobData = INVALID_DATA;
  loose.world.subject.forget();
  expectEqual("number of jobs", loose.option->createJobs(loose.world.subject.host.objFactory).size(), 0U);
  loose.expectTraced("createJobs", failureText("jobObj->setJobData()", 0xF0000016));
  expectEqual("job objects made", counts.made, 3);
  expectEqual("job objects left", counts.alive, 0);
}

Checks optionRefusals() {
  return {
      {"path.option-wrong-container", "parameters of another type are refused with code and text", optionWrongContainer},
      {"path.option-no-job", "a job object that cannot be made is traced", optionNoJob},
      {"path.option-refused", "conditions that the job refuses are reported and refused", optionRefused},
      {"path.option-empty-list", "a list without conditions is refused", optionEmptyList},
      {"path.option-keeps-list", "conditions that were checked are handed out and given to the job, shared",
       optionKeepsList},
      {"path.option-jobs-end", "no failure leaves a job object behind", optionJobsEnd},
  };
}

}  // namespace

Checks pathRefusalChecks() {
  Checks checks;
  for (const auto& row : rows()) {
    checks.push_back({"path.refused-" + row.what, "wrong conditions are refused for the reason that counts",
                      [&row](const Bundle& bundle) { refused(bundle, row); }});
  }
  const Checks job = {
      {"path.accepted", "conditions at the limits are accepted", accepted},
      {"path.no-list", "no conditions are refused with code and text",
       [](const Bundle& bundle) { noList(bundle, nullptr, "jobData is invalid or nullptr"); }},
      {"path.other-container", "another record is refused with code and text",
       [](const Bundle& bundle) {
         const kavo::cmd::CmdSendSignalPars other;
         noList(bundle, &other, "jobData is invalid or nullptr");
       }},
      {"path.empty-list", "an empty list is refused with code and text",
       [](const Bundle& bundle) {
         const SwitchOnPathParsList none;
         noList(bundle, &none, "empty parameter container");
       }},
      {"path.lists", "the job goes into the last stage of the cyclic list", lists},
      {"path.inputs", "the job reads pose and object in their sections",
       [](const Bundle& bundle) { inputs(bundle, 0, 0, 0); }},
      {"path.no-pose", "both inputs are tried, and the failure of the pose is the result",
       [](const Bundle& bundle) { inputs(bundle, 0xF0000020, 0, 0xF0000020); }},
      {"path.no-object", "the failure of the object is the result",
       [](const Bundle& bundle) { inputs(bundle, 0, 0xF0000022, 0xF0000022); }},
      {"path.no-inputs", "of two failures the first is the result",
       [](const Bundle& bundle) { inputs(bundle, 0xF0000020, 0xF0000022, 0xF0000020); }},
      {"path.no-handler", "inputs need a handler", noHandler},
      {"path.job-data", "the job shares the conditions that it is given, and refuses everything else", jobData},
  };
  return together({checks, job, optionRefusals()});
}

}  // namespace motion::conformance
