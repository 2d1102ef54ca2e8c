// The job object of Join: its inputs, its lists and its text.
#include <fmt/format.h>

#include "conformance/buffered_cmd.h"
#include "conformance/checks/motion_parts.h"
#include "conformance/expect.h"
#include "conformance/join_world.h"
#include "conformance/records.h"

namespace motion::conformance {
namespace {

using core::job::JobListTypes;
using core::job::JobResult;
using kavo::job::JoinJobPars;

constexpr JobResult NOTHING{0};
constexpr JobResult INVALID_OBJECT{0xF0000008};
const std::string JOB = "kavo_job_join";

/// A job object on "A" that is offered everything it needs.
struct LooseJob {
  explicit LooseJob(const Bundle& bundle)
      : world(bundle),
        frame(11),
        inputs(world.subject, world.a, frame),
        pars({{&world.a, &world.b}, true}),
        job(makeJob(world.subject, JOB)) {
    inputs.offer(JoinJobPars::getMyID(), "CMD_DATA", &pars);
    world.subject.forget();
  }
  void expectRefused(JobResult result, const std::string& text) {
    expectEqual("result", job->registerInputs(&inputs.handler), result);
    const auto entries = world.subject.host.traceSink.entries();
    expectEqual("number of traces", entries.size(), 1U);
    expectEqual("trace", entries[0].summaryWithoutFunction(), "Error job_obj_join: " + text);
  }

