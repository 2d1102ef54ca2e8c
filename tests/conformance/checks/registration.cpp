// What the component registers with a host, in which order, and how it takes that back.
#include <fmt/format.h>

#include <iterator>
#include <set>

#include "conformance/checks/motion_parts.h"
#include "conformance/expect.h"
#include "conformance/expected_commands.h"
#include "conformance/records.h"
#include "conformance/subject.h"
#include "conformance/trace_texts.h"

namespace motion::conformance {
namespace {

const Texts DATA_TYPES = {
    "CmdJoinPars",       "JoinJobPars",          "CmdOptionSetSignalPars",    "CmdSendSignalPars",
    "SendSignalJobPars", "WaitForSignalJobPars", "WaitForSignalResetJobPars", "::motion::kavo::SwitchOnPathParsList"};

/// The name by which a warning calls a record.
std::string warnedName(const std::string& dataType) {
  return dataType == DATA_TYPES.back() ? "CmdOptionSwitchOnPathPars" : dataType;
}

std::string schemaPath(const Bundle& bundle, const std::string& file) {
  return bundle.directory().string() + "/bfbs/" + file;
}

void command(const Bundle& bundle, const ExpectedCommand& expected) {
  Subject subject(bundle);
  subject.start();
  const auto found = subject.host.cmdFactory.m_commands.find(expected.id);
  expectNotNull("registration", found != subject.host.cmdFactory.m_commands.end());
  const auto& registered = found->second;
  expectEqual("schema path", registered.schemaPath, schemaPath(bundle, expected.schemaFile));
  expectEqual("description", registered.description, expected.description);
  expectEqual("groups in order", registered.groups, expected.groups);
  expectTrue("visible", registered.visible);
  expectEqual("help url", registered.helpUrl, "");
  expectEqual("a create function for axes", registered.onCreateAxis != nullptr, expected.isAxis());
  expectEqual("a create function for kinematics", registered.onCreateKin != nullptr, !expected.isAxis());
  expectTrue("a marshalling function", registered.onMarshal != nullptr);
}

void option(const Bundle& bundle, const ExpectedOption& expected) {
  Subject subject(bundle);
  subject.start();
  const auto found = subject.host.cmdOptionFactory.m_options.find(expected.id);
  expectNotNull("registration", found != subject.host.cmdOptionFactory.m_options.end());
  const auto& registered = found->second;
  expectEqual("schema path", registered.schemaPath, schemaPath(bundle, expected.schemaFile));
  expectEqual("description", registered.description, expected.description);
  expectEqual("groups in order", registered.groups, expected.groups);
  expectEqual("help url", registered.helpUrl, "");
  expectEqual("slots", registered.slots, expected.slots);
  expectTrue("create and marshalling functions", registered.onCreate != nullptr && registered.onMarshal != nullptr);
}

void nothingElse(const Bundle& bundle) {
  Subject subject(bundle);
  subject.start();
  expectEqual("number of commands", subject.host.cmdFactory.m_commands.size(), expectedCommands().size());
  expectEqual("number of options", subject.host.cmdOptionFactory.m_options.size(), expectedOptions().size());
  Texts jobs;
  for (const auto& [name, prototype] : subject.host.objFactory.m_prototypes) {
    jobs.push_back(name);
  }
  expectEqual("job prototypes", jobs,
              Texts{"JobObjSwitchOnPath", "ext_job_obj_wait_for_signal", "ext_job_obj_wait_for_signal_reset",
                    "ext_job_send_signal_cmd", "ext_job_send_signal_cmd_opt", "kavo_job_join"});
}

/// The calls that register a row, or unregister it.
Texts callsOf(const ExpectedRow& row, bool registers) {
  const std::string verb = registers ? "register" : "unregister";
  Texts calls = {fmt::format("objFactory.{}Obj({}, 0)", verb, row.job)};
  for (const auto& id : row.ids) {
    const bool hasSlots = registers && row.isOption && row.name == "SetSignal";
    calls.push_back(fmt::format("{}.{}Cmd{}{}({} {})", row.isOption ? "optionFactory" : "cmdFactory", verb,
                                row.isOption ? "Option" : "", hasSlots ? "WithSlots" : "",
                                static_cast<std::uint32_t>(id.objectType), id.name));
  }
  return calls;
}

Texts callsOfAllRows(bool registers) {
  Texts all;
  for (const auto& row : expectedRows()) {
    std::ranges::copy(callsOf(row, registers), std::back_inserter(all));
  }
  return all;
}

/// Starts without forgetting what was called.
void startNoting(Subject& subject) {
  subject.giveEverything();
  subject.forget();
  expectEqual("status of start", subject.component().start(), 0);
}

Texts registeringCalls(const Subject& subject) {
  return subject.host.calls.of({"objFactory.registerObj", "cmdFactory.", "optionFactory."});
}

void order(const Bundle& bundle) {
  Subject subject(bundle);
  startNoting(subject);
  expectEqual("calls", registeringCalls(subject), callsOfAllRows(true));
}

void unitHelper(const Bundle& bundle) {
  Subject subject(bundle);
  startNoting(subject);
  expectEqual("calls", subject.host.calls.of({"objFactory.getHelper"}),
              Texts{"objFactory.getHelper(motion::core::UnitHelperT)"});
}

Texts tracesOfRegistration(const Subject& subject) {
  Texts texts;
  for (const auto& trace : subject.tracesOf("motion_kavo_cmd")) {
    if (trace.find("egistration of ") != std::string::npos) {
      texts.push_back(trace);
    }
  }
  return texts;
}

void successTraces(const Bundle& bundle) {
  Subject subject(bundle);
  startNoting(subject);
  Texts expected;
  for (const auto& row : expectedRows()) {
    expected.push_back(infoOf("motion_kavo_cmd", "initialize", "Registration of " + row.name + " succeeded"));
  }
  expectEqual("traces", tracesOfRegistration(subject), expected);
}

void dataTypes(const Bundle& bundle) {
  Subject subject(bundle);
  startNoting(subject);
  Texts expected;
  for (const auto& name : DATA_TYPES) {
    expected.push_back("idMgr.addID(" + name + ")");
  }
  expectEqual("names in order", subject.host.calls.of({"idMgr.addID"}), expected);
  const auto calls = subject.host.calls.of({"idMgr.addID", "objFactory.registerObj"});
  expectEqual("call after the last name", calls.at(DATA_TYPES.size()),
              "objFactory.registerObj(ext_job_obj_wait_for_signal, 0)");
}

void identities(const Bundle& bundle) {
  using namespace kavo;
  Subject subject(bundle);
  subject.start();
  const std::vector<core::DataID> expected = {cmd::CmdJoinPars::getMyID(),
                                              job::JoinJobPars::getMyID(),
                                              cmd::CmdOptionSetSignalPars::getMyID(),
                                              cmd::CmdSendSignalPars::getMyID(),
                                              job::SendSignalJobPars::getMyID(),
                                              job::WaitForSignalJobPars::getMyID(),
                                              job::WaitForSignalResetJobPars::getMyID(),
                                              SwitchOnPathParsList::getMyID()};
  std::vector<core::DataID> found;
  for (const auto& name : DATA_TYPES) {
    found.push_back(subject.host.jobDataIDMgr.getID(name.c_str()));
  }
  expectEqual("identities of the records", found, expected);
}

Texts warnings(const Subject& subject) {
  Texts texts;
  for (const auto& entry : subject.host.traceSink.entries()) {
    if (entry.level() == "Warning") {
      texts.push_back(entry.text);
    }
  }
  return texts;
}

void knownDataType(const Bundle& bundle, std::size_t index) {
  Subject subject(bundle);
  subject.host.calls.fail("idMgr.addID", 1, static_cast<int>(index) + 1);
  startNoting(subject);
  expectEqual("warnings", warnings(subject), Texts{warnedName(DATA_TYPES[index]) + " was already registered"});
  expectEqual("names announced all the same", subject.host.calls.count("idMgr.addID"), static_cast<int>(DATA_TYPES.size()));
}

void secondLife(const Bundle& bundle) {
  Subject subject(bundle);
  subject.start();
  expectEqual("status of stop", subject.component().stop(), 0);
  startNoting(subject);
  Texts expected;
  for (const auto& name : DATA_TYPES) {
    expected.push_back(warnedName(name) + " was already registered");
  }
  expectEqual("warnings", warnings(subject), expected);
}

void noWarnings(const Bundle& bundle) {
  Subject subject(bundle);
  startNoting(subject);
  expectEqual("warnings", warnings(subject), Texts{});
}

void knownPrototype(const Bundle& bundle, std::size_t row) {
  Subject subject(bundle);
  subject.host.calls.fail("objFactory.registerObj", 0xF0150003, static_cast<int>(row) + 1);
  startNoting(subject);
  expectEqual("errors", subject.traces("Error"), Texts{});
  expectEqual("calls", registeringCalls(subject), callsOfAllRows(true));
}

void unregistration(const Bundle& bundle) {
  Subject subject(bundle);
  subject.start();
  expectEqual("status of stop", subject.component().stop(), 0);
  expectEqual("calls", subject.host.calls.of({"objFactory.", "cmdFactory.", "optionFactory."}), callsOfAllRows(false));
  Texts expected;
  for (const auto& row : expectedRows()) {
    expected.push_back(infoOf("motion_kavo_cmd", "terminate", "Unregistration of " + row.name + " succeeded"));
  }
  expectEqual("traces", tracesOfRegistration(subject), expected);
  expectEqual("errors", subject.traces("Error"), Texts{});
}

Checks tableChecks() {
  Checks checks;
  for (const auto& expected : expectedCommands()) {
    checks.push_back({"registration." + expected.label,
                      "the command is registered with its schema, description, groups and flags",
                      [&expected](const Bundle& bundle) { command(bundle, expected); }});
  }
  for (const auto& expected : expectedOptions()) {
    checks.push_back({"registration." + expected.label,
                      "the option is registered with its schema, description, groups and slots",
                      [&expected](const Bundle& bundle) { option(bundle, expected); }});
  }
  return checks;
}

Checks toleranceChecks() {
  Checks checks;
  for (std::size_t i = 0; i < DATA_TYPES.size(); ++i) {
    checks.push_back({"registration.known-name-" + warnedName(DATA_TYPES[i]),
                      "a record whose name was registered already gives one warning and no failure",
                      [i](const Bundle& bundle) { knownDataType(bundle, i); }});
  }
  for (std::size_t i = 0; i < expectedRows().size(); ++i) {
    checks.push_back({"registration.known-job-" + expectedRows()[i].label,
                      "a job object that the factory knows already is accepted silently",
                      [i](const Bundle& bundle) { knownPrototype(bundle, i); }});
  }
  return checks;
}

}  // namespace

Checks registrationChecks() {
  const Checks general = {
      {"registration.nothing-else", "there are no further commands, options and job prototypes", nothingElse},
      {"registration.order", "each row registers its job, then its command or options, in the order of the table", order},
      {"registration.unit-helper", "the unit helper is asked for once, by its name", unitHelper},
      {"registration.success-traces", "each row that is registered is traced by its name", successTraces},
      {"registration.record-names", "the names of the records are announced in order, before the commands", dataTypes},
      {"registration.record-identities", "each name stands for the identity of its record type", identities},
      {"registration.no-warnings", "names that are new give no warning", noWarnings},
      {"registration.second-start-warns", "a second start of one host warns of each record once", secondLife},
      {"registration.unregistration", "a stop unregisters job and identities row by row, and traces each", unregistration},
  };
  return together(
      {tableChecks(), general, toleranceChecks(), refusedRegistrationChecks(), createdCommandChecks(), slotChecks()});
}

}  // namespace motion::conformance
