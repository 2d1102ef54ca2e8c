// Entry, lifecycle calls, and what a start does in which order.
#include <dlfcn.h>
#include <fmt/format.h>

#include <string>
#include <vector>

#include "conformance/check.h"
#include "conformance/expect.h"
#include "conformance/subject.h"

namespace motion::conformance {
namespace {

using Texts = std::vector<std::string>;

constexpr std::int32_t START_FAILED = 70001;
const std::string VERSION_TEXT = "3.8.14-unknown_branch-unknown_commit.0";

std::string info(const std::string& function, const std::string& text) {
  return fmt::format("Info motion_kavo_cmp {}: {}", function, text);
}

std::string error(const std::string& function, const std::string& text) {
  return fmt::format("Error motion_kavo_cmp {}: {}", function, text);
}

const std::string CLEAN_UP = error("bundleStart", "Call bundleStop as to cleanup after error");
const std::string FAILED = error("start", "Motion.Kavo failed to start - return with error code");

void initTraces(const Bundle& bundle) {
  Subject subject(bundle);
  expectEqual("status of init", subject.component().init(), 0);
  expectEqual(
      "traces of init", subject.traces(),
      Texts{info("init", fmt::format("Bundlename: {}", BUNDLE_NAME)), info("init", "Init Motion.Kavo " + VERSION_TEXT)});
}

void startTraces(const Bundle& bundle) {
  Subject subject(bundle);
  subject.giveEverything();
  subject.forget();
  expectEqual("status of start", subject.component().start(), 0);
  const auto traces = subject.tracesOf("motion_kavo_cmp");
  expectEqual("traces of the component's frame", traces,
              Texts{info("start", fmt::format("Bundlename: {}", BUNDLE_NAME)),
                    info("start", "Start Motion.Kavo " + VERSION_TEXT), info("start", "Motion.Kavo started successfully")});
}

void stopAndDeinit(const Bundle& bundle) {
  Subject subject(bundle);
  subject.start();
  expectEqual("status of stop", subject.component().stop(), 0);
  expectEqual("last trace of stop", subject.traces().back(), info("stop", "Motion.Kavo stopped"));
  subject.forget();
  expectEqual("status of deinit", subject.component().deinit(), 0);
  expectEqual("traces of deinit", subject.traces(), Texts{info("deinit", "Motion.Kavo deinit")});
  subject.expectNothingLeft();
}

void stopWithoutStart(const Bundle& bundle) {
  Subject subject(bundle);
  expectEqual("status of stop", subject.component().stop(), 0);
  expectEqual("traces of stop", subject.traces(), Texts{info("stop", "Motion.Kavo stopped")});
  subject.expectNothingLeft();
}

void versionRecord(const Bundle& bundle) {
  Subject subject(bundle);
  subject.start();
  const auto& version = subject.host.m_version;
  expectEqual("component name", version.componentName, BUNDLE_NAME);
  expectEqual("application name", version.applicationName, "app.motion");
  expectEqual("version numbers", std::vector<std::uint32_t>{version.major, version.minor, version.patch, version.build},
              std::vector<std::uint32_t>{3, 8, 14, 0});
  expectEqual("branch", version.branch, "unknown_branch");
  expectEqual("version text", version.versionText, VERSION_TEXT);
  expectEqual("commit", version.commit, "unknown_commit");
  expectEqual("further texts", version.additional, Texts{});
  expectTrue("the record's own context is passed", subject.host.m_extensionContext == &subject.host);
}

void missingService(const Bundle& bundle, Service missing, const std::string& text) {
  Subject subject(bundle);
  subject.giveEverythingBut(missing);
  subject.forget();
  expectEqual("status of start", subject.component().start(), START_FAILED);
  expectEqual("errors", subject.traces("Error motion_kavo_cmp"), Texts{error("bundleStart", text), CLEAN_UP, FAILED});
  subject.expectNothingLeft();
  const bool hasExtension = subject.host.calls.count("extension.createExtIfObj") == 1;
  expectEqual("the extension object was made before", hasExtension, missing != Service::MOTION_EXT);
}

void extensionResult(const Bundle& bundle, core::FctResult result, bool makesObject, const std::string& shown) {
  Subject subject(bundle);
  subject.host.m_extensionResult = result;
  subject.host.m_makesExtension = makesObject;
  subject.giveEverything();
  subject.forget();
  expectEqual("status of start", subject.component().start(), START_FAILED);
  expectEqual("errors", subject.traces("Error motion_kavo_cmp"),
              Texts{error("bundleStart", "Can't create ExtIfObj! Result: 0x0" + shown), CLEAN_UP, FAILED});
  subject.expectNothingLeft();
}

void secondStart(const Bundle& bundle) {
  Subject subject(bundle);
  for (int round = 0; round < 3; ++round) {
    subject.start();
    expectEqual("status of stop", subject.component().stop(), 0);
    subject.expectNothingLeft();
  }
}

void startAfterFailure(const Bundle& bundle) {
  Subject subject(bundle);
  subject.giveEverything();
  subject.host.calls.fail("provider.registerNode", comm::datalayer::DL_FAILED.code());
  expectEqual("status of the first start", subject.component().start(), START_FAILED);
  subject.expectNothingLeft();
  subject.host.calls.failNothing();
  subject.start();
}

void exportedSymbol(const Bundle& bundle) {
  expectNotNull("createMotionKavoCmp", dlsym(bundle.handle(), "createMotionKavoCmp") != nullptr);
}

void twoComponents(const Bundle& bundle) {
  const std::unique_ptr<core::framework::IMotionComponent> one(bundle.makeComponent());
  const std::unique_ptr<core::framework::IMotionComponent> other(bundle.makeComponent());
  expectTrue("each call of the factory makes a component of its own", one.get() != other.get());
}

void noExtensionLeftByDestructor(const Bundle& bundle) {
  Subject subject(bundle);
  subject.start();
  subject.component().stop();
  subject.component().removeBundleTrace(&subject.host.traceService);
  subject.forget();
  subject.destroy();
  expectEqual("traces of the destructor", subject.traces(), Texts{});
  expectEqual("extension interfaces alive", subject.host.m_extensionsAlive, 0);
}

}  // namespace

Checks lifecycleChecks() {
  const auto missing = [](Service service, const std::string& text) {
    return [service, text](const Bundle& bundle) { missingService(bundle, service, text); };
  };
  return {
      {"lifecycle.factory", "the factory is exported under its name, with C linkage", exportedSymbol},
      {"lifecycle.factory-makes-new-components", "each call of the factory makes a new component", twoComponents},
      {"lifecycle.init", "init traces bundle name and version and answers 0", initTraces},
      {"lifecycle.start", "start traces bundle name, version and success, and answers 0", startTraces},
      {"lifecycle.stop-and-deinit", "stop and deinit trace their text, answer 0 and leave nothing behind", stopAndDeinit},
      {"lifecycle.stop-without-start", "stop without a start is harmless", stopWithoutStart},
      {"lifecycle.version-record", "the extension object is asked for with the component's version record", versionRecord},
      {"lifecycle.start-without-extension", "a start without the extension record fails with its text",
       missing(Service::MOTION_EXT, "m_extIF is null")},
      {"lifecycle.start-without-old-system-record", "a start without the older system record fails with its text",
       missing(Service::MOTION_SYS, "m_motionSysIF is null")},
      {"lifecycle.start-without-data-layer", "a start without the data layer fails with its text",
       missing(Service::DATA_LAYER, "m_datalayerFactory is null")},
      {"lifecycle.start-without-old-command-record", "a start without the older command record fails with its text",
       missing(Service::MOTION_CMD, "m_motionCmdIF is null")},
      {"lifecycle.start-without-command-record", "a start without the command record fails with its text",
       missing(Service::MOTION_CMD2, "m_motionCmdIF2 is null")},
      {"lifecycle.start-without-system-record", "a start without the system record fails with its text",
       missing(Service::MOTION_SYS2, "m_motionSysIF2 is null")},
      {"lifecycle.start-without-data-record", "a start without the data record fails with its text",
       missing(Service::MOTION_DATA, "m_motionDataIF is null")},
      {"lifecycle.extension-refused", "a failing result of the extension's factory fails the start",
       [](const Bundle& bundle) { extensionResult(bundle, core::FctResult::NotOkay, false, "f0100001"); }},
      {"lifecycle.extension-result-zero", "result 0 of the extension's factory is a failure, and the object made is deleted",
       [](const Bundle& bundle) { extensionResult(bundle, core::FctResult{}, true, "0"); }},
      {"lifecycle.extension-null", "success without an object is a failure",
       [](const Bundle& bundle) { extensionResult(bundle, core::FctResult::Okay, false, "100000"); }},
      {"lifecycle.second-start", "a component starts and stops again and again, each time leaving nothing", secondStart},
      {"lifecycle.start-after-failure", "a start after a failed one begins from a clean state", startAfterFailure},
      {"lifecycle.destructor", "the destructor traces nothing and leaves no extension object", noExtensionLeftByDestructor},
  };
}

}  // namespace motion::conformance
