// A host that refuses something while the component registers or unregisters.
#include <fmt/format.h>

#include "conformance/checks/motion_parts.h"
#include "conformance/expect.h"
#include "conformance/expected_commands.h"
#include "conformance/subject.h"
#include "conformance/trace_texts.h"

namespace motion::conformance {
namespace {

constexpr std::int32_t START_FAILED = 70001;
constexpr std::uint32_t REFUSED = 0xF011FFFF;

/// Number of rows of that kind among the first `row` + 1: which call of its factory belongs to the row.
int nthOf(std::size_t row) {
  int nth = 0;
  for (std::size_t i = 0; i <= row; ++i) {
    nth += expectedRows()[i].isOption == expectedRows()[row].isOption ? 1 : 0;
  }
  return nth;
}

std::string registrationFailed(const ExpectedRow& row) {
  return errorOf("motion_kavo_cmd", "initialize", "Registration of " + row.name + " failed");
}

/// Starts in vain; the errors but for those of the component's frame.
Texts errorsOfStart(Subject& subject) {
  subject.giveEverything();
  subject.forget();
  expectEqual("status of start", subject.component().start(), START_FAILED);
  auto errors = subject.traces("Error");
  std::erase_if(errors, [](const std::string& error) { return error.starts_with("Error motion_kavo_cmp"); });
  return errors;
}

/// Rows whose registration was traced as a success.
std::size_t rowsRegistered(const Subject& subject) {
  std::size_t count = 0;
  for (const auto& trace : subject.tracesOf("motion_kavo_cmd")) {
    count += trace.starts_with("Info motion_kavo_cmd initialize: Registration of ") ? 1 : 0;
  }
  return count;
}

void expectStopsAt(Subject& subject, std::size_t row, const Texts& ownErrors) {
  auto expected = ownErrors;
  expected.push_back(registrationFailed(expectedRows()[row]));
  expectEqual("errors", errorsOfStart(subject), expected);
  expectEqual("rows registered before", rowsRegistered(subject), row);
  subject.host.calls.failNothing();
  subject.expectNothingLeft();
}

Texts errorOfRow(const ExpectedRow& row, const std::string& text) {
  return {errorOf(row.unit, row.function, text)};
}

int registeringCallsFor(const Subject& subject, const ExpectedRow& row) {
  int count = 0;
  for (const auto& id : row.ids) {
    const auto calls = subject.host.calls.of({"cmdFactory.registerCmd", "optionFactory.registerCmdOption"});
    for (const auto& call : calls) {
      const bool isOption = call.starts_with("option");
      count += isOption == row.isOption &&
                       call.ends_with(fmt::format("({} {})", static_cast<std::uint32_t>(id.objectType), id.name))
                   ? 1
                   : 0;
    }
  }
  return count;
}

void refusedJob(const Bundle& bundle, std::size_t index) {
  const auto& row = expectedRows()[index];
  Subject subject(bundle);
  subject.host.calls.fail("objFactory.registerObj", REFUSED_JOB, static_cast<int>(index) + 1);
  expectStopsAt(subject, index, errorOfRow(row, row.refusedJob));
  expectEqual("calls of the row's register operation", registeringCallsFor(subject, row), 0);
}

void missingObjFactory(const Bundle& bundle, std::size_t index) {
  const auto& row = expectedRows()[index];
  Subject subject(bundle);
  subject.host.calls.fail("ext.getObjFactory", 0, static_cast<int>(index) + 1);
  expectStopsAt(subject, index, errorOfRow(row, row.missingObjFactory));
}

void missingFactory(const Bundle& bundle, std::size_t index) {
  const auto& row = expectedRows()[index];
  Subject subject(bundle);
  subject.host.calls.fail(row.isOption ? "ext.getGenericCmdOptionFactory" : "ext.getGenericCmdFactory", 0, nthOf(index));
  expectStopsAt(subject, index, errorOfRow(row, row.missingFactory));
}

void bothFactoriesMissing(const Bundle& bundle) {
  Subject subject(bundle);
  subject.host.calls.fail("ext.getObjFactory", 0);
  subject.host.calls.fail("ext.getGenericCmdFactory", 0);
  const auto& row = expectedRows().front();
  const auto errors = errorsOfStart(subject);
  expectEqual("first errors", Texts(errors.begin(), errors.begin() + 2),
              Texts{errorOf(row.unit, row.function, row.missingObjFactory), registrationFailed(row)});
}

void refusedCommand(const Bundle& bundle, std::size_t index, const std::string& operation, int nth) {
  Subject subject(bundle);
  subject.host.calls.fail(operation, REFUSED, nth);
  expectStopsAt(subject, index, {});
}

void missingUnitHelper(const Bundle& bundle) {
  Subject subject(bundle);
  subject.host.calls.fail("objFactory.getHelper", 0);
  const auto last = expectedRows().size() - 1;
  const auto& row = expectedRows()[last];
  expectStopsAt(subject, last, errorOfRow(row, "Failed to get UNITHELPER_T_ID from objFactory"));
  expectEqual("calls of the row's register operation", registeringCallsFor(subject, row), 0);
}

void missingIdMgr(const Bundle& bundle) {
  Subject subject(bundle);
  subject.host.parts.jobDataIDMgr = nullptr;
  expectEqual("errors", errorsOfStart(subject),
              Texts{errorOf("motion_kavo_cmd", "initialize", "Failed to retrieve the jobDataIdMgr from motionExtIf")});
  subject.expectNothingLeft();
}

void refusedKinematicsOption(const Bundle& bundle, int nth) {
  Subject subject(bundle);
  subject.host.calls.fail("optionFactory.registerCmdOptionWithSlots", REFUSED, nth);
  expectStopsAt(subject, 8, {});
  expectEqual("attempts", subject.host.calls.count("optionFactory.registerCmdOptionWithSlots"), nth);
}

/// The names of the rows whose unregistration was traced.
Texts unregistered(const Subject& subject) {
  return subject.traces("Info motion_kavo_cmd terminate: Unregistration of ");
}

Texts allUnregisteredBut(std::size_t silent) {
  Texts expected;
  for (std::size_t i = 0; i < expectedRows().size(); ++i) {
    if (i != silent) {
      expected.push_back(
          infoOf("motion_kavo_cmd", "terminate", "Unregistration of " + expectedRows()[i].name + " succeeded"));
    }
  }
  return expected;
}

constexpr std::size_t NONE = 99;

void refusedUnregistration(const Bundle& bundle, const std::string& operation, int nth, std::size_t silent) {
  Subject subject(bundle);
  subject.start();
  subject.host.calls.fail(operation, REFUSED, nth);
  expectEqual("status of stop", subject.component().stop(), 0);
  expectEqual("traces", unregistered(subject), allUnregisteredBut(silent));
  expectEqual("errors", subject.traces("Error"), Texts{});
}

void unregistersWithoutFactory(const Bundle& bundle, std::size_t index, bool isObjFactory) {
  const auto& row = expectedRows()[index];
  Subject subject(bundle);
  subject.start();
  if (isObjFactory) {
    subject.host.calls.fail("ext.getObjFactory", 0, static_cast<int>(index) + 1);
  } else {
    subject.host.calls.fail(row.isOption ? "ext.getGenericCmdOptionFactory" : "ext.getGenericCmdFactory", 0, nthOf(index));
  }
  expectEqual("status of stop", subject.component().stop(), 0);
  expectEqual("errors", subject.traces("Error"),
              Texts{errorOf(row.unit, row.unregister, isObjFactory ? row.missingObjFactory : row.missingFactory)});
  expectEqual("traces", unregistered(subject), allUnregisteredBut(index));
}

Checks rowChecks(std::size_t i) {
  const auto& row = expectedRows()[i];
  const std::string operation = row.isOption ? "optionFactory.registerCmdOption" : "cmdFactory.registerCmd";
  Checks checks = {
      {"registration.refused-job-" + row.label, "a refused job object is traced and ends the start at that row",
       [i](const Bundle& bundle) { refusedJob(bundle, i); }},
      {"registration.no-object-factory-" + row.label, "a missing object factory is traced and ends the start at that row",
       [i](const Bundle& bundle) { missingObjFactory(bundle, i); }},
      {"registration.no-factory-" + row.label,
       "a missing command or option factory is traced and ends the start at that row",
       [i](const Bundle& bundle) { missingFactory(bundle, i); }},
      {"registration.unregister-without-object-factory-" + row.label,
       "unregistering without an object factory is traced, and the walk goes on",
       [i](const Bundle& bundle) { unregistersWithoutFactory(bundle, i, true); }},
      {"registration.unregister-without-factory-" + row.label,
       "unregistering without a command or option factory is traced, and the walk goes on",
       [i](const Bundle& bundle) { unregistersWithoutFactory(bundle, i, false); }},
  };
  if (row.ids.size() == 1) {
    const int nth = row.isOption ? 1 : nthOf(i);
    checks.push_back({"registration.refused-" + row.label,
                      "a refused registration ends the start without a trace of its own",
                      [=](const Bundle& bundle) { refusedCommand(bundle, i, operation, nth); }});
    const std::string undo = row.isOption ? "optionFactory.unregisterCmdOption" : "cmdFactory.unregisterCmd";
    const int nthUndo = row.isOption ? 3 : nth;
    checks.push_back({"registration.refused-unregistration-" + row.label, "a refused unregistration is silent",
                      [=](const Bundle& bundle) { refusedUnregistration(bundle, undo, nthUndo, i); }});
  }
  return checks;
}

}  // namespace

Checks refusedRegistrationChecks() {
  Checks checks;
  for (std::size_t i = 0; i < expectedRows().size(); ++i) {
    checks = together({checks, rowChecks(i)});
  }
  return together(
      {checks,
       {
           {"registration.both-factories-missing", "of two missing factories the object factory is told, once",
            bothFactoriesMissing},
           {"registration.no-unit-helper", "a missing unit helper is traced and ends the start", missingUnitHelper},
           {"registration.no-id-manager", "a missing manager of record names is traced and ends the start", missingIdMgr},
           {"registration.refused-option-axis", "the option is not registered for kinematics when axes refuse it",
            [](const Bundle& bundle) { refusedKinematicsOption(bundle, 1); }},
           {"registration.refused-option-kinematics", "the option's result for kinematics is the result of the row",
            [](const Bundle& bundle) { refusedKinematicsOption(bundle, 2); }},
           {"registration.option-unregistration-axis-ignored", "the option's unregistration for axes may fail",
            [](const Bundle& bundle) { refusedUnregistration(bundle, "optionFactory.unregisterCmdOption", 1, NONE); }},
           {"registration.option-unregistration-kinematics",
            "the option's unregistration for kinematics is the row's result",
            [](const Bundle& bundle) { refusedUnregistration(bundle, "optionFactory.unregisterCmdOption", 2, 8); }},
           {"registration.job-unregistration-ignored", "the result of unregistering a job object is ignored",
            [](const Bundle& bundle) {
              refusedUnregistration(bundle, "objFactory.unregisterObj", test::FakeCalls::EVERY, NONE);
            }},
       }});
}

}  // namespace motion::conformance
