// Services, bundle path and bundle name: how they come and go.
#include <fmt/format.h>

#include <memory>

#include "conformance/check.h"
#include "conformance/checks/frame_parts.h"
#include "conformance/expect.h"
#include "conformance/service_rows.h"
#include "conformance/subject.h"
#include "conformance/trace_texts.h"

namespace motion::conformance {
namespace {

constexpr std::int32_t START_FAILED = 70001;

std::string error(const std::string& function, const std::string& text) {
  return errorOf("motion_kavo_cmp", function, text);
}

void expectFailedStart(Subject& subject, const std::string& cause) {
  subject.forget();
  expectEqual("status of start", subject.component().start(), START_FAILED);
  expectEqual("errors of start", subject.traces("Error"),
              Texts{error("bundleStart", cause), error("bundleStart", "Call bundleStop as to cleanup after error"),
                    error("start", "Motion.Kavo failed to start - return with error code")});
}

void arrives(const Bundle& bundle, const ServiceRow& row) {
  Subject subject(bundle);
  subject.giveEverything();
  subject.forget();
  subject.give(row.service);
  expectEqual("traces", subject.traces(), Texts{row.added()});
  expectEqual("calls into the host", subject.host.calls.all(), Texts{});
  subject.expectNothingLeft();
}

void isRefusedWhenNull(const Bundle& bundle, const ServiceRow& row) {
  Subject subject(bundle);
  subject.giveEverythingBut(row.service);
  subject.forget();
  subject.giveNull(row.service);
  expectEqual("traces", subject.traces(), Texts{row.added(), error(row.setFunction, row.nullText)});
  expectFailedStart(subject, row.missingText);
}

void staysWhenNullFollows(const Bundle& bundle, const ServiceRow& row) {
  Subject subject(bundle);
  subject.giveEverything();
  subject.giveNull(row.service);
  expectEqual("status of start", subject.component().start(), 0);
}

void leavesBeforeStart(const Bundle& bundle, const ServiceRow& row) {
  Subject subject(bundle);
  subject.giveEverything();
  subject.forget();
  subject.remove(row.service);
  expectEqual("traces", subject.traces(), Texts{row.removed()});
  expectEqual("calls into the host", subject.host.calls.all(), Texts{});
  expectFailedStart(subject, row.missingText);
}

void leavesWhileStarted(const Bundle& bundle, const ServiceRow& row) {
  Subject subject(bundle);
  subject.start();
  subject.remove(row.service);
  Texts expected = {row.removed()};
  if (row.stopsCommands) {
    const auto texts = commandTerminationTraces();
    expected.insert(expected.end(), texts.begin(), texts.end());
  }
  if (row.stopsSystem) {
    const auto texts = systemTerminationTraces();
    expected.insert(expected.end(), texts.begin(), texts.end());
  }
  expectEqual("traces", subject.traces(), expected);
  expectCommands(subject, !row.stopsCommands);
  expectSystemFunctions(subject, !row.stopsSystem);
  expectEqual("extension interfaces alive", subject.host.m_extensionsAlive, row.service == Service::MOTION_EXT ? 0 : 1);
}

void comesBack(const Bundle& bundle, const ServiceRow& row) {
  Subject subject(bundle);
  subject.start();
  subject.remove(row.service);
  subject.forget();
  subject.give(row.service);
  expectEqual("calls when it comes back", subject.host.calls.all(), Texts{});
  expectCommands(subject, !row.stopsCommands);
  expectSystemFunctions(subject, !row.stopsSystem);
  subject.component().stop();
  subject.expectNothingLeft();
  expectEqual("status of a new start", subject.component().start(), 0);
  expectCommands(subject, true);
  expectSystemFunctions(subject, true);
}

void dataLayerLeavesInOrder(const Bundle& bundle) {
  Subject subject(bundle);
  subject.start();
  subject.remove(Service::DATA_LAYER);
  const auto calls = subject.host.calls.of({"optionFactory.unregisterCmdOption(2 SwitchOnPath)", "provider.unregisterType",
                                            "provider.destroyed", "dataLayer.closeMemory"});
  expectEqual("order of the teardown", calls,
              Texts{"optionFactory.unregisterCmdOption(2 SwitchOnPath)", "provider.destroyed()",
                    "provider.unregisterType(scopes/motion)", "provider.destroyed()", "dataLayer.closeMemory(signals_out)",
                    "dataLayer.closeMemory(signals_in)"});
}

/// Components of one process share what they have started, so another one shows whether a removal stops anything.
void extensionLeavesWithoutHavingBeenThere(const Bundle& bundle) {
  Subject subject(bundle);
  subject.start();
  const std::unique_ptr<core::framework::IMotionComponent> other(bundle.makeComponent());
  other->removeMotionExtIF(nullptr);
  expectEqual("traces", subject.traces(),
              Texts{infoOf("motion_kavo_cmp", "removeMotionExtIF", "Remove MotionExt service dependency")});
  expectEqual("calls into the host", subject.host.calls.all(), Texts{});
  expectCommands(subject, true);
  expectSystemFunctions(subject, true);
}

void extensionLeavesBeforeStart(const Bundle& bundle) {
  Subject subject(bundle);
  subject.start();
  const std::unique_ptr<core::framework::IMotionComponent> other(bundle.makeComponent());
  other->setMotionExtIF(&subject.host.extension);
  other->removeMotionExtIF(&subject.host.extension);
  expectSystemFunctions(subject, false);
  subject.forget();
  other->removeMotionExtIF(&subject.host.extension);
  expectEqual("calls of a second removal", subject.host.calls.all(), Texts{});
}

void newestServiceCounts(const Bundle& bundle) {
  Subject subject(bundle);
  test::FakeHost other;
  subject.giveEverything();
  subject.component().setMotionSysIF(&other.sysIf);
  subject.component().setMotionCmdIF(&other.cmdIf2);
  expectEqual("status of start", subject.component().start(), 0);
  expectNull("setSignal of the first record", subject.host.sysIf.setSignal == nullptr);
  expectNotNull("setSignal of the newer record", other.sysIf.setSignal != nullptr);
  expectNull("setSignalCmd of the first record", subject.host.cmdGeneral.setSignalCmd == nullptr);
  expectNotNull("setSignalCmd of the newer record", other.cmdGeneral.setSignalCmd != nullptr);
  subject.component().stop();
  expectNull("setSignal after the stop", other.sysIf.setSignal == nullptr);
  expectNull("setSignalCmd after the stop", other.cmdGeneral.setSignalCmd == nullptr);
}

/// The schema path with which the component registers a command.
std::string schemaPath(Subject& subject) {
  subject.giveEverything();
  expectEqual("status of start", subject.component().start(), 0);
  const auto& commands = subject.host.cmdFactory.m_commands;
  const auto found = commands.find({core::ObjectType::AXIS, "WaitForSignal"});
  expectNotNull("registration of WaitForSignal", found != commands.end());
  return found->second.schemaPath;
}

void pathGivesSchemaDirectory(const Bundle& bundle, const char* path, const std::string& expected) {
  Subject subject(bundle);
  subject.component().setBundlePath(path);
  expectEqual("traces of setBundlePath", subject.traces(), Texts{});
  expectEqual("schema path", schemaPath(subject), expected);
}

void nullPath(const Bundle& bundle) {
  Subject subject(bundle);
  subject.component().setBundlePath("/a bundle");
  subject.component().setBundlePath(nullptr);
  expectEqual("traces", subject.traces(), Texts{error("setBundlePath", "bundlePath is NULL")});
  expectEqual("schema path", schemaPath(subject), "/a bundle/bfbs/cmdWaitForSignal.bfbs");
}

void clearedPath(const Bundle& bundle) {
  Subject subject(bundle);
  subject.component().clrBundlePath();
  expectEqual("traces of clrBundlePath", subject.traces(), Texts{});
  expectEqual("schema path", schemaPath(subject), "/bfbs/cmdWaitForSignal.bfbs");
}

void copiedTexts(const Bundle& bundle) {
  Subject subject(bundle);
  std::string path = "/the first";
  std::string name = "the first";
  subject.component().setBundlePath(path.c_str());
  subject.component().setBundleName(name.c_str());
  path.assign(path.size(), 'x');
  name.assign(name.size(), 'x');
  expectEqual("schema path", schemaPath(subject), "/the first/bfbs/cmdWaitForSignal.bfbs");
  expectEqual("component name", subject.host.m_version.componentName, "the first");
}

/// The bundle name as init shows it.
std::string shownName(Subject& subject) {
  subject.forget();
  subject.component().init();
  return subject.traces().front();
}

void bundleName(const Bundle& bundle) {
  Subject subject(bundle);
  subject.component().setBundleName("another name");
  expectEqual("traces of setBundleName", subject.traces(), Texts{});
  expectEqual("trace of init", shownName(subject), infoOf("motion_kavo_cmp", "init", "Bundlename: another name"));
}

void nullName(const Bundle& bundle) {
  Subject subject(bundle);
  subject.component().setBundleName(nullptr);
  expectEqual("traces", subject.traces(), Texts{error("setBundleName", "bundleName is NULL")});
  expectEqual("trace of init", shownName(subject),
              infoOf("motion_kavo_cmp", "init", fmt::format("Bundlename: {}", BUNDLE_NAME)));
}

void clearedName(const Bundle& bundle) {
  Subject subject(bundle);
  subject.component().clrBundleName();
  expectEqual("traces of clrBundleName", subject.traces(), Texts{});
  expectEqual("trace of init", shownName(subject), infoOf("motion_kavo_cmp", "init", "Bundlename: "));
}

void emptyAtFirst(const Bundle& bundle) {
  const Subject subject(bundle);
  const std::unique_ptr<core::framework::IMotionComponent> other(bundle.makeComponent());
  other->init();
  expectEqual("first trace of init", subject.traces().front(), infoOf("motion_kavo_cmp", "init", "Bundlename: "));
}

Checks rowChecks() {
  struct Kind {
    const char* name;
    const char* sentence;
    void (*run)(const Bundle&, const ServiceRow&);
  };
  static constexpr Kind KINDS[] = {
      {"arrives", "its arrival traces its text and starts nothing", arrives},
      {"null", "a null argument is traced and not stored", isRefusedWhenNull},
      {"null-keeps", "a null argument leaves the earlier service in place", staysWhenNullFollows},
      {"leaves-before-start", "its departure traces its text and is known to the next start", leavesBeforeStart},
      {"leaves", "its departure while started takes down exactly what depends on it", leavesWhileStarted},
      {"comes-back", "its return restarts nothing; a new start does", comesBack},
  };
  Checks checks;
  for (const auto& row : serviceRows()) {
    for (const auto& kind : KINDS) {
      checks.push_back({fmt::format("services.{}-{}", row.label, kind.name), fmt::format("{}: {}", row.name, kind.sentence),
                        [run = kind.run, row](const Bundle& bundle) { run(bundle, row); }});
    }
  }
  return checks;
}

}  // namespace

Checks serviceChecks() {
  const auto path = [](const char* text, const std::string& expected) {
    return [text, expected](const Bundle& bundle) { pathGivesSchemaDirectory(bundle, text, expected); };
  };
  const Checks own = {
      {"services.data-layer-leaves-in-order", "when the data layer leaves, the commands go down before the system functions",
       dataLayerLeavesInOrder},
      {"services.extension-was-never-there", "removing an extension record that was never there stops nothing",
       extensionLeavesWithoutHavingBeenThere},
      {"services.extension-removal-stops-once", "removing the extension record stops, and a second removal does not",
       extensionLeavesBeforeStart},
      {"services.newest-counts", "of two services of one kind the later one is used", newestServiceCounts},
      {"services.path", "the schema directory is the bundle path with /bfbs/ behind it",
       path("/a path", "/a path/bfbs/cmdWaitForSignal.bfbs")},
      {"services.path-with-slash", "no separator is taken away", path("/a path/", "/a path//bfbs/cmdWaitForSignal.bfbs")},
      {"services.path-empty", "an empty bundle path gives the schema directory /bfbs/",
       path("", "/bfbs/cmdWaitForSignal.bfbs")},
      {"services.path-null", "a null path is traced and keeps the previous one", nullPath},
      {"services.path-cleared", "a cleared path is empty", clearedPath},
      {"services.texts-copied", "path and name are copied", copiedTexts},
      {"services.name", "the bundle name is the one that was set last, without a trace", bundleName},
      {"services.name-null", "a null name is traced and keeps the previous one", nullName},
      {"services.name-cleared", "a cleared name is empty", clearedName},
      {"services.name-empty-at-first", "a new component has an empty name", emptyAtFirst},
  };
  return together({rowChecks(), own, serviceSlotChecks()});
}

}  // namespace motion::conformance