  JoinWorld world;
  CmdFrame frame;
  Inputs inputs;
  JoinJobPars pars;
  std::unique_ptr<core::job::IJobObject> job;
};

void readsInputs(const Bundle& bundle) {
  LooseJob loose(bundle);
  expectEqual("result", loose.job->registerInputs(&loose.inputs.handler), NOTHING);
  const auto& sections = loose.world.subject.host.sectionMgr;
  const auto read = [&](core::DataID id, const char* section) {
    return fmt::format("handler.registerRead({}, {}, 1, registerInputs)", id, sections.valueOf(section));
  };
  expectEqual("calls of the host", loose.world.subject.host.calls.of({"handler."}),
              Texts{read(core::IObjPtr::getMyID(), "OBJ_DATA"), read(core::cmd::ICmdPtr::getMyID(), "CMD_DATA"),
                    read(JoinJobPars::getMyID(), "CMD_DATA")});
  expectEqual("traces", loose.world.subject.traces(), Texts{});
  expectEqual("text", loose.job->getJobString(), "join(group=[A,B],syncStartNextCmd=true)");
}

void refusedRead(const Bundle& bundle, int nth, const std::string& text) {
  LooseJob loose(bundle);
  loose.world.subject.host.calls.fail("handler.registerRead", 0xF0000077, nth);
  loose.expectRefused(JobResult{0xF0000077}, text);
  expectEqual("reads", loose.world.subject.host.calls.count("handler.registerRead"), nth);
}

void noObject(const Bundle& bundle) {
  LooseJob loose(bundle);
  core::IObjPtr none(nullptr);
  loose.inputs.offer(core::IObjPtr::getMyID(), "OBJ_DATA", &none);
  loose.expectRefused(INVALID_OBJECT, "Motion object is invalid");
}

void noCommand(const Bundle& bundle) {
  LooseJob loose(bundle);
  core::cmd::ICmdPtr none(nullptr);
  loose.inputs.offer(core::cmd::ICmdPtr::getMyID(), "CMD_DATA", &none);
  loose.expectRefused(INVALID_OBJECT, "m_joinCmdPtr is null");
}

/// Finds records by their type alone: after a stop the component knows no sections any more.
class AnySectionHandler : public test::FakeJobDataHandler {
 public:
  AnySectionHandler(test::FakeCalls& calls, const test::FakeJobDataHandler& other) : FakeJobDataHandler(calls) {
    m_published = other.m_published;
  }
  JobResult registerRead(core::DataID id, core::SectionValue /*section*/, std::uint32_t /*mode*/, const char* /*who*/,
                         core::IContainer*& out) override {
    for (const auto& [key, record] : m_published) {
      if (key.first == id) {
        out = record;
        return NOTHING;
      }
    }
    return JobResult::DataNotPublished;
  }
};

void withoutExtension(const Bundle& bundle) {
  LooseJob loose(bundle);
  AnySectionHandler handler(loose.world.subject.host.calls, loose.inputs.handler);
  expectEqual("status of stop", loose.world.subject.component().stop(), 0);
  loose.world.subject.forget();
  expectEqual("result", loose.job->registerInputs(&handler), INVALID_OBJECT);
  const auto entries = loose.world.subject.host.traceSink.entries();
  expectEqual("number of traces", entries.size(), 1U);
  expectEqual("trace", entries[0].summaryWithoutFunction(), "Error job_obj_join: Invalid motion extended interface");
}

void withoutObjMgr(const Bundle& bundle) {
  LooseJob loose(bundle);
  loose.world.subject.host.calls.fail("ext.getObjMgr", 0);
  loose.expectRefused(INVALID_OBJECT, "Invalid object manager");
}

void namelessMember(const Bundle& bundle) {
  LooseJob loose(bundle);
  test::FakeObj stranger(loose.world.subject.host.calls);
  loose.pars.set({{&loose.world.b, &stranger, &loose.world.a, &stranger}, false});
  expectEqual("result", loose.job->registerInputs(&loose.inputs.handler), JobResult{0xF0000016});
  Texts found;
  for (const auto& entry : loose.world.subject.host.traceSink.entries()) {
    found.push_back(entry.summaryWithoutFunction());
  }
  const std::string trace = "Error job_obj_join: Invalid motion object found";
  expectEqual("traces", found, Texts{trace, trace});
  expectEqual("text", loose.job->getJobString(), "join(group=[B,<?>,A,<?>],syncStartNextCmd=false)");
}

void namelessObject(const Bundle& bundle) {
  LooseJob loose(bundle);
  test::FakeObj stranger(loose.world.subject.host.calls);
  core::IObjPtr strangerPtr(&stranger);
  loose.inputs.offer(core::IObjPtr::getMyID(), "OBJ_DATA", &strangerPtr);
  expectEqual("result", loose.job->registerInputs(&loose.inputs.handler), NOTHING);
  test::FakeJobList list(loose.world.subject.host.calls);
  expectEqual("result of addJobsToJoblist", loose.job->addJobsToJoblist(&list, JobListTypes::COMMAND_PREPARED), NOTHING);
  expectEqual("result of the job", list.m_jobs.at(0).job(), NOTHING);
  expectEqual("traces", loose.world.subject.traces(),
              Texts{joinInfo("registerForJoin", "<?>", 1, "group=[A,B], syncStartnextCmd=true, command PREPARED")});
}

/// The lists of a job on "A" with that group, prepared.
struct PreparedJob {
  PreparedJob(LooseJob& loose, const std::vector<const core::IObj*>& group)
      : prepared(loose.world.subject.host.calls), cyclic(loose.world.subject.host.calls) {
    loose.pars.set({group, false});
    expectEqual("result of registerInputs", loose.job->registerInputs(&loose.inputs.handler), NOTHING);
    expectEqual("result of addJobsToJoblist", loose.job->addJobsToJoblist(&prepared, JobListTypes::COMMAND_PREPARED),
                NOTHING);
    expectEqual("result of addJobsToJoblist", loose.job->addJobsToJoblist(&cyclic, JobListTypes::CYCLIC_EXECUTION), NOTHING);
    expectEqual("result of the preparation", prepared.m_jobs.at(0).job(), NOTHING);
  }
  test::FakeJobList prepared;
  test::FakeJobList cyclic;
};

void groupOfOne(const Bundle& bundle) {
  LooseJob loose(bundle);
  const PreparedJob alone(loose, {&loose.world.a});
  expectEqual("result in the first cycle", alone.cyclic.m_jobs.at(0).job(), JoinWorld::WAIT);
  ++loose.world.a.m_cycleCount;
  expectEqual("result in the second cycle", alone.cyclic.m_jobs.at(0).job(), JoinWorld::DONE);
}

void strangerInGroup(const Bundle& bundle) {
  LooseJob loose(bundle);
  const PreparedJob stranger(loose, {&loose.world.b, &loose.world.c});
  const auto b = loose.world.prepared(loose.world.b, 21, {"C"});
  const auto c = loose.world.prepared(loose.world.c, 31, {"B"});
  for (int i = 0; i < 3; ++i) {
    expectEqual("result of the stranger", stranger.cyclic.m_jobs.at(0).job(), JoinWorld::WAIT);
  }
  loose.world.expectMeeting({&b, &c});
}

void namesRebuilt(const Bundle& bundle) {
  LooseJob loose(bundle);
  expectEqual("result", loose.job->registerInputs(&loose.inputs.handler), NOTHING);
  loose.pars.set({{&loose.world.a, &loose.world.b, &loose.world.c}, false});
  expectEqual("second result", loose.job->registerInputs(&loose.inputs.handler), NOTHING);
  expectEqual("text", loose.job->getJobString(), "join(group=[A,B,C],syncStartNextCmd=false)");
}

void freshText(const Bundle& bundle) {
  LooseJob loose(bundle);
  expectEqual("text", loose.job->getJobString(), "join(group=[],syncStartNextCmd=)");
  const std::unique_ptr<core::IAmCreatable> clone(loose.job->createNew());
  expectEqual("name of a clone", clone->getID(), JOB);
}

void lists(const Bundle& bundle) {
  LooseJob loose(bundle);
  test::FakeJobList list(loose.world.subject.host.calls);
  for (const std::uint32_t type : {3U, 4U, 0xFFFFFFFFU}) {
    expectEqual("result for another list", loose.job->addJobsToJoblist(&list, JobListTypes{type}), JobResult{0xF000000F});
  }
  expectEqual("jobs added", list.m_jobs.size(), 0U);
  loose.world.subject.forget();
  for (const std::uint32_t type : {2U, 1U, 0U}) {
    expectEqual("result", loose.job->addJobsToJoblist(&list, JobListTypes{type}), NOTHING);
  }
  const auto add = fmt::format("jobList.addJob({}, {})", JOB, loose.world.subject.host.sectionMgr.valueOf("CMD_DATA"));
  expectEqual("calls of the host", loose.world.subject.host.calls.all(), Texts{add, add, add});
  loose.world.subject.host.calls.fail("jobList.addJob", 0xF0000022);
  expectEqual("result of a list that refuses", loose.job->addJobsToJoblist(&list, JobListTypes{0}), JobResult{0xF0000022});
}

void base(const Bundle& bundle) {
  LooseJob loose(bundle);
  expectEqual("result of setJobData", loose.job->setJobData(&loose.pars), NOTHING);
  expectEqual("result of checkParameter", loose.job->checkParameter(nullptr, nullptr), NOTHING);
  expectNull("job data", loose.job->getJobData() == nullptr);
  expectEqual("type", loose.job->getType(), static_cast<std::uint32_t>(core::CreatableType::JOB));
}

}  // namespace

Checks joinJobObjectChecks() {
  const auto refused = [](int nth, const std::string& text) {
    return [nth, text](const Bundle& bundle) { refusedRead(bundle, nth, text); };
  };
  return {
      {"join.job-inputs", "the job reads its object, its command and the record of its command", readsInputs},
      {"join.job-no-object-record", "an object that is not offered is traced, and the result handed on",
       refused(1, "IObjPtr::registerRead failed")},
      {"join.job-no-command-record", "a command that is not offered is traced, and the result handed on",
       refused(2, "ICmdPtr::registerRead failed")},
      {"join.job-no-parameters", "a record that is not offered is traced, and the result handed on",
       refused(3, "JoinJobPars::registerRead failed")},
      {"join.job-null-object", "no object behind the record is refused with its text", noObject},
      {"join.job-null-command", "no command behind the record is refused with its text", noCommand},
      {"join.job-without-extension", "without an extension interface the names cannot be found", withoutExtension},
      {"join.job-without-object-manager", "without an object manager the names cannot be found", withoutObjMgr},
      {"join.job-nameless-member", "members without a name are traced, written as <?>, and refused", namelessMember},
      {"join.job-nameless-object", "an object without a name is traced as <?>", namelessObject},
      {"join.job-group-of-one", "a group of one ends one cycle after it has joined", groupOfOne},
      {"join.job-stranger", "a job whose object is not in its group is no member", strangerInGroup},
      {"join.job-names-rebuilt", "the names of the group are built anew each time", namesRebuilt},
      {"join.job-text", "the text of a fresh job names no group and no flag", freshText},
      {"join.job-lists", "the job goes into its three lists under its name and section", lists},
      {"join.job-base", "the job takes no data by hand", base},
  };
}

}  // namespace motion::conformance
