// The memory sections of the host: when they are asked for, and what a missing one means.
#include <fmt/format.h>

#include "conformance/buffered_cmd.h"
#include "conformance/check.h"
#include "conformance/expect.h"
#include "conformance/subject.h"
#include "conformance/trace_texts.h"

namespace motion::conformance {
namespace {

const Texts SECTIONS = {"OBJ_DATA",      "CMD_DATA",   "PREEXEC_OPMODE",      "PREEXEC",
                        "EXEC_DYNAMICS", "EXEC_FINAL", "GEOMETRY_TOOL_OFFSET"};

/// The look-ups of the first sections.
Texts lookups(std::size_t count = SECTIONS.size()) {
  Texts calls;
  for (std::size_t i = 0; i < count; ++i) {
    calls.push_back("sectionMgr.getSection(" + SECTIONS[i] + ")");
  }
  return calls;
}

std::string missing(const std::string& section) {
  return errorOf("ext_dep_mgr", "getRequiredSectionPointers", fmt::format("section {} could not be found!", section));
}

void askedInOrder(const Bundle& bundle) {
  Subject subject(bundle);
  subject.giveEverything();
  expectEqual("status of start", subject.component().start(), 0);
  expectEqual("look-ups", subject.host.calls.of({"sectionMgr."}), lookups());
  expectEqual("traces", subject.tracesOf("ext_dep_mgr"), Texts{});
}

void askedBeforeTheServices(const Bundle& bundle) {
  Subject subject(bundle);
  subject.giveEverythingBut(Service::MOTION_SYS);
  subject.forget();
  expectEqual("status of start", subject.component().start(), 70001);
  expectEqual("look-ups", subject.host.calls.of({"sectionMgr."}), lookups());
}

void askedOnce(const Bundle& bundle) {
  Subject subject(bundle);
  subject.start();
  auto& axis = subject.host.objMgr.addAxis("X");
  BufferedCmd cmd(subject, axis, 7, "WaitForSignal", waitParameters(3, false));
  cmd.prepareWithJobs();
  expectEqual("look-ups by a command", subject.host.calls.of({"sectionMgr."}), Texts{});
}

void oneMissing(const Bundle& bundle, std::size_t index) {
  Subject subject(bundle);
  subject.host.sectionMgr.remove(SECTIONS[index]);
  subject.giveEverything();
  expectEqual("status of start", subject.component().start(), 0);
  expectEqual("look-ups", subject.host.calls.of({"sectionMgr."}), lookups(index + 1));
  expectEqual("traces", subject.tracesOf("ext_dep_mgr"), Texts{missing(SECTIONS[index])});
}

void noSectionManager(const Bundle& bundle) {
  Subject subject(bundle);
  subject.host.parts.sectionMgr = nullptr;
  subject.giveEverything();
  expectEqual("status of start", subject.component().start(), 0);
  expectEqual("traces", subject.tracesOf("ext_dep_mgr"),
              Texts{errorOf("ext_dep_mgr", "getRequiredSectionPointers",
                            "get of required sections failed, because section manager is not set")});
}

void silentStop(const Bundle& bundle) {
  Subject subject(bundle);
  subject.start();
  subject.component().stop();
  expectEqual("traces", subject.tracesOf("ext_dep_mgr"), Texts{});
  expectEqual("look-ups", subject.host.calls.of({"sectionMgr."}), Texts{});
}

void resolvedAnew(const Bundle& bundle) {
  Subject subject(bundle);
  subject.host.calls.fail("sectionMgr.getSection", 1, 1);
  subject.giveEverything();
  expectEqual("status of the first start", subject.component().start(), 0);
  expectEqual("traces of the first start", subject.tracesOf("ext_dep_mgr"), Texts{missing("OBJ_DATA")});
  subject.component().stop();
  subject.forget();
  expectEqual("status of the second start", subject.component().start(), 0);
  expectEqual("traces of the second start", subject.tracesOf("ext_dep_mgr"), Texts{});
  expectEqual("look-ups of the second start", subject.host.calls.of({"sectionMgr."}), lookups());
}

/// The section for which a job is added.
core::SectionValue sectionOf(Subject& subject, const std::string& jobName) {
  auto job = makeJob(subject, jobName);
  test::FakeJobList list(subject.host.calls);
  expectEqual("result of addJobsToJoblist", job->addJobsToJoblist(&list, core::job::JobListTypes::CYCLIC_EXECUTION),
              core::job::JobResult::NoEffect);
  return list.m_jobs.at(0).section;
}

void addressesKeptBeforeMissing(const Bundle& bundle) {
  Subject subject(bundle);
  subject.host.sectionMgr.remove("PREEXEC");
  subject.start();
  expectEqual("section of a job", sectionOf(subject, "ext_job_obj_wait_for_signal"),
              subject.host.sectionMgr.valueOf("CMD_DATA"));
  auto& axis = subject.host.objMgr.addAxis("X");
  subject.host.objMgr.addAxis("Y");
  BufferedCmd cmd(subject, axis, 7, "Join", joinParameters({"X", "Y"}, false));
  cmd.giveJobs();
}

void addressesGoneBehindMissing(const Bundle& bundle, const std::string& section, const std::string& jobName,
                                const std::string& wanted) {
  Subject subject(bundle);
  subject.host.sectionMgr.remove(section);
  subject.start();
  const bool isFound = sectionOf(subject, jobName) == subject.host.sectionMgr.valueOf(wanted);
  expectFalse("a job finds a section behind a missing one", isFound);
}

void pathJobSection(const Bundle& bundle) {
  Subject subject(bundle);
  subject.host.sectionMgr.remove("GEOMETRY_TOOL_OFFSET");
  subject.start();
  expectEqual("section of the job", sectionOf(subject, "JobObjSwitchOnPath"), subject.host.sectionMgr.valueOf("EXEC_FINAL"));
}

}  // namespace

Checks sectionChecks() {
  Checks checks = {
      {"sections.asked-in-order", "a start asks for the seven sections in their order and traces nothing", askedInOrder},
      {"sections.asked-before-services-are-missed", "the sections are asked for before the other services are looked at",
       askedBeforeTheServices},
      {"sections.asked-once", "commands use the sections that the start has found", askedOnce},
      {"sections.no-section-manager", "a missing section manager is traced and nothing more", noSectionManager},
      {"sections.stop-is-silent", "a stop forgets the sections without a trace", silentStop},
      {"sections.resolved-anew", "each start asks for the sections anew", resolvedAnew},
      {"sections.before-a-missing-one", "sections before a missing one are found", addressesKeptBeforeMissing},
      {"sections.behind-a-missing-one", "the second section is not found behind a missing first",
       [](const Bundle& bundle) {
         addressesGoneBehindMissing(bundle, "OBJ_DATA", "ext_job_obj_wait_for_signal", "CMD_DATA");
       }},
      {"sections.far-behind-a-missing-one", "the sixth section is not found behind a missing third",
       [](const Bundle& bundle) {
         addressesGoneBehindMissing(bundle, "PREEXEC_OPMODE", "JobObjSwitchOnPath", "EXEC_FINAL");
       }},
      {"sections.just-before-a-missing-one", "the sixth section is found before a missing seventh", pathJobSection},
  };
  for (std::size_t i = 0; i < SECTIONS.size(); ++i) {
    checks.push_back(
        {"sections.missing-" + SECTIONS[i],
         fmt::format("without the section {} the start goes on, names it and asks for none behind it", SECTIONS[i]),
         [i](const Bundle& bundle) { oneMissing(bundle, i); }});
  }
  return checks;
}

}  // namespace motion::conformance
